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
    Check({a, b}, Ask(a, b), What{}, tally);
    EXPECT_FALSE(tally.HasFaults()) << tally.Text();
    Check({b, a}, Ask(b, a), What{}, tally);
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

// ---- Distances or closest points wrong or off the surface ---------------------------------------

TEST(Symptoms, ClosestPointsLieOnTheSurfaceAlsoFarAwayAndNearby) {
    Random random(20);
    Tally tally;
    for (int i = 0; i < 6000; ++i) {
        const Kind kind1 = static_cast<Kind>(random.Below(kKindCount));
        const Kind kind2 = static_cast<Kind>(random.Below(kKindCount));
        Pair pair = RandomPair(random, kind1, kind2);
        // From a tenth of a size to a thousand sizes further out.
        const double factor = std::exp(random.Uniform(0, 7));
        for (std::size_t k = 12; k < 15; ++k) {
            pair.b.matrix[k] = static_cast<float>(static_cast<double>(pair.a.matrix[k]) +
                                                  factor * (static_cast<double>(pair.b.matrix[k]) -
                                                            static_cast<double>(pair.a.matrix[k])));
        }
        Check(pair, Ask(pair.a, pair.b), {true, false}, tally);
    }
    EXPECT_FALSE(tally.HasFaults()) << tally.Text();
}

TEST(Symptoms, SmallPartsNearLargeOnesAreMeasuredExactly) {
    Random random(21);
    Tally tally;
    for (int i = 0; i < 6000; ++i) {
        Spec large = RandomObject(random, static_cast<Kind>(random.Below(kKindCount)));
        Spec small = RandomObject(random, static_cast<Kind>(random.Below(kKindCount)));
        large.margin = small.margin = 0;
        for (std::size_t k = 0; k < 12; ++k) {
            small.matrix[k] *= 0.001F;
        }
        const Pair pair = BroughtNear(random, large, small);
        Check(pair, Ask(pair.a, pair.b), {true, i % 4 == 0}, tally);
    }
    EXPECT_FALSE(tally.HasFaults()) << tally.Text();
    EXPECT_GT(tally.touching, tally.pairs / 4);
    EXPECT_LT(tally.touching, tally.pairs * 7 / 10);
}

// ---- Cylinders and cones: the answer depends on which end is up ---------------------------------

TEST(Symptoms, CylindersHaveNoUpperEnd) {
    Random random(22);
    for (int i = 0; i < 3000; ++i) {
        Pair pair =
            RandomPair(random, Kind::kCylinder, static_cast<Kind>(random.Below(kKindCount)));
        const Answers upright = Ask(pair.a, pair.b);
        for (std::size_t k = 4; k < 7; ++k) {
            pair.a.matrix[k] = -pair.a.matrix[k];
        }
        const Answers turned = Ask(pair.a, pair.b);
        const double size = Radius(Pieces(pair.a)) + Radius(Pieces(pair.b));
        EXPECT_EQ(upright.contact, turned.contact) << Describe(pair.a) << Describe(pair.b);
        EXPECT_NEAR(static_cast<double>(upright.distance), static_cast<double>(turned.distance),
                    1e-7 * size);
        EXPECT_NEAR(Depth(upright), Depth(turned), 1e-4 * Depth(upright) + 1e-6 * size);
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

/// Two pairs whose moved bodies touch so that the last simplex is a sliver of rounding.
TEST(Symptoms, EndsOfADepthStayOnTheirShapesWhereASliverTellsNothing) {
    Spec box = Box(0x1.a5af0ap-1F, 0x1.f7299ep+0F, 0x1.d6b9bcp+0F);
    box.matrix = {0x1.40dbccp-1F,  0x1.2274fp-1F,   -0x1.118c58p-1F, 0,
                  -0x1.11ae9ap-1F, 0x1.9fa61ap-1F,  0x1.e14d28p-3F,  0,
                  0x1.2254a8p-1F,  0x1.1b43a2p-3F,  0x1.9fbca6p-1F,  0,
                  -0x1.bd9168p+0F, -0x1.0a2042p-1F, 0x1.3d3cf8p-4F,  1};
    Spec cone = Cone(0x1.66dc2p-2F, 0x1.4a070ap+0F);
    cone.matrix = {-0x1.a051cp-2F,  0x1.412486p-1F,  0x1.541e76p-1F,  0,
                   -0x1.a2c1dep-1F, 0x1.2fbfcap-4F,  -0x1.24235ep-1F, 0,
                   -0x1.a0ebe4p-2F, -0x1.8cf35ap-1F, 0x1.ee714ep-2F,  0,
                   -0x1.ba3292p+1F, -0x1.48605p-1F,  -0x1.3f8ea8p-1F, 1};
    ExpectOracleAgrees(box, cone);

    Spec cylinder = Cylinder(0x1.f076bep-1F, 0x1.70e694p-1F);
    cylinder.matrix = {0x1.7df7e6p-2F,  0x1.f2b8f4p-3F, -0x1.3f2e4ap-3F, 0,
                       -0x1.6b1e9p-3F,  0x1.9c9004p-3F, -0x1.b57d6ap-2F, 0,
                       -0x1.006b5ap-2F, 0x1.49779ep-1F, 0x1.9e7398p-2F,  0,
                       -0x1.c3d84cp-2F, 0x1.3d98fap+0F, 0x1.b3dffap+0F,  1};
    Spec polytope = Polytope({{-0x1.ed2p-2F, 0x1.18ab5ep-1F, 0x1.941c9ap-2F},
                              {0x1.c7bf54p-1F, -0x1.ad72d2p-2F, -0x1.b26002p-4F},
                              {0x1.337baap-1F, -0x1.af8f1cp-2F, -0x1.67495ap-2F},
                              {0x1.4aba4ep-4F, 0x1.dd018cp-3F, 0x1.419b2p-1F}});
    polytope.matrix = {0x1.492286p-1F,  -0x1.d0c88p-3F,  0x1.066518p+0F, 0,
                       -0x1.6cd83p-3F,  0x1.5198c2p+0F,  0x1.53966p-1F,  0,
                       -0x1.229946p-1F, -0x1.9eeab6p-2F, 0x1.de5f5p-3F,  0,
                       -0x1.40305ap-2F, 0x1.7d7ac4p+0F,  0x1.075aep+1F,  1};
    ExpectOracleAgrees(cylinder, polytope);
}

/// Same middle, same pose, and one inside the other, for each two kinds.
TEST(Symptoms, ConcentricBodiesHaveADepth) {
    Random random(23);
    Tally tally;
    for (int i = 0; i < 3000; ++i) {
        const Kind kind1 = static_cast<Kind>(random.Below(kKindCount - 1));
        const Kind kind2 = static_cast<Kind>(random.Below(kKindCount - 1));
        Pair pair{RandomShape(random, kind1), RandomShape(random, kind2)};
        const Matrix pose = RandomPlacement(random, Placement::kUniform);
        pair.a.matrix = pair.b.matrix = pose;
        const int way = random.Below(3);
        if (way == 1) {
            pair.b.matrix = RandomPlacement(random, Placement::kAffine);
        } else if (way == 2) {
            pair.b = pair.a;
        }
        if (pair.a.kind == Kind::kSegment && pair.b.kind == Kind::kSegment) {
            continue;
        }
        Check(pair, Ask(pair.a, pair.b), What{}, tally);
    }
    EXPECT_FALSE(tally.HasFaults()) << tally.Text();
}

// ---- Mesh against mesh: no depth; an object wholly inside a mesh counts as free -----------------

TEST(Symptoms, MeshAgainstMeshHasADepth) {
    const Spec mesh = MeshBox(2, 2, 2);
    const Answers answers = Ask(mesh, At(mesh, 1.5F, 0.25F, 0.125F));
    EXPECT_TRUE(answers.contact);
    EXPECT_TRUE(answers.hasDepth);
    EXPECT_GT(Depth(answers), 0.01);
    ExpectOracleAgrees(mesh, At(mesh, 1.5F, 0.25F, 0.125F));
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
