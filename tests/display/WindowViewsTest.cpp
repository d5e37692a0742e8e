#include <SDL.h>

#include <array>
#include <utility>

#include "WindowTest.h"

namespace {

struct Camera {
    MAV_vector eye, view, up;
};

struct Projection {
    void (*set)(MAV_window*, float near, float far, float size, float aspect);
    float near, far, size, aspect;
};

class WindowViewsTest : public WindowTest {
  protected:
    void Point(int x, int y) const {
        SDL_Event event = {};
        event.type = SDL_MOUSEMOTION;
        event.motion.windowID = SDL_GetWindowID(window->state->sdl);
        event.motion.x = x;
        event.motion.y = y;
        SDL_PushEvent(&event);
        mav_eventsCheck();
    }
    MAV_vector UnProject(float x, float y, float distance) const {
        MAV_vector p;
        mav_gfxUnProject(window, x, y, distance, &p.x, &p.y, &p.z);
        return p;
    }
};

TEST_F(WindowViewsTest, PixelsAndTheMouseGoToTheWorldByTheFormulas) {
    const float s = std::sqrt(0.5F);
    // Right, up and view, each by hand.
    const struct {
        Camera camera;
        MAV_vector right, up;
    } cameras[] = {{{{0, 0, 0}, {0, 0, -1}, {0, 1, 0}}, {1, 0, 0}, {0, 1, 0}},
                   {{{3, -2, 7}, {1, 0, 0}, {0, 0, 5}}, {0, -1, 0}, {0, 0, 1}},
                   {{{1, 2, 3}, {0, -1, -1}, {0, 1, 0}}, {1, 0, 0}, {0, s, -s}},
                   // Rolled, and `up` not at right angles.
                   {{{0, 0, 0}, {0, 0, -1}, {-1, 1, 7}}, {s, s, 0}, {-s, s, 0}},
                   // So far away that a float has no digits below 8 left.
                   {{{0, 0, 1e8F}, {0, 0, -1}, {0, 1, 0}}, {1, 0, 0}, {0, 1, 0}}};
    const Projection projections[] = {{mav_windowPerspectiveSet, 0.5F, 500, 90, 2},
                                      {mav_windowPerspectiveSet, 2, 500, 45, 0.5F},
                                      {mav_windowOrthogonalSet, 0.5F, 500, 12, 2}};
    for (const auto& [place, right, up] : cameras) {
        Look(place.eye, place.view, place.up);
        for (const Projection& p : projections) {
            p.set(window, p.near, p.far, p.size, p.aspect);
            Frame();
            const bool orthogonal = p.set == mav_windowOrthogonalSet;
            const auto way = [&](float x, float y, float distance) {
                const float half =
                    orthogonal ? p.size / 2 : distance * std::tan(p.size * 3.14159265F / 360);
                const MAV_vector across =
                    mav_vectorAdd(mav_vectorScalar(right, (x / 100 - 1) * half * p.aspect),
                                  mav_vectorScalar(up, (y / 50 - 1) * half));
                return mav_vectorAdd(mav_vectorScalar(camera.view, distance), across);
            };
            for (const auto& [x, y] : {std::pair(0, 0), {100, 50}, {199, 0}, {0, 99}, {199, 99}}) {
                const auto fx = static_cast<float>(x), fy = static_cast<float>(y);
                for (const float distance : {p.near, 40.0F})
                    ExpectNear(mav_vectorAdd(place.eye, way(fx, fy, distance)),
                               UnProject(fx, fy, distance), 1e-4F);
                // The mouse is in the middle of its pixel, and counted from above.
                Point(x, y);
                Frame();
                const MAV_vector toNear = way(fx + 0.5F, 99.5F - fy, p.near);
                ExpectNear(mav_vectorAdd(place.eye, toNear), mav_mouse_pos, 1e-5F);
                ExpectNear(orthogonal ? camera.view : mav_vectorNormalize(toNear), mav_mouse_dir,
                           1e-5F);
            }
        }
    }
}

TEST_F(WindowViewsTest, WhatMakesNoCameraGivesOneAllTheSame) {
    const Camera cameras[] = {
        {{0, 0, 0}, {0, 0, 0}, {0, 1, 0}},        {{1, 1, 1}, {0, 1, 0}, {0, 1, 0}},
        {{1, 1, 1}, {0, -1, 0}, {0, 1, 0}},       {{1, 1, 1}, {1, 2, 3}, {-2, -4, -6}},
        {{1, 1, 1}, {1, 2, 3}, {0, 0, 0}},        {{kNan, 1, 1}, {0, 0, -1}, {0, 1, 0}},
        {{0, -kInf, 0}, {0, 0, -1}, {0, 1, 0}},   {{0, 0, 0}, {kNan, 0, -1}, {0, 1, 0}},
        {{0, 0, 0}, {kInf, 0, -1}, {kInf, 1, 0}}, {{0, 0, 0}, {0, 0, -1e-42F}, {0, kNan, 0}}};
    for (const Camera& c : cameras) {
        camera = {c.eye, c.view, c.up, {0, 1, 0}, {}, nullptr};
        Frame();
        const MAV_matrix m = mav_windowViewMatrix(window);
        const MAV_vector rows[] = {{m[0], m[1], m[2]}, {m[4], m[5], m[6]}, {m[8], m[9], m[10]}};
        ExpectNear(rows[2], mav_vectorCrossProduct(rows[0], rows[1]), 1e-6F);
        EXPECT_NEAR(1, mav_vectorDotProduct(rows[0], rows[0]), 1e-5F);
        EXPECT_NEAR(1, mav_vectorDotProduct(rows[2], rows[2]), 1e-5F);
        EXPECT_TRUE(std::isfinite(m[3] + m[7] + m[11]));
    }
}

TEST_F(WindowViewsTest, WhatMakesNoProjectionGivesOneAllTheSame) {
    const float values[] = {0, -1, 1, 180, 1e-30F, 1e30F, kInf, -kInf, kNan};
    // No width and no height, and the mouse outside.
    mav_gfxWindowSizeSet(window, 0, -5);
    EXPECT_EQ(1, window->width * window->height);
    Point(-7, 30000);
    for (const auto set : {mav_windowPerspectiveSet, mav_windowOrthogonalSet}) {
        for (const float a : values) {
            for (const float b : values) {
                for (const auto& [near, far, size, aspect] :
                     {std::array{a, b, 45.0F, 1.0F}, {0.1F, 500, a, b}, {a, 500, b, 1}}) {
                    set(window, near, far, size, aspect);
                    Frame();
                    SCOPED_TRACE(::testing::PrintToString(std::array{near, far, size, aspect}));
                    const MAV_vector p = UnProject(0, 1, 10);
                    EXPECT_TRUE(std::isfinite(p.x + p.y) && std::abs(p.z + 10) < 1e-5F);
                    MAV_vector from, way;
                    mav_mouseRay(window, &from, &way);
                    EXPECT_TRUE(std::isfinite(from.x + from.y + from.z));
                    EXPECT_NEAR(1, std::hypot(way.x, way.y, way.z), 1e-5F);
                }
            }
        }
    }
}

}  // namespace
