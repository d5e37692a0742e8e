#pragma once

/// What lies behind windows. Private to the windows' code; all of it belongs to the render thread.

#include <SDL.h>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/maverik/Renderer.h"
#include "platform/maverik/Windows.h"

/// A projection that can be drawn with: 0 < nearest < farthest, the rest above 0.
struct WindowProjection {
    bool orthogonal = false;
    float nearest = 0.1F;
    float farthest = 500;
    float size = 45;  ///< vertical angle in degrees, or height in world units
    float aspect = 1;
};

/// The frame of a camera: unit vectors at right angles.
struct CameraFrame {
    MAV_vector eye, right, up, view;
};

/// A camera on its way from one place to another.
struct Flight {
    MAV_vector from, to;
    MAV_vector eye, view;  ///< of the camera when the flight last looked
    std::chrono::steady_clock::time_point begin;
    std::chrono::duration<double> duration;
};

class WindowState {
  public:
    explicit WindowState(SDL_Window* window) : sdl(window) {}

    SDL_Window* const sdl;
    RenderTarget target;
    FrameContents contents;
    bool isCollected = false;  ///< there is something to draw in this frame
    bool isDrawn = false;

    MAV_viewParams* params = nullptr;
    MAV_colour background = {1, 1, 1, 1};
    bool cullBackfaces = false;
    bool fog = false;
    float fogStart = 0, fogEnd = 1;
    std::optional<MAV_colour> fogColour;  ///< none: the background's
    WindowProjection projection;
    CameraFrame camera = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, -1}};  ///< of this frame
    std::optional<Flight> flight;

    MAV_mouseFn mouse = nullptr;
    MAV_keyboardFn keyboard = nullptr;
};

/// The one system that runs.
struct WindowSystem {
    SDL_GLContext context = nullptr;
    std::unique_ptr<Renderer> renderer;
    std::unique_ptr<MAV_palette> palette;
    std::vector<std::unique_ptr<MAV_window>> windows;
    int nextId = 1;

    MAV_windowFn resize = nullptr;
    MAV_windowFn expose = nullptr;
    MAV_windowFn close = nullptr;

    /// What is held down, and in which window it was pressed.
    std::map<int, MAV_window*> heldKeys;
    /// What was told of the key at each place of the keyboard when it went down last.
    std::map<int, int> keysOfPlaces;
    std::map<int, MAV_window*> heldButtons;
    std::map<int, int> presses;  ///< of each key
    MAV_window* mouseWindow = nullptr;

    std::chrono::steady_clock::time_point lastFrame;
    bool isCoarse = false;     ///< the last frame had fewer samples than one that stands
    bool isStillNext = false;  ///< the next frame is to be one that stands
};

extern std::unique_ptr<WindowSystem>& windowSystem;

MAV_window* FindWindow(Uint32 sdlId) noexcept;
/// Brings width and height in line with the drawing area.
void UpdateSize(MAV_window& window) noexcept;
/// Pixels of the drawing area for one of the window system's units.
float PixelScale(const MAV_window& window) noexcept;
/// Tells the window of the release of all that is held in it.
void ReleaseHeld(MAV_window& window);
/// The window's camera as it stands now. A record that makes no frame gives one all the same.
CameraFrame CameraOf(const MAV_window& window) noexcept;
/// Takes the cameras over for this frame, and makes the contents ready.
void BeginViews();
void UpdateMouseRay() noexcept;
void AdvanceFlights() noexcept;
