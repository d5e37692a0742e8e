// Cameras and projections of windows, and the ways between pixels and the world.

#include <algorithm>
#include <cmath>

#include "platform/maverik/WindowState.h"

MAV_vector mav_mouse_pos = {0, 0, 0};
MAV_vector mav_mouse_dir = {0, 0, -1};

namespace {

constexpr float kRadians = 0.017453292F;  // of a degree
constexpr float kLeast = 1e-6F;
constexpr float kMost = 1e9F;
constexpr float kWidestAngle = 179;
/// The farthest is at least so many times the nearest.
constexpr float kLeastDepth = 1.001F;

/// What is no number becomes `otherwise`.
float Within(float value, float low, float high, float otherwise) {
    return std::isnan(value) ? otherwise : std::clamp(value, low, high);
}

bool IsFinite(const MAV_vector& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

/// The unit vector; `otherwise` where there is none.
WindowProjection MakeProjection(bool orthogonal, float nearest, float farthest, float size,
                                float aspect) {
    WindowProjection p;
    p.orthogonal = orthogonal;
    p.nearest = Within(nearest, kLeast, kMost / 2, p.nearest);
    p.farthest = std::max(Within(farthest, kLeast, kMost, p.farthest), p.nearest * kLeastDepth);
    p.size = Within(size, kLeast, orthogonal ? kMost : kWidestAngle, p.size);
    p.aspect = Within(aspect, kLeast, kMost, 1);
    return p;
}

/// Half the height of what is seen at a distance from the eye.
float HalfHeight(const WindowProjection& p, float distance) {
    return p.orthogonal ? p.size / 2 : distance * std::tan(p.size / 2 * kRadians);
}

MAV_matrix ViewMatrix(const CameraFrame& c) {
    const MAV_vector back = mav_vectorScalar(c.view, -1);
    return {{c.right.x, c.right.y, c.right.z, -mav_vectorDotProduct(c.right, c.eye), c.up.x, c.up.y,
             c.up.z, -mav_vectorDotProduct(c.up, c.eye), back.x, back.y, back.z,
             -mav_vectorDotProduct(back, c.eye), 0, 0, 0, 1}};
}

MAV_matrix ProjectionMatrix(const WindowProjection& p) {
    const double n = p.nearest;
    const double f = p.farthest;
    const double y = 1 / static_cast<double>(HalfHeight(p, 1));
    const auto s = [](double value) { return static_cast<float>(value); };
    if (p.orthogonal) {
        return {{s(y / p.aspect), 0, 0, 0, 0, s(y), 0, 0, 0, 0, s(2 / (n - f)),
                 s((f + n) / (n - f)), 0, 0, 0, 1}};
    }
    return {{s(y / p.aspect), 0, 0, 0, 0, s(y), 0, 0, 0, 0, s((f + n) / (n - f)),
             s(2 * f * n / (n - f)), 0, 0, -1, 0}};
}

/// From the eye to the point at right and up shares (-1 to 1) of the picture, at a distance from
/// the eye's plane.
MAV_vector WayInView(const MAV_window& window, float right, float up, float distance) {
    const CameraFrame& c = window.state->camera;
    const WindowProjection& p = window.state->projection;
    const float half = HalfHeight(p, distance);
    const MAV_vector across = mav_vectorAdd(mav_vectorScalar(c.right, right * half * p.aspect),
                                            mav_vectorScalar(c.up, up * half));
    return mav_vectorAdd(mav_vectorScalar(c.view, distance), across);
}

}  // namespace

CameraFrame CameraOf(const MAV_window& window) noexcept {
    CameraFrame frame = window.state->camera;
    if (window.state->params == nullptr) {
        return frame;
    }
    MAV_viewParams params = *window.state->params;
    if (params.mod != nullptr) {
        params.mod(params);
    }
    frame.eye = IsFinite(params.eye) ? params.eye : MAV_vector{0, 0, 0};
    frame.view = mav_vectorDirection(params.view, {0, 0, -1});
    // A camera that looks along its own up direction has some other one.
    frame.right = mav_vectorDirection(mav_vectorCrossProduct(frame.view, params.up),
                                      mav_vectorAcross(frame.view));
    frame.up = mav_vectorCrossProduct(frame.right, frame.view);
    return frame;
}

void mav_windowViewParamsSet(MAV_window* window, MAV_viewParams* params) noexcept {
    window->state->params = params;
}

MAV_viewParams* mav_windowViewParams(const MAV_window* window) noexcept {
    return window->state->params;
}

void mav_windowBackgroundColourSet(MAV_window* window, float r, float g, float b) noexcept {
    window->state->background = {r, g, b, 1};
}

void mav_windowBackfaceCullSet(MAV_window* window, bool on) noexcept {
    window->state->cullBackfaces = on;
}

void mav_windowPerspectiveSet(MAV_window* window, float near, float far, float fov, float aspect) {
    window->state->projection = MakeProjection(false, near, far, fov, aspect);
}

void mav_windowOrthogonalSet(MAV_window* window, float near, float far, float size, float aspect) {
    window->state->projection = MakeProjection(true, near, far, size, aspect);
}

void mav_windowFogSet(MAV_window* window, int mode, float start, float end, float r, float g,
                      float b) noexcept {
    WindowState& state = *window->state;
    state.fog = mode == 1 && start < end;
    state.fogStart = start;
    state.fogEnd = end;
    state.fogColour.reset();
    if (r != -1 || g != -1 || b != -1) {
        state.fogColour = MAV_colour{r, g, b, 1};
    }
}

int mav_resizeDefault(MAV_window* window) {
    window->state->projection.aspect =
        static_cast<float>(window->width) / static_cast<float>(window->height);
    return 1;
}

MAV_matrix mav_windowViewMatrix(const MAV_window* window) noexcept {
    return ViewMatrix(CameraOf(*window));
}

void BeginViews() {
    for (const auto& window : windowSystem->windows) {
        WindowState& state = *window->state;
        state.camera = CameraOf(*window);
        ViewSetup setup;
        setup.width = window->width;
        setup.height = window->height;
        setup.view = ViewMatrix(state.camera);
        setup.projection = ProjectionMatrix(state.projection);
        setup.orthogonal = state.projection.orthogonal;
        setup.background = state.background;
        setup.cullBackfaces = state.cullBackfaces;
        setup.fog = state.fog;
        setup.fogStart = state.fogStart;
        setup.fogEnd = state.fogEnd;
        setup.fogColour = state.fogColour.value_or(state.background);
        setup.textScale = PixelScale(*window);
        state.contents.Begin(setup, *windowSystem->palette);
        state.isCollected = false;
    }
}

void mav_gfxUnProject(const MAV_window* window, float x, float y, float distance, float* wx,
                      float* wy, float* wz) noexcept {
    const float right = 2 * x / static_cast<float>(window->width) - 1;
    const float up = 2 * y / static_cast<float>(window->height) - 1;
    const MAV_vector point =
        mav_vectorAdd(window->state->camera.eye, WayInView(*window, right, up, distance));
    *wx = point.x;
    *wy = point.y;
    *wz = point.z;
}

void mav_mouseRay(const MAV_window* window, MAV_vector* pos, MAV_vector* dir) noexcept {
    const WindowState& state = *window->state;
    int x = mav_mouse_x;
    int y = mav_mouse_y;
    if (windowSystem->mouseWindow != window) {
        // The mouse was last seen in another window.
        int left = 0;
        int top = 0;
        SDL_GetWindowPosition(state.sdl, &left, &top);
        const float scale = PixelScale(*window);
        x = static_cast<int>(static_cast<float>(mav_mouse_root_x - left) * scale);
        y = static_cast<int>(static_cast<float>(mav_mouse_root_y - top) * scale);
    }
    // Through the middle of the pixel.
    const float right = (2 * static_cast<float>(x) + 1) / static_cast<float>(window->width) - 1;
    const float up = 1 - (2 * static_cast<float>(y) + 1) / static_cast<float>(window->height);
    const MAV_vector way = WayInView(*window, right, up, state.projection.nearest);
    *pos = mav_vectorAdd(state.camera.eye, way);
    // Not from one point to the other: far from the origin those have lost the digits of the way.
    *dir = state.projection.orthogonal ? state.camera.view
                                       : mav_vectorDirection(way, state.camera.view);
}

void UpdateMouseRay() noexcept {
    if (windowSystem->mouseWindow != nullptr) {
        mav_mouseRay(windowSystem->mouseWindow, &mav_mouse_pos, &mav_mouse_dir);
    }
}
