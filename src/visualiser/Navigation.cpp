#include "visualiser/Navigation.h"

#include <algorithm>
#include <cmath>
#include <mutex>

#include "collision/CollisionManager.h"
#include "model/ModelLock.h"
#include "platform/maverik/NavigationSteps.h"
#include "visualiser/CentreOfNavigation.h"
#include "visualiser/Overlays.h"
#include "visualiser/Visualiser.h"

namespace {

/// The navigation that runs, for the callbacks of windows and frames.
CNavigation* current = nullptr;

constexpr float kNavScale = 1.0F;  // of all steps
constexpr float kWheelStep = 2.0F;
constexpr float kPanStep = 0.1F;
constexpr float kDollyStep = 0.3F;
constexpr float kBoost = 6.0F;
constexpr float kKeyStep = 0.2F;
constexpr float kLookStep = 0.01F;  // radians for a pixel
constexpr float kLeastOrthoSize = 1e-3F;

void CountInteraction(int change) noexcept {
    if (change > 0) {
        ++g_activeInteractions;
        return;
    }
    int count = g_activeInteractions;
    while (count > 0 && !g_activeInteractions.compare_exchange_weak(count, count - 1)) {
    }
}

CVisView& ViewOf(const MAV_window* window) noexcept {
    return *static_cast<CVisView*>(window->user);
}

}  // namespace

struct CNavigation::ButtonDrag {
    MAV_mouseButton button;
    MAV_frameFn step;
};

struct CNavigation::KeyStep {
    int character;
    int arrow;  // 0: none
    MAV_frameFn step;
};

template <CNavigation::Step kStep>
void CNavigation::RunStep(void* view) {
    (current->*kStep)(*static_cast<CVisView*>(view));
}

template <CNavigation::Step kPick>
void CNavigation::RunPick(void* argument) {
    CVisView& view = *static_cast<CVisView*>(argument);
    const std::unique_lock model(g_modelLock, std::try_to_lock);
    if (!model.owns_lock()) {
        // Whoever has the model may be waiting for this very frame.
        current->m_visualiser.Redraw();
        return;
    }
    mav_frameFn2Rmv(RunPick<kPick>, &view);
    // What the host has been told to make room for is not replaced by a key that a user presses.
    std::vector<CCollisionResult> ofHost;
    ofHost.swap(g_collisionResults);
    try {
        (current->*kPick)(view);
    } catch (...) {
        ofHost.swap(g_collisionResults);
        throw;
    }
    ofHost.swap(g_collisionResults);
}

template <CNavigation::Step kPick>
void CNavigation::QueuePick(CVisView& view) {
    // However often the key is pressed while the model is busy, one pick waits: Detach takes one
    // back.
    mav_frameFn2Rmv(RunPick<kPick>, &view);
    mav_frameFn2Add(RunPick<kPick>, &view);
    m_visualiser.Redraw();
}

const CNavigation::ButtonDrag CNavigation::kDrags[] = {
    {kLeft, RunStep<&CNavigation::TrackballStep>},
    {kMiddle, RunStep<&CNavigation::DollyStep>},
    {kRight, RunStep<&CNavigation::PanStep>}};

const CNavigation::KeyStep CNavigation::kKeySteps[] = {
    {'w', kKeyUp, RunStep<&CNavigation::StepForward>},
    {'s', kKeyDown, RunStep<&CNavigation::StepBackward>},
    {'a', kKeyLeft, RunStep<&CNavigation::StepLeft>},
    {'d', kKeyRight, RunStep<&CNavigation::StepRight>},
    {'r', 0, RunStep<&CNavigation::StepUp>},
    {'f', 0, RunStep<&CNavigation::StepDown>}};

CNavigation::CNavigation(CVisualiser& visualiser, COverlays& overlays)
    : m_visualiser(visualiser), m_overlays(overlays) {
    current = this;
}

CNavigation::~CNavigation() {
    current = nullptr;
}

void CNavigation::Attach(CVisView& view) {
    mav_navigationMouse(view.m_window, OnMouse);
    mav_callbackKeyboardSet(view.m_window, OnKey);
}

void CNavigation::Detach(CVisView& view) noexcept {
    if (view.m_mouseLook) {
        ToggleMouseLook(view);
    }
    mav_frameFn2Rmv(RunPick<&CNavigation::PickAndFly>, &view);
    mav_frameFn2Rmv(RunPick<&CNavigation::PickAndSelect>, &view);
}

float CNavigation::StepSize(const CVisView& view) const noexcept {
    return kNavScale * view.m_navigationSpeed;
}

bool CNavigation::IsDragging() const noexcept {
    return m_dragging[kLeft] || m_dragging[kMiddle] || m_dragging[kRight];
}

// ---- Mouse -------------------------------------------------------------------------------------

int CNavigation::OnMouse(MAV_window* window, const MAV_mouseEvent& event) {
    const CVisualiser::FrameLock lock(current->m_visualiser);
    current->Mouse(ViewOf(window), event);
    return 1;
}

void CNavigation::Mouse(CVisView& view, const MAV_mouseEvent& event) {
    if (event.button == kWheelUp || event.button == kWheelDown) {
        Wheel(view, event.button == kWheelUp ? kWheelStep : -kWheelStep);
        return;
    }
    const bool isPress = event.movement == kPressed;
    if (isPress) {
        if (IsDragging()) {
            return;
        }
        CountInteraction(1);
        m_navJustStarted = true;
        BeginNavigation(view);
        m_lastMouseX = mav_mouse_root_x;
        m_lastMouseY = mav_mouse_root_y;
    } else {
        CountInteraction(-1);
        EndNavigation(view);
    }
    bool& dragging = m_dragging[static_cast<std::size_t>(event.button)];
    const MAV_frameFn step = kDrags[event.button].step;
    if (dragging) {
        mav_frameFn0Rmv(step, &view);
        dragging = false;
    } else if (isPress && !view.m_mouseLook) {
        // Looking around, no drag begins; one that began before still ends.
        mav_frameFn0Add(step, &view);
        dragging = true;
    }
}

void CNavigation::Wheel(CVisView& view, float scale) {
    mav_viewParamsAnimateStop(view.m_window);
    if (view.m_orthogonal) {
        ChangeOrthoSize(view, -scale);
    } else {
        mav_navigateForwards(view.m_viewParams, 1.0F, scale, 0);
    }
    m_visualiser.Redraw();
}

void CNavigation::BeginNavigation(CVisView& view) {
    mav_viewParamsAnimateStop(view.m_window);
    const auto& [x, y, z] = view.m_navCenter;
    mav_nav_center = {x, y, z};
    m_overlays.ShowNavigationOverlay(view);
}

void CNavigation::EndNavigation(CVisView& view) noexcept {
    m_overlays.HideNavigationOverlay(view);
    m_visualiser.Redraw();
}

void CNavigation::TrackballStep(CVisView& view) {
    const MAV_window& window = *view.m_window;
    const auto inWindow = [&window](int x, int y) {
        return CTrackballPoint{
            2 * static_cast<float>(x) / static_cast<float>(window.width) - 1,
            -(2 * static_cast<float>(y) / static_cast<float>(window.height) - 1)};
    };
    MAV_viewParams& camera = view.m_viewParams;
    if (m_navJustStarted) {
        m_navJustStarted = false;
        m_lastMouseX = mav_mouse_x;
        m_lastMouseY = mav_mouse_y;
        m_trackball.Begin(mav_windowViewMatrix(&window));
        return;
    }
    const MAV_vector way = mav_vectorSub(camera.eye, mav_nav_center);
    const float distance = std::hypot(way.x, way.y, way.z);
    m_trackball.Turn(inWindow(m_lastMouseX, m_lastMouseY), inWindow(mav_mouse_x, mav_mouse_y));
    const MAV_matrix m = m_trackball.View();
    camera.view = {-m[8], -m[9], -m[10]};
    camera.up = {m[4], m[5], m[6]};
    camera.right = {m[0], m[1], m[2]};
    camera.eye = mav_vectorAdd(mav_nav_center, mav_vectorScalar(camera.view, -distance));
    m_lastMouseX = mav_mouse_x;
    m_lastMouseY = mav_mouse_y;
}

void CNavigation::PanStep(CVisView& view) {
    int dx = mav_mouse_root_x - m_lastMouseX;
    int dy = mav_mouse_root_y - m_lastMouseY;
    if (m_navJustStarted) {
        m_navJustStarted = false;
        dx = 0;
        dy = 0;
    }
    const float s = StepSize(view);
    MAV_viewParams& camera = view.m_viewParams;
    const bool raises = mav_keyHeld(kKeyLeftControl) && !mav_keyHeld(kKeyRightControl) &&
                        !mav_keyToggled(kKeyRightControl);
    if (raises) {
        view.m_navCenter[1] += static_cast<float>(dy) * s;
        RecentreOnPlane(view);
        mav_navigateUpFixedUp(camera, static_cast<float>(dy), s, 0);
    } else {
        if (camera.eye.y - camera.view.y < 0) {
            dy = -dy;
        }
        mav_navigateRight(camera, static_cast<float>(dx), -kPanStep * s, 0);
        mav_navigateForwardsFixedUp(camera, static_cast<float>(dy), kPanStep * s, 0);
        RecentreOnPlane(view);
    }
    m_lastMouseX = mav_mouse_root_x;
    m_lastMouseY = mav_mouse_root_y;
}

void CNavigation::DollyStep(CVisView& view) {
    const int dy = m_navJustStarted ? 0 : mav_mouse_root_y - m_lastMouseY;
    m_navJustStarted = false;
    m_lastMouseX = mav_mouse_root_x;
    m_lastMouseY = mav_mouse_root_y;
    const float step = -kDollyStep * StepSize(view) * (m_navBoost ? kBoost : 1);
    if (view.m_orthogonal) {
        ChangeOrthoSize(view, -step * static_cast<float>(dy));
    } else if (dy != 0) {
        MoveBeforeCenter(view, static_cast<float>(dy), step);
    }
}

// ---- Keys --------------------------------------------------------------------------------------

int CNavigation::OnKey(MAV_window* window, const MAV_keyboardEvent& event) {
    const CVisualiser::FrameLock lock(current->m_visualiser);
    current->Key(ViewOf(window), event);
    return 1;
}

void CNavigation::Key(CVisView& view, const MAV_keyboardEvent& event) {
    const bool isPress = event.movement == kPressed;
    CountInteraction(isPress ? 1 : -1);
    for (const KeyStep& entry : kKeySteps) {
        if (event.key != entry.character && event.key != entry.arrow) {
            continue;
        }
        if (isPress) {
            BeginNavigation(view);
            mav_frameFn1Add(entry.step, &view);
        } else {
            mav_frameFn1Rmv(entry.step, &view);
            EndNavigation(view);
        }
    }
    if (event.key == kKeyLeftControl || event.key == kKeyRightControl) {
        m_navBoost = isPress;
    }
    if (!isPress) {
        return;
    }
    if (event.key == kKeyTab) {
        ToggleMouseLook(view);
    } else if (event.key == 'z') {
        QueuePick<&CNavigation::PickAndFly>(view);
    } else if (event.key == kKeySpace) {
        QueuePick<&CNavigation::PickAndSelect>(view);
    }
}

void CNavigation::StepForward(CVisView& view) {
    if (view.m_orthogonal) {
        ChangeOrthoSize(view, -StepSize(view));
    } else {
        MoveBeforeCenter(view, kKeyStep, StepSize(view));
    }
}

void CNavigation::StepBackward(CVisView& view) {
    if (view.m_orthogonal) {
        ChangeOrthoSize(view, StepSize(view));
    } else {
        mav_navigateForwards(view.m_viewParams, -kKeyStep, StepSize(view), 0);
    }
}

void CNavigation::StepLeft(CVisView& view) {
    StepAside(view, -kKeyStep);
}

void CNavigation::StepRight(CVisView& view) {
    StepAside(view, kKeyStep);
}

void CNavigation::StepAside(CVisView& view, float amount) {
    RecentreOnPlane(view);
    mav_navigateRight(view.m_viewParams, amount, StepSize(view), 0);
}

void CNavigation::StepUp(CVisView& view) {
    view.m_navCenter[1] += kKeyStep * StepSize(view);
    RecentreOnPlane(view);
    mav_navigateUpFixedUp(view.m_viewParams, kKeyStep, StepSize(view), 0);
}

void CNavigation::StepDown(CVisView& view) {
    view.m_navCenter[1] -= kKeyStep * StepSize(view);
    mav_navigateUpFixedUp(view.m_viewParams, -kKeyStep, StepSize(view), 0);
    RecentreOnPlane(view);
}

void CNavigation::MoveBeforeCenter(CVisView& view, float amount, float linear) {
    MAV_viewParams& camera = view.m_viewParams;
    const MAV_vector oldEye = camera.eye;
    const float height = view.m_navCenter[1];
    const bool wasAbove = oldEye.y > height;
    mav_navigateForwards(camera, amount, linear, 0);
    camera.eye = KeptBeforeCentre(camera.eye, oldEye, mav_nav_center, height, wasAbove,
                                  view.m_navigationSpeed);
}

void CNavigation::ChangeOrthoSize(CVisView& view, float by) {
    // Below nothing there is no way to see, and none back but through nothing.
    view.m_orthoSize = std::max(view.m_orthoSize + by, kLeastOrthoSize * view.m_navigationSpeed);
    ApplyWindowSettings(view);
}

void CNavigation::RecentreOnPlane(CVisView& view) noexcept {
    view.m_navCenter = CentreOnPlane(view.m_viewParams, mav_nav_center, view.m_navCenter[1],
                                     view.m_navigationSpeed);
    const auto& [x, y, z] = view.m_navCenter;
    mav_nav_center = {x, y, z};
    m_overlays.PlaceNavigationOverlay(view);
}

// ---- Looking around ----------------------------------------------------------------------------

void CNavigation::ToggleMouseLook(CVisView& view) {
    MAV_viewParams& saved = m_savedViewParams[static_cast<std::size_t>(view.m_index)];
    const MAV_frameFn step = RunStep<&CNavigation::MouseLookStep>;
    view.m_mouseLook = !view.m_mouseLook;
    if (!view.m_mouseLook) {
        CountInteraction(-1);
        view.m_viewParams = saved;
        mav_frameFn1Rmv(step, &view);
        return;
    }
    mav_viewParamsAnimateStop(view.m_window);
    saved = view.m_viewParams;
    CountInteraction(1);
    view.m_lookX = mav_mouse_root_x;
    view.m_lookY = mav_mouse_root_y;
    mav_frameFn1Add(step, &view);
}

void CNavigation::MouseLookStep(CVisView& view) {
    const int x = mav_mouse_root_x;
    const int y = mav_mouse_root_y;
    const int dx = mav_windowIsActive(view.m_window) ? x - view.m_lookX : 0;
    const int dy = mav_windowIsActive(view.m_window) ? y - view.m_lookY : 0;
    view.m_lookX = x;
    view.m_lookY = y;
    if (dx == 0 && dy == 0) {
        return;
    }
    // The cursor goes on at the other side of the screen, so that there is no end to turning.
    int width = 0;
    int height = 0;
    mav_gfxWindowResGet(view.m_window, &width, &height);
    const int wrappedX = x >= width - 1 ? 0 : (x <= 0 ? width - 1 : x);
    const int wrappedY = y >= height - 1 ? 0 : (y <= 0 ? height - 1 : y);
    if ((wrappedX != x || wrappedY != y) && mav_mouseRootSet(wrappedX, wrappedY)) {
        view.m_lookX = wrappedX;
        view.m_lookY = wrappedY;
    }
    mav_navigateYawFixedUp(view.m_viewParams, static_cast<float>(dx), 0, -kLookStep * kNavScale);
    mav_navigatePitch(view.m_viewParams, static_cast<float>(dy), 0, -kLookStep * kNavScale);
}
