#include "visualiser/CentreOfNavigation.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr float kReach = 250.0F;
constexpr float kNearest = 0.5F;

/// How far the eye is behind the plane, in view vectors.
float WayToPlane(const MAV_viewParams& camera, const MAV_vector& centre) {
    if (camera.view.y != 0) {
        return (camera.eye.y - centre.y) / camera.view.y;
    }
    if (camera.view.z != 0) {
        return (camera.eye.z - centre.z) / camera.view.z;
    }
    return (camera.eye.x - centre.x) / camera.view.x;
}

}  // namespace

std::array<float, 3> CentreOnPlane(const MAV_viewParams& camera, const MAV_vector& centre,
                                   float height, float speed) noexcept {
    const float t = WayToPlane(camera, centre);
    const float reach = kReach * std::fabs(speed);
    const auto limited = [reach](float value, float otherwise) {
        return std::isnan(value) ? otherwise : std::clamp(value, -reach, reach);
    };
    return {limited(camera.eye.x - t * camera.view.x, centre.x), height,
            limited(camera.eye.z - t * camera.view.z, centre.z)};
}

MAV_vector KeptBeforeCentre(const MAV_vector& eye, const MAV_vector& oldEye,
                            const MAV_vector& centre, float height, bool wasAbove,
                            float speed) noexcept {
    const float nearest = kNearest * speed;
    const MAV_vector way = mav_vectorSub(eye, centre);
    const bool isAbove = eye.y > height;
    const MAV_vector oldWay = mav_vectorSub(oldEye, centre);
    // A level camera passes the centre without changing sides of its height.
    const bool hasPassed = isAbove != wasAbove || mav_vectorDotProduct(way, oldWay) < 0;
    if (std::hypot(way.x, way.y, way.z) >= nearest && !hasPassed) {
        return eye;
    }
    return mav_vectorAdd(centre, mav_vectorScalar(mav_vectorNormalize(oldWay), nearest));
}
