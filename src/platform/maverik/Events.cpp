#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

#include "platform/maverik/WindowState.h"

int mav_mouse_x = 0;
int mav_mouse_y = 0;
int mav_mouse_root_x = 0;
int mav_mouse_root_y = 0;

namespace {

constexpr std::pair<SDL_Keycode, int> kKeys[] = {
    {SDLK_TAB, kKeyTab},           {SDLK_SPACE, kKeySpace},       {SDLK_UP, kKeyUp},
    {SDLK_DOWN, kKeyDown},         {SDLK_LEFT, kKeyLeft},         {SDLK_RIGHT, kKeyRight},
    {SDLK_LCTRL, kKeyLeftControl}, {SDLK_RCTRL, kKeyRightControl}};

constexpr std::pair<Uint8, int> kButtons[] = {
    {SDL_BUTTON_LEFT, kLeft}, {SDL_BUTTON_MIDDLE, kMiddle}, {SDL_BUTTON_RIGHT, kRight}};

constexpr int kCharacters = 128;

/// Letters are the small ones whatever else is held, since the symbol is that of the key alone.
int KeyOf(const SDL_Keysym& key) {
    for (const auto& [symbol, code] : kKeys) {
        if (symbol == key.sym) {
            return code;
        }
    }
    if (key.sym > 0 && key.sym < kCharacters) {
        return key.sym;
    }
    return kKeyOther + static_cast<int>(key.scancode);
}

void TellKey(MAV_window* window, int key, int movement) {
    if (window->state->keyboard != nullptr) {
        window->state->keyboard(window, {window, key, movement});
    }
}

void TellMouse(MAV_window* window, int button, int movement) {
    if (window->state->mouse != nullptr) {
        window->state->mouse(window, {window, button, movement});
    }
}

void Tell(MAV_windowFn function, MAV_window* window) {
    if (function != nullptr) {
        function(window);
    }
}

void PlaceMouse(MAV_window& window, int x, int y) {
    const float scale = PixelScale(window);
    mav_mouse_x = static_cast<int>(static_cast<float>(x) * scale);
    mav_mouse_y = static_cast<int>(static_cast<float>(y) * scale);
    int left = 0;
    int top = 0;
    SDL_GetWindowPosition(window.state->sdl, &left, &top);
    mav_mouse_root_x = left + x;
    mav_mouse_root_y = top + y;
    windowSystem->mouseWindow = &window;
}

/// The key that was told when it went down: the user may have changed the layout since.
int ReleasedKey(const SDL_Keysym& keysym) {
    const auto pressed = windowSystem->keysOfPlaces.find(keysym.scancode);
    return keysym.scancode == SDL_SCANCODE_UNKNOWN || pressed == windowSystem->keysOfPlaces.end()
               ? KeyOf(keysym)
               : pressed->second;
}

void OnKey(const SDL_KeyboardEvent& event) {
    WindowSystem& system = *windowSystem;
    const int key = event.type == SDL_KEYUP ? ReleasedKey(event.keysym) : KeyOf(event.keysym);
    const auto held = system.heldKeys.find(key);
    if (event.type == SDL_KEYUP) {
        if (held != system.heldKeys.end()) {
            MAV_window* const window = held->second;
            system.heldKeys.erase(held);
            TellKey(window, key, kReleased);
        }
        return;
    }
    if (event.repeat == 0) {
        system.keysOfPlaces[event.keysym.scancode] = key;
    }
    MAV_window* const window = FindWindow(event.windowID);
    if (window != nullptr && event.repeat == 0 && held == system.heldKeys.end()) {
        system.heldKeys[key] = window;
        ++system.presses[key];
        TellKey(window, key, kPressed);
    }
}

void OnButton(const SDL_MouseButtonEvent& event) {
    WindowSystem& system = *windowSystem;
    int button = -1;
    for (const auto& [sdlButton, ours] : kButtons) {
        button = sdlButton == event.button ? ours : button;
    }
    MAV_window* const window = FindWindow(event.windowID);
    if (button < 0) {
        return;
    }
    if (window != nullptr) {
        PlaceMouse(*window, event.x, event.y);
    }
    const auto held = system.heldButtons.find(button);
    if (event.type == SDL_MOUSEBUTTONUP && held != system.heldButtons.end()) {
        MAV_window* const holder = held->second;
        system.heldButtons.erase(held);
        TellMouse(holder, button, kReleased);
    } else if (event.type == SDL_MOUSEBUTTONDOWN && window != nullptr &&
               held == system.heldButtons.end()) {
        system.heldButtons[button] = window;
        TellMouse(window, button, kPressed);
    }
}

void OnWheel(const SDL_MouseWheelEvent& event) {
    MAV_window* const window = FindWindow(event.windowID);
    if (window == nullptr) {
        return;
    }
    const int notches = event.direction == SDL_MOUSEWHEEL_FLIPPED ? -event.y : event.y;
    for (int i = 0; i < std::abs(notches); ++i) {
        TellMouse(window, notches > 0 ? kWheelUp : kWheelDown, kPressed);
    }
}

void OnMotion(const SDL_MouseMotionEvent& event) {
    if (MAV_window* const window = FindWindow(event.windowID)) {
        PlaceMouse(*window, event.x, event.y);
    }
}

void OnInput(const SDL_Event& event) {
    switch (event.type) {
        case SDL_KEYDOWN:
        case SDL_KEYUP:
            OnKey(event.key);
            break;
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP:
            OnButton(event.button);
            break;
        case SDL_MOUSEWHEEL:
            OnWheel(event.wheel);
            break;
        case SDL_MOUSEMOTION:
            OnMotion(event.motion);
            break;
        default:
            break;
    }
}

void OnWindow(const SDL_WindowEvent& event) {
    MAV_window* const window = FindWindow(event.windowID);
    if (window == nullptr) {
        return;
    }
    switch (event.event) {
        case SDL_WINDOWEVENT_SIZE_CHANGED:
            UpdateSize(*window);
            Tell(windowSystem->resize, window);
            break;
        case SDL_WINDOWEVENT_SHOWN:
        case SDL_WINDOWEVENT_RESTORED:
        case SDL_WINDOWEVENT_EXPOSED:
            Tell(windowSystem->expose, window);
            break;
        case SDL_WINDOWEVENT_FOCUS_LOST:
            ReleaseHeld(*window);
            break;
        case SDL_WINDOWEVENT_CLOSE:
            Tell(windowSystem->close, window);
            break;
        default:
            break;
    }
}

/// Takes the entries of this window out, and tells of their release.
template <class TellOf>
void Release(std::map<int, MAV_window*>& held, MAV_window& window, TellOf&& tell) {
    const auto isInWindow = [&window](const auto& entry) { return entry.second == &window; };
    // Whoever is told may change what is held.
    for (auto it = std::find_if(held.begin(), held.end(), isInWindow); it != held.end();
         it = std::find_if(held.begin(), held.end(), isInWindow)) {
        const int what = it->first;
        held.erase(it);
        tell(&window, what, kReleased);
    }
}

/// Outside its windows a program gets no events of the mouse.
void FollowMouseOutside() noexcept {
    if (SDL_GetKeyboardFocus() != nullptr && SDL_GetMouseFocus() == nullptr) {
        SDL_GetGlobalMouseState(&mav_mouse_root_x, &mav_mouse_root_y);
    }
}

}  // namespace

void ReleaseHeld(MAV_window& window) {
    Release(windowSystem->heldKeys, window, TellKey);
    Release(windowSystem->heldButtons, window, TellMouse);
}

void mav_eventsCheck(bool discard) {
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0) {
        if (event.type == SDL_WINDOWEVENT) {
            OnWindow(event.window);
            continue;
        }
        const bool isRelease = event.type == SDL_KEYUP || event.type == SDL_MOUSEBUTTONUP;
        if (!discard || isRelease) {
            OnInput(event);
        }
    }
    if (!discard) {
        FollowMouseOutside();
    }
}

void mav_navigationMouse(MAV_window* window, MAV_mouseFn function) noexcept {
    window->state->mouse = function;
}

void mav_callbackKeyboardSet(MAV_window* window, MAV_keyboardFn function) noexcept {
    window->state->keyboard = function;
}

void mav_callbackResizeSet(MAV_window* /*window*/, MAV_windowFn function) noexcept {
    windowSystem->resize = function;
}

void mav_callbackExposeSet(MAV_window* /*window*/, MAV_windowFn function) noexcept {
    windowSystem->expose = function;
}

void mav_callbackCloseSet(MAV_window* /*window*/, MAV_windowFn function) noexcept {
    windowSystem->close = function;
}

bool mav_mouseRootSet(int x, int y) noexcept {
    if (SDL_WarpMouseGlobal(x, y) != 0) {
        return false;
    }
    mav_mouse_root_x = x;
    mav_mouse_root_y = y;
    return true;
}

bool mav_keyHeld(int key) noexcept {
    return windowSystem->heldKeys.count(key) > 0;
}

bool mav_keyToggled(int key) noexcept {
    const auto found = windowSystem->presses.find(key);
    return found != windowSystem->presses.end() && found->second % 2 == 1;
}
