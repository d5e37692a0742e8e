#pragma once

#include <memory>

#include "visualiser/VisView.h"

class COverlays;
class CVisualiser;

/// Mouse, wheel and keys in the windows of the views. Lives on the render thread; the callbacks of
/// the windows take the visualiser's frame lock themselves.
class CNavigation {
  public:
    CNavigation(CVisualiser& visualiser, COverlays& overlays);
    ~CNavigation();
    CNavigation(const CNavigation&) = delete;
    CNavigation& operator=(const CNavigation&) = delete;

    /// Mouse and keys of this view's window act on it from now on.
    void Attach(CVisView& view);
    /// The view's window goes: what is held or dragged there counts as let go.
    void Detach(CVisView& view) noexcept;
    /// Puts the view's centre where its ray meets the horizontal plane through the centre of
    /// navigation, within 250 times the navigation speed.
    void RecentreOnPlane(CVisView& view) noexcept;

  private:
    struct State;
    std::unique_ptr<State> m_state;
};
