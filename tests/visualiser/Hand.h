#pragma once

#include <SDL.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "platform/maverik/WindowState.h"
#include "visualiser/VisView.h"

/// A hand on mouse and keyboard. With windows in memory it gives the window system's events; on a
/// screen it moves what the X server has for mouse and keyboard. Nothing here waits until the
/// display has seen it.
class Hand {
  public:
    enum Button : int { kLeftButton = 1, kMiddleButton = 2, kRightButton = 3 };

    static bool OnScreen() {
        const char* const driver = SDL_GetCurrentVideoDriver();
        return driver != nullptr && std::string(driver) == "x11";
    }

    /// Puts the mouse into the window, and the keyboard's focus with it.
    void Enter(int view, int x, int y) {
        m_window = g_views[static_cast<std::size_t>(view)]->m_window->state->sdl;
        m_hwnd = std::to_string(g_views[static_cast<std::size_t>(view)]->m_hwnd);
        if (OnScreen()) {
            XDo("windowraise " + m_hwnd);
            XDo("windowfocus --sync " + m_hwnd);
        }
        MoveTo(x, y);
    }
    void MoveTo(int x, int y) {
        m_x = x;
        m_y = y;
        if (OnScreen()) {
            XDo("mousemove --window " + m_hwnd + " " + std::to_string(x) + " " + std::to_string(y));
            return;
        }
        SDL_Event event = Event(SDL_MOUSEMOTION);
        event.motion.windowID = SDL_GetWindowID(m_window);
        event.motion.x = x;
        event.motion.y = y;
        SDL_PushEvent(&event);
    }
    /// On a screen: also out of the window.
    static void MoveAcross(int dx) { XDo("mousemove_relative -- " + std::to_string(dx) + " 0"); }
    void Move(int dx, int dy) { MoveTo(m_x + dx, m_y + dy); }

    void Press(Button button) const { GiveButton(button, true); }
    void Release(Button button) const { GiveButton(button, false); }
    void Wheel(int notches) const {
        if (OnScreen()) {
            XDo(notches > 0 ? "click 4" : "click 5");
            return;
        }
        SDL_Event event = Event(SDL_MOUSEWHEEL);
        event.wheel.windowID = SDL_GetWindowID(m_window);
        event.wheel.y = notches;
        SDL_PushEvent(&event);
    }

    /// A key by its X name.
    void Press(const char* key) const { GiveKey(key, true); }
    void Release(const char* key) const { GiveKey(key, false); }

    /// The window no longer has the keyboard.
    void LoseFocus() const {
        SDL_Event event = Event(SDL_WINDOWEVENT);
        event.window.windowID = SDL_GetWindowID(m_window);
        event.window.event = SDL_WINDOWEVENT_FOCUS_LOST;
        SDL_PushEvent(&event);
    }

  private:
    static SDL_Event Event(Uint32 type) {
        SDL_Event event = {};
        event.type = type;
        return event;
    }
    static void XDo(const std::string& what) {
        EXPECT_EQ(0, std::system(("xdotool " + what).c_str())) << what;
    }
    static SDL_Keycode Symbol(const std::string& key) {
        for (const auto& [name, symbol] : {std::pair<const char*, SDL_Keycode>{"space", SDLK_SPACE},
                                           {"Tab", SDLK_TAB},
                                           {"Control_L", SDLK_LCTRL},
                                           {"Up", SDLK_UP}}) {
            if (key == name) {
                return symbol;
            }
        }
        return key[0];
    }
    void GiveButton(Button button, bool isPress) const {
        if (OnScreen()) {
            XDo((isPress ? "mousedown " : "mouseup ") + std::to_string(button));
            return;
        }
        SDL_Event event = Event(isPress ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP);
        event.button.windowID = SDL_GetWindowID(m_window);
        event.button.button = static_cast<Uint8>(button);
        event.button.x = m_x;
        event.button.y = m_y;
        SDL_PushEvent(&event);
    }
    void GiveKey(const std::string& key, bool isPress) const {
        if (OnScreen()) {
            XDo((isPress ? "keydown " : "keyup ") + key);
            return;
        }
        SDL_Event event = Event(isPress ? SDL_KEYDOWN : SDL_KEYUP);
        event.key.windowID = SDL_GetWindowID(m_window);
        event.key.keysym.sym = Symbol(key);
        SDL_PushEvent(&event);
    }

    SDL_Window* m_window = nullptr;
    std::string m_hwnd;
    int m_x = 0;
    int m_y = 0;
};
