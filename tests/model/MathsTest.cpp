#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>

#include "platform/maverik/Maverik.h"

namespace {

constexpr double kPi = 3.14159265358979323846;

using Vec = std::array<double, 3>;

Vec Apply(const MAV_matrix& m, const Vec& v) {
    Vec out;
    for (std::size_t i = 0; i < 3; ++i)
        out[i] = m[4 * i] * v[0] + m[4 * i + 1] * v[1] + m[4 * i + 2] * v[2] + m[4 * i + 3];
    return out;
}

/// Rodrigues' formula.
Vec TurnAbout(const Vec& axis, double angle, const Vec& v) {
    const double c = std::cos(angle), s = std::sin(angle);
    const double along = axis[0] * v[0] + axis[1] * v[1] + axis[2] * v[2];
    const Vec cross{axis[1] * v[2] - axis[2] * v[1], axis[2] * v[0] - axis[0] * v[2],
                    axis[0] * v[1] - axis[1] * v[0]};
    Vec out;
    for (std::size_t i = 0; i < 3; ++i)
        out[i] = v[i] * c + cross[i] * s + axis[i] * along * (1 - c);
    return out;
}

void ExpectNear(const Vec& a, const Vec& b, double tolerance) {
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(a[i], b[i], tolerance);
}

void ExpectSameRotation(const MAV_matrix& a, const MAV_matrix& b, float tolerance) {
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_NEAR(a[i], b[i], tolerance) << "element " << i;
}

MAV_quaternion AboutAxis(const Vec& axis, double angle) {
    const double s = std::sin(angle / 2);
    return {static_cast<float>(std::cos(angle / 2)), static_cast<float>(s * axis[0]),
            static_cast<float>(s * axis[1]), static_cast<float>(s * axis[2])};
}

class Random {
  public:
    double In(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(m_engine);
    }
    Vec Axis() {
        for (;;) {
            const Vec v{In(-1, 1), In(-1, 1), In(-1, 1)};
            const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
            if (length > 0.1 && length <= 1)
                return {v[0] / length, v[1] / length, v[2] / length};
        }
    }

  private:
    std::mt19937 m_engine{7};
};

TEST(Maths, OrientationTurnsAboutZThenXThenY) {
    Random random;
    MAV_matrix m = MAV_ID_MATRIX;
    m[3] = 5;
    for (int i = 0; i < 500; ++i) {
        const double roll = random.In(-720, 720), pitch = random.In(-720, 720),
                     yaw = random.In(-720, 720);
        const Vec v{random.In(-1, 1), random.In(-1, 1), random.In(-1, 1)};
        Vec expected = TurnAbout({0, 0, 1}, roll * kPi / 180, v);
        expected = TurnAbout({1, 0, 0}, pitch * kPi / 180, expected);
        expected = TurnAbout({0, 1, 0}, yaw * kPi / 180, expected);
        expected[0] += 5;
        m = mav_matrixRPYSet(m, static_cast<float>(roll), static_cast<float>(pitch),
                             static_cast<float>(yaw));
        ExpectNear(Apply(m, v), expected, 2e-5);
    }
}

TEST(Maths, QuarterTurnsAreExact) {
    const MAV_matrix pitch = mav_matrixRPYSet(MAV_ID_MATRIX, 0, -90, 0);
    EXPECT_EQ(Apply(pitch, {0, 0, 1}), (Vec{0, 1, 0}));
    EXPECT_EQ(Apply(pitch, {0, 1, 0}), (Vec{0, 0, -1}));
    const MAV_matrix yaw = mav_matrixRPYSet(MAV_ID_MATRIX, 0, 0, 90);
    EXPECT_EQ(Apply(yaw, {1, 0, 0}), (Vec{0, 0, -1}));
    const MAV_matrix full = mav_matrixRPYSet(MAV_ID_MATRIX, 360, -360, 720);
    EXPECT_EQ(full, MAV_ID_MATRIX);
}

TEST(Maths, QuaternionsAndMatricesConvertBothWaysForAllRotations) {
    Random random;
    // Half turns about all axes and diagonals, where three of the four branches are at home.
    std::vector<std::pair<Vec, double>> cases;
    const double d2 = std::sqrt(0.5), d3 = std::sqrt(1.0 / 3);
    for (const Vec& axis : {Vec{1, 0, 0}, Vec{0, 1, 0}, Vec{0, 0, 1}, Vec{d2, d2, 0},
                            Vec{0, -d2, d2}, Vec{d3, d3, d3}, Vec{-d3, d3, -d3}}) {
        for (const double off : {0.0, 1e-3, -1e-3, 1e-6, -1e-6})
            cases.emplace_back(axis, kPi + off);
        cases.emplace_back(axis, 0.0);
        cases.emplace_back(axis, 1e-4);
    }
    for (int i = 0; i < 500; ++i)
        cases.emplace_back(random.Axis(), random.In(-kPi, kPi));

    for (const auto& [axis, angle] : cases) {
        const MAV_matrix m = mav_matrixQuaternionConvert(AboutAxis(axis, angle));
        const Vec v{0.3, -0.7, 0.9};
        ExpectNear(Apply(m, v), TurnAbout(axis, angle, v), 1e-6);
        const MAV_quaternion q = mav_quaternionMatrixConvert(m);
        EXPECT_NEAR(std::hypot(std::hypot(q.w, q.x), std::hypot(q.y, q.z)), 1, 1e-6);
        EXPECT_GE(q.w, 0);
        ExpectSameRotation(mav_matrixQuaternionConvert(q), m, 1e-6f);
    }
}

TEST(Maths, QuaternionsOfAnyLengthTurn) {
    const MAV_matrix unit = mav_matrixQuaternionConvert({0.5f, 0.5f, 0.5f, 0.5f});
    ExpectSameRotation(mav_matrixQuaternionConvert({3e30f, 3e30f, 3e30f, 3e30f}), unit, 1e-6f);
    ExpectSameRotation(mav_matrixQuaternionConvert({1e-30f, 1e-30f, 1e-30f, 1e-30f}), unit, 1e-6f);
    EXPECT_EQ(mav_matrixQuaternionConvert({0, 0, 0, 0}), MAV_ID_MATRIX);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(std::isnan(mav_matrixQuaternionConvert({nan, 0, 0, 1})[0]));
}

TEST(Maths, InterpolationGoesTheShorterWayAtConstantSpeed) {
    Random random;
    for (int i = 0; i < 300; ++i) {
        const Vec axis = random.Axis();
        const double from = random.In(-3, 3), turn = random.In(-3.1, 3.1), s = random.In(0, 1);
        const MAV_quaternion a = AboutAxis(axis, from);
        MAV_quaternion b = AboutAxis(axis, from + turn);
        if (i % 2)
            b = {-b.w, -b.x, -b.y, -b.z};
        const MAV_quaternion q = mav_quaternionInterpolate(a, b, static_cast<float>(s));
        const Vec v{0.2, 0.4, -0.8};
        ExpectNear(Apply(mav_matrixQuaternionConvert(q), v), TurnAbout(axis, from + s * turn, v),
                   5e-6);
        EXPECT_EQ(mav_quaternionInterpolate(a, b, 0), a);
        EXPECT_EQ(mav_quaternionInterpolate(a, b, 1), b);
    }
}

MAV_viewParams Camera(const MAV_vector& eye, const MAV_vector& view, const MAV_vector& up) {
    return {eye, view, up, up, mav_vectorCrossProduct(view, up), nullptr};
}

void ExpectFrame(const MAV_viewParams& p) {
    EXPECT_NEAR(mav_vectorDotProduct(p.view, p.view), 1, 1e-6);
    EXPECT_NEAR(mav_vectorDotProduct(p.up, p.up), 1, 1e-6);
    EXPECT_NEAR(mav_vectorDotProduct(p.fixed_up, p.fixed_up), 1, 1e-6);
    EXPECT_NEAR(mav_vectorDotProduct(p.view, p.up), 0, 1e-6);
    const MAV_vector right = mav_vectorCrossProduct(p.view, p.up);
    EXPECT_NEAR(mav_vectorDotProduct(p.right, right), 1, 1e-6);
}

TEST(Maths, CamerasInterpolateFromEndToEnd) {
    const MAV_viewParams a = Camera({0, 0, 0}, {0, 0, -1}, {0, 1, 0});
    const MAV_viewParams b = Camera({4, 0, 8}, {1, 0, 0}, {0, 1, 0});
    EXPECT_EQ(mav_viewParamsInterpolate(a, b, 0).view, a.view);
    EXPECT_EQ(mav_viewParamsInterpolate(a, b, 1).view, b.view);
    const MAV_viewParams mid = mav_viewParamsInterpolate(a, b, 0.5f);
    EXPECT_EQ(mid.eye, (MAV_vector{2, 0, 4}));
    EXPECT_NEAR(mid.view.x, std::sqrt(0.5), 1e-6);
    EXPECT_NEAR(mid.view.z, -std::sqrt(0.5), 1e-6);
    ExpectFrame(mid);

    // Opposite directions, and a camera that looks along its own up.
    ExpectFrame(mav_viewParamsInterpolate(a, Camera({0, 0, 0}, {0, 0, 1}, {0, -1, 0}), 0.5f));
    ExpectFrame(mav_viewParamsInterpolate(a, Camera({0, 0, 0}, {0, 1, 0}, {0, 1, 0}), 0.3f));
    const MAV_viewParams nearA = mav_viewParamsInterpolate(a, b, 1e-5f);
    EXPECT_NEAR(nearA.view.z, a.view.z, 1e-4);
    EXPECT_NEAR(nearA.right.x, a.right.x, 1e-4);
}

}  // namespace
