#include "platform/maverik/Windows.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <limits>
#include <sstream>
#include <thread>
#include <utility>

#include "platform/maverik/ScreenConnection.h"
#include "platform/maverik/ScreenProbe.h"
#include "platform/maverik/WindowState.h"

// Stands until the process ends: a host may leave it while frames are drawn.
std::unique_ptr<WindowSystem>& windowSystem =
    *std::make_unique<std::unique_ptr<WindowSystem>>().release();

namespace {

constexpr int kLargestSide = 8192;
constexpr int kFarAway = 1'000'000;
constexpr const char* kOffscreen = "offscreen";
/// Window managers tell the sizes of frames only after a window is there.
constexpr int kFrameSizeTries = 25;
constexpr std::chrono::milliseconds kFrameSizePause{4};

MAV_window allWindows;

void (*onScreenLost)() noexcept = nullptr;

/// What is set for this library alone, and is not to stay for a host that uses SDL later.
constexpr const char* kHints[] = {SDL_HINT_NO_SIGNAL_HANDLERS, SDL_HINT_VIDEO_ALLOW_SCREENSAVER,
                                  SDL_HINT_QUIT_ON_LAST_WINDOW_CLOSE, SDL_HINT_VIDEODRIVER};

/// SDL is given back only as far as this library has asked for it.
bool holdsSdl = false;

int Side(int size) {
    return std::clamp(size, 1, kLargestSide);
}

/// Left or top of a window that is to overlap the screen [low, high).
int Onto(int at, int low, int high) {
    constexpr int kVisible = 32;
    return std::clamp(at, low, std::max(low, high - kVisible));
}

/// A place at which at least the upper left corner is on a screen.
SDL_Point PlaceOnScreen(int x, int y) {
    SDL_Point best = {std::clamp(x, -kFarAway, kFarAway), std::clamp(y, -kFarAway, kFarAway)};
    long long bestDistance = std::numeric_limits<long long>::max();
    const SDL_Point wanted = best;
    for (int i = 0; i < SDL_GetNumVideoDisplays(); ++i) {
        SDL_Rect screen;
        if (SDL_GetDisplayBounds(i, &screen) != 0) {
            continue;
        }
        const SDL_Point place = {Onto(wanted.x, screen.x, screen.x + screen.w),
                                 Onto(wanted.y, screen.y, screen.y + screen.h)};
        const long long dx = place.x - wanted.x;
        const long long dy = place.y - wanted.y;
        if (dx * dx + dy * dy < bestDistance) {
            bestDistance = dx * dx + dy * dy;
            best = place;
        }
    }
    return best;
}

SDL_Window* OpenSdlWindow(int x, int y, int width, int height, const char* title) {
    const SDL_Point place = PlaceOnScreen(x, y);
    return SDL_CreateWindow(title, place.x, place.y, Side(width), Side(height),
                            SDL_WINDOW_OPENGL | SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI);
}

/// Takes the window over, whatever happens. The context must be current.
MAV_window* AddWindow(SDL_Window* sdl) {
    try {
        auto window = std::make_unique<MAV_window>();
        window->state = std::make_unique<WindowState>(sdl);
        window->id = windowSystem->nextId++;
        windowSystem->windows.push_back(std::move(window));
    } catch (...) {
        SDL_DestroyWindow(sdl);
        throw;
    }
    MAV_window* const added = windowSystem->windows.back().get();
    UpdateSize(*added);
    return added;
}

/// Gives back what a system holds, as far as it has come.
void TearDown() noexcept {
    if (windowSystem == nullptr) {
        return;
    }
    while (!windowSystem->windows.empty()) {
        mav_windowDelete(windowSystem->windows.back().get());
    }
    windowSystem->renderer.reset();
    if (windowSystem->context != nullptr) {
        SDL_GL_DeleteContext(windowSystem->context);
    }
    screen::Forget();
    windowSystem.reset();
    mav_palette_default = nullptr;
    mav_win_current = nullptr;
}

void QuitSdl() noexcept {
    if (holdsSdl) {
        SDL_QuitSubSystem(SDL_INIT_VIDEO | SDL_INIT_EVENTS);
        holdsSdl = false;
    }
#if SDL_VERSION_ATLEAST(2, 24, 0)
    for (const char* hint : kHints) {
        SDL_ResetHint(hint);
    }
#endif
}

void SetHints(const std::string& driver) {
    // The host's signals and its idea of text input are its own.
    SDL_SetHintWithPriority(SDL_HINT_NO_SIGNAL_HANDLERS, "1", SDL_HINT_OVERRIDE);
    SDL_SetHintWithPriority(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "1", SDL_HINT_OVERRIDE);
    SDL_SetHintWithPriority(SDL_HINT_QUIT_ON_LAST_WINDOW_CLOSE, "0", SDL_HINT_OVERRIDE);
    if (!driver.empty()) {
        SDL_SetHintWithPriority(SDL_HINT_VIDEODRIVER, driver.c_str(), SDL_HINT_OVERRIDE);
    }
}

void SetContextAttributes() {
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_MAJOR_VERSION, 3);
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_MINOR_VERSION, 3);
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_PROFILE_MASK, SDL_GL_CONTEXT_PROFILE_CORE);
    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
    // Pictures are made apart from the windows, with a depth buffer of their own.
    SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 0);
}

const char* Environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// Whether the screen that this driver connects to, if it does to any, can be asked.
bool Answers(const std::string& driver, ScreenProbe& probe) {
    if (SDL_strcasecmp(driver.c_str(), "x11") == 0) {
        return probe.XAnswers(Environment("DISPLAY"));
    }
    if (SDL_strcasecmp(driver.c_str(), "wayland") == 0) {
        return probe.WaylandAnswers(Environment("WAYLAND_DISPLAY"));
    }
    return true;
}

/// The drivers that may be tried, the best first. An empty name leaves the choice to SDL.
std::vector<std::string> Drivers() {
    std::vector<std::string> drivers;
    std::istringstream wanted(Environment("SDL_VIDEODRIVER"));
    for (std::string driver; std::getline(wanted, driver, ',');) {
        if (!driver.empty()) {
            drivers.push_back(driver);
        }
    }
    if (!drivers.empty()) {
        return drivers;
    }
#if defined(__linux__)
    // Without a session SDL would take over the console, if it may.
    for (const auto& [driver, session] :
         {std::pair{"x11", "DISPLAY"}, {"wayland", "WAYLAND_DISPLAY"}}) {
        if (*Environment(session) != '\0') {
            drivers.emplace_back(driver);
        }
    }
#else
    drivers.emplace_back();
#endif
    drivers.emplace_back(kOffscreen);
    return drivers;
}

/// Waits a moment for the window manager to tell the sizes of its frames.
void AwaitFrameSizes(SDL_Window* sdl) {
    for (int i = 0; i < kFrameSizeTries; ++i) {
        SDL_PumpEvents();
        int top = 0;
        if (SDL_GetWindowBordersSize(sdl, &top, nullptr, nullptr, nullptr) != 0 || top > 0) {
            return;
        }
        std::this_thread::sleep_for(kFrameSizePause);
    }
}

/// The screen is gone, and this thread stands still where it is: nothing of the system can be given
/// back any more.
void LoseSystem() noexcept {
    [[maybe_unused]] static WindowSystem* const lost = windowSystem.release();
    if (onScreenLost != nullptr) {
        onScreenLost();
    }
}

bool Start(const std::string& driver, const char* title) {
    SetHints(driver);
    if (SDL_InitSubSystem(SDL_INIT_VIDEO | SDL_INIT_EVENTS) != 0) {
        return false;
    }
    holdsSdl = true;
    SetContextAttributes();
    windowSystem = std::make_unique<WindowSystem>();
    SDL_Window* const sdl =
        OpenSdlWindow(mav_opt_x, mav_opt_y, mav_opt_width, mav_opt_height, title);
    if (sdl == nullptr) {
        return false;
    }
    windowSystem->context = SDL_GL_CreateContext(sdl);
    if (windowSystem->context == nullptr) {
        SDL_DestroyWindow(sdl);
        return false;
    }
    screen::Watch(sdl, LoseSystem);
    windowSystem->palette = std::make_unique<MAV_palette>(mav_opt_maxMaterials, mav_opt_maxLights);
    mav_win_current = AddWindow(sdl);
    windowSystem->renderer = std::make_unique<Renderer>();
    mav_palette_default = windowSystem->palette.get();
    SDL_GL_SetSwapInterval(0);
    SDL_StopTextInput();
    AwaitFrameSizes(sdl);
    return true;
}

}  // namespace

MAV_window::MAV_window() = default;
MAV_window::~MAV_window() = default;

MAV_window* const mav_win_all = &allWindows;
MAV_window* mav_win_current = nullptr;
MAV_palette* mav_palette_default = nullptr;

std::atomic<int> mav_opt_trans{1};
int mav_opt_x = 0;
int mav_opt_y = 0;
int mav_opt_width = 300;
int mav_opt_height = 300;
int mav_opt_maxMaterials = 1000;
int mav_opt_maxLights = 8;
int mav_opt_output = 0;

MAV_start mav_initialise(int* /*argc*/, char** argv) {
    if (mav_screenLost()) {
        return MAV_start::kNone;
    }
    for (const std::string& driver : Drivers()) {
        ScreenProbe probe;
        try {
            if (Answers(driver, probe) && Start(driver, argv[0])) {
                return SDL_GetCurrentVideoDriver() == std::string_view(kOffscreen)
                           ? MAV_start::kOffscreen
                           : MAV_start::kScreen;
            }
        } catch (const RendererFailure&) {
            // The next driver may do better.
        } catch (...) {
            mav_shutdown();
            throw;
        }
        mav_shutdown();
    }
    return MAV_start::kNone;
}

void mav_shutdown() noexcept {
    if (mav_screenLost()) {
        return;
    }
    TearDown();
    QuitSdl();
#if SDL_VERSION_ATLEAST(2, 0, 16)
    // What SDL keeps for each thread, it gives back itself only for threads that it made.
    SDL_TLSCleanup();
#endif
    screen::Restore();
}

bool mav_screenLost() noexcept {
    return screen::IsLost();
}

void mav_callbackScreenLostSet(void (*function)() noexcept) noexcept {
    onScreenLost = function;
}

MAV_window* mav_windowNew(int x, int y, int width, int height, const char* title) {
    SDL_Window* const sdl = OpenSdlWindow(x, y, width, height, title);
    if (sdl == nullptr) {
        return nullptr;
    }
    if (SDL_GL_MakeCurrent(sdl, windowSystem->context) != 0) {
        SDL_DestroyWindow(sdl);
        return nullptr;
    }
    SDL_GL_SetSwapInterval(0);
    return AddWindow(sdl);
}

void mav_windowDelete(MAV_window* window) noexcept {
    WindowSystem& system = *windowSystem;
    try {
        ReleaseHeld(*window);
    } catch (const std::exception&) {
        // Memory is short: the window goes all the same.
    }
    if (system.mouseWindow == window) {
        system.mouseWindow = nullptr;
    }
    SDL_Window* const sdl = window->state->sdl;
    SDL_GL_MakeCurrent(sdl, system.context);
    const auto it = std::find_if(system.windows.begin(), system.windows.end(),
                                 [window](const auto& w) { return w.get() == window; });
    system.windows.erase(it);
    if (mav_win_current == window) {
        mav_win_current = system.windows.empty() ? nullptr : system.windows.front().get();
    }
    // The context outlives the window, and stays current somewhere as long as there is one.
    SDL_GL_MakeCurrent(mav_win_current == nullptr ? sdl : mav_win_current->state->sdl,
                       system.context);
    if (system.windows.empty()) {
        // The last one takes the renderer's things with it.
        system.renderer.reset();
        SDL_GL_DeleteContext(system.context);
        system.context = nullptr;
    }
    SDL_DestroyWindow(sdl);
}

MAV_window* FindWindow(Uint32 sdlId) noexcept {
    for (const auto& window : windowSystem->windows) {
        if (SDL_GetWindowID(window->state->sdl) == sdlId) {
            return window.get();
        }
    }
    return nullptr;
}

void UpdateSize(MAV_window& window) noexcept {
    int width = 1;
    int height = 1;
    SDL_GL_GetDrawableSize(window.state->sdl, &width, &height);
    window.width = std::max(1, width);
    window.height = std::max(1, height);
}

float PixelScale(const MAV_window& window) noexcept {
    int width = 0;
    SDL_GetWindowSize(window.state->sdl, &width, nullptr);
    return width > 0 ? static_cast<float>(window.width) / static_cast<float>(width) : 1;
}

// ---- Places and sizes --------------------------------------------------------------------------

std::uintptr_t mav_gfxWindowHandleGet(const MAV_window* window) noexcept {
    return screen::NativeHandle(window->state->sdl);
}

void mav_gfxWindowPos(const MAV_window* window, int* left, int* right, int* top, int* bottom) {
    SDL_Window* const sdl = window->state->sdl;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    SDL_GetWindowPosition(sdl, &x, &y);
    SDL_GetWindowSize(sdl, &width, &height);
    int above = 0;
    int before = 0;
    int below = 0;
    int after = 0;
    SDL_GetWindowBordersSize(sdl, &above, &before, &below, &after);
    *left = x - before;
    *top = y - above;
    *right = x + width + after;
    *bottom = y + height + below;
}

void mav_gfxFrameSizes(int* borderX, int* borderY, int* captionHeight) noexcept {
    int above = 0;
    int before = 0;
    int below = 0;
    if (windowSystem != nullptr && !windowSystem->windows.empty()) {
        SDL_GetWindowBordersSize(windowSystem->windows.front()->state->sdl, &above, &before, &below,
                                 nullptr);
    }
    *borderX = before;
    *borderY = below;
    *captionHeight = std::max(0, above - below);
}

void mav_gfxWindowResGet(const MAV_window* window, int* width, int* height) noexcept {
    SDL_Rect screen = {0, 0, 1, 1};
    SDL_GetDisplayBounds(std::max(0, SDL_GetWindowDisplayIndex(window->state->sdl)), &screen);
    *width = screen.w;
    *height = screen.h;
}

bool mav_gfxWindowIsMaximized(const MAV_window* window) noexcept {
    return (SDL_GetWindowFlags(window->state->sdl) & SDL_WINDOW_MAXIMIZED) != 0;
}

void mav_gfxWindowMaximize(MAV_window* window) noexcept {
    SDL_MaximizeWindow(window->state->sdl);
}

void mav_gfxWindowPlaceSet(MAV_window* window, int x, int y, int width, int height) noexcept {
    const SDL_Point place = PlaceOnScreen(x, y);
    SDL_SetWindowPosition(window->state->sdl, place.x, place.y);
    mav_gfxWindowSizeSet(window, width, height);
}

void mav_gfxWindowSizeSet(MAV_window* window, int width, int height) noexcept {
    SDL_SetWindowSize(window->state->sdl, Side(width), Side(height));
    UpdateSize(*window);
}

void mav_gfxWindowIconSet(MAV_window* window, int width, int height, const std::uint8_t* rgba) {
    SDL_Surface* const icon = SDL_CreateRGBSurfaceWithFormatFrom(
        const_cast<std::uint8_t*>(rgba), width, height, 32, 4 * width, SDL_PIXELFORMAT_RGBA32);
    if (icon != nullptr) {
        SDL_SetWindowIcon(window->state->sdl, icon);
        SDL_FreeSurface(icon);
    }
}

bool mav_windowIsActive(const MAV_window* window) noexcept {
    return SDL_GetKeyboardFocus() == window->state->sdl;
}
