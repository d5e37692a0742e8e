/// Input at the edge of sense: answers stay finite, agree with each other, and come at all.

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "Check.h"
#include "Engine.h"
#include "Random.h"

namespace oracle {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

bool IsFinite(const Point& p) {
    return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

/// Finite, and no answer against another.
void ExpectSound(const Spec& a, const Spec& b) {
    const EngineObject objectA(a);
    const EngineObject objectB(b);
    const Answers answers = Ask(objectA, objectB);
    const std::string text = Describe(a) + Describe(b);
    EXPECT_TRUE(std::isfinite(answers.distance) && answers.distance >= 0) << text;
    EXPECT_TRUE(IsFinite(answers.point1) && IsFinite(answers.point2)) << text;
    EXPECT_TRUE(IsFinite(answers.depth1) && IsFinite(answers.depth2)) << text;
    EXPECT_EQ(answers.contact, answers.hasDepth) << text;
    EXPECT_EQ(answers.contact, answers.distance == 0) << text;
    EXPECT_EQ(Ask(objectB, objectA), Swapped(answers)) << text;
}

/// Shapes without volume, area or length, and such as have them only just.
std::vector<Spec> Degenerate() {
    std::vector<Spec> shapes = {
        Box(2, 0, 2),
        Box(2, 0, 0),
        Box(0, 0, 0),
        Sphere(0),
        Cylinder(0, 2),
        Cylinder(1, 0),
        Cylinder(0, 0),
        Cone(1, 0),
        Cone(0, 2),
        Cone(0, 0),
        Segment({1, 1, 1}, {1, 1, 1}),
        Segment({-1, 0, 0}, {1, 0, 0}),
        Polytope({{0.5F, 0, 0}}),
        Polytope({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}}),
        Polytope({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {0.25F, 0, 0}}),
        Polytope({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {0.5F, 0.5F, 0}}),
        Polytope({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0.3F, 0.3F, 1e-7F}}),
        Mesh({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}, {3}),
        Mesh({{0, 0, 0}, {3, 0, 0}, {1, 1e-6F, 0}}, {3}),
        Mesh({{0, 0, 0}, {1, 0, 0}, {1, 0, 0}, {0, 1, 0}, {2, 2, 2}}, {2, 2, 1}),
        Scaled(Box(1, 1, 1), 1, 0, 1),
        Scaled(Sphere(1), 0, 1, 1),
        Scaled(Sphere(1), 0, 0, 1),
        Scaled(Sphere(1), 1, 1e-6F, 1),
        Scaled(Cylinder(1, 1), 1, 0, 1),
        Scaled(Cylinder(1, 1), 1, 1, 0),
        Scaled(Cone(1, 1), 0, 1, 1),
        Scaled(Cone(1, 1), 0, 0, 0),
        Scaled(MeshBox(1, 1, 1), 1, 0, 1),
    };
    for (const Spec& solid : {Box(1, 2, 1), Sphere(1), Cylinder(1, 1), Cone(1, 1), MeshBox(1, 1, 1),
                              Polytope({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}})}) {
        shapes.push_back(solid);
    }
    return shapes;
}

/// Where features coincide exactly and nothing is in general position, and anywhere.
TEST(Degenerate, FlatThinAndPointLikeShapesAnswerAsTheOracleDoes) {
    Random random(30);
    const auto any = [&] { return static_cast<float>(random.Uniform(-2, 2)); };
    Tally tally;
    for (const Spec& a : Degenerate()) {
        for (const Spec& b : Degenerate()) {
            std::vector<Point> places = {
                {0, 0, 0}, {1, 0, 0}, {0, -0.5F, 0}, {0.5F, 1, -1}, {0, 0, 2}};
            for (int i = 0; i < 4; ++i) {
                const float x = any();
                const float y = any();
                places.push_back({x, y, any()});
            }
            for (std::size_t i = 0; i < places.size(); ++i) {
                const Point& p = places[i];
                Check({a, At(b, p[0], p[1], p[2])}, i % 2 == 0, tally);
            }
        }
    }
    EXPECT_FALSE(tally.HasFaults()) << tally.Text();
}

/// Lengths of 1e15 and 1e-15 in one pair, and each of them in both.
TEST(Degenerate, HugeAndTinyScalesAnswerAsTheOracleDoes) {
    Random random(32);
    for (const float scale : {1e-35F, 1e-30F, 1e-15F, 1e-6F, 1e6F, 1e15F, 1e30F}) {
        Tally tally;
        for (int i = 0; i < 1000; ++i) {
            const Kind kind1 = static_cast<Kind>(random.Below(kKindCount));
            const Kind kind2 = static_cast<Kind>(random.Below(kKindCount));
            Pair pair = RandomPair(random, kind1, kind2);
            for (Spec* spec : {&pair.a, &pair.b}) {
                for (std::size_t k = 0; k < 15; ++k) {
                    spec->matrix[k] *= scale;
                }
                spec->margin *= scale;
            }
            Check(pair, i % 4 == 0, tally);
        }
        EXPECT_FALSE(tally.HasFaults()) << scale << '\n' << tally.Text();
    }
}

TEST(Degenerate, ScalesThatHaveNothingInCommonGiveSoundAnswers) {
    Random random(33);
    const float scales[] = {
        std::numeric_limits<float>::denorm_min(), 1e-40F, 1e-30F, 1e-10F, 1, 1e10F, 1e30F};
    for (int i = 0; i < 4000; ++i) {
        const Kind kind1 = static_cast<Kind>(random.Below(kKindCount));
        const Kind kind2 = static_cast<Kind>(random.Below(kKindCount));
        Pair pair = RandomPair(random, kind1, kind2);
        for (Spec* spec : {&pair.a, &pair.b}) {
            for (std::size_t column = 0; column < 4; ++column) {
                const float scale = scales[random.Below(7)];
                for (std::size_t row = 0; row < 3; ++row) {
                    spec->matrix[4 * column + row] *= scale;
                }
            }
        }
        ExpectSound(pair.a, pair.b);
    }
}

TEST(Degenerate, DenormalSizesGiveSoundAnswers) {
    const float tiny = std::numeric_limits<float>::denorm_min();
    const std::vector<Spec> shapes = {
        Box(tiny, tiny, tiny),
        Sphere(tiny),
        Cylinder(tiny, tiny),
        Cone(tiny, tiny),
        Segment({0, 0, 0}, {tiny, 0, 0}),
        Polytope({{0, 0, 0}, {tiny, 0, 0}, {0, tiny, 0}, {0, 0, tiny}}),
        Mesh({{0, 0, 0}, {tiny, 0, 0}, {0, tiny, 0}}, {3})};
    for (const Spec& a : shapes) {
        for (const Spec& b : shapes) {
            ExpectSound(a, b);
            ExpectSound(a, At(b, 2 * tiny, 3 * tiny, 0));
            ExpectSound(a, At(b, 1, 2, 3));
            ExpectSound(WithMargin(a, 1), At(b, 0.5F, 0, 0));
        }
    }
}

/// No contact, an infinite distance, no depth, and the points untouched.
TEST(Degenerate, APlacementThatIsNotFiniteTakesPartInNothing) {
    const Spec other = MeshBox(1, 1, 1);
    for (const Spec& shape : Degenerate()) {
        for (const float value : {kInfinity, -kInfinity, kNan}) {
            for (std::size_t k = 0; k < 15; ++k) {
                if (k % 4 == 3) {
                    continue;
                }
                Spec lost = shape;
                lost.matrix[k] = value;
                Answers nothing;
                nothing.distance = kInfinity;
                EXPECT_EQ(Ask(lost, other), nothing) << Describe(lost);
                EXPECT_EQ(Ask(other, lost), nothing) << Describe(lost);
                EXPECT_EQ(Ask(lost, lost), nothing) << Describe(lost);
            }
        }
    }
}

TEST(Degenerate, AnObjectComesBackWhenItsPlacementIsFiniteAgain) {
    EngineObject a(Box(1, 1, 1));
    const EngineObject b(Sphere(1));
    Matrix lost = kIdentity;
    lost[12] = kNan;
    const Answers first = Ask(a, b);
    EXPECT_TRUE(first.contact);
    a.Place(lost);
    EXPECT_FALSE(Ask(a, b).contact);
    a.Place(kIdentity);
    EXPECT_EQ(Ask(a, b), first);
}

/// Not finite or negative sizes, vertices and margins: bounded, whatever comes out.
TEST(Degenerate, SizesWithoutSenseDoNotHang) {
    const float values[] = {kNan, kInfinity, -kInfinity, -1, 3e38F};
    for (const float v : values) {
        const std::vector<Spec> shapes = {Box(v, 1, 1),
                                          Box(v, v, v),
                                          Sphere(v),
                                          Cylinder(v, 1),
                                          Cylinder(1, v),
                                          Cone(v, v),
                                          Segment({0, 0, 0}, {v, 0, 0}),
                                          Polytope({{v, 0, 0}, {0, v, 0}, {0, 0, 1}, {1, 1, 1}}),
                                          Polytope({{v, v, v}}),
                                          Mesh({{0, 0, 0}, {v, 0, 0}, {0, 1, 0}}, {3}),
                                          WithMargin(Box(1, 1, 1), v)};
        for (const Spec& a : shapes) {
            for (const Spec& b : shapes) {
                const Answers answers = Ask(a, b);
                EXPECT_FALSE(std::isnan(answers.distance)) << Describe(a) << Describe(b);
                EXPECT_EQ(answers.contact, answers.hasDepth) << Describe(a) << Describe(b);
                EXPECT_EQ(answers.contact, answers.distance == 0) << Describe(a) << Describe(b);
            }
        }
    }
    // Sizes below 0 and NaN count as 0.
    EXPECT_EQ(Ask(Box(-1, kNan, 2), Sphere(1)), Ask(Box(0, 0, 2), Sphere(1)));
    EXPECT_EQ(Ask(WithMargin(Sphere(1), -1), At(Sphere(1), 3, 0, 0)),
              Ask(Sphere(1), At(Sphere(1), 3, 0, 0)));
}

}  // namespace
}  // namespace oracle
