#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <utility>

#include "Library.h"

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

class Queries : public Library {
  protected:
    static std::vector<int> AtPoint(int group, float x, float y, float z, bool all = true) {
        int count = -1;
        EXPECT_EQ(KST_OK, KST_CheckPointCollision(group, x, y, z, all, &count));
        return Ids(count);
    }
    static std::vector<int> OnLine(int group, const std::array<float, 3>& a,
                                   const std::array<float, 3>& b, bool all = true) {
        int count = -1;
        EXPECT_EQ(KST_OK,
                  KST_CheckLineCollision(group, a[0], a[1], a[2], b[0], b[1], b[2], all, &count));
        return Ids(count);
    }
    using Pairs = std::vector<std::pair<int, int>>;
    static Pairs Touching(int group1, int group2, bool all = true) {
        int count = -1;
        EXPECT_EQ(KST_OK, KST_CheckGroupCollision(group1, group2, all, &count));
        Pairs pairs;
        for (const KstCollisionResult& r : Results(count)) {
            EXPECT_EQ(-1.0F, r.value);
            for (int i = 0; i < 3; ++i) {
                EXPECT_EQ(0.0F, r.point1[i]);
                EXPECT_EQ(0.0F, r.point2[i]);
            }
            pairs.emplace_back(r.id1, r.id2);
        }
        return pairs;
    }
    static std::vector<KstCollisionResult> Distances(int group1, int group2) {
        int count = -1;
        EXPECT_EQ(KST_OK, KST_GetClosestPairs(group1, group2, &count));
        return Results(count);
    }

  private:
    static std::vector<int> Ids(int count) {
        std::vector<int> ids;
        for (const KstCollisionResult& r : Results(count)) {
            EXPECT_EQ(-1.0F, r.value);
            EXPECT_EQ(0, r.id2);
            ids.push_back(r.id1);
        }
        return ids;
    }
};

TEST_F(Queries, PointsAndLinesReachTheWholeSubtree) {
    const int top = Group();
    const int between = Group(top, false);
    const int bottom = Group(between);
    const int a = Box(top);
    Box(between);
    const int b = Box(bottom, 0.25F);
    EXPECT_EQ((std::vector<int>{a, b}), AtPoint(top, 0, 0, 0));
    EXPECT_EQ((std::vector<int>{b}), AtPoint(bottom, 0, 0, 0));
    EXPECT_EQ(1U, AtPoint(top, 0, 0, 0, false).size());
    EXPECT_TRUE(AtPoint(top, 5, 0, 0).empty());
    EXPECT_EQ((std::vector<int>{b}), OnLine(top, {0.6F, -5, 0}, {0.6F, 5, 0}));
    EXPECT_EQ(1U, OnLine(top, {-5, 0, 0}, {5, 0, 0}, false).size());
    // Touching a face or an edge is contact.
    EXPECT_EQ((std::vector<int>{a}), AtPoint(top, -0.5F, 0.5F, 0.5F));
    EXPECT_EQ((std::vector<int>{a}), OnLine(top, {-0.5F, -5, 0.5F}, {-0.5F, 5, 0.5F}));
}

TEST_F(Queries, LinesHitInEveryDirectionUpToTheirVeryEnds) {
    const int group = Group();
    const int ball = Box(group, 3, 4, 5);
    const std::array<float, 3> directions[] = {{0, 1, 0},  {0, -1, 0}, {1, 0, 0},
                                               {-1, 0, 0}, {0, 0, 1},  {1e-8F, -1, 0}};
    for (const auto& d : directions) {
        // From 2 away to the face, and from 2 away to a little before it.
        for (const auto& [end, hit] : {std::pair{0.5F, true}, {0.500001F, false}}) {
            const auto at = [&](float t) {
                return std::array<float, 3>{3 + t * d[0], 4 + t * d[1], 5 + t * d[2]};
            };
            EXPECT_EQ(hit ? 1U : 0U, OnLine(group, at(2), at(end)).size()) << d[0] << d[1] << d[2];
        }
    }
    EXPECT_EQ((std::vector<int>{ball}), OnLine(group, {3, 4, 5}, {3, 4, 5}));
    EXPECT_EQ((std::vector<int>{ball}), OnLine(group, {2.5F, 4, 5}, {2.5F, 4, 5}));
    EXPECT_TRUE(OnLine(group, {2.4F, 4, 5}, {2.4F, 4, 5}).empty());
    EXPECT_EQ((std::vector<int>{ball}), OnLine(group, {3, 1e30F, 5}, {3, -1e30F, 5}));
    EXPECT_EQ((std::vector<int>{ball}), OnLine(group, {3, 4, 5}, {3, 4 + 1e-6F, 5}));
    EXPECT_TRUE(OnLine(group, {3, 4, 5}, {3, kInfinity, 5}).empty());
    EXPECT_TRUE(AtPoint(group, std::nanf(""), 4, 5).empty());
}

/// The matrix of a turned sphere is a rotation only as well as floats can say, whichever query
/// asks.
TEST_F(Queries, TurnedSpheresThatJustTouchAreFoundByEveryQuery) {
    const int balls = Group();
    const int things = Group();
    int ball = -1;
    ASSERT_EQ(KST_OK, KST_CreateSphere(balls, 1, 1, 0, 0, &ball, nullptr));
    ASSERT_EQ(KST_OK, KST_CreateSphere(things, 1, -1, 0, 0, nullptr, nullptr));
    ASSERT_EQ(KST_OK, KST_CreateBox(things, 1, 1, 1, -0.5F, 0, 0, nullptr, nullptr));
    const float triangle[] = {0, -1, -1, 0, 1, -1, 0, 0, 1};
    ASSERT_EQ(KST_OK, KST_CreateTriangles(things, 1, triangle, nullptr, nullptr));
    std::mt19937 random(5);
    std::normal_distribution<float> normal;
    int touching = 0;
    for (int i = 0; i < 500; ++i) {
        float q[4];
        float length = 0;
        for (float& part : q) {
            part = normal(random);
            length += part * part;
        }
        length = std::sqrt(length);
        ASSERT_EQ(KST_OK, KST_SetObjectQuaternion(ball, q[0] / length, q[1] / length, q[2] / length,
                                                  q[3] / length));
        const auto near = Distances(balls, things);
        const auto contacts =
            std::count_if(near.begin(), near.end(), [](const auto& r) { return r.value == 0; });
        EXPECT_EQ(static_cast<std::size_t>(contacts), Touching(balls, things).size());
        touching += contacts > 0;
    }
    EXPECT_GT(touching, 100);
}

TEST_F(Queries, GroupsReportEachTouchingPair) {
    const int g1 = Group();
    const int g2 = Group();
    const int a = Box(g1);
    const int b = Box(g1, 1.5F);
    const int c = Box(g2, 0.75F);
    const int d = Box(g2, 10);
    EXPECT_EQ((Pairs{{a, c}, {b, c}}), Touching(g1, g2));
    // The object of the first group comes first.
    EXPECT_EQ((Pairs{{c, a}, {c, b}}), Touching(g2, g1));
    EXPECT_EQ((Pairs{{a, c}}), Touching(g1, g2, false));
    ASSERT_EQ(KST_OK, KST_SetObjectPosition(d, -1, 0, 0));
    EXPECT_EQ((Pairs{{a, c}, {a, d}, {b, c}}), Touching(g1, g2));
    ASSERT_EQ(KST_OK, KST_SetGroupPosition(g2, 0, 1.0001F, 0));
    EXPECT_TRUE(Touching(g1, g2).empty());
    ASSERT_EQ(KST_OK, KST_SetGroupPosition(g2, 0, 1, 0));
    EXPECT_EQ(3U, Touching(g1, g2).size());
}

TEST_F(Queries, OverlapLeavesNothingBehind) {
    const int g1 = Group();
    const int below = Group(g1);
    const int g2 = Group();
    Box(g1);
    Box(below);
    Box(g2);
    int count = -7;
    EXPECT_EQ(KST_ERROR_OVERLAP, KST_CheckGroupCollision(g1, below, true, &count));
    EXPECT_EQ(KST_ERROR_OVERLAP, KST_CheckGroupCollision(below, g1, true, &count));
    EXPECT_EQ(KST_ERROR_OVERLAP, KST_GetPenetrationDepths(g1, below, &count));
    EXPECT_EQ(KST_ERROR_OVERLAP, KST_GetClosestPairs(g1, below, &count));
    EXPECT_EQ(-7, count);
    EXPECT_EQ(2U, Touching(g1, g2).size());
    EXPECT_TRUE(AtPoint(g2, 9, 0, 0).empty());
}

TEST_F(Queries, CapabilityDecidesWhoTakesPart) {
    const int g1 = Group(0, false);
    const int below = Group(g1);
    const int g2 = Group();
    const int a = Box(g1);
    Box(g2);
    Box(below, 20);
    int count = -7;
    EXPECT_EQ(KST_ERROR_NOT_CAPABLE, KST_CheckGroupCollision(g1, g2, true, &count));
    ASSERT_EQ(KST_OK, KST_SetGroupPosition(g1, 0.5F, 0, 0));
    ASSERT_EQ(KST_OK, KST_SetGroupCollisionCheckCapability(g1, true));
    EXPECT_EQ((std::vector<int>{a}), AtPoint(g1, 0.9F, 0, 0));
    ASSERT_EQ(KST_OK, KST_SetObjectClearance(a, 3));
    EXPECT_EQ((std::vector<int>{a}), AtPoint(g1, 3.9F, 0, 0));
    // Off and on again: the same objects, a clearance no more.
    ASSERT_EQ(KST_OK, KST_SetGroupCollisionCheckCapability(g1, false));
    EXPECT_EQ((std::vector<int>{2}), AtPoint(below, 20.5F, 0, 0));
    ASSERT_EQ(KST_OK, KST_SetGroupCollisionCheckCapability(g1, true));
    EXPECT_TRUE(AtPoint(g1, 3.9F, 0, 0).empty());
    EXPECT_EQ(1U, Touching(g1, g2).size());
}

TEST_F(Queries, AnObjectAnswersForTheGroupThatItMovedTo) {
    const int g1 = Group();
    const int g2 = Group();
    const int idle = Group(0, false);
    const int probe = Group();
    const int a = Box(g1);
    const int p = Box(probe);
    ASSERT_EQ(KST_OK, KST_MoveObject(a, g2));
    EXPECT_TRUE(Touching(g1, probe).empty());
    EXPECT_EQ((Pairs{{a, p}}), Touching(g2, probe));
    ASSERT_EQ(KST_OK, KST_MoveObject(a, idle));
    EXPECT_TRUE(Touching(g2, probe).empty());
    ASSERT_EQ(KST_OK, KST_SetGroupPosition(g1, 0.5F, 0, 0));
    ASSERT_EQ(KST_OK, KST_MoveObject(a, g1));
    EXPECT_EQ((Pairs{{a, p}}), Touching(g1, probe));
    EXPECT_EQ((std::vector<int>{a}), AtPoint(g1, 1, 0, 0));
    ASSERT_EQ(KST_OK, KST_DestroyObject(a));
    EXPECT_TRUE(Touching(g1, probe).empty());
}

TEST_F(Queries, ClearanceGrowsInAllDirections) {
    const int top = Group();
    const int idle = Group(top, false);
    const int below = Group(top);
    const int g2 = Group();
    const int a = Box(top);
    const int b = Box(below, 0, 10, 0);
    Box(idle, 0, 20, 0);
    Box(g2, 1.5F);
    EXPECT_TRUE(Touching(top, g2).empty());
    ASSERT_EQ(KST_OK, KST_SetGroupClearance(top, 0.5F));
    EXPECT_EQ(1U, Touching(top, g2).size());
    EXPECT_EQ((std::vector<int>{a}), AtPoint(top, 0, 0, 1));
    EXPECT_EQ((std::vector<int>{b}), AtPoint(top, 0, 10, 1));
    EXPECT_TRUE(AtPoint(top, 0.9F, 0.9F, 0.9F).empty());
    const std::vector<KstCollisionResult> distances = Distances(top, g2);
    ASSERT_EQ(2U, distances.size());
    EXPECT_EQ(0, distances[0].value);
    // Made later, so without a clearance.
    EXPECT_EQ(3U, AtPoint(top, 0, 10, 0).size() + AtPoint(top, 0, 0, 0).size() + 1U);
    const int late = Box(top, 0, 0, 5);
    EXPECT_TRUE(AtPoint(top, 0, 0, 6).empty());
    EXPECT_EQ((std::vector<int>{late}), AtPoint(top, 0, 0, 5.5F));
    ASSERT_EQ(KST_OK, KST_SetGroupClearance(top, 0));
    EXPECT_TRUE(Touching(top, g2).empty());
}

TEST_F(Queries, ClosestPairsComeByDistanceThenById) {
    const int g1 = Group();
    const int g2 = Group();
    const int a = Box(g1);
    const int b = Box(g1, 0, 10, 0);
    const int c = Box(g2, 3, 0, 0);
    const int d = Box(g2, -3, 0, 0);
    const int e = Box(g2, 0, 10.5F, 0);
    const std::vector<KstCollisionResult> r = Distances(g1, g2);
    ASSERT_EQ(6U, r.size());
    const std::pair<int, int> order[] = {{b, e}, {a, c}, {a, d}, {b, c}, {b, d}, {a, e}};
    std::multiset<float> values;
    for (std::size_t i = 0; i < 6; ++i) {
        values.insert(r[i].value);
        if (i < 3) {
            EXPECT_EQ(order[i], std::make_pair(r[i].id1, r[i].id2));
        }
    }
    EXPECT_TRUE(std::is_sorted(r.begin(), r.end(),
                               [](const auto& x, const auto& y) { return x.value < y.value; }));
    EXPECT_EQ(0, r[0].value);
    EXPECT_EQ(2, r[1].value);
    EXPECT_EQ(2, r[2].value);
    // Each point lies on the object that its number says.
    EXPECT_FLOAT_EQ(0.5F, r[1].point1[0]);
    EXPECT_FLOAT_EQ(2.5F, r[1].point2[0]);
    EXPECT_FLOAT_EQ(-0.5F, r[2].point1[0]);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(r[0].point1[i], r[0].point2[i]);
    }
}

TEST_F(Queries, MeshesAnswerInEitherPlace) {
    const int solid = Group();
    const int mesh = Group();
    const float square[12] = {-1, 0, -1, -1, 0, 1, 1, 0, 1, 1, 0, -1};
    const int counts[1] = {4};
    int ids[3] = {};
    const int a = Box(solid, 0, 2, 0);
    ASSERT_EQ(KST_OK, KST_CreatePolygon(mesh, 4, square, &ids[0], nullptr));
    ASSERT_EQ(KST_OK, KST_CreateTriangles(mesh, 1, square, &ids[1], nullptr));
    ASSERT_EQ(KST_OK, KST_CreatePolygonGroup(mesh, 1, counts, square, &ids[2], nullptr));
    for (const bool meshFirst : {false, true}) {
        const std::vector<KstCollisionResult> r =
            meshFirst ? Distances(mesh, solid) : Distances(solid, mesh);
        ASSERT_EQ(3U, r.size());
        for (const KstCollisionResult& result : r) {
            EXPECT_FLOAT_EQ(1.5F, result.value);
            EXPECT_FLOAT_EQ(meshFirst ? 0 : 1.5F, result.point1[1]);
            EXPECT_FLOAT_EQ(meshFirst ? 1.5F : 0, result.point2[1]);
            EXPECT_EQ(a, meshFirst ? result.id2 : result.id1);
        }
    }
    ASSERT_EQ(KST_OK, KST_SetObjectPosition(a, 0, 0.25F, 0));
    for (const bool meshFirst : {false, true}) {
        int count = 0;
        ASSERT_EQ(KST_OK, meshFirst ? KST_GetPenetrationDepths(mesh, solid, &count)
                                    : KST_GetPenetrationDepths(solid, mesh, &count));
        ASSERT_EQ(3, count);
        for (const KstCollisionResult& r : Results(count)) {
            EXPECT_NEAR(0.25F, r.value, 1e-4F);
            // Moving the first by point2 - point1 parts the two: a solid goes up, a mesh down.
            EXPECT_NEAR(meshFirst ? -0.25F : 0.25F, r.point2[1] - r.point1[1], 1e-4F);
        }
    }
}

TEST_F(Queries, DepthsComeByDepthAndPartThePairs) {
    const int g1 = Group();
    const int g2 = Group();
    const int a = Box(g1);
    const int b = Box(g2, 0.9F, 0.1F, 0.2F);
    const int c = Box(g2, 0.1F, -0.7F, 0.2F);
    int count = -7;
    ASSERT_EQ(KST_OK, KST_GetPenetrationDepths(g1, g2, &count));
    const std::vector<KstCollisionResult> r = Results(count);
    ASSERT_EQ(2U, r.size());
    EXPECT_EQ(c, r[0].id2);
    EXPECT_EQ(b, r[1].id2);
    EXPECT_NEAR(0.3F, r[0].value, 1e-5F);
    EXPECT_NEAR(0.1F, r[1].value, 1e-5F);
    for (const KstCollisionResult& result : r) {
        std::array<float, 3> away = WorldPosition(a);
        for (std::size_t i = 0; i < 3; ++i) {
            away[i] += 1.001F * (result.point2[i] - result.point1[i]);
        }
        ASSERT_EQ(KST_OK, KST_SetObjectPosition(a, away[0], away[1], away[2]));
        for (const auto& [id1, id2] : Touching(g1, g2)) {
            EXPECT_NE(result.id2, id2);
        }
        ASSERT_EQ(KST_OK, KST_SetObjectPosition(a, 0, 0, 0));
    }
    ASSERT_EQ(KST_OK, KST_SetGroupPosition(g2, 50, 0, 0));
    EXPECT_EQ(KST_ERROR_NO_COLLISION, KST_GetPenetrationDepths(g1, g2, &count));
    EXPECT_EQ(2, count);
}

TEST_F(Queries, WhatHasNoDistanceIsLeftOut) {
    const int g1 = Group();
    const int idle = Group(g1, false);
    const int g2 = Group();
    const float line[6] = {0, 0, 0, 1, 1, 1};
    const int counts[1] = {2};
    int id = -1;
    ASSERT_EQ(KST_OK, KST_CreatePolyline(g1, 1, counts, line, &id, nullptr));
    Box(idle);
    const int lost = Box(g1);
    ASSERT_EQ(KST_OK, KST_SetObjectPosition(lost, std::nanf(""), 0, 0));
    const int far = Box(g1);
    ASSERT_EQ(KST_OK, KST_SetObjectPosition(far, kInfinity, 0, 0));
    const int a = Box(g1, 0, 0, 4);
    const int b = Box(g2);
    const std::vector<KstCollisionResult> r = Distances(g1, g2);
    ASSERT_EQ(1U, r.size());
    EXPECT_EQ(a, r[0].id1);
    EXPECT_EQ(b, r[0].id2);
    EXPECT_EQ(3, r[0].value);
    EXPECT_TRUE(Touching(g1, g2).empty());
    // Turning a polyline's group off and on, moving it, and destroying it touch no collision
    // object.
    ASSERT_EQ(KST_OK, KST_SetGroupCollisionCheckCapability(g1, false));
    ASSERT_EQ(KST_OK, KST_SetGroupCollisionCheckCapability(g1, true));
    ASSERT_EQ(KST_OK, KST_MoveObject(id, g2));
    ASSERT_EQ(KST_OK, KST_SetObjectClearance(id, 1));
    ASSERT_EQ(KST_OK, KST_DestroyObject(id));
    EXPECT_EQ(1U, Distances(g1, g2).size());
}

TEST_F(Queries, ClosestPairsOfAGroupWithItsChildKeepThePairsBefore) {
    const int g1 = Group();
    const int below = Group(g1);
    Box(below, 0);
    Box(below, 5);
    const int a = Box(g1, 9);
    int count = -7;
    // In the order of collecting, the child's objects come first: the first pair is one with
    // itself.
    EXPECT_EQ(KST_ERROR_OVERLAP, KST_GetClosestPairs(g1, below, &count));
    EXPECT_TRUE(Results(0).empty());
    const int empty = Group(below);
    EXPECT_EQ(KST_ERROR_OVERLAP, KST_GetClosestPairs(below, empty, &count));
    EXPECT_EQ(KST_ERROR_OVERLAP, KST_GetClosestPairs(empty, empty, &count));
    const int other = Group();
    ASSERT_EQ(KST_OK, KST_MoveGroup(below, other));
    EXPECT_EQ(2U, Distances(g1, below).size());
    EXPECT_EQ(a, Distances(g1, other)[0].id1);
    EXPECT_EQ(-7, count);
}

TEST_F(Queries, MoreFindingsThanSixteenBitsCount) {
    const int g1 = Group();
    const int g2 = Group();
    for (int i = 0; i < 257; ++i) {
        Box(g1);
        Box(g2);
    }
    int count = -7;
    ASSERT_EQ(KST_OK, KST_CheckGroupCollision(g1, g2, true, &count));
    ASSERT_EQ(257 * 257, count);
    const std::vector<KstCollisionResult> r = Results(count);
    std::set<std::pair<int, int>> pairs;
    for (const KstCollisionResult& result : r) {
        pairs.emplace(result.id1, result.id2);
    }
    EXPECT_EQ(257U * 257U, pairs.size());
}

TEST_F(Queries, ManyGroupsAgainstMany) {
    const int top1 = Group();
    const int top2 = Group();
    for (int i = 0; i < 2000; ++i) {
        const auto x = static_cast<float>(2 * i);
        Box(Group(top1), x);
        Box(Group(top2), x, 0.5F);
    }
    EXPECT_EQ(2000U, Touching(top1, top2).size());
    EXPECT_EQ(2000U, AtPoint(top1, 0, 0, 0).size() * 2000U);
}

/// What a query has learnt of a subtree is out of date with every change of the tree.
TEST_F(Queries, EachChangeOfTheTreeIsSeenByTheNextQuery) {
    const int top = Group();
    const int probe = Group();
    Box(probe);
    const auto touching = [&] {
        int count = -1;
        int back = -1;
        int atPoint = -1;
        EXPECT_EQ(KST_OK, KST_CheckGroupCollision(top, probe, true, &count));
        EXPECT_EQ(KST_OK, KST_CheckGroupCollision(probe, top, true, &back));
        EXPECT_EQ(KST_OK, KST_CheckPointCollision(top, 0, 0, 0, true, &atPoint));
        EXPECT_EQ(count, back);
        EXPECT_EQ(count, atPoint);
        return count;
    };
    EXPECT_EQ(0, touching());
    const int child = Group(top);
    EXPECT_EQ(0, touching());
    const int box = Box(child);
    EXPECT_EQ(1, touching());
    const int grandchild = Group(child, false);
    Box(grandchild);
    EXPECT_EQ(1, touching());
    EXPECT_EQ(KST_OK, KST_SetGroupCollisionCheckCapability(grandchild, true));
    EXPECT_EQ(2, touching());
    EXPECT_EQ(KST_OK, KST_SetGroupCollisionCheckCapability(child, false));
    EXPECT_EQ(1, touching());
    EXPECT_EQ(KST_OK, KST_SetGroupCollisionCheckCapability(child, true));
    EXPECT_EQ(2, touching());
    int copy = -1;
    EXPECT_EQ(KST_OK, KST_CloneGroup(&copy, child, top, true, nullptr));
    EXPECT_EQ(3, touching());
    EXPECT_EQ(KST_OK, KST_MoveGroup(child, 0));
    EXPECT_EQ(1, touching());
    EXPECT_EQ(KST_OK, KST_MoveGroup(child, copy));
    EXPECT_EQ(3, touching());
    EXPECT_EQ(KST_OK, KST_MoveObject(box, probe));
    EXPECT_EQ(KST_OK, KST_MoveObject(box, grandchild));
    EXPECT_EQ(3, touching());
    EXPECT_EQ(KST_OK, KST_DestroyGroup(child));
    EXPECT_EQ(1, touching());
    EXPECT_EQ(KST_OK, KST_EmptyGroup(top));
    EXPECT_EQ(0, touching());
    // Its class may be that of a group that is gone.
    Box(Group(top));
    EXPECT_EQ(1, touching());
}

}  // namespace
