#pragma once

#include <array>

#include "model/Group.h"
#include "platform/maverik/Windows.h"
#include "visualiser/Trackball.h"
#include "visualiser/VisView.h"

class COverlays;
class CVisualiser;

/// Mouse, wheel and keys in the windows of the views. One at a time; lives on the render thread.
/// The callbacks of windows take the visualiser's frame lock, frame functions run under it.
class CNavigation {
  public:
    CNavigation(CVisualiser& visualiser, COverlays& overlays);
    ~CNavigation();
    CNavigation(const CNavigation&) = delete;
    CNavigation& operator=(const CNavigation&) = delete;

    /// Mouse and keys of this view's window act on it from now on.
    void Attach(CVisView& view);
    /// The view's window is about to go. What is held there is told as released when it does.
    void Detach(CVisView& view) noexcept;
    /// Puts the view's centre where its ray meets the horizontal plane through the centre of
    /// navigation, within 250 times the navigation speed.
    void RecentreOnPlane(CVisView& view) noexcept;

  private:
    /// What runs each frame while a button or key is down.
    using Step = void (CNavigation::*)(CVisView&);
    struct ButtonDrag;
    struct KeyStep;
    static const ButtonDrag kDrags[];
    static const KeyStep kKeySteps[];

    static int OnMouse(MAV_window* window, const MAV_mouseEvent& event);
    static int OnKey(MAV_window* window, const MAV_keyboardEvent& event);
    template <Step kStep>
    static void RunStep(void* view);

    void Mouse(CVisView& view, const MAV_mouseEvent& event);
    void Wheel(CVisView& view, float scale);
    void Key(CVisView& view, const MAV_keyboardEvent& event);
    bool IsDragging() const noexcept;
    void BeginNavigation(CVisView& view);
    void EndNavigation(CVisView& view) noexcept;
    void ToggleMouseLook(CVisView& view);

    void TrackballStep(CVisView& view);
    void PanStep(CVisView& view);
    void DollyStep(CVisView& view);
    void StepForward(CVisView& view);
    void StepBackward(CVisView& view);
    void StepLeft(CVisView& view);
    void StepRight(CVisView& view);
    void StepUp(CVisView& view);
    void StepDown(CVisView& view);
    void StepAside(CVisView& view, float amount);
    void MouseLookStep(CVisView& view);

    /// Forwards by amount times linear, but not past the centre; in an orthogonal view nothing.
    void MoveBeforeCenter(CVisView& view, float amount, float linear);
    void ChangeOrthoSize(CVisView& view, float by);
    float StepSize(const CVisView& view) const noexcept;

    void PickAndFly(CVisView& view);
    void PickAndSelect(CVisView& view);
    /// Runs a pick once, as soon as the model is free; until then it stays for the next frame.
    template <Step kPick>
    static void RunPick(void* view);
    template <Step kPick>
    void QueuePick(CVisView& view);

    CVisualiser& m_visualiser;
    COverlays& m_overlays;
    std::array<bool, 3> m_dragging = {};  ///< by button; one at a time
    bool m_navJustStarted = false;        ///< the first step of a drag moves nothing
    bool m_navBoost = false;              ///< a Control key is held
    int m_lastMouseX = 0;
    int m_lastMouseY = 0;
    CTrackball m_trackball;
    /// The cameras when mouse-look began.
    std::array<MAV_viewParams, kViewCount> m_savedViewParams = {};
};
