#include "platform/maverik/NavigationSteps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

constexpr float kDegree = 3.14159265F / 180;

/// Looks along -z and up by `pitch` degrees.
MAV_viewParams Pitched(float pitch) {
    const float s = std::sin(pitch * kDegree), c = std::cos(pitch * kDegree);
    return {{1, 2, 3}, {0, s, -c}, {0, c, s}, {0, 1, 0}, {1, 0, 0}, nullptr};
}

void ExpectNear(const MAV_vector& expected, const MAV_vector& found) {
    EXPECT_NEAR(expected.x, found.x, 2e-6F);
    EXPECT_NEAR(expected.y, found.y, 2e-6F);
    EXPECT_NEAR(expected.z, found.z, 2e-6F);
}

float Elevation(const MAV_viewParams& camera) {
    return std::atan2(camera.view.y, std::hypot(camera.view.x, camera.view.z)) / kDegree;
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
    MAV_viewParams straightDown = Pitched(0);
    straightDown.view = {0, -1, 0};
    mav_navigateForwardsFixedUp(straightDown, 1, 1, 1);
    EXPECT_EQ((MAV_vector{1, 2, 3}), straightDown.eye);
}

TEST(NavigationSteps, TurnByAmountTimesAngular) {
    // To the left, whatever way it looks up or down.
    for (const float pitch : {-80.0F, 0.0F, 50.0F}) {
        MAV_viewParams camera = Pitched(pitch);
        mav_navigateYawFixedUp(camera, 2, 100, 20 * kDegree);
        const float s = std::sin(40 * kDegree), c = std::cos(40 * kDegree);
        const MAV_viewParams former = Pitched(pitch);
        ExpectNear({former.view.z * s, former.view.y, former.view.z * c}, camera.view);
        ExpectNear({former.up.z * s, former.up.y, former.up.z * c}, camera.up);
        ExpectNear({c, 0, -s}, camera.right);
        EXPECT_EQ(former.eye, camera.eye);
    }
    MAV_viewParams camera = Pitched(-10);
    mav_navigatePitch(camera, 2, 100, 20 * kDegree);
    ExpectNear(Pitched(30).view, camera.view);
    ExpectNear(Pitched(30).up, camera.up);
}

TEST(NavigationSteps, PitchEndsADegreeBeforeUpright) {
    const struct {
        float from, by, to;
    } cases[] = {{0, 500, 89},   {0, -500, -89},       {88, 0.9F, 88.9F},  {88, 7, 89},
                 {-88, -7, -89}, {89.5F, 1, 89.5F},    {89.5F, -2, 87.5F}, {90, -3, 87},
                 {-90, 3, -87},  {-89.5F, -1, -89.5F}, {89, -1000, -89}};
    for (const auto& [from, by, to] : cases) {
        MAV_viewParams camera = Pitched(from);
        mav_navigatePitch(camera, by, 0, kDegree);
        EXPECT_NEAR(to, Elevation(camera), 2e-3F) << from << ' ' << by;
        EXPECT_LE(camera.view.z, 1e-6F) << "turned over";
    }
}

TEST(NavigationSteps, LeaveARightAngledCameraHoweverManyTheyAre) {
    std::mt19937 random(4);
    std::uniform_real_distribution<float> angle(-1, 1);
    MAV_viewParams camera = Pitched(12);
    for (int i = 0; i < 20000; ++i) {
        mav_navigateYawFixedUp(camera, angle(random), 0, 1);
        mav_navigatePitch(camera, angle(random), 0, 1);
    }
    ExpectNear(camera.right, mav_vectorCrossProduct(camera.view, camera.up));
    EXPECT_NEAR(1, std::hypot(camera.right.x, camera.right.z), 1e-4F) << "rolled";
    EXPECT_LE(std::abs(Elevation(camera)), 89.01F);
    for (const MAV_vector& v : {camera.view, camera.up, camera.right})
        EXPECT_NEAR(1, std::hypot(v.x, v.y, v.z), 1e-6F);
}

}  // namespace
