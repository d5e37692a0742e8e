// What hosts and the panel set and ask of the four views: cameras, options, camera paths, capture.

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

#include "platform/maverik/NavigationSteps.h"
#include "visualiser/BitmapFile.h"
#include "visualiser/Navigation.h"
#include "visualiser/Overlays.h"
#include "visualiser/Visualiser.h"

namespace {

constexpr float kStartEye[] = {20, 10, 20};
constexpr float kStartPoint[] = {0, 0, 0};
constexpr float kUpwards[] = {0, 1, 0};

/// The flight to the whole scene: as large as it fits, in this many seconds.
constexpr float kSceneSize = 1.0F;
constexpr float kSceneFlight = 1.5F;

/// The camera's centre is at least this far from the eye, times the navigation speed.
constexpr float kNearestCentre = 0.5F;

MAV_vector Vector(const float* v) noexcept {
    return {v[0], v[1], v[2]};
}

void Store(const MAV_vector& from, float* to) noexcept {
    to[0] = from.x;
    to[1] = from.y;
    to[2] = from.z;
}

CVisView& View(int view) noexcept {
    return *g_views[static_cast<std::size_t>(view)];
}

/// A camera that looks along its own up direction, or has none, takes another one.
void SetRight(MAV_viewParams& camera) noexcept {
    const MAV_vector across = mav_vectorCrossProduct(camera.view, camera.up);
    camera.right = mav_vectorDirection(across, mav_vectorAcross(camera.view));
    if (!(mav_vectorDotProduct(across, camera.right) > 0)) {
        camera.up = mav_vectorCrossProduct(camera.right, camera.view);
    }
}

float Length(const MAV_vector& v) noexcept {
    return std::sqrt(mav_vectorDotProduct(v, v));
}

}  // namespace

int CVisualiser::WaitForWork() noexcept {
    return m_thread.WaitForFrame() ? KST_OK : KST_ERROR_NOT_RENDERING;
}

int CVisualiser::AddView(int view) {
    if (IsStandingStill() || IsRenderThread()) {
        return KST_ERROR_NOT_RENDERING;
    }
    CVisView& record = View(view);
    QueueWork([this, &record] { OpenWindow(record); });
    const int status = WaitForWork();
    return status == KST_OK && !record.m_open ? KST_ERROR_NOT_RENDERING : status;
}

int CVisualiser::RemoveView(int view) {
    if (IsStandingStill() || IsRenderThread()) {
        return KST_ERROR_NOT_RENDERING;
    }
    CVisView& record = View(view);
    QueueWork([this, &record] { CloseWindow(record); });
    return WaitForWork();
}

void CVisualiser::ApplyViewParams(int view, const float* eye, const float* point,
                                  const float* up) noexcept {
    {
        const std::lock_guard lock(m_frameLock);
        CVisView& record = View(view);
        MAV_viewParams& camera = record.m_viewParams;
        const MAV_vector centre = Vector(point);
        camera.eye = Vector(eye);
        camera.view = mav_vectorDirection(mav_vectorSub(centre, camera.eye),
                                          mav_vectorDirection(camera.view, MAV_vector{0, 0, -1}));
        camera.up = mav_vectorNormalize(Vector(up));
        camera.fixed_up = Vector(kUpwards);
        SetRight(camera);
        camera.mod = nullptr;
        record.m_navCenter = {centre.x, centre.y, centre.z};
        const float nearest = kNearestCentre * record.m_navigationSpeed;
        if (Length(mav_vectorSub(centre, camera.eye)) < nearest) {
            Store(mav_vectorAdd(camera.eye, mav_vectorScalar(camera.view, nearest)),
                  record.m_navCenter.data());
        }
    }
    Redraw();
}

void CVisualiser::GetViewParams(int view, float* eye, float* point, float* up) noexcept {
    const std::lock_guard lock(m_frameLock);
    const CVisView& record = View(view);
    Store(record.m_viewParams.eye, eye);
    std::copy(record.m_navCenter.begin(), record.m_navCenter.end(), point);
    if (up != nullptr) {
        Store(record.m_viewParams.up, up);
    }
}

void CVisualiser::SetViewOptions(int view, int options) {
    const std::lock_guard lock(m_frameLock);
    CVisView& record = View(view);
    const auto wants = [options](KstViewOption option) { return (options & option) != 0; };
    // Carries a pair of bits over to a flag, first on, then off, and tells whether it changed.
    const auto switches = [&wants](KstViewOption on, KstViewOption off, bool& flag) {
        const bool former = flag;
        flag = (flag || wants(on)) && !wants(off);
        return flag != former;
    };
    switches(KST_COMPASS_ON, KST_COMPASS_OFF, record.m_showCompass);
    switches(KST_GRID_ON, KST_GRID_OFF, record.m_showGrid);
    switches(KST_STATUS_ON, KST_STATUS_OFF, record.m_showStatus);
    ShowOrHideOverlays(record);
    bool apply = switches(KST_BACKFACE_CULLING_ON, KST_BACKFACE_CULLING_OFF, record.m_backfaceCull);
    if (wants(KST_PERSPECTIVE) || wants(KST_ORTHOGONAL)) {
        record.m_orthogonal = wants(KST_ORTHOGONAL);
        apply = true;
    }
    if (apply) {
        ApplyViewSettings(view);
    }
    Redraw();
}

void CVisualiser::ShowOrHideOverlays(CVisView& view) {
    if (m_overlays == nullptr) {
        return;
    }
    if (view.m_showCompass) {
        m_overlays->ShowCompass(view);
    } else {
        m_overlays->HideCompass(view);
    }
    if (view.m_showStatus) {
        m_overlays->ShowStatus(view);
    } else {
        m_overlays->HideStatus(view);
    }
}

void CVisualiser::SetBackgroundColor(int view, float r, float g, float b) {
    const std::lock_guard lock(m_frameLock);
    CVisView& record = View(view);
    record.m_background = {r, g, b};
    if (record.m_open) {
        QueueWindowSettings(record);
    }
}

void CVisualiser::ApplyViewSettings(int view) {
    const std::lock_guard lock(m_frameLock);
    CVisView& record = View(view);
    if (record.m_orthogonal && record.m_showCompass) {
        record.m_showCompass = false;
        ShowOrHideOverlays(record);
    }
    if (m_overlays != nullptr) {
        m_overlays->BuildGrid(record);
    }
    if (record.m_open) {
        QueueWindowSettings(record);
    }
    Redraw();
}

void CVisualiser::QueueWindowSettings(CVisView& view) {
    bool& queued = m_settingsQueued[static_cast<std::size_t>(view.m_index)];
    if (queued) {
        return;
    }
    QueueWork([&view, &queued] {
        queued = false;
        if (view.m_window != nullptr) {
            ApplyWindowSettings(view);
        }
    });
    queued = true;
}

void CVisualiser::ResetView(int view) noexcept {
    ApplyViewParams(view, kStartEye, kStartPoint, kUpwards);
}

void CVisualiser::AnimateToScene(int view) {
    QueueWork([this, view] {
        const CVisView& record = View(view);
        if (record.m_window == nullptr) {
            return;
        }
        m_flyingToScene[static_cast<std::size_t>(view)] =
            mav_viewParamsAnimateToSMS(record.m_window, record.m_sms, kSceneSize, kSceneFlight);
    });
}

void CVisualiser::EndFlights() noexcept {
    if (mav_viewParamsAnimating()) {
        return;
    }
    for (CVisView* view : g_views) {
        bool& flying = m_flyingToScene[static_cast<std::size_t>(view->m_index)];
        if (flying && view->m_window != nullptr) {
            const MAV_vector centreOfDrag = mav_nav_center;
            const auto [x, y, z] = view->m_navCenter;
            mav_nav_center = {x, y, z};
            m_navigation->RecentreOnPlane(*view);
            mav_nav_center = centreOfDrag;
        }
        flying = false;
    }
}

// ---- Camera paths ------------------------------------------------------------------------------

void CVisualiser::AddViewKeyState(int view, float time, const float* eye, const float* point,
                                  const float* up) {
    const std::lock_guard lock(m_frameLock);
    const auto i = static_cast<std::size_t>(view);
    m_viewMotion[i].AddKeyState(time, eye, point, up, View(view).m_viewParams);
    m_viewAnimating[i] = true;
}

void CVisualiser::SetViewCyclic(int view, bool cyclic) noexcept {
    const std::lock_guard lock(m_frameLock);
    m_viewMotion[static_cast<std::size_t>(view)].SetCyclic(cyclic);
}

void CVisualiser::ClearViewKeyStates(int view) noexcept {
    const std::lock_guard lock(m_frameLock);
    const auto i = static_cast<std::size_t>(view);
    m_viewMotion[i].Clear();
    m_viewMotion[i].SetCyclic(false);
    m_viewAnimating[i] = false;
}

void CVisualiser::ApplyViewTime(int view, float time) {
    {
        const std::lock_guard lock(m_frameLock);
        const auto i = static_cast<std::size_t>(view);
        CVisView& record = View(view);
        if (!m_viewAnimating[i] || !record.m_open) {
            return;
        }
        m_viewMotion[i].Evaluate(time, record.m_viewParams);
    }
    Redraw();
}

// ---- Capture -----------------------------------------------------------------------------------

int CVisualiser::CaptureView(int view, const std::string& path) {
    if (IsStandingStill() || IsRenderThread()) {
        return KST_ERROR_NOT_RENDERING;
    }
    // Shared with the render thread, which may be late, or never come to it.
    const auto image = std::make_shared<std::shared_ptr<const MAV_image>>();
    {
        const std::lock_guard lock(m_frameLock);
        m_workAfterFrame.push_back([image, &record = View(view)] {
            if (record.m_window != nullptr) {
                *image = mav_windowImage(record.m_window);
            }
        });
    }
    if (const int status = WaitForWork(); status != KST_OK) {
        return status;
    }
    if (*image == nullptr) {
        // The user has just closed the window, or memory was short, as below.
        return View(view).m_open ? KST_OK : KST_ERROR_VIEW_NOT_OPEN;
    }
    try {
        WriteBitmap(**image, path);
    } catch (const std::bad_alloc&) {
        // As any file that cannot be written.
    }
    return KST_OK;
}
