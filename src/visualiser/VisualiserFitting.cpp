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

struct Ball {
    MAV_vector centre;
    float radius;
};

/// Around the box around all objects of the list; none if nothing in it has an extent.
std::optional<Ball> BallAround(const MAV_SMS& sms) {
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
    return Ball{mav_vectorAdd(low, half), radius};
}

std::array<float, 3> Floats(const MAV_vector& v) {
    return {v.x, v.y, v.z};
}

}  // namespace

void CVisualiser::ShowAll(int view) {
    QueueWork([this, view] {
        CVisView& record = *g_views[static_cast<std::size_t>(view)];
        const std::optional<Ball> ball = BallAround(*record.m_sms);
        if (!ball || record.m_window == nullptr) {
            return;
        }
        const auto& [centre, radius] = *ball;
        const float aspect = static_cast<float>(record.m_window->width) /
                             static_cast<float>(record.m_window->height);
        const float narrow = std::min(1.0F, aspect);
        const float tangent = std::tan(kFieldOfView / 2 * kRadians) * narrow;
        const float distance = kMargin * radius * std::hypot(1.0F, tangent) / tangent;
        record.m_orthoSize = 2 * kMargin * radius / narrow;
        record.m_navigationSpeed = distance / kDistanceAtSpeedOne;
        const MAV_vector eye =
            mav_vectorSub(centre, mav_vectorScalar(record.m_viewParams.view, distance));
        ApplyViewParams(view, Floats(eye).data(), Floats(centre).data(),
                        Floats(record.m_viewParams.up).data());
    });
    FitClipping(view);
}

void CVisualiser::FitClipping(int view) {
    QueueWork([this, view] {
        CVisView& record = *g_views[static_cast<std::size_t>(view)];
        const std::optional<Ball> ball = BallAround(*record.m_sms);
        if (!ball || record.m_window == nullptr) {
            return;
        }
        const MAV_vector way = mav_vectorSub(ball->centre, record.m_viewParams.eye);
        const float distance = std::hypot(way.x, way.y, way.z);
        record.m_nearClip = kNearShare * std::max(distance, ball->radius);
        record.m_farClip = distance + kRoomBehind * ball->radius;
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
