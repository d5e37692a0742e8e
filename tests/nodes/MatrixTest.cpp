#include "nodes/fields/Matrix.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>

#include "nodes/fields/VectorFields.h"

namespace nodes {
namespace {

using Vector = std::array<float, 3>;

// Rounding of a float, a few times over.
constexpr float kTolerance = 1e-6F;

Vector transformed(const SFMatrix& matrix, Vector vector) {
    matrix.transform(vector.data());
    return vector;
}

Vector rotated(const SFRotation& rotation, Vector vector) {
    rotation.rotate(vector.data());
    return vector;
}

void expectNear(const Vector& expected, const Vector& actual, float tolerance = kTolerance) {
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(expected[i], actual[i], tolerance) << i;
    }
}

TEST(Matrix, TakesPointsAsRows) {
    SFMatrix matrix;
    float in[16];
    for (int i = 0; i < 16; ++i) {
        in[i] = static_cast<float>(i);
    }
    matrix.fromFloats(in);
    EXPECT_EQ((Vector{0 + 8 + 24 + 12, 1 + 10 + 27 + 13, 2 + 12 + 30 + 14}),
              transformed(matrix, {1, 2, 3}));
    SFMatrix turn;
    turn.setRotation(0, 0, 1, std::numbers::pi_v<float> / 2);
    expectNear({0, 1, 0}, transformed(turn, {1, 0, 0}));
    expectNear({1, 0, 0}, rotated(SFRotation(0, 3, 0, std::numbers::pi_v<float> / 2), {0, 0, 1}));
}

TEST(Matrix, TheLastFactorActsFirst) {
    SFMatrix matrix;
    SFMatrix scale;
    matrix.setTranslation(10, 20, 30);
    scale.setScale(2, 3, 4);
    matrix.multiply(scale);
    EXPECT_EQ((Vector{12, 23, 34}), transformed(matrix, {1, 1, 1}));
    scale.multiply(scale);
    EXPECT_EQ((Vector{4, 9, 16}), transformed(scale, {1, 1, 1}));
    matrix.setTranslation(1, 2, 3);
    EXPECT_EQ((Vector{2, 3, 4}), transformed(matrix, {1, 1, 1}));
}

TEST(Matrix, TurnsNothingAboutTheZeroAxis) {
    EXPECT_EQ((Vector{1, 2, 3}), rotated(SFRotation(0, 0, 0, 1), {1, 2, 3}));
}

// Angles near nothing and near a half turn are where the axis is easily lost.
TEST(Matrix, GivesItsRotationBack) {
    constexpr float kHalfTurn = std::numbers::pi_v<float>;
    std::mt19937 random(7);
    std::uniform_real_distribution<float> component(-1, 1);
    for (int i = 0; i < 2000; ++i) {
        const Vector axis = {component(random), component(random), component(random)};
        for (const float angle : {1e-6F, 1e-3F, 1.0F, -1.0F, 2.0F, kHalfTurn / 2, kHalfTurn - 1e-3F,
                                  kHalfTurn - 1e-5F, kHalfTurn, kHalfTurn + 1e-5F, 5.0F}) {
            SFMatrix matrix;
            SFRotation back;
            const SFRotation rotation(axis[0], axis[1], axis[2], angle);
            rotation.toMatrix(matrix);
            matrix.toRotation(back);
            EXPECT_GE(back.value()[3], 0);
            EXPECT_LE(back.value()[3], kHalfTurn);
            expectNear(rotated(rotation, {1, 2, 3}), rotated(back, {1, 2, 3}), 3 * kTolerance);
        }
    }
    SFRotation none(1, 0, 0, 5);
    SFMatrix().toRotation(none);
    EXPECT_EQ((SFRotation::Value{0, 0, 1, 0}), none.value());
    const float zero[16] = {};
    SFMatrix nothing;
    nothing.fromFloats(zero);
    nothing.toRotation(none);
    EXPECT_FALSE(std::isnan(none.value()[3]));
}

TEST(Rotations, ComposeWithTheOtherBefore) {
    const SFRotation other(1, -2, 0.5F, 2.5F);
    SFRotation both(0.3F, 1, 1, 0.7F);
    const Vector expected = rotated(both, rotated(other, {1, 2, 3}));
    both.compose(other);
    expectNear(expected, rotated(both, {1, 2, 3}), 3 * kTolerance);
}

TEST(Vectors, HaveLengthsNormalsAndAngles) {
    Vector vector = {0, 3e30F, -4e30F};
    EXPECT_FLOAT_EQ(5e30F, length3(vector.data()));
    normalize3(vector.data());
    expectNear({0, 0.6F, -0.8F}, vector);
    negate3(vector.data());
    expectNear({0, -0.6F, 0.8F}, vector);
    Vector zero = {};
    EXPECT_EQ(0, angleBetween(zero.data(), vector.data()));
    normalize3(zero.data());
    EXPECT_EQ((Vector{0, 0, 1}), zero);
    // A dot product that rounding brings past the lengths.
    const Vector odd = {0.1F, 0.7F, 1.3F};
    const Vector opposite = {-0.1F, -0.7F, -1.3F};
    EXPECT_EQ(0, angleBetween(odd.data(), odd.data()));
    EXPECT_FLOAT_EQ(std::numbers::pi_v<float>, angleBetween(odd.data(), opposite.data()));

    const Vector a = {1, 1, 5};
    const Vector b = {3, 1, 5};
    const Vector c = {3, 9, 5};
    Vector normal = {};
    triangleNormal(a.data(), b.data(), c.data(), normal.data());
    EXPECT_EQ((Vector{0, 0, 1}), normal);
    normal = {0, 7, 0};
    const Vector x = {2, 0, 0};
    crossNormalized(normal.data(), x.data(), normal.data());
    EXPECT_EQ((Vector{0, 0, -1}), normal);
}

}  // namespace
}  // namespace nodes
