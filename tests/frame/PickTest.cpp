#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <set>

#include "Library.h"
#include "collision/CollisionManager.h"
#include "model/Group.h"
#include "model/Registries.h"
#include "model/SceneObject.h"

namespace {

using Point = std::array<float, 3>;

struct Answer {
    int id = -1;
    Point point = {7, 7, 7};
    std::vector<int> store;

    bool operator==(const Answer& other) const {
        return id == other.id && store == other.store &&
               std::memcmp(point.data(), other.point.data(), sizeof point) == 0;
    }
};

std::ostream& operator<<(std::ostream& out, const Answer& a) {
    return out << a.id << " at " << a.point[0] << ' ' << a.point[1] << ' ' << a.point[2] << ", "
               << a.store.size() << " records";
}

class Picking : public Library {
  protected:
    static Answer Pick(const Point& start, const Point& end, int view = 0) {
        Answer answer;
        auto& manager = static_cast<CCollisionManager&>(*g_collision);
        const CSceneObject* const object = manager.PickAlongRay(view, start, end, &answer.point);
        answer.id = object == nullptr ? -1 : object->Id();
        for (const KstCollisionResult& result : g_collisionResults) {
            EXPECT_EQ(-1.0F, result.value);
            answer.store.push_back(result.id1);
        }
        return answer;
    }

    /// Without a display, the interface changes no group's visibility.
    static void Show(int group, int view, bool visible) {
        g_groups.at(group)->SetViewVisibility(view, visible);
    }

    /// The same by the walk itself, every step of it.
    static Answer Walk(const Point& start, const Point& end, int view = 0) {
        Answer answer;
        int count = 0;
        auto& manager = static_cast<CCollisionManager&>(*g_collision);
        EXPECT_EQ(KST_OK, manager.CheckLine(*g_groups.at(0), start, end, true, &count));
        std::vector<const CSceneObject*> visible;
        for (const KstCollisionResult& result : g_collisionResults) {
            const CSceneObject* const object = g_objects.at(result.id1);
            answer.store.push_back(object->Id());
            if (object->Group()->IsVisibleInView(view)) {
                visible.push_back(object);
            }
        }
        if (visible.empty()) {
            return answer;
        }
        DT_ShapeHandle shape = DT_NewSphere(0.05F);
        DT_ObjectHandle sphere = DT_CreateObject(nullptr, shape);
        const CSceneObject* touched = nullptr;
        for (float t = 0.0F; t < 100.0F && touched == nullptr; t += 0.005F) {
            for (std::size_t i = 0; i < 3; ++i) {
                answer.point[i] = end[i] + (start[i] - end[i]) * (100.0F - t) * 0.01F;
            }
            DT_SetPosition(sphere, answer.point.data());
            for (const CSceneObject* object : visible) {
                if (DT_InContact(object->SolidObject(), sphere)) {
                    touched = object;
                    break;
                }
            }
        }
        DT_DestroyObject(sphere);
        DT_DeleteShape(shape);
        answer.id = touched == nullptr ? answer.store.front() : touched->Id();
        if (touched != nullptr) {
            answer.store.push_back(answer.id);
        }
        return answer;
    }
};

TEST_F(Picking, FindsTheFirstVisibleObjectOnTheRay) {
    const int group = Group();
    const int farther = Box(group, 0, 0, -20);
    const int nearer = Box(group, 0, 0, -10);
    Box(group, 0, 5, -5);
    const Answer first = Pick({0, 0, 0}, {0, 0, -1000});
    EXPECT_EQ(nearer, first.id);
    EXPECT_NEAR(-9.5F, first.point[2], 0.11F);
    // The two on the line, and the one that the walk met.
    EXPECT_EQ((std::vector<int>{farther, nearer, nearer}), first.store);
    EXPECT_EQ(farther, Pick({0, 0, -100}, {0, 0, 900}).id);
    EXPECT_EQ(-1, Pick({0, 0, 0}, {0, 0, -1000}, 1).id);
    EXPECT_EQ(-1, Pick({50, 0, 0}, {50, 0, -1000}).id);
    // The walk's own objects are gone.
    EXPECT_EQ(1, Pick({0, 0, -10}, {0, 0, -10}).id);
    EXPECT_EQ((std::vector<int>{nearer, nearer}), Pick({0, 0, -10}, {0, 0, -10}).store);
}

TEST_F(Picking, OfTwoTouchedAtOnceTheOneThatEnteredTheWorldFirst) {
    const int g1 = Group();
    const int g2 = Group();
    const int a = Box(g1, 0, 0, -10);
    const int b = Box(g2, 0, 0, -10);
    EXPECT_EQ(a, Pick({0, 0, 0}, {0, 0, -1000}).id);
    ASSERT_EQ(KST_OK, KST_SetGroupCollisionCheckCapability(g1, false));
    ASSERT_EQ(KST_OK, KST_SetGroupCollisionCheckCapability(g1, true));
    EXPECT_EQ(b, Pick({0, 0, 0}, {0, 0, -1000}).id);
    Show(g2, 0, false);
    const Answer answer = Pick({0, 0, 0}, {0, 0, -1000});
    EXPECT_EQ((std::vector<int>{b, a, a}), answer.store);
    EXPECT_EQ(Walk({0, 0, 0}, {0, 0, -1000}), answer);
}

/// Steps of 5 units pass a plate between two of them.
TEST_F(Picking, ASphereThatPassesAllGivesTheFirstOfTheLine) {
    const int group = Group();
    const int hidden = Group();
    int plates[2] = {};
    const int other = Box(hidden, 0, 0, -7.25F);
    for (const float z : {-92.5F, -52.5F}) {
        ASSERT_EQ(KST_OK, KST_CreateBox(group, 10, 10, 0.001F, 0, 0, z,
                                        z < -60 ? &plates[0] : &plates[1], nullptr));
    }
    Answer answer = Pick({0, 0, 0}, {0, 0, -100000});
    EXPECT_EQ(other, answer.id);
    Show(hidden, 0, false);
    answer = Pick({0, 0, 0}, {0, 0, -100000});
    EXPECT_EQ((std::vector<int>{other, plates[0], plates[1]}), answer.store);
    EXPECT_EQ(other, answer.id);
    EXPECT_NEAR(-100000.0F, answer.point[2], 50);
    EXPECT_EQ(Walk({0, 0, 0}, {0, 0, -100000}), answer);
}

/// Where the steps are is rounding's to say: up to 0.9 of a step ahead of even ones, and 3 behind.
TEST_F(Picking, LongSkipsEndAtTheSameStep) {
    const int box = Box(Group());
    for (float z = 3; z < 1000; z += 1.789F) {
        ASSERT_EQ(KST_OK, KST_SetObjectPosition(box, 0.1F, 0, -z));
        const Answer answer = Pick({0, 0, 0}, {0, 0, -1000});
        EXPECT_EQ(box, answer.id);
        EXPECT_EQ(Walk({0, 0, 0}, {0, 0, -1000}), answer) << z;
    }
}

TEST_F(Picking, RaysThatAreNone) {
    const int group = Group();
    const int box = Box(group);
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kMost = std::numeric_limits<float>::max();
    EXPECT_EQ(box, Pick({0, 0, 0}, {0, 0, 0}).id);
    EXPECT_EQ(-1, Pick({0, 2, 0}, {0, 2, 0}).id);
    EXPECT_EQ(-1, Pick({0, 0, kNone}, {0, 0, 0}).id);
    EXPECT_EQ(-1, Pick({0, 0, 0}, {kInfinity, 0, 0}).id);
    for (const float far : {1e7F, 1e20F, 1e36F, 1e38F, kMost}) {
        EXPECT_EQ(Walk({far, 0, 0}, {-far, 0, 0}), Pick({far, 0, 0}, {-far, 0, 0})) << far;
        EXPECT_EQ(Walk({0, far, 0}, {0, 0, 0}), Pick({0, far, 0}, {0, 0, 0})) << far;
        EXPECT_EQ(Walk({0, 0, 0}, {0, 0, far}), Pick({0, 0, 0}, {0, 0, far})) << far;
    }
    ASSERT_EQ(KST_OK, KST_SetObjectScaling(box, 1e30F, 1e30F, 1e30F));
    EXPECT_EQ(Walk({0, 0, 1000}, {0, 0, 0}), Pick({0, 0, 1000}, {0, 0, 0}));
    EXPECT_EQ(Walk({0, 0, kMost}, {0, 0, 0}), Pick({0, 0, kMost}, {0, 0, 0}));
}

/// Objects of all shapes thrown about a ray, large and small, flat and thin, turned and grown.
class RandomPicking : public Picking {
  protected:
    float In(float from, float to) {
        return from + (to - from) * static_cast<float>(m_random() >> 8) / 16777216.0F;
    }
    /// Between `from` and `to`, every order of magnitude alike.
    float Size(float from, float to) { return from * std::pow(to / from, In(0, 1)); }
    Point Near(float size) { return {In(-size, size), In(-size, size), In(-size, size)}; }

    int Thing(int group, std::uint32_t kind, float size) {
        int id = -1;
        std::array<float, 36> v = {};
        for (float& x : v) {
            x = In(-size, size);
        }
        const int corners[] = {3, 4, 5};
        const float s = size;
        switch (kind) {
            case 0:
                EXPECT_EQ(KST_OK, KST_CreateBox(group, s, s, s, 0, 0, 0, &id, nullptr));
                break;
            case 1:
                EXPECT_EQ(KST_OK, KST_CreateSphere(group, s, 0, 0, 0, &id, nullptr));
                break;
            case 2:
                EXPECT_EQ(KST_OK, KST_CreateCylinder(group, s, s, 0, 0, 0, &id, nullptr));
                break;
            case 3:
                EXPECT_EQ(KST_OK, KST_CreateCone(group, s, s, 0, 0, 0, &id, nullptr));
                break;
            case 4:
                EXPECT_EQ(KST_OK, KST_CreatePolygon(group, 5, v.data(), &id, nullptr));
                break;
            case 5:
                EXPECT_EQ(KST_OK, KST_CreateTriangles(group, 4, v.data(), &id, nullptr));
                break;
            case 6:
                EXPECT_EQ(KST_OK,
                          KST_CreatePolygonGroup(group, 3, corners, v.data(), &id, nullptr));
                break;
            case 7:
                EXPECT_EQ(KST_OK, KST_CreatePolyline(group, 3, corners, v.data(), &id, nullptr));
                break;
            default:
                EXPECT_EQ(KST_OK, KST_CreateTetrahedron(group, v.data(), &id, nullptr));
                break;
        }
        return id;
    }
    void Throw(int id, float spread) {
        const Point p = Near(spread);
        EXPECT_EQ(KST_OK, KST_SetObjectPosition(id, p[0], p[1], p[2]));
        if (m_random() % 4 != 0) {
            const float w = In(0.1F, 1);
            const Point q = Near(1);
            const float length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + w * w);
            EXPECT_EQ(KST_OK, KST_SetObjectQuaternion(id, q[0] / length, q[1] / length,
                                                      q[2] / length, w / length));
        }
        if (m_random() % 2 != 0) {
            EXPECT_EQ(KST_OK, KST_SetObjectScaling(id, Size(0.001F, 10), Size(0.001F, 10),
                                                   Size(0.001F, 10)));
        }
        if (m_random() % 4 == 0) {
            EXPECT_EQ(KST_OK, KST_SetObjectClearance(id, Size(0.01F, 10)));
        }
    }
    void Fill(float spread) {
        for (int g = 0; g < 3; ++g) {
            const int group = Group();
            for (std::uint32_t i = 0; i < 18; ++i) {
                Throw(Thing(group, i % 9, Size(0.01F, 1) * spread), spread);
            }
            Show(group, 1, m_random() % 2 == 0);
        }
    }

    std::mt19937 m_random{11};
};

TEST_F(RandomPicking, AnswersLikeTheWalk) {
    int passed = 0;
    int touched = 0;
    int none = 0;
    for (int scene = 0; scene < 200; ++scene) {
        const float spread = Size(0.1F, 1000);
        Fill(spread);
        for (int ray = 0; ray < 4; ++ray) {
            const float length = Size(0.1F, 1e6F);
            const Point at = Near(spread);
            const Point direction = Near(length);
            // From inside, or from far through.
            const float back = ray % 2 == 0 ? 0 : In(0, 1);
            Point start;
            Point end;
            for (std::size_t i = 0; i < 3; ++i) {
                start[i] = at[i] - back * direction[i];
                end[i] = start[i] + direction[i];
            }
            const int view = ray / 2;
            const Answer answer = Pick(start, end, view);
            ASSERT_EQ(Walk(start, end, view), answer) << scene << ' ' << ray;
            const std::set<int> met(answer.store.begin(), answer.store.end());
            none += answer.id < 0;
            passed += answer.id >= 0 && met.size() == answer.store.size();
            touched += met.size() < answer.store.size();
        }
        ASSERT_EQ(KST_OK, KST_EmptyGroup(0));
    }
    EXPECT_GT(none, 20);
    EXPECT_GT(passed, 5);
    EXPECT_GT(touched, 50);
}

}  // namespace
