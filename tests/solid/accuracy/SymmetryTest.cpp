/// What must not change the answers: the order of the two, asking again, a motion of both, a
/// mirror.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "Convex.h"
#include "Distance.h"
#include "Engine.h"
#include "Random.h"

namespace oracle {
namespace {

Kind RandomKind(Random& random) {
    return static_cast<Kind>(random.Below(kKindCount));
}

double Widened(float value) {
    return static_cast<double>(value);
}

double DepthOf(const Answers& answers) {
    double square = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const double d = Widened(answers.depth2[i]) - Widened(answers.depth1[i]);
        square += d * d;
    }
    return std::sqrt(square);
}

double SizeOf(const Pair& pair) {
    return Radius(Pieces(pair.a)) + Radius(Pieces(pair.b));
}

/// Answers that may differ by rounding only; pairs too near to just touching may change sides.
void ExpectAlike(const Answers& one, const Answers& other, const Pair& pair) {
    const double size = SizeOf(pair);
    const double allowed = 2e-6 * size + 1e-6 * Widened(one.distance);
    const std::string text = Describe(pair.a) + Describe(pair.b);
    EXPECT_NEAR(Widened(one.distance), Widened(other.distance), allowed) << text;
    if (one.contact != other.contact) {
        EXPECT_LT(Widened(std::max(one.distance, other.distance)), allowed) << text;
        EXPECT_LT(std::max(DepthOf(one), DepthOf(other)), allowed) << text;
    } else {
        EXPECT_NEAR(DepthOf(one), DepthOf(other), allowed + 3e-5 * DepthOf(one)) << text;
    }
}

TEST(Symmetry, SwappingTheTwoSwapsTheAnswerExactly) {
    Random random(10);
    for (int i = 0; i < 40000; ++i) {
        const Kind kind1 = RandomKind(random);
        const Kind kind2 = RandomKind(random);
        const Pair pair = RandomPair(random, kind1, kind2);
        const EngineObject a(pair.a);
        const EngineObject b(pair.b);
        ASSERT_EQ(Ask(b, a), Swapped(Ask(a, b))) << Describe(pair.a) << Describe(pair.b);
    }
}

TEST(Symmetry, TheOrderOfCreationChangesAnswersOnlyByRounding) {
    Random random(11);
    for (int i = 0; i < 20000; ++i) {
        const Kind kind1 = RandomKind(random);
        const Kind kind2 = RandomKind(random);
        const Pair pair = RandomPair(random, kind1, kind2);
        ExpectAlike(Ask(pair.a, pair.b), Ask(pair.b, pair.a), pair);
    }
}

/// Whatever the engine remembers of a pair must not show.
TEST(Symmetry, AskingAgainAfterOtherPosesGivesTheSameAnswer) {
    Random random(12);
    for (int i = 0; i < 5000; ++i) {
        const Kind kind1 = RandomKind(random);
        const Kind kind2 = RandomKind(random);
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

/// Quarter turns and mirrors change no digit of a matrix, so only the engine's own sense of up and
/// down, left and right can show.
TEST(Symmetry, QuarterTurnsAndMirrorsOfBothChangeNothing) {
    Random random(13);
    for (int i = 0; i < 20000; ++i) {
        const Kind kind1 = RandomKind(random);
        const Kind kind2 = RandomKind(random);
        const Pair pair = RandomPair(random, kind1, kind2);
        std::size_t order[3] = {0, 1, 2};
        std::swap(order[random.Below(3)], order[random.Below(3)]);
        const float sign[3] = {random.Chance(0.5) ? -1.0F : 1.0F, random.Chance(0.5) ? -1.0F : 1.0F,
                               random.Chance(0.5) ? -1.0F : 1.0F};
        Pair turned = pair;
        for (Spec* spec : {&turned.a, &turned.b}) {
            const Matrix m = spec->matrix;
            for (std::size_t column = 0; column < 4; ++column) {
                for (std::size_t row = 0; row < 3; ++row) {
                    spec->matrix[4 * column + row] = sign[row] * m[4 * column + order[row]];
                }
            }
        }
        ExpectAlike(Ask(pair.a, pair.b), Ask(turned.a, turned.b), pair);
    }
}

TEST(Symmetry, ARigidMotionOfBothChangesAnswersOnlyByRounding) {
    Random random(14);
    for (int i = 0; i < 20000; ++i) {
        const Kind kind1 = RandomKind(random);
        const Kind kind2 = RandomKind(random);
        const Pair pair = RandomPair(random, kind1, kind2);
        const Matrix motion = RandomPlacement(random, Placement::kRigid);
        const double shift[3] = {random.Uniform(-5, 5), random.Uniform(-5, 5),
                                 random.Uniform(-5, 5)};
        Pair moved = pair;
        for (Spec* spec : {&moved.a, &moved.b}) {
            const Matrix m = spec->matrix;
            for (std::size_t column = 0; column < 4; ++column) {
                for (std::size_t row = 0; row < 3; ++row) {
                    double sum = column == 3 ? shift[row] : 0.0;
                    for (std::size_t k = 0; k < 3; ++k) {
                        sum += Widened(motion[4 * k + row]) * Widened(m[4 * column + k]);
                    }
                    spec->matrix[4 * column + row] = static_cast<float>(sum);
                }
            }
        }
        ExpectAlike(Ask(pair.a, pair.b), Ask(moved.a, moved.b), pair);
    }
}

}  // namespace
}  // namespace oracle
