#include <cstdlib>
#include <functional>
#include <limits>
#include <new>
#include <sstream>
#include <string>

#include "Library.h"

namespace {

/// Allocations of this thread that still succeed; none fails while below 0.
thread_local long t_allocationsLeft = -1;
/// A machine that lends memory it does not have would not refuse a request for more than it has.
constexpr std::size_t kLargestBlock = std::size_t{1} << 30;

void* Allocate(std::size_t size) {
    if (t_allocationsLeft == 0 || size > kLargestBlock) {
        throw std::bad_alloc();
    }
    if (t_allocationsLeft > 0) {
        --t_allocationsLeft;
    }
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}
void* operator new[](std::size_t size) {
    return Allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return Allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
    return operator new(size, tag);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

/// Runs the call with one more allocation allowed each time until it succeeds. `unchanged` is asked
/// after each failure.
void FailAtEachAllocation(const std::function<int()>& call,
                          const std::function<void()>& unchanged) {
    constexpr long kEnough = 100000;
    long allowed = 0;
    for (; allowed < kEnough; ++allowed) {
        t_allocationsLeft = allowed;
        const int status = call();
        t_allocationsLeft = -1;
        if (status == KST_OK) {
            break;
        }
        ASSERT_EQ(KST_ERROR_ARGUMENT, status) << "after " << allowed << " allocations";
        unchanged();
        if (::testing::Test::HasFailure()) {
            return;
        }
    }
    EXPECT_LT(allowed, kEnough);
    EXPECT_GT(allowed, 0) << "the call allocates nothing";
}

class Memory : public Library {
  protected:
    void SetUp() override {
        Library::SetUp();
        group = Group(0, true, "group");
        child = Group(group, true, "child");
        other = Group(0, true, "other");
        first = Box(group, 0, 0, 0, "first");
        Box(child, 0.5F, 0, 0, "second");
        Box(other, 0.25F, 0, 0, "third");
    }

    /// All that can be seen of the scene, groups in pre-order.
    static std::string Describe(int id = 0) {
        std::ostringstream out;
        KstGroupInfo info = {};
        EXPECT_EQ(KST_OK, KST_GetGroup(id, &info));
        out << "(" << id << (info.colCheck ? "c" : "");
        for (int i = 0; i < info.objectCount; ++i) {
            int object = -1;
            KstObjectInfo shape = {};
            EXPECT_EQ(KST_OK, KST_GetGroupObjectID(id, i, &object));
            int type = 0;
            EXPECT_EQ(KST_OK, KST_GetObjectType(object, &type));
            EXPECT_EQ(KST_OK, KST_GetObject(object, &shape));
            out << " " << object << ":" << type << "@" << shape.matrix[3];
            if (type == KST_POLYGON_GROUP || type == KST_POLYLINE) {
                std::free(shape.p2.ints);
                std::free(shape.p3.floats);
            } else if (type == KST_POLYGON || type == KST_TRIANGLES) {
                std::free(shape.p2.floats);
            } else if (type == KST_TETRAHEDRON) {
                std::free(shape.p1.floats);
            }
        }
        for (int i = 0; i < info.childCount; ++i) {
            int below = -1;
            EXPECT_EQ(KST_OK, KST_GetGroupChildID(id, i, &below));
            out << Describe(below);
        }
        out << ")";
        for (const char* label : {"group", "child", "other", "first", "new", "new_1"}) {
            out << (id == 0 ? std::to_string(IdOf(label)) + " " : "");
        }
        // What the collision world holds.
        int count = -1;
        if (id != 0 && KST_CheckPointCollision(id, 0.25F, 0, 0, true, &count) == KST_OK) {
            out << "[" << count << "]";
        }
        return out.str();
    }

    void ExpectAllOrNothing(const std::function<int()>& call) const {
        const std::string before = Describe();
        FailAtEachAllocation(call, [&] { ASSERT_EQ(before, Describe()); });
    }

    int group = -1, child = -1, other = -1, first = -1;
};

TEST_F(Memory, CreationIsAllOrNothing) {
    const float points[12] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
    const int counts[1] = {4};
    int id = -1;
    ExpectAllOrNothing([&] { return KST_CreateGroup(&id, group, true, "new", false); });
    EXPECT_EQ(other + 1, id);
    const std::string label(100, 'l');
    int last = Box(other, 9);
    const std::function<int()> creations[] = {
        [&] { return KST_CreateBox(group, 1, 1, 1, 0, 0, 0, &id, (label + "1").c_str()); },
        [&] { return KST_CreateSphere(group, 1, 0, 0, 0, &id, (label + "2").c_str()); },
        [&] { return KST_CreateCylinder(group, 1, 1, 0, 0, 0, &id, (label + "3").c_str()); },
        [&] { return KST_CreateCone(group, 1, 1, 0, 0, 0, &id, (label + "4").c_str()); },
        [&] { return KST_CreatePolygon(group, 4, points, &id, (label + "5").c_str()); },
        [&] { return KST_CreateTriangles(group, 1, points, &id, (label + "6").c_str()); },
        [&] {
            return KST_CreatePolygonGroup(group, 1, counts, points, &id, (label + "7").c_str());
        },
        [&] { return KST_CreatePolyline(group, 1, counts, points, &id, (label + "8").c_str()); },
        [&] { return KST_CreateTetrahedron(group, points, &id, (label + "9").c_str()); },
    };
    for (const auto& create : creations) {
        // The label of the call itself is made by the test, and may fail there.
        ExpectAllOrNothing([&] {
            try {
                return create();
            } catch (const std::bad_alloc&) {
                return static_cast<int>(KST_ERROR_ARGUMENT);
            }
        });
        EXPECT_EQ(++last, id);
    }
}

TEST_F(Memory, ChangesAreAllOrNothing) {
    const float pos[3] = {5, 0, 0};
    int id = -1;
    int ids[2] = {group, child};
    int newIds[2] = {-1, -1};
    const char* labels[2] = {"new", "a label that is too long to be kept within a string itself"};
    ExpectAllOrNothing([&] { return KST_CloneGroup(&id, group, other, true, "new"); });
    ExpectAllOrNothing(
        [&] { return KST_CloneGroupRecursive(newIds, group, other, 2, ids, labels); });
    ExpectAllOrNothing(
        [&] { return KST_AddGroupKeyState(group, 0, pos, nullptr, nullptr, false); });
    ExpectAllOrNothing(
        [&] { return KST_AddObjectKeyState(first, 0, pos, nullptr, nullptr, false); });
    ASSERT_EQ(KST_OK, KST_ClearObjectKeyStates(first));
    const int idle = Group(0, false);
    Box(idle);
    ExpectAllOrNothing([&] { return KST_SetGroupCollisionCheckCapability(idle, true); });
    ExpectAllOrNothing([&] { return KST_SetObjectCyclic(first, true); });
}

TEST_F(Memory, QueriesCanBeAskedAgain) {
    const float line[3] = {0, 0, 0};
    int count = -7;
    const std::function<int()> queries[] = {
        [&] { return KST_CheckPointCollision(group, line[0], 0, 0, true, &count); },
        [&] { return KST_CheckLineCollision(group, -5, 0, 0, 5, 0, 0, true, &count); },
        [&] { return KST_CheckGroupCollision(group, other, true, &count); },
        [&] { return KST_GetClosestPairs(group, other, &count); },
        [&] { return KST_GetPenetrationDepths(group, other, &count); },
    };
    for (const auto& query : queries) {
        // A query that was asked before finds memory that is left from it.
        TearDown();
        SetUp();
        count = -7;
        FailAtEachAllocation(query, [&] {
            ASSERT_EQ(-7, count);
            ASSERT_TRUE(Results(0).empty());
        });
        EXPECT_EQ(2, count);
        EXPECT_EQ(2U, Results(2).size());
    }
}

/// The depth of round bodies takes lists that grow beyond what finding the pairs has taken.
TEST_F(Memory, DepthsThatRunOutLeaveNoFindings) {
    const int cylinders = Group();
    const int cones = Group();
    for (int i = 0; i < 3; ++i) {
        const float x = 0.2F * static_cast<float>(i);
        ASSERT_EQ(KST_OK, KST_CreateCylinder(cylinders, 1, 2, x, 0, 0, nullptr, nullptr));
        ASSERT_EQ(KST_OK, KST_CreateCone(cones, 1, 2, 0, x, 0.1F, nullptr, nullptr));
    }
    int count = -7;
    FailAtEachAllocation([&] { return KST_GetPenetrationDepths(cylinders, cones, &count); },
                         [&] {
                             ASSERT_EQ(-7, count);
                             ASSERT_TRUE(Results(0).empty());
                         });
    EXPECT_EQ(9, count);
}

TEST_F(Memory, AMoveBetweenGroupsIsSeenByQueries) {
    const int far = Group();
    for (int i = 0; i < 40; ++i) {
        const int id = Box(far, 100, 0, 0);
        // Whether the class can grow or not, the object has moved.
        t_allocationsLeft = 0;
        const int status = KST_MoveObject(id, group);
        t_allocationsLeft = -1;
        ASSERT_EQ(KST_OK, status);
        int count = -7;
        ASSERT_EQ(KST_OK, KST_CheckPointCollision(far, 100, 0, 0, true, &count));
        EXPECT_EQ(0, count);
        ASSERT_EQ(KST_OK, KST_CheckPointCollision(group, 100, 0, 0, true, &count));
        EXPECT_EQ(i + 1, count);
    }
}

TEST(MemoryAtStart, AFailedStartCanBeTriedAgain) {
    FailAtEachAllocation([] { return KST_Initialisation(false, false, false); },
                         [] { ASSERT_EQ(KST_ERROR_NOT_INITIALISED, KST_SetTime(0)); });
    int id = -1;
    EXPECT_EQ(KST_OK, KST_CreateGroup(&id, 0, true, nullptr, false));
    EXPECT_EQ(1, id);
    EXPECT_EQ(KST_OK, KST_GetID(&id, "Root group"));
    EXPECT_EQ(KST_OK, KST_End());
}

TEST_F(Memory, RequestsBeyondAllMemoryAreRefused) {
    constexpr int kMost = std::numeric_limits<int>::max();
    const int counts[2] = {kMost, kMost};
    const float point[3] = {0, 0, 0};
    int id = -7;
    const std::string before = Describe();
    // Room for the vertices is asked for before the first of them is read.
    EXPECT_EQ(KST_ERROR_ARGUMENT, KST_CreatePolygon(group, kMost, point, &id, nullptr));
    EXPECT_EQ(KST_ERROR_ARGUMENT, KST_CreateTriangles(group, kMost, point, &id, nullptr));
    EXPECT_EQ(KST_ERROR_ARGUMENT, KST_CreatePolygonGroup(group, 2, counts, point, &id, nullptr));
    EXPECT_EQ(KST_ERROR_ARGUMENT, KST_CreatePolyline(group, 2, counts, point, &id, nullptr));
    EXPECT_EQ(-7, id);
    EXPECT_EQ(before, Describe());
}

}  // namespace
