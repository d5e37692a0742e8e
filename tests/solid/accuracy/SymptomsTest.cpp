/// What users of collision checkers complain of most, each complaint a test.

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "Check.h"
#include "Convex.h"
#include "Distance.h"
#include "Engine.h"
#include "Random.h"

namespace oracle {
namespace {

double Depth(const Answers& answers) {
    double square = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const double d =
            static_cast<double>(answers.depth2[i]) - static_cast<double>(answers.depth1[i]);
        square += d * d;
    }
    return std::sqrt(square);
}

/// All six kinds of solid, with their least extent along y on either side, and the mesh of a box.
std::vector<Spec> Solids() {
    return {Box(2, 2, 2),
            Sphere(1),
            Cylinder(1, 2),
            Cone(1, 2),
            Polytope({{-1, -1, -1},
                      {1, -1, -1},
                      {-1, 1, -1},
                      {1, 1, -1},
                      {-1, -1, 1},
                      {1, -1, 1},
                      {-1, 1, 1},
                      {1, 1, 1}}),
            MeshBox(2, 2, 2)};
}

void ExpectOracleAgrees(const Spec& a, const Spec& b) {
    Tally tally;
    Check({a, b}, true, tally);
    EXPECT_FALSE(tally.HasFaults()) << tally.Text();
    Check({b, a}, true, tally);
    EXPECT_FALSE(tally.HasFaults()) << tally.Text();
}

// ---- Penetration fails, asserts or gives infinity when shapes just touch ------------------------

/// Sizes and places are exact in floats, so touching is exact too: contact, distance 0, depth 0.
TEST(Symptoms, ShapesThatJustTouchAreInContactWithDepthZero) {
    for (const Spec& below : Solids()) {
        for (const Spec& above : Solids()) {
            // The tip of a cone or the top of a sphere meets the middle of the other's bottom.
            for (const float scale : {0.0078125F, 1.0F, 4096.0F}) {
                const Spec a = Scaled(below, scale, scale, scale);
                const Spec b = At(Scaled(above, scale, scale, scale), 0, 2 * scale, 0);
                const Answers answers = Ask(a, b);
                const std::string text = Describe(a) + Describe(b);
                EXPECT_TRUE(answers.contact) << text;
                EXPECT_EQ(answers.distance, 0) << text;
                EXPECT_TRUE(answers.hasDepth) << text;
                EXPECT_LE(Depth(answers), 1e-6 * static_cast<double>(scale)) << text;
                ExpectOracleAgrees(a, b);
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
                EXPECT_NEAR(Depth(answers), same ? 1 : 0, 1e-7);
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
            EXPECT_LT(Depth(answers), 1e-6);
            EXPECT_FALSE(Ask(a, At(b, p[0], p[1], std::nextafter(p[2], 100.0F))).contact);
        }
    }
}

/// From apart over touching to deep in steps near the last digit: no gap in the answers, no jump.
TEST(Symptoms, DepthGrowsFromZeroWithoutAJump) {
    for (const Spec& fixed : Solids()) {
        for (const Spec& moving : Solids()) {
            for (int step = -20; step <= 20; ++step) {
                const float shift = static_cast<float>(step) * 0x1p-22F;
                const Answers answers = Ask(fixed, At(moving, 0, 2 - shift, 0));
                const std::string text = Describe(fixed) + Describe(moving) + std::to_string(step);
                EXPECT_EQ(answers.contact, step >= 0) << text;
                EXPECT_EQ(answers.hasDepth, step >= 0) << text;
                EXPECT_NEAR(static_cast<double>(answers.distance),
                            step < 0 ? static_cast<double>(-shift) : 0.0, 1e-9)
                    << text;
                EXPECT_LE(Depth(answers), std::max(0.0, static_cast<double>(shift)) + 2e-7) << text;
            }
        }
    }
}

// ---- Cylinders and cones: the answer depends on which end is up ---------------------------------

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

// ---- Hidden margins make things collide early ---------------------------------------------------

TEST(Symptoms, NothingCollidesBeforeItTouches) {
    for (const Spec& a : Solids()) {
        for (const Spec& b : Solids()) {
            const Answers apart = Ask(a, At(b, 0, 2.00001F, 0));
            EXPECT_FALSE(apart.contact) << Describe(a) << Describe(b);
            EXPECT_FALSE(apart.hasDepth);
            EXPECT_NEAR(static_cast<double>(apart.distance), 1e-5, 2e-7)
                << Describe(a) << Describe(b);
        }
    }
}

TEST(Symptoms, AMarginAddsItsOwnWidthAndNoMore) {
    for (const Spec& a : Solids()) {
        for (const Spec& b : Solids()) {
            const Spec grown = WithMargin(a, 0.25F);
            EXPECT_NEAR(static_cast<double>(Ask(grown, At(b, 0, 3, 0)).distance), 0.75, 1e-6);
            const Answers touching = Ask(grown, At(b, 0, 2.25F, 0));
            EXPECT_TRUE(touching.contact) << Describe(a) << Describe(b);
            EXPECT_LT(Depth(touching), 1e-6);
            const Answers deep = Ask(grown, WithMargin(At(b, 0, 2.25F, 0), 0.25F));
            EXPECT_NEAR(Depth(deep), 0.25, 1e-5) << Describe(a) << Describe(b);
            ExpectOracleAgrees(grown, At(b, 0, 2.125F, 0));
        }
    }
}

// ---- Direction and order of a result change between calls ---------------------------------------

/// Whatever the engine remembers of a pair must not show.
TEST(Symptoms, AskingAgainAfterOtherPosesGivesTheSameAnswer) {
    Random random(12);
    for (int i = 0; i < 5000; ++i) {
        const Kind kind1 = static_cast<Kind>(random.Below(kKindCount));
        const Kind kind2 = static_cast<Kind>(random.Below(kKindCount));
        const Pair pair = RandomPair(random, kind1, kind2);
        EngineObject a(pair.a);
        const EngineObject b(pair.b);
        const Answers first = Ask(a, b);
        ASSERT_EQ(Ask(a, b), first) << Describe(pair.a) << Describe(pair.b);
        a.Place(RandomPlacement(random, Placement::kRigid));
        Ask(a, b);
        a.Place(pair.a.matrix);
        ASSERT_EQ(Ask(a, b), first) << Describe(pair.a) << Describe(pair.b);
    }
}

/// In these poses more than one direction is shortest: any will do, but always the same.
TEST(Symptoms, TheDirectionOfADepthIsTheSameAtEveryCall) {
    for (const Spec& a : Solids()) {
        for (const Spec& b : Solids()) {
            for (const float height : {0.0F, 0.5F, 1.0F, 2.0F}) {
                const Spec placed = At(b, 0, height, 0);
                const EngineObject object1(a);
                const EngineObject object2(placed);
                const Answers first = Ask(object1, object2);
                const std::string text = Describe(a) + Describe(placed);
                ASSERT_TRUE(first.contact) << text;
                EXPECT_EQ(Ask(object1, object2), first) << text;
                EXPECT_EQ(Ask(object2, object1), Swapped(first)) << text;
                EXPECT_EQ(Ask(a, placed), first) << text;
                ExpectOracleAgrees(a, placed);
            }
        }
    }
}

// ---- An object wholly inside a mesh counts as free ----------------------------------------------

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
        EXPECT_GT(Depth(across), 0) << Describe(solid);
        ExpectOracleAgrees(room, At(solid, 4.5F, 0, 0));
    }
}

// ---- Degenerate triangles abort the host --------------------------------------------------------

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
            EXPECT_TRUE(std::isfinite(Depth(touching)));
            ExpectOracleAgrees(mesh, At(solid, 1, y, 2));
            ExpectOracleAgrees(mesh, At(solid, -3, y, 2));
        }
    }
}

}  // namespace
}  // namespace oracle
