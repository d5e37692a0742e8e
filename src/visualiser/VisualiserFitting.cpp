// Cameras, clipping and window sizes that suit a scene, for programs that show one they do not
// know.

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "visualiser/Overlays.h"
#include "visualiser/Visualiser.h"

namespace {

/// Room around the scene in the picture.
constexpr float kMargin = 1.1F;
/// Nearest to the eye that is drawn, in distances from the eye to the middle of the scene, or in
/// its radii if they are larger: near enough for a camera that comes closer, far enough for depth
/// of 24 bits.
constexpr float kNearShare = 1e-3F;
/// From the middle of the scene to the farthest that is drawn, in radii of the scene.
constexpr float kRoomBehind = 4;
/// Distance from the eye to the point that it looks at when a view starts, at speed 1.
constexpr float kDistanceAtSpeedOne = 30.0F;
constexpr float kRadians = 0.017453293F;  // of a degree

/// The box around all objects of a list, and the ball around it.
struct Extent {
    MAV_vector centre;
    MAV_vector half;
    float radius;
};

/// None if nothing in the list has an extent.
std::optional<Extent> ExtentOf(const MAV_SMS& sms) {
    MAV_vector low;
    MAV_vector high;
    if (!mav_SMSBox(&sms, low, high)) {
        return std::nullopt;
    }
    const MAV_vector half = mav_vectorScalar(mav_vectorSub(high, low), 0.5F);
    const float radius = std::hypot(half.x, half.y, half.z);
    if (!(radius > 0) || !std::isfinite(radius)) {
        return std::nullopt;
    }
    return Extent{mav_vectorAdd(low, half), half, radius};
}

/// How far from the middle of a scene a camera sees all of it, and half the height of it.
struct Framing {
    float distance;
    float halfHeight;
};

Framing FrameOf(const Extent& extent, const MAV_viewParams& camera, float aspect) {
    const MAV_vector view = mav_vectorDirection(camera.view, {0, 0, -1});
    const MAV_vector right =
        mav_vectorDirection(mav_vectorCrossProduct(view, camera.up), mav_vectorAcross(view));
    const MAV_vector up = mav_vectorCrossProduct(right, view);
    const float tangent = std::tan(kFieldOfView / 2 * kRadians);
    // What is seen edge-on has a height too.
    Framing framing = {kMargin * extent.radius, kNearShare * extent.radius};
    for (int corner = 0; corner < 8; ++corner) {
        const auto end = [corner](int bit, float half) {
            return (corner & bit) != 0 ? half : -half;
        };
        const MAV_vector v = {end(1, extent.half.x), end(2, extent.half.y), end(4, extent.half.z)};
        const float across = std::abs(mav_vectorDotProduct(v, right)) / aspect;
        const float halfHeight = kMargin * std::max(across, std::abs(mav_vectorDotProduct(v, up)));
        framing.halfHeight = std::max(framing.halfHeight, halfHeight);
        framing.distance =
            std::max(framing.distance, halfHeight / tangent - mav_vectorDotProduct(v, view));
    }
    return framing;
}

std::array<float, 3> Floats(const MAV_vector& v) {
    return {v.x, v.y, v.z};
}

}  // namespace

void CVisualiser::ShowAll(int view) {
    QueueWork([this, view] {
        CVisView& record = *g_views[static_cast<std::size_t>(view)];
        const std::optional<Extent> extent = ExtentOf(*record.m_sms);
        if (!extent || record.m_window == nullptr) {
            return;
        }
        const float aspect = static_cast<float>(record.m_window->width) /
                             static_cast<float>(record.m_window->height);
        const auto& [distance, halfHeight] = FrameOf(*extent, record.m_viewParams, aspect);
        record.m_orthoSize = 2 * halfHeight;
        record.m_navigationSpeed = distance / kDistanceAtSpeedOne;
        const MAV_vector eye =
            mav_vectorSub(extent->centre, mav_vectorScalar(record.m_viewParams.view, distance));
        ApplyViewParams(view, Floats(eye).data(), Floats(extent->centre).data(),
                        Floats(record.m_viewParams.up).data());
    });
    FitClipping(view);
}

void CVisualiser::FitClipping(int view) {
    QueueWork([this, view] {
        CVisView& record = *g_views[static_cast<std::size_t>(view)];
        const std::optional<Extent> extent = ExtentOf(*record.m_sms);
        if (!extent || record.m_window == nullptr) {
            return;
        }
        const MAV_vector way = mav_vectorSub(extent->centre, record.m_viewParams.eye);
        const float distance = std::hypot(way.x, way.y, way.z);
        record.m_nearClip = kNearShare * std::max(distance, extent->radius);
        record.m_farClip = distance + kRoomBehind * extent->radius;
        record.m_fogStart = record.m_farClip;
        ApplyWindowSettings(record);
        m_overlays->BuildGrid(record);
    });
}

void CVisualiser::SetWindowSize(int view, int width, int height) {
    QueueWork([view, width, height] {
        CVisView& record = *g_views[static_cast<std::size_t>(view)];
        if (record.m_window != nullptr) {
            mav_gfxWindowSizeSet(record.m_window, width, height);
            ApplyWindowSettings(record);
        }
    });
}
