#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

#include "model/Group.h"
#include "platform/maverik/Maverik.h"

namespace settings {
class ProfileStore;
}

struct MAV_SMS;
struct MAV_window;

/// One of the four views on the scene. The record stands for the whole run, also without a display
/// and while its window is closed, and holds what is set for it. Placement, clipping, fog and
/// speed come from the per-user store and go back there when the record goes.
///
/// While a display runs, all fields are guarded by its frame lock, but for those of the window,
/// which belong to the render thread, and m_open.
class CVisView {
  public:
    /// `index` is 0 to 3; `store` must outlive the view.
    CVisView(int index, settings::ProfileStore& store);
    ~CVisView();
    CVisView(const CVisView&) = delete;
    CVisView& operator=(const CVisView&) = delete;

    const int m_index;
    /// The window is open or being opened. The main view counts as open at all times.
    std::atomic<bool> m_open;
    /// Null while closed. Written by the render thread, under the frame lock.
    MAV_window* m_window = nullptr;
    /// Handle of the native window; 0 while closed.
    std::uintptr_t m_hwnd = 0;
    /// The objects of the scene that the view shows, and its overlays; null without a display.
    MAV_SMS* m_sms = nullptr;
    MAV_SMS* m_overlaySms = nullptr;
    MAV_viewParams m_viewParams = {};
    /// Title of the window, and the entry in the panel's list of views.
    std::string m_name;
    /// Outer rectangle of the window, in pixels of the screen.
    int m_left = 0;
    int m_top = 0;
    int m_width = 300;
    int m_height = 300;
    bool m_maximized = false;
    bool m_backfaceCull = false;
    bool m_orthogonal = false;
    float m_orthoSize = 100.0F;
    bool m_mouseLook = false;
    /// Last position of the cursor in mouse-look mode, in pixels.
    int m_lookX = 0;
    int m_lookY = 0;
    /// The point that the camera looks at and turns about.
    std::array<float, 3> m_navCenter = {0.0F, 0.0F, 0.0F};
    std::array<float, 3> m_background = {1.0F, 1.0F, 1.0F};
    bool m_showCompass = true;
    bool m_showGrid = true;
    bool m_showStatus = false;
    /// Distance at which fog starts; it is complete 100 further on.
    float m_fogStart = 400.0F;
    float m_nearClip = 0.1F;
    float m_farClip = 500.0F;
    /// Scale of all steps of navigation.
    float m_navigationSpeed = 1.0F;

  private:
    settings::ProfileStore& m_store;
};

/// The views by number, view 0 the main view; null before the start and after the end of the
/// library. The application object owns them.
extern std::array<CVisView*, kViewCount> g_views;
