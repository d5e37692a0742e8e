// Windows of the views: opening, closing, and what they take over from the records.

#include <algorithm>
#include <array>
#include <exception>

#include "visualiser/Lights.h"
#include "visualiser/Navigation.h"
#include "visualiser/Overlays.h"
#include "visualiser/Visualiser.h"
#include "visualiser/WindowIcon.h"

namespace {

/// The user's file may say anything of a window's place and size; beyond this the sums would not be
/// right, and no window can be.
constexpr int kFarthest = 1'000'000;
/// From where fog starts to where it hides everything.
constexpr float kFogDepth = 100.0F;
constexpr const char* kNoSplash = "-nosplash";

/// The display that runs, for the callbacks of windows. Belongs to the render thread.
CVisualiser* running = nullptr;

struct Rectangle {
    int x, y, width, height;
};

/// The drawing area of a window whose outer rectangle the record holds.
Rectangle DrawingArea(const CVisView& view) {
    int borderX = 0;
    int borderY = 0;
    int captionHeight = 0;
    mav_gfxFrameSizes(&borderX, &borderY, &captionHeight);
    const auto within = [](int value) { return std::clamp(value, -kFarthest, kFarthest); };
    return {within(view.m_left) + borderX, within(view.m_top) + borderY + captionHeight,
            within(view.m_width) - 2 * borderX,
            within(view.m_height) - 2 * borderY - captionHeight};
}

CVisView& ViewOf(const MAV_window* window) {
    return *static_cast<CVisView*>(window->user);
}

int ExposeWindow(MAV_window* /*window*/) {
    running->Redraw();
    return 1;
}

int ResizeWindow(MAV_window* window) {
    running->LockFrame();
    mav_resizeDefault(window);
    running->UnlockFrame();
    running->Redraw();
    return 1;
}

int CloseWindowOfUser(MAV_window* window) {
    running->WindowClosedByUser(ViewOf(window));
    return 1;
}

}  // namespace

void ApplyWindowSettings(CVisView& view) noexcept {
    MAV_window* const window = view.m_window;
    const auto [r, g, b] = view.m_background;
    mav_windowBackgroundColourSet(window, r, g, b);
    mav_windowBackfaceCullSet(window, view.m_backfaceCull);
    const float aspect = static_cast<float>(window->width) / static_cast<float>(window->height);
    if (view.m_orthogonal) {
        mav_windowOrthogonalSet(window, view.m_nearClip, view.m_farClip, view.m_orthoSize, aspect);
    } else {
        mav_windowPerspectiveSet(window, view.m_nearClip, view.m_farClip, kFieldOfView, aspect);
    }
    mav_windowFogSet(window, 1, view.m_fogStart, view.m_fogStart + kFogDepth, -1, -1, -1);
}

void CVisualiser::Abandon() noexcept {
    m_frameLock.Abandon();
    m_thread.Abandon();
}

bool CVisualiser::OpenDisplay() {
    running = this;
    mav_callbackScreenLostSet([]() noexcept { running->Abandon(); });
    CVisView& main = *g_views[0];
    {
        const std::lock_guard lock(m_frameLock);
        const Rectangle area = DrawingArea(main);
        mav_opt_trans = 1;
        mav_opt_x = area.x;
        mav_opt_y = area.y;
        mav_opt_width = area.width;
        mav_opt_height = area.height;
        mav_opt_output = 0;
    }
    std::string title = main.m_name;
    std::string noSplash = kNoSplash;
    std::array<char*, 2> arguments = {title.data(), noSplash.data()};
    int argumentCount = static_cast<int>(arguments.size());
    const MAV_start start = mav_initialise(&argumentCount, arguments.data());
    if (start == MAV_start::kNone) {
        return false;
    }
    m_onScreen = start == MAV_start::kScreen;
    const std::lock_guard lock(m_frameLock);
    SetUpColours(*mav_palette_default);
    SetUpLights(*mav_palette_default);
    NewMaterial(1, 0, 0, 1);
    m_overlays = std::make_unique<COverlays>();
    m_navigation = std::make_unique<CNavigation>(*this, *m_overlays);
    for (CVisView* view : g_views) {
        view->m_sms = mav_SMSObjListNew();
        view->m_overlaySms = mav_SMSObjListNew();
        if (view->m_sms == nullptr || view->m_overlaySms == nullptr) {
            return false;
        }
        m_overlays->BuildGrid(*view);
        ShowOrHideOverlays(*view);
        ResetView(view->m_index);
    }
    mav_callbackResizeSet(mav_win_all, ResizeWindow);
    mav_callbackExposeSet(mav_win_all, ExposeWindow);
    mav_callbackCloseSet(mav_win_all, CloseWindowOfUser);
    main.m_window = mav_win_current;
    // How large the frame around it is, is known only now.
    const Rectangle area = DrawingArea(main);
    mav_gfxWindowPlaceSet(main.m_window, area.x, area.y, area.width, area.height);
    FitOut(main);
    return true;
}

void CVisualiser::FitOut(CVisView& view) {
    MAV_window* const window = view.m_window;
    window->user = &view;
    view.m_hwnd = mav_gfxWindowHandleGet(window);
    mav_gfxWindowIconSet(window, kIconSize, kIconSize, DrawWindowIcon().data());
    mav_windowViewParamsSet(window, &view.m_viewParams);
    ApplyWindowSettings(view);
    m_navigation->Attach(view);
    if (view.m_maximized) {
        mav_gfxWindowMaximize(window);
    }
    view.m_open = true;
    Redraw();
}

void CVisualiser::OpenWindow(CVisView& view) {
    if (view.m_window != nullptr) {
        return;
    }
    const Rectangle area = DrawingArea(view);
    view.m_window = mav_windowNew(area.x, area.y, area.width, area.height, view.m_name.c_str());
    if (view.m_window == nullptr) {
        return;
    }
    try {
        FitOut(view);
    } catch (const std::exception&) {
        CloseWindow(view);
    }
}

void CVisualiser::CloseWindow(CVisView& view) noexcept {
    const std::lock_guard lock(m_frameLock);
    view.m_open = view.m_index == 0;
    m_flyingToScene[static_cast<std::size_t>(view.m_index)] = false;
    if (view.m_window != nullptr) {
        m_navigation->Detach(view);
        mav_windowDelete(view.m_window);
        view.m_window = nullptr;
        view.m_hwnd = 0;
    }
}

void CVisualiser::WindowClosedByUser(CVisView& view) noexcept {
    // The main view is there as long as the display is.
    if (view.m_index == 0) {
        m_closeWanted = true;
    } else {
        CloseWindow(view);
    }
}

void CVisualiser::SaveWindowPlacements() noexcept {
    if (!m_onScreen) {
        return;  // the user's places are those on a screen
    }
    for (CVisView* view : g_views) {
        if (view->m_window == nullptr) {
            continue;
        }
        view->m_maximized = mav_gfxWindowIsMaximized(view->m_window);
        if (!view->m_maximized) {
            int left = 0;
            int right = 0;
            int top = 0;
            int bottom = 0;
            mav_gfxWindowPos(view->m_window, &left, &right, &top, &bottom);
            view->m_left = left;
            view->m_top = top;
            view->m_width = right - left;
            view->m_height = bottom - top;
        }
    }
}

void CVisualiser::CloseDisplay() noexcept {
    const std::lock_guard lock(m_frameLock);
    SaveWindowPlacements();
    for (CVisView* view : g_views) {
        if (m_navigation != nullptr) {
            CloseWindow(*view);
        }
    }
    m_navigation.reset();
    m_overlays.reset();
    for (CVisView* view : g_views) {
        for (MAV_SMS** list : {&view->m_sms, &view->m_overlaySms}) {
            if (*list != nullptr) {
                mav_SMSDelete(*list);
                *list = nullptr;
            }
        }
    }
    m_work.clear();
    m_workAfterFrame.clear();
    m_textureOrders.clear();
    mav_shutdown();
    g_sceneDirty = false;
    g_activeInteractions = 0;
    running = nullptr;
}
