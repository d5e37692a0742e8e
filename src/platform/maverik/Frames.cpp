#include <algorithm>
#include <array>
#include <mutex>

#include "platform/maverik/WindowState.h"

namespace {

/// A frame that follows the last one this soon is part of a movement.
constexpr std::chrono::milliseconds kMovement{100};

struct FrameFunction {
    MAV_frameFn function;
    void* argument;
    bool isRemoved;

    bool Is(MAV_frameFn f, const void* a) const {
        return function == f && argument == a && !isRemoved;
    }
};

/// Functions that run with each frame.
class FrameFunctions {
  public:
    void Add(MAV_frameFn function, void* argument) {
        const std::lock_guard lock(m_mutex);
        m_entries.push_back({function, argument, false});
    }

    void Remove(MAV_frameFn function, const void* argument) noexcept {
        const std::lock_guard lock(m_mutex);
        const auto it = std::find_if(m_entries.begin(), m_entries.end(),
                                     [&](const auto& e) { return e.Is(function, argument); });
        if (it != m_entries.end()) {
            // Whoever runs the list may stand before or behind it.
            it->isRemoved = true;
        }
    }

    /// Those that are there now; a function may add and remove any.
    void Run() {
        std::size_t count = 0;
        {
            const std::lock_guard lock(m_mutex);
            std::erase_if(m_entries, [](const auto& e) { return e.isRemoved; });
            count = m_entries.size();
        }
        for (std::size_t i = 0; i < count; ++i) {
            FrameFunction entry{};
            {
                const std::lock_guard lock(m_mutex);
                entry = m_entries[i];
            }
            if (!entry.isRemoved) {
                entry.function(entry.argument);
            }
        }
    }

  private:
    std::mutex m_mutex;
    std::vector<FrameFunction> m_entries;
};

// Stand until the process ends, as the window system does.
std::array<FrameFunctions, 3>& lists = *std::make_unique<std::array<FrameFunctions, 3>>().release();

bool IsHeld() {
    return !windowSystem->heldKeys.empty() || !windowSystem->heldButtons.empty();
}

bool IsMoving() {
    return mav_viewParamsAnimating() || IsHeld();
}

void DrawWindow(MAV_window& window, int samples) {
    WindowState& state = *window.state;
    if (SDL_GL_MakeCurrent(state.sdl, windowSystem->context) != 0) {
        return;
    }
    state.target.Resize(window.width, window.height, samples);
    windowSystem->renderer->Draw(state.contents, state.target);
    state.isDrawn = true;
    // A window that nobody sees may hold up whoever waits for it to be shown.
    if ((SDL_GetWindowFlags(state.sdl) & (SDL_WINDOW_HIDDEN | SDL_WINDOW_MINIMIZED)) == 0) {
        state.target.ShowInWindow(window.width, window.height);
        SDL_GL_SwapWindow(state.sdl);
    }
}

}  // namespace

void mav_frameFn0Add(MAV_frameFn function, void* argument) {
    lists[0].Add(function, argument);
}

void mav_frameFn0Rmv(MAV_frameFn function, void* argument) noexcept {
    lists[0].Remove(function, argument);
}

void mav_frameFn1Add(MAV_frameFn function, void* argument) {
    lists[1].Add(function, argument);
}

void mav_frameFn1Rmv(MAV_frameFn function, void* argument) noexcept {
    lists[1].Remove(function, argument);
}

void mav_frameFn2Add(MAV_frameFn function, void* argument) {
    lists[2].Add(function, argument);
}

void mav_frameFn2Rmv(MAV_frameFn function, void* argument) noexcept {
    lists[2].Remove(function, argument);
}

void mav_frameBegin() {
    lists[0].Run();
    lists[1].Run();
    AdvanceFlights();
    BeginViews();
    UpdateMouseRay();
    lists[2].Run();
}

void mav_SMSDisplay(MAV_window* window, const MAV_SMS* sms) {
    window->state->contents.Collect(*sms, *windowSystem->palette, mav_opt_trans != 0);
    window->state->isCollected = true;
}

void mav_stringDisplayRight(MAV_window* window, const char* text, int colour, int /*font*/, float x,
                            float y) {
    const auto& colours = windowSystem->palette->colours;
    const auto index = static_cast<std::size_t>(std::clamp(colour, 0, kMostColours - 1));
    window->state->contents.AddText(text, colours[index], x, y);
}

void mav_frameEnd() {
    WindowSystem& system = *windowSystem;
    const auto now = std::chrono::steady_clock::now();
    const bool still = system.isStillNext || (!IsMoving() && now - system.lastFrame > kMovement);
    const int samples = system.renderer->Samples(still);
    for (const auto& window : system.windows) {
        if (window->state->isCollected) {
            DrawWindow(*window, samples);
        }
    }
    system.renderer->CollectGarbage();
    system.isCoarse = samples < system.renderer->Samples(true);
    system.isStillNext = false;
    system.lastFrame = std::chrono::steady_clock::now();
}

void mav_frameStill() noexcept {
    windowSystem->isStillNext = true;
}

bool mav_frameRefinable() noexcept {
    return windowSystem->isCoarse && !IsMoving() &&
           std::chrono::steady_clock::now() - windowSystem->lastFrame > kMovement;
}

std::shared_ptr<const MAV_image> mav_windowImage(MAV_window* window) {
    WindowState& state = *window->state;
    if (!state.isDrawn || SDL_GL_MakeCurrent(state.sdl, windowSystem->context) != 0) {
        return nullptr;
    }
    try {
        return state.target.Read();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
