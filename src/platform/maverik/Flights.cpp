#include <algorithm>
#include <cmath>

#include "platform/maverik/WindowState.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr float kRadians = 0.017453292F;  // of a degree
constexpr float kUsualTime = 1;
constexpr float kLongestTime = 60;

bool IsFinite(const MAV_vector& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

/// How far before the middle of the box the eye has to be, to see all its corners.
float DistanceFor(const CameraFrame& camera, const WindowProjection& p, const MAV_vector& half,
                  float size) {
    const float up = std::tan(p.size / 2 * kRadians) * size;
    const float right = up * p.aspect;
    float distance = 0;
    for (int corner = 0; corner < 8; ++corner) {
        const MAV_vector c = {(corner & 1) != 0 ? half.x : -half.x,
                              (corner & 2) != 0 ? half.y : -half.y,
                              (corner & 4) != 0 ? half.z : -half.z};
        const float depth = mav_vectorDotProduct(c, camera.view);
        const float needed =
            std::max({std::fabs(mav_vectorDotProduct(c, camera.right)) / right,
                      std::fabs(mav_vectorDotProduct(c, camera.up)) / up, p.nearest});
        distance = std::max(distance, needed - depth);
    }
    return distance;
}

/// To where the box between `low` and `high` is seen.
bool FlyTo(MAV_window& window, const MAV_vector& low, const MAV_vector& high, float size,
           float time) {
    WindowState& state = *window.state;
    if (state.params == nullptr || !(size > 0)) {
        return false;
    }
    const CameraFrame camera = CameraOf(window);
    const MAV_vector half = mav_vectorScalar(mav_vectorSub(high, low), 0.5F);
    const MAV_vector centre = mav_vectorAdd(low, half);
    // An orthogonal view sees as much from everywhere: it only moves across.
    const float distance =
        state.projection.orthogonal
            ? mav_vectorDotProduct(mav_vectorSub(centre, camera.eye), camera.view)
            : DistanceFor(camera, state.projection, half, size);
    const MAV_vector to = mav_vectorSub(centre, mav_vectorScalar(camera.view, distance));
    if (!IsFinite(to)) {
        return false;
    }
    if (!IsFinite(state.params->eye)) {
        state.params->eye = camera.eye;
    }
    const bool isTime = time >= 0 && std::isfinite(time);
    const float seconds = isTime ? std::min(time, kLongestTime) : kUsualTime;
    state.flight = {camera.eye,         to,           state.params->eye,
                    state.params->view, Clock::now(), std::chrono::duration<double>(seconds)};
    return true;
}

/// False when the flight is over.
bool Advance(Flight& flight, MAV_viewParams* params) noexcept {
    if (params == nullptr || params->eye != flight.eye || params->view != flight.view) {
        // Somebody else has moved the camera, and wants it where it is.
        return false;
    }
    const std::chrono::duration<double> passed = Clock::now() - flight.begin;
    if (passed >= flight.duration) {
        params->eye = flight.to;
        return false;
    }
    // Slow at both ends.
    const double t = passed / flight.duration;
    const auto share = static_cast<float>(t * t * (3 - 2 * t));
    flight.eye =
        mav_vectorAdd(flight.from, mav_vectorScalar(mav_vectorSub(flight.to, flight.from), share));
    params->eye = flight.eye;
    return true;
}

}  // namespace

bool mav_viewParamsAnimateToObject(MAV_window* window, const MAV_object* object, float size,
                                   float time) {
    MAV_vector low;
    MAV_vector high;
    return mav_objectBox(object, low, high) && FlyTo(*window, low, high, size, time);
}

bool mav_viewParamsAnimateToSMS(MAV_window* window, const MAV_SMS* sms, float size, float time) {
    MAV_vector low;
    MAV_vector high;
    return mav_SMSBox(sms, low, high) && FlyTo(*window, low, high, size, time);
}

void mav_viewParamsAnimateStop(MAV_window* window) noexcept {
    window->state->flight.reset();
}

bool mav_viewParamsAnimating() noexcept {
    return std::any_of(windowSystem->windows.begin(), windowSystem->windows.end(),
                       [](const auto& window) { return window->state->flight.has_value(); });
}

void AdvanceFlights() noexcept {
    for (const auto& window : windowSystem->windows) {
        WindowState& state = *window->state;
        if (state.flight && !Advance(*state.flight, state.params)) {
            state.flight.reset();
        }
    }
}
