#include "platform/maverik/NavigationSteps.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr float kDegree = 3.14159265F / 180;

/// From 1, 2, 3 along -z and up by `pitch` degrees.
MAV_viewParams Pitched(float pitch) {
    const float s = std::sin(pitch * kDegree), c = std::cos(pitch * kDegree);
    return {{1, 2, 3}, {0, s, -c}, {0, c, s}, {0, 1, 0}, {1, 0, 0}, nullptr};
}

void ExpectNear(const MAV_vector& expected, const MAV_vector& found) {
    EXPECT_NEAR(expected.x, found.x, 2e-6F);
    EXPECT_NEAR(expected.y, found.y, 2e-6F);
    EXPECT_NEAR(expected.z, found.z, 2e-6F);
}

TEST(NavigationSteps, MoveByAmountTimesLinear) {
    const float s = std::sin(30 * kDegree), c = std::cos(30 * kDegree);
    const struct {
        void (*step)(MAV_viewParams&, float, float, float);
        MAV_vector way;
    } steps[] = {{mav_navigateForwards, {0, -s, -c}},
                 {mav_navigateForwardsFixedUp, {0, 0, -1}},
                 {mav_navigateRight, {1, 0, 0}},
                 {mav_navigateUpFixedUp, {0, 1, 0}}};
    for (const auto& [step, way] : steps) {
        MAV_viewParams camera = Pitched(-30);
        camera.right = {};
        step(camera, -0.5F, 6, 100);
        ExpectNear(mav_vectorAdd({1, 2, 3}, mav_vectorScalar(way, -3)), camera.eye);
        EXPECT_EQ(Pitched(-30).view, camera.view);
    }
    // Straight down there is no way forwards on the level.
    MAV_viewParams camera = Pitched(0);
    camera.view = {0, -1, 0};
    mav_navigateForwardsFixedUp(camera, 1, 1, 1);
    EXPECT_EQ((MAV_vector{1, 2, 3}), camera.eye);
}

TEST(NavigationSteps, YawTurnsToTheLeftByAmountTimesAngular) {
    const float s = std::sin(40 * kDegree), c = std::cos(40 * kDegree);
    for (const float pitch : {-80.0F, 0.0F, 50.0F}) {
        const MAV_viewParams former = Pitched(pitch);
        MAV_viewParams camera = former;
        mav_navigateYawFixedUp(camera, 2, 100, 20 * kDegree);
        ExpectNear({former.view.z * s, former.view.y, former.view.z * c}, camera.view);
        ExpectNear({former.up.z * s, former.up.y, former.up.z * c}, camera.up);
        ExpectNear({c, 0, -s}, camera.right);
        EXPECT_EQ(former.eye, camera.eye);
    }
}

TEST(NavigationSteps, PitchEndsADegreeBeforeUpright) {
    const struct {
        float from, by, to;
    } cases[] = {{-10, 40, 30},        {0, 500, 89},      {0, -500, -89}, {88, 0.9F, 88.9F},
                 {89, -1000, -89},     {90, -3, 87},      {-90, 3, -87},  {89.5F, 1, 89.5F},
                 {-89.5F, -1, -89.5F}, {89.5F, -2, 87.5F}};
    for (const auto& [from, by, to] : cases) {
        MAV_viewParams camera = Pitched(from);
        mav_navigatePitch(camera, 2, 100, by / 2 * kDegree);
        EXPECT_NEAR(to, std::atan2(camera.view.y, -camera.view.z) / kDegree, 2e-3F) << from;
        EXPECT_NEAR(to, std::atan2(camera.up.z, camera.up.y) / kDegree, 2e-3F) << from;
    }
}

}  // namespace
