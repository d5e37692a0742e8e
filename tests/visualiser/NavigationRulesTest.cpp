#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "visualiser/CentreOfNavigation.h"
#include "visualiser/Overlays.h"
#include "visualiser/Trackball.h"

namespace {

using Three = std::array<float, 3>;

MAV_viewParams Looking(const MAV_vector& eye, const MAV_vector& view) {
    MAV_viewParams camera = {};
    camera.eye = eye;
    camera.view = view;
    camera.up = {0, 1, 0};
    camera.fixed_up = {0, 1, 0};
    return camera;
}

float Row(const MAV_matrix& m, std::size_t row) {
    return std::hypot(m[4 * row], m[4 * row + 1], m[4 * row + 2]);
}

TEST(Trackball, WhatIsUnderTheMouseGoesWithIt) {
    CTrackball ball;
    ball.Begin(MAV_ID_MATRIX);
    ball.Turn({0.1F, 0.1F}, {0.1F, 0.1F});
    EXPECT_EQ(MAV_ID_MATRIX, ball.View());
    // Front of the ball, to the right and then up; in eye coordinates the front is +z.
    const auto front = [&ball] {
        const MAV_matrix m = ball.View();
        return MAV_vector{m[2], m[6], m[10]};
    };
    ball.Turn({0, 0}, {0.2F, 0});
    EXPECT_NEAR(0.25F, front().x, 0.01F);
    EXPECT_NEAR(0, front().y, 1e-6F);
    ball.Turn({0, 0}, {0, 0.2F});
    EXPECT_NEAR(0.25F, front().y, 0.02F);
    EXPECT_NEAR(0.25F, front().x, 0.02F);
}

TEST(Trackball, ChordsGiveTheirAngle) {
    // Both on the sphere: the angle at the middle of a ball of 0.8 between x = 0 and x = 0.4 has a
    // sine of one half, and so is 30 degrees.
    const CTrackball::Quaternion q = CTrackball::Between({0, 0}, {0.4F, 0});
    EXPECT_NEAR(std::cos(3.14159265F / 12), q[3], 1e-6F);
    EXPECT_NEAR(-std::sin(3.14159265F / 12), q[1], 1e-6F);
    // Beside the ball, on the sheet: z = 0.32 / d.
    const CTrackball::Quaternion far = CTrackball::Between({1, 0}, {0, 1});
    const float t = std::sqrt(2.0F) / 1.6F;
    EXPECT_NEAR(std::sqrt(1 - t * t), far[3], 1e-6F);
    // A chord longer than the ball is half a turn.
    EXPECT_NEAR(0, CTrackball::Between({-1, 0}, {1, 0})[3], 1e-6F);
}

TEST(Trackball, StaysARotationHoweverLongItIsTurned) {
    CTrackball ball;
    ball.Begin(mav_matrixRPYSet(MAV_ID_MATRIX, 10, 20, 30));
    CTrackballPoint at{0.3F, -0.2F};
    // As a drag does it: the eye behind the centre, as far as it was after the last step.
    float distance = 10;
    for (int i = 0; i < 20000; ++i) {
        const auto turn = static_cast<float>(i);
        const CTrackballPoint next{0.9F * std::sin(turn * 0.37F), 0.9F * std::cos(turn * 0.61F)};
        ball.Turn(at, next);
        at = next;
        distance *= Row(ball.View(), 2);
    }
    EXPECT_NEAR(10, distance, 1e-2F);
    const MAV_matrix m = ball.View();
    for (std::size_t row = 0; row < 3; ++row) {
        EXPECT_NEAR(1, Row(m, row), 1e-5F);
    }
    EXPECT_NEAR(0, m[0] * m[4] + m[1] * m[5] + m[2] * m[6], 1e-5F);
}

TEST(CentreOfNavigation, LiesWhereTheCameraLooksOnItsPlane) {
    const MAV_vector centre{7, 2, 9};
    // Down by 45 degrees along x, from 10 above the plane.
    EXPECT_EQ((Three{11, 5, 3}), CentreOnPlane(Looking({1, 12, 3}, {1, -1, 0}), centre, 5, 1));
    // Level: the plane across z, then the one across x.
    EXPECT_EQ((Three{5, 2, 9}), CentreOnPlane(Looking({1, 12, 13}, {1, 0, -1}), centre, 2, 1));
    EXPECT_EQ((Three{7, 2, 3}), CentreOnPlane(Looking({1, 12, 3}, {1, 0, 0}), centre, 2, 1));
    // No direction at all makes no centre of nothing.
    for (const float part : CentreOnPlane(Looking({7, 2, 9}, {0, 0, 0}), centre, 2, 1)) {
        EXPECT_TRUE(std::isfinite(part));
    }
}

TEST(CentreOfNavigation, StaysWithinItsReach) {
    const MAV_viewParams flat = Looking({0, 10, 0}, {0.7F, -1e-4F, -0.7F});
    EXPECT_EQ((Three{250, 0, -250}), CentreOnPlane(flat, {0, 0, 0}, 0, 1));
    EXPECT_EQ((Three{500, 0, -500}), CentreOnPlane(flat, {0, 0, 0}, 0, 2));
    EXPECT_EQ((Three{-250, 0, 250}),
              CentreOnPlane(Looking({0, -10, 0}, flat.view), {0, 0, 0}, 0, 1));
}

TEST(CentreOfNavigation, TheEyeStopsHalfASpeedUnitBeforeIt) {
    const MAV_vector centre{0, 0, 0};
    const auto kept = [&centre](float y, float oldY, float speed) {
        return KeptBeforeCentre({0, y, 0}, {0, oldY, 0}, centre, 0, oldY > 0, speed).y;
    };
    EXPECT_EQ(1.5F, kept(1.5F, 3, 2));
    EXPECT_EQ(1.0F, kept(0.9F, 3, 2));
    // Far to the other side in one step.
    EXPECT_EQ(1.0F, kept(-40, 3, 2));
    EXPECT_EQ(-1.0F, kept(40, -3, 2));
    EXPECT_EQ(40, kept(40, 3, 2));
    // A level camera in one jump; back from the nearest place there is always a way.
    const auto level = [&centre](float z, float oldZ) {
        return KeptBeforeCentre({0, 0, z}, {0, 0, oldZ}, centre, 0, false, 1).z;
    };
    EXPECT_EQ(0.5F, level(-160, 20));
    EXPECT_EQ(0.7F, level(0.7F, 0.5F));
}

TEST(StatusText, HasTwoDecimals) {
    EXPECT_EQ("20.00, 10.00, 20.00", StatusText({20, 10, 20}));
    EXPECT_EQ("-1.25, 0.01, 1234567.88", StatusText({-1.25F, 0.008F, 1234567.9F}));
    EXPECT_GT(StatusText({0, 0, std::numeric_limits<float>::lowest()}).size(), 40U);
}

}  // namespace
