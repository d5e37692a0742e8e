#include "platform/maverik/NavigationSteps.h"

#include <algorithm>
#include <cmath>

MAV_vector mav_nav_center = {0, 0, 0};

namespace {

/// The view stays this far from straight up and straight down, in radians.
constexpr double kLeastFromUpright = 0.017453292519943295;

void Move(MAV_viewParams& params, const MAV_vector& direction, float distance) {
    params.eye = mav_vectorAdd(params.eye, mav_vectorScalar(direction, distance));
}

/// v turned about the unit vector `axis`, by Rodrigues' formula.
MAV_vector Turned(const MAV_vector& v, const MAV_vector& axis, double angle) {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const MAV_vector across = mav_vectorCrossProduct(axis, v);
    const double along = mav_vectorDotProduct(axis, v) * (1 - c);
    return {static_cast<float>(v.x * c + across.x * s + axis.x * along),
            static_cast<float>(v.y * c + across.y * s + axis.y * along),
            static_cast<float>(v.z * c + across.z * s + axis.z * along)};
}

void Turn(MAV_viewParams& params, const MAV_vector& axis, double angle) {
    params.view = mav_vectorNormalize(Turned(params.view, axis, angle));
    params.up = mav_vectorNormalize(Turned(params.up, axis, angle));
    params.right = mav_vectorNormalize(mav_vectorCrossProduct(params.view, params.up));
}

}  // namespace

void mav_navigateForwards(MAV_viewParams& params, float amount, float linear, float /*angular*/) {
    Move(params, params.view, amount * linear);
}

void mav_navigateForwardsFixedUp(MAV_viewParams& params, float amount, float linear,
                                 float /*angular*/) {
    const auto level = [&params](const MAV_vector& v) {
        const float upwards = mav_vectorDotProduct(v, params.fixed_up);
        return mav_vectorSub(v, mav_vectorScalar(params.fixed_up, upwards));
    };
    // Seen from straight above, forwards is where the picture's upper edge is.
    constexpr float kLeastLevel = 1e-3F;
    MAV_vector forwards = level(params.view);
    if (mav_vectorDotProduct(forwards, forwards) < kLeastLevel * kLeastLevel) {
        const bool looksUp = mav_vectorDotProduct(params.view, params.fixed_up) > 0;
        forwards = mav_vectorScalar(level(params.up), looksUp ? -1.0F : 1.0F);
    }
    Move(params, mav_vectorNormalize(forwards), amount * linear);
}

void mav_navigateRight(MAV_viewParams& params, float amount, float linear, float /*angular*/) {
    params.right = mav_vectorNormalize(mav_vectorCrossProduct(params.view, params.up));
    Move(params, params.right, amount * linear);
}

void mav_navigateUpFixedUp(MAV_viewParams& params, float amount, float linear, float /*angular*/) {
    Move(params, params.fixed_up, amount * linear);
}

void mav_navigateYawFixedUp(MAV_viewParams& params, float amount, float /*linear*/, float angular) {
    Turn(params, params.fixed_up, static_cast<double>(amount) * angular);
}

void mav_navigatePitch(MAV_viewParams& params, float amount, float /*linear*/, float angular) {
    params.right = mav_vectorNormalize(mav_vectorCrossProduct(params.view, params.up));
    const double upwards =
        std::clamp<double>(mav_vectorDotProduct(params.view, params.fixed_up), -1.0, 1.0);
    const double toTop = std::acos(upwards) - kLeastFromUpright;
    const double toBottom = std::acos(-upwards) - kLeastFromUpright;
    const double angle = static_cast<double>(amount) * angular;
    // A camera that is beyond already may turn back.
    const double limited = angle > 0 ? std::min(angle, std::max(toTop, 0.0))
                                     : std::max(angle, -std::max(toBottom, 0.0));
    Turn(params, params.right, limited);
}
