#include <cstdio>
#include <cstdlib>
#include <new>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "random_scene.h"

using namespace scene_tests;

namespace {

/// Allocations that still succeed; below 0 all do.
long g_allocationsLeft = -1;

void* Allocate(std::size_t size, std::size_t alignment) {
    if (g_allocationsLeft == 0) {
        throw std::bad_alloc();
    }
    g_allocationsLeft -= g_allocationsLeft > 0 ? 1 : 0;
    const std::size_t whole = (size + alignment - 1) / alignment * alignment;
    void* const memory = alignment > alignof(std::max_align_t)
                             ? std::aligned_alloc(alignment, whole)
                             : std::malloc(size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
    return Allocate(size, 1);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return Allocate(size, static_cast<std::size_t>(alignment));
}
/// What the library's own algorithms ask for; it never fails here, as they would do without.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}

namespace {

/// Runs `call` again and again, with one more allocation succeeding each time, until it does not
/// throw; after each failure `unchanged` has to hold. Returns the number of failures.
template <class Call, class Unchanged>
int WithEveryFailure(Call&& call, Unchanged&& unchanged) {
    for (int failures = 0;; ++failures) {
        g_allocationsLeft = failures;
        try {
            call();
            g_allocationsLeft = -1;
            return failures;
        } catch (const std::bad_alloc&) {
            g_allocationsLeft = -1;
            EXPECT_TRUE(unchanged());
        }
    }
}

TEST(OutOfMemory, ARefusedCallChangesNothing) {
    const ScenePtr scene(DT_CreateScene());
    const TablePtr table(DT_CreateRespTable());
    Recorder recorder;
    recorder.calls.reserve(1000);
    Client client{&recorder};
    const auto count = [&] {
        recorder.calls.clear();
        return DT_Test(scene.get(), table.get());
    };
    for (int i = 0; i < 3; ++i) {
        DT_GenResponseClass(table.get());
    }
    std::vector<std::unique_ptr<Body>> bodies;
    int failures = 0;
    DT_AddPairResponse(table.get(), 0, 1, Record, DT_SIMPLE_RESPONSE, &client);
    std::uint16_t before = 0;
    for (int i = 0; i < 40; ++i) {
        bodies.push_back(NewCube());
        const DT_ObjectHandle object = bodies.back()->object;
        const auto unchanged = [&] { return count() == before; };
        failures += WithEveryFailure([&] { DT_AddObject(scene.get(), object); }, unchanged);
        failures +=
            WithEveryFailure([&] { DT_SetResponseClass(table.get(), object, i % 2); }, unchanged);
        // Moving and removing never allocate.
        g_allocationsLeft = 0;
        bodies.back()->Place(At(0.1f, 0, 0));
        DT_RemoveObject(scene.get(), object);
        g_allocationsLeft = -1;
        failures += WithEveryFailure([&] { DT_AddObject(scene.get(), object); }, unchanged);
        failures += WithEveryFailure(
            [&] {
                recorder.calls.clear();
                DT_Test(scene.get(), table.get());
            },
            [] { return true; });
        before = count();
        EXPECT_EQ(before, ((i + 1) / 2) * ((i + 2) / 2));
    }
    EXPECT_GT(failures, 30);

    const int all[3] = {0, 1, 2};
    const auto unchanged = [&] { return count() == before; };
    EXPECT_GT(WithEveryFailure(
                  [&] {
                      DT_AddPairResponses(table.get(), all, 3, all, 3, Record, DT_SIMPLE_RESPONSE,
                                          &client);
                  },
                  unchanged),
              0);
    EXPECT_EQ(count(), 400u + 40u * 39u / 2u);
    const TablePtr other(DT_CreateRespTable());
    const int c = DT_GenResponseClass(other.get());
    EXPECT_GT(WithEveryFailure([&] { DT_SetResponseClass(other.get(), bodies[0]->object, c); },
                               [&] { return bodies[0]->object->ClassIn(*other) == -1; }),
              0);
    g_allocationsLeft = 0;
    DT_RemovePairResponses(table.get(), all, 3, all, 3, Record);
    bodies.resize(20);
    g_allocationsLeft = -1;
    EXPECT_EQ(count(), 100u);
}

TEST(OutOfMemory, ARefusedShapeCanStillBeDeleted) {
    const DT_ShapeHandle shape = DT_NewComplexShape(nullptr);
    for (int i = 0; i < 20; ++i) {
        DT_Begin();
        DT_Vertex(0, 0, static_cast<float>(i));
        DT_Vertex(1, 0, static_cast<float>(i));
        DT_Vertex(0, 1, static_cast<float>(i));
        DT_End();
    }
    EXPECT_GT(WithEveryFailure([] { DT_EndComplexShape(); }, [] { return true; }), 0);
    const Body body(shape);
    const Body probe(DT_NewSphere(0));
    probe.Place(At(0.2f, 0.2f, 7));
    float p[3], q[3], distance = -1;
    // The tree of the mesh is built here, and if it cannot be, the next question does.
    const auto ask = [&] { distance = DT_GetClosestPair(body.object, probe.object, p, q); };
    EXPECT_GT(WithEveryFailure(ask, [&] { return distance == -1; }), 3);
    EXPECT_EQ(distance, 0);
}

TEST(OutOfMemory, ARefusedMeshLeavesNothing) {
    const float vertices[18] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 0, 1, 1};
    const int counts[2] = {4, 2};
    DT_ShapeHandle shape = nullptr;
    EXPECT_GT(WithEveryFailure([&] { shape = DT_NewMesh(vertices, 6, counts, 2); },
                               [&] { return shape == nullptr; }),
              3);
    DT_DeleteShape(shape);
}

#if defined(__GLIBC__) && defined(MEASURE_MEMORY)
TEST(Memory, OfABoxInAScene) {
    constexpr std::size_t kCount = 100000;
    constexpr int kClasses = 100;
    std::vector<DT_ShapeHandle> shapes;
    std::vector<DT_ObjectHandle> objects;
    shapes.reserve(kCount);
    objects.reserve(kCount);
    Random random(9);
    const auto used = [] {
        const struct mallinfo2 info = mallinfo2();
        return info.uordblks + info.hblkhd;
    };
    const std::size_t before = used();
    const ScenePtr scene(DT_CreateScene());
    const TablePtr table(DT_CreateRespTable());
    for (int c = 0; c < kClasses; ++c) {
        DT_GenResponseClass(table.get());
    }
    for (std::size_t i = 0; i < kCount; ++i) {
        shapes.push_back(DT_NewBox(1, 1, 1));
        objects.push_back(DT_CreateObject(nullptr, shapes.back()));
        DT_SetMatrixf(objects.back(), RandomPlacement(random, 100).m);
        DT_AddObject(scene.get(), objects.back());
        DT_SetResponseClass(table.get(), objects.back(), static_cast<int>(i % kClasses));
    }
    const std::size_t shapesAndObjects = used();
    Recorder recorder;
    recorder.calls.reserve(kCount);
    const std::size_t recorded = used() - shapesAndObjects;
    Client client{&recorder};
    DT_AddPairResponse(table.get(), 0, 1, Record, DT_SIMPLE_RESPONSE, &client);
    EXPECT_GT(DT_Test(scene.get(), table.get()), 0u);
    const double bytes = static_cast<double>(used() - recorded - before) / kCount;
    std::printf("%.0f bytes for each box, its shape included\n", bytes);
    testing::Test::RecordProperty("bytes_per_box", static_cast<int>(bytes));
    EXPECT_LT(bytes, 330);
    EXPECT_GT(bytes, 100);
    for (std::size_t i = 0; i < kCount; ++i) {
        DT_DestroyObject(objects[i]);
        DT_DeleteShape(shapes[i]);
    }
}
#endif

}  // namespace
