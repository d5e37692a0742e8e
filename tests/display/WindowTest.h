#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "platform/maverik/WindowState.h"

inline constexpr float kInf = std::numeric_limits<float>::infinity();
inline constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// One window in memory, 200 by 100, with a camera at the origin that looks along -z.
class WindowTest : public testing::Test {
  protected:
    void SetUp() override {
        setenv("SDL_VIDEODRIVER", "offscreen", 1);
        mav_opt_width = 200;
        mav_opt_height = 100;
        char title[] = "window";
        char* arguments[] = {title};
        int count = 1;
        ASSERT_EQ(MAV_start::kOffscreen, mav_initialise(&count, arguments));
        window = mav_win_current;
        Look({0, 0, 0}, {0, 0, -1}, {0, 1, 0});
        mav_windowViewParamsSet(window, &camera);
    }
    void TearDown() override { mav_shutdown(); }

    void Look(const MAV_vector& eye, const MAV_vector& view, const MAV_vector& up) {
        camera = {eye, mav_vectorNormalize(view), mav_vectorNormalize(up), {0, 1, 0}, {}, nullptr};
    }
    static void Frame() {
        mav_frameBegin();
        mav_frameEnd();
    }
    static void ExpectNear(const MAV_vector& expected, const MAV_vector& found, float tolerance) {
        EXPECT_NEAR(expected.x, found.x, tolerance);
        EXPECT_NEAR(expected.y, found.y, tolerance);
        EXPECT_NEAR(expected.z, found.z, tolerance);
    }

    MAV_window* window = nullptr;
    MAV_viewParams camera = {};
};
