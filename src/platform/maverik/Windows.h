#pragma once

/// Windows, frames, events, and cameras in flight.
///
/// All windows, events and frames belong to one thread: the one that called mav_initialise, called
/// the render thread here. Only what says so may be called from others. One system a process at a
/// time; after mav_shutdown the next mav_initialise may come from another thread.
///
/// Pixels are those of the drawing area (on a screen of high density more than the window system's
/// units); the mouse is given in the same pixels, y downwards.

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/maverik/Maverik.h"
#include "platform/maverik/Objects.h"
#include "platform/maverik/Palette.h"

class WindowState;  // what lies behind a window, private to the windows' code

struct MAV_window {
    int id = 0;
    /// Drawing area in pixels; at least 1.
    int width = 1;
    int height = 1;
    /// The user's slot.
    void* user = nullptr;
    std::unique_ptr<WindowState> state;

    MAV_window();
    ~MAV_window();
};

/// Stands for all windows, those that come later included, where callbacks are set.
extern MAV_window* const mav_win_all;
extern MAV_window* mav_win_current;
extern MAV_palette* mav_palette_default;

// ---- Options, read by mav_initialise ----
/// Transparent drawing; may be set at any time, from any thread.
extern std::atomic<int> mav_opt_trans;
/// Place and size of the first window's drawing area on the screen, in the window system's units.
/// Sizes below 1 count as 1; a place off all screens is moved onto the nearest.
extern int mav_opt_x, mav_opt_y, mav_opt_width, mav_opt_height;
extern int mav_opt_maxMaterials, mav_opt_maxLights;
/// 0: nothing is written to the console.
extern int mav_opt_output;

/// How the system came up.
enum class MAV_start {
    kScreen,     ///< windows on a screen
    kOffscreen,  ///< no screen: windows exist in memory only
    kNone,       ///< neither could be had; nothing is left behind
};

/// Opens the first window, titled argv[0], which becomes mav_win_current. Tries the drivers that
/// SDL_VIDEODRIVER names, and no others, if that is set; else the screen of the session (DISPLAY,
/// WAYLAND_DISPLAY), then windows in memory. Never takes over a console. Returns within 2 s also
/// where nothing can be had, or a server takes the connection and never answers. Signal handlers,
/// the locale and the error handlers of the process stay as they are. Throws std::bad_alloc;
/// nothing is left behind then.
MAV_start mav_initialise(int* argc, char** argv);
/// Closes all windows and gives everything back.
void mav_shutdown() noexcept;
/// The connection to the screen is gone. The render thread stands still for ever, and no system
/// starts in this process any more; all else goes on. May be called from any thread.
bool mav_screenLost() noexcept;
/// Called once on the render thread, out of whatever it does, before it stands still: it must give
/// back the locks that it holds, and let nobody wait for it. Stays over starts; null for none.
void mav_callbackScreenLostSet(void (*function)() noexcept) noexcept;

/// A further window; null if it cannot be had. `x`, `y`, `width`, `height` as mav_opt_x and so on.
MAV_window* mav_windowNew(int x, int y, int width, int height, const char* title);
void mav_windowDelete(MAV_window* window) noexcept;
/// The native handle of a window (an X11 window, or 0 where it has none).
std::uintptr_t mav_gfxWindowHandleGet(const MAV_window* window) noexcept;
/// Outer rectangle on the screen, frame and caption included, right and bottom exclusive.
void mav_gfxWindowPos(const MAV_window* window, int* left, int* right, int* top, int* bottom);
/// Sizes of a usual frame around a window: left and right, top without caption and bottom, caption.
/// 0 where windows have none, or none is known yet.
void mav_gfxFrameSizes(int* borderX, int* borderY, int* captionHeight) noexcept;
/// The screen that the window is on, in the units of mav_mouse_root_x.
void mav_gfxWindowResGet(const MAV_window* window, int* width, int* height) noexcept;
bool mav_gfxWindowIsMaximized(const MAV_window* window) noexcept;
void mav_gfxWindowMaximize(MAV_window* window) noexcept;
/// Place and size of the drawing area as in mav_windowNew; the window system may refuse them.
void mav_gfxWindowPlaceSet(MAV_window* window, int x, int y, int width, int height) noexcept;
void mav_gfxWindowSizeSet(MAV_window* window, int width, int height) noexcept;
/// An icon of 4 bytes a pixel, red, green, blue, alpha; rows from the top down.
void mav_gfxWindowIconSet(MAV_window* window, int width, int height, const std::uint8_t* rgba);

// ---- What a window shows ----

/// The window uses this record, which is shared: later changes act with the next frame.
void mav_windowViewParamsSet(MAV_window* window, MAV_viewParams* params) noexcept;
MAV_viewParams* mav_windowViewParams(const MAV_window* window) noexcept;
void mav_windowBackgroundColourSet(MAV_window* window, float r, float g, float b) noexcept;
void mav_windowBackfaceCullSet(MAV_window* window, bool on) noexcept;
/// `fov` is the whole vertical angle in degrees; `aspect` width by height. Values that make no
/// projection (near not above 0, far not above near, not finite) are brought to the nearest that
/// do.
void mav_windowPerspectiveSet(MAV_window* window, float near, float far, float fov, float aspect);
/// `size` is the height of what is seen, in world units. Values as above.
void mav_windowOrthogonalSet(MAV_window* window, float near, float far, float size, float aspect);
/// mode 0: no fog; 1: from `start` on, complete at `end`, in distance from the eye. A colour of -1,
/// -1, -1 asks for the window's background.
void mav_windowFogSet(MAV_window* window, int mode, float start, float end, float r, float g,
                      float b) noexcept;

// ---- Frames ----

/// Functions that run with each frame, list 0 first, each in the order of its adding, until they
/// are removed; functions may add and remove any, themselves included. One that is added while its
/// list runs has its turn with the next frame. Add and remove may be called from any thread. The
/// pair of function and argument is the entry; a second equal one is added too, and a removal takes
/// the oldest.
///
/// List 0 and list 1 run before the cameras are read; list 2 after it, when mav_gfxUnProject and
/// mav_mouse_pos have the frame's view.
using MAV_frameFn = void (*)(void* argument);
void mav_frameFn0Add(MAV_frameFn function, void* argument);
void mav_frameFn0Rmv(MAV_frameFn function, void* argument) noexcept;
void mav_frameFn1Add(MAV_frameFn function, void* argument);
void mav_frameFn1Rmv(MAV_frameFn function, void* argument) noexcept;
void mav_frameFn2Add(MAV_frameFn function, void* argument);
void mav_frameFn2Rmv(MAV_frameFn function, void* argument) noexcept;

/// Handles waiting events, calling the callbacks. `discard`: input is thrown away, windows still
/// answer the window system, and exposes and resizes are told.
void mav_eventsCheck(bool discard = false);

/// One frame is mav_frameBegin, mav_SMSDisplay for what is to be seen, mav_frameEnd.
/// mav_frameBegin runs the frame functions and the flights and reads the cameras.
void mav_frameBegin();
/// Takes over what the list's objects look like now. Those outside the view are passed over. When
/// the call returns the frame needs neither records nor lists any more.
void mav_SMSDisplay(MAV_window* window, const MAV_SMS* sms);
/// Draws what was taken over, and shows it. Touches neither records nor lists nor the palette, so
/// that others may change them meanwhile.
void mav_frameEnd();

/// Text that ends at x, y in the window's range of -1 to 1 (y upwards), in the frame that is being
/// made. `colour` is of the default palette; there is font 0 alone. ASCII.
void mav_stringDisplayRight(MAV_window* window, const char* text, int colour, int font, float x,
                            float y);
/// The world point at x, y of the window in pixels from the bottom left, at `distance` in front of
/// the eye's plane; in an orthogonal view as in a perspective one. With the frame's view.
void mav_gfxUnProject(const MAV_window* window, float x, float y, float distance, float* wx,
                      float* wy, float* wz) noexcept;

/// The next frame is drawn as one that will stand, at its best, whatever is going on.
void mav_frameStill() noexcept;
/// The last frame was drawn in haste, and nothing has moved for a while: another one would be
/// better.
bool mav_frameRefinable() noexcept;

/// What the window shows since the last frame: its drawing area, rows from the top down. Also when
/// the window is covered. Null if memory does not suffice or the window was not drawn yet.
std::shared_ptr<const MAV_image> mav_windowImage(MAV_window* window);

// ---- Events ----

enum MAV_mouseButton : int { kLeft = 0, kMiddle = 1, kRight = 2, kWheelUp = 3, kWheelDown = 4 };
enum MAV_movement : int { kPressed = 0, kReleased = 1 };
/// Keys other than characters (small letters stand for letter keys).
enum MAV_key : int {
    kKeyTab = 9,
    kKeySpace = 32,
    kKeyUp = 312,
    kKeyDown = 313,
    kKeyLeft = 314,
    kKeyRight = 315,
    kKeyLeftControl = 327,
    kKeyRightControl = 328,
    kKeyOther = 400,  ///< keys without a code of their own start here
};

struct MAV_mouseEvent {
    MAV_window* window;
    int button;
    int movement;
};
struct MAV_keyboardEvent {
    MAV_window* window;
    int key;
    int movement;
};

/// The result has no meaning. A null function takes the callback back. Key repeats are not events;
/// each press is followed by a release, at the latest when the window loses the keyboard.
using MAV_mouseFn = int (*)(MAV_window*, const MAV_mouseEvent&);
using MAV_keyboardFn = int (*)(MAV_window*, const MAV_keyboardEvent&);
using MAV_windowFn = int (*)(MAV_window*);
void mav_navigationMouse(MAV_window* window, MAV_mouseFn function) noexcept;
void mav_callbackKeyboardSet(MAV_window* window, MAV_keyboardFn function) noexcept;
/// With mav_win_all alone. Before the callback the window has its new size.
void mav_callbackResizeSet(MAV_window* window, MAV_windowFn function) noexcept;
void mav_callbackExposeSet(MAV_window* window, MAV_windowFn function) noexcept;
/// The user asked the window system to close the window. Without a callback nothing happens.
void mav_callbackCloseSet(MAV_window* window, MAV_windowFn function) noexcept;
/// The normal reaction to a resize: the projection gets the window's new aspect ratio.
int mav_resizeDefault(MAV_window* window);

/// Position in the window under the mouse (or the last one), and on the screen.
extern int mav_mouse_x, mav_mouse_y, mav_mouse_root_x, mav_mouse_root_y;
/// The ray through the mouse in the window that it is in, in world coordinates: start in the near
/// plane, unit direction. Brought up to date by mav_frameBegin.
extern MAV_vector mav_mouse_pos, mav_mouse_dir;
/// The same for one window, wherever the mouse is.
void mav_mouseRay(const MAV_window* window, MAV_vector* pos, MAV_vector* dir) noexcept;
/// Puts the mouse to a place on the screen. False where the window system does not let it.
bool mav_mouseRootSet(int x, int y) noexcept;
/// The window has the keyboard.
bool mav_windowIsActive(const MAV_window* window) noexcept;
bool mav_keyHeld(int key) noexcept;
/// The key was pressed an odd number of times since the start.
bool mav_keyToggled(int key) noexcept;
/// The matrix from world to eye coordinates of the window's camera as it stands now.
MAV_matrix mav_windowViewMatrix(const MAV_window* window) noexcept;

// ---- Cameras in flight ----

/// Flies the window's camera within `time` seconds to where it sees the object (or all objects of
/// the list) whole, looking the same way. `size` 1.0: as large as it fits; 0.5: half of that. An
/// orthogonal view, which sees as much from everywhere, only moves across. A time below 0 or not
/// finite takes 1 s, one above 60 takes 60 s. Replaces a flight that is on its way in that window;
/// ends early, where it is, when somebody else changes the camera. Returns false, and nothing
/// happens, where there is nothing to see or the size is not above 0.
bool mav_viewParamsAnimateToObject(MAV_window* window, const MAV_object* object, float size,
                                   float time);
bool mav_viewParamsAnimateToSMS(MAV_window* window, const MAV_SMS* sms, float size, float time);
/// The camera stays where it is.
void mav_viewParamsAnimateStop(MAV_window* window) noexcept;
/// A camera is on its way: frames are needed.
bool mav_viewParamsAnimating() noexcept;
