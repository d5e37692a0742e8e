/// What users of collision checkers complain of most, each complaint a test.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "Check.h"
#include "Engine.h"
#include "Random.h"

namespace oracle {
namespace {

/// All six kinds of solid, with their least extent along y on either side, and the mesh of a box.
std::vector<Spec> Solids() {
    const Spec cube = MeshBox(2, 2, 2);
    return {Box(2, 2, 2), Sphere(1), Cylinder(1, 2), Cone(1, 2), Polytope(cube.points), cube};
}

void ExpectOracleAgrees(const Spec& a, const Spec& b) {
    Tally tally;
    Check({a, b}, true, tally);
    EXPECT_FALSE(tally.HasFaults()) << tally.Text();
}

/// Sizes and places are exact in floats, so touching is exact too. From apart over touching to deep
/// in steps near the last digit there is no gap in the answers and no jump, nothing collides before
/// it touches, and a margin adds its own width and no more.
TEST(Symptoms, StackedShapesHaveTheGapThatTheirHeightsLeave) {
    for (const Spec& below : Solids()) {
        for (const Spec& above : Solids()) {
            for (const float scale : {0x1p-7F, 1.0F, 0x1p12F}) {
                for (int i = -8; i <= 8; ++i) {
                    const float gap = 0x1p-22F * static_cast<float>(i * i * i);
                    const float margins = i % 2 == 0 ? 0 : 0.25F;
                    // The tip of a cone or the top of a sphere meets the middle of the other.
                    const Spec a = WithMargin(Scaled(below, scale, scale, scale), margins * scale);
                    const Spec b =
                        At(Scaled(above, scale, scale, scale), 0, (2 + margins + gap) * scale, 0);
                    const Answers answers = Ask(a, b);
                    EXPECT_EQ(answers.contact, gap <= 0) << i << Describe(a) << Describe(b);
                    const double size = static_cast<double>(scale);
                    const double apart = static_cast<double>(gap);
                    EXPECT_NEAR(static_cast<double>(answers.distance) / size, std::max(0.0, apart),
                                1e-9);
                    EXPECT_LE(answers.Depth() / size, std::max(0.0, -apart) + 2e-7);
                    ExpectOracleAgrees(a, b);
                }
            }
        }
    }
}

TEST(Symptoms, BoxesThatShareAFaceAnEdgeOrACornerTouch) {
    for (float x = -1; x <= 1; ++x) {
        for (float y = -1; y <= 1; ++y) {
            for (float z = -1; z <= 1; ++z) {
                const Answers answers = Ask(Box(1, 1, 1), At(Box(1, 1, 1), x, y, z));
                EXPECT_TRUE(answers.contact) << x << y << z;
                EXPECT_EQ(answers.distance, 0);
                EXPECT_TRUE(answers.hasDepth);
                const bool same = x == 0 && y == 0 && z == 0;
                EXPECT_NEAR(answers.Depth(), same ? 1 : 0, 1e-7);
            }
        }
    }
}

/// Touching spheres along the edges of right-angled boxes with whole diagonals.
TEST(Symptoms, SpheresThatJustTouchInSpaceAreInContact) {
    const float places[][4] = {
        {2, 3, 6, 7}, {1, 4, 8, 9}, {4, 4, 7, 9}, {2, 6, 9, 11}, {0, 3, 4, 5}};
    for (const auto& p : places) {
        for (const float radius : {0.5F, 1.0F, 2.5F}) {
            const Spec a = Sphere(radius);
            const Spec b = At(Sphere(p[3] - radius), p[0], p[1], p[2]);
            const Answers answers = Ask(a, b);
            EXPECT_TRUE(answers.contact);
            EXPECT_EQ(answers.distance, 0);
            EXPECT_TRUE(answers.hasDepth);
            EXPECT_LT(answers.Depth(), 1e-6);
            EXPECT_FALSE(Ask(a, At(b, p[0], p[1], std::nextafter(p[2], 100.0F))).contact);
        }
    }
}

TEST(Symptoms, TheTipOfAConeIsAtPlusYAndItsMiddleAtTheOrigin) {
    const Spec cone = Cone(1, 4);
    const Spec point = Sphere(0);
    const auto distance = [&](float x, float y, float z) {
        return static_cast<double>(Ask(cone, At(point, x, y, z)).distance);
    };
    EXPECT_NEAR(distance(0, 3, 0), 1, 1e-6);
    EXPECT_NEAR(distance(0, -3, 0), 1, 1e-6);
    EXPECT_NEAR(distance(2, -2, 0), 1, 1e-6);
    EXPECT_NEAR(distance(0, -2, -2), 1, 1e-6);
    EXPECT_NEAR(distance(1, 2, 0), 4 / std::sqrt(17.0), 1e-6);
    EXPECT_EQ(distance(0, 2, 0), 0);
    EXPECT_EQ(distance(0.5F, 0, 0), 0);
    EXPECT_GT(distance(0.51F, 0, 0), 0);
    EXPECT_EQ(distance(0, 0, 0), 0);
}

/// Whatever the engine remembers of a pair must not show, nor which of several shortest ways out it
/// once took.
TEST(Symptoms, AskingAgainAfterOtherPosesGivesTheSameAnswer) {
    Random random(12);
    for (int i = 0; i < 5000; ++i) {
        const Kind kind1 = static_cast<Kind>(random.Below(kKindCount));
        const Kind kind2 = static_cast<Kind>(random.Below(kKindCount));
        const Pair pair = PairOfAnySort(random, kind1, kind2, false);
        EngineObject a(pair.a);
        const EngineObject b(pair.b);
        const Answers first = Ask(a, b);
        a.Place(RandomPlacement(random, Placement::kRigid));
        Ask(a, b);
        a.Place(pair.a.matrix);
        ASSERT_EQ(Ask(a, b), first) << Describe(pair.a) << Describe(pair.b);
        ASSERT_EQ(Ask(pair.a, pair.b), first) << Describe(pair.a) << Describe(pair.b);
    }
}

/// Scales that floats do not hold exactly leave the middles next to one axis, not on it.
TEST(Symptoms, RoundBodiesOnOneAxisHaveTheirDepthAcrossOrAlongIt) {
    for (const float scale : {1.45F, 0.37F, 3.1F}) {
        for (int i = 0; i < 40; ++i) {
            const float y = 0.1F * static_cast<float>(i - 20);
            for (const Spec& other : {Cylinder(2, 3), Cone(2, 3)}) {
                for (const Spec& scaled : {Cylinder(0.5F, 4), Cone(0.5F, 4)}) {
                    ExpectOracleAgrees(Scaled(scaled, scale, scale, scale), At(other, 0, y, 0));
                }
            }
        }
    }
}

/// The direction from the border to the middle is rounding there.
TEST(Symptoms, ASphereWithItsMiddleOnABorderPartsAcrossIt) {
    for (int i = 1; i <= 20; ++i) {
        const float radius = 0.1F * static_cast<float>(i);
        ExpectOracleAgrees(Cone(radius, 1.4F), At(Sphere(0.5F), 0, 0, -0.5F * radius));
        ExpectOracleAgrees(Cylinder(radius, 1.4F), At(Sphere(0.5F), radius, 0.1F, 0));
        ExpectOracleAgrees(Cylinder(radius, 1.4F), At(Sphere(0.5F), 0, 0.7F, 0.3F * radius));
        ExpectOracleAgrees(Segment({0, 0, 0}, {radius, 1.4F, 0.3F}),
                           At(Sphere(0.5F), 0.1F * radius, 0.14F, 0.03F));
    }
}

float Coordinate(Random& random) {
    return static_cast<float>(random.Uniform(-1, 1));
}

/// Its middle, in floats, need not lie within it.
TEST(Symptoms, AFlatTetrahedronFarFromItsFrameTouchesWhereItIs) {
    Random random(7);
    const auto corner = [&random](float thickness) {
        return Point{1000 + Coordinate(random), 1000 + Coordinate(random),
                     1000 + thickness * Coordinate(random)};
    };
    for (int i = 0; i < 200; ++i) {
        const float thickness = i % 2 == 0 ? 0 : 1e-3F;
        const Spec flat = WithMargin(
            Polytope({corner(thickness), corner(thickness), corner(thickness), corner(thickness)}),
            0.01F);
        ExpectOracleAgrees(flat,
                           At(Box(1, 1, 1), 1000, 1000, 1000.51F + 1e-5F * Coordinate(random)));
    }
}

TEST(Symptoms, ABodyLostInAnotherHasADepthToo) {
    for (float size = 1; size > 1e-30F; size *= 0.1F) {
        const Spec tiny =
            Scaled(Polytope({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}), size, size, size);
        for (const Spec& large :
             {Box(4, 4, 4), Polytope({{-3, -3, -3}, {9, 0, 0}, {0, 9, 0}, {0, 0, 9}})}) {
            const Answers answers = Ask(At(tiny, 0.3F, 0.2F, 0.1F), large);
            EXPECT_TRUE(answers.contact && answers.distance == 0 && answers.hasDepth) << size;
            EXPECT_GT(answers.Depth(), 0.5) << size;
        }
    }
}

/// A mesh is a surface: its inside is free, and as far away as its nearest polygon.
TEST(Symptoms, AnObjectWhollyInsideAMeshIsFree) {
    const Spec room = MeshBox(10, 10, 10);
    for (const Spec& solid : Solids()) {
        const Answers inside = Ask(room, At(solid, 1, 0, 0));
        EXPECT_FALSE(inside.contact) << Describe(solid);
        EXPECT_NEAR(static_cast<double>(inside.distance), 3, 1e-5) << Describe(solid);
        EXPECT_FALSE(inside.hasDepth);
        const Answers across = Ask(room, At(solid, 4.5F, 0, 0));
        EXPECT_TRUE(across.contact) << Describe(solid);
        EXPECT_GT(across.Depth(), 0) << Describe(solid);
        ExpectOracleAgrees(room, At(solid, 4.5F, 0, 0));
    }
}

TEST(Symptoms, DegenerateTrianglesActAsWhatTheyAre) {
    // A needle, a double point, a point, three in a line, a second time the same.
    const Spec mesh = Mesh({{0, 0, 0},
                            {4, 0, 0},
                            {2, 1e-7F, 0},
                            {0, 1, 0},
                            {0, 1, 0},
                            {3, 1, 0},
                            {1, 2, 0},
                            {1, 2, 0},
                            {1, 2, 0},
                            {0, 3, 0},
                            {1, 3, 0},
                            {3, 3, 0},
                            {0, 3, 0},
                            {1, 3, 0},
                            {3, 3, 0}},
                           {3, 3, 3, 3, 3});
    for (const Spec& solid : Solids()) {
        for (const float y : {0.0F, 1.0F, 2.0F, 3.0F}) {
            const Answers touching = Ask(mesh, At(solid, 1, y, 0));
            EXPECT_TRUE(touching.contact) << Describe(solid) << y;
            EXPECT_TRUE(std::isfinite(touching.Depth()));
            ExpectOracleAgrees(mesh, At(solid, 1, y, 2));
            ExpectOracleAgrees(mesh, At(solid, -3, y, 2));
        }
    }
}

}  // namespace
}  // namespace oracle
