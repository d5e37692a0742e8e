#pragma once

/// What the library's frame and the control panel ask of the display as a whole. The display itself
/// is built only where windows are (KESTRANE_DISPLAY); this header stands without it.

#include <memory>
#include <string>

#include "kestrane.h"
#include "model/neighbours.h"

/// Codes are those of kestrane.h. Views are 0 to 3, checked by the caller. Unless something else is
/// said, operations may be called from any thread that holds the model lock, and throw
/// std::bad_alloc with nothing changed.
class CDisplay : public CDisplayNeighbour {
  public:
    // ---- Standing still ----
    // Taken under the model lock, if that is taken as well.
    /// Has the render thread finish its frame and stand still, until Resume. `internal` is the
    /// scene lock of the library's own long operations, which counts: as many Resume calls end it.
    /// The other flag is the host's and does not count. Returns KST_ERROR_NOT_RENDERING where
    /// nothing draws any more. On the render thread itself nothing waits.
    virtual int Pause(bool internal) noexcept = 0;
    virtual int Resume(bool internal) noexcept = 0;
    /// The host has suspended drawing, or nothing draws any more.
    virtual bool IsStandingStill() const noexcept = 0;
    /// Waits until a frame that began after the call has ended. False, at once, where none will
    /// come: the display stands still, has lost its screen, or this is the render thread.
    virtual bool WaitForFrame() noexcept = 0;

    /// Windows are on a screen, not in memory alone.
    virtual bool IsOnScreen() const noexcept = 0;
    /// The user has asked to close the main window. It stays; a program may end for it.
    virtual bool IsCloseWanted() const noexcept = 0;

    // ---- Views ----
    /// KST_OK, or KST_ERROR_NOT_RENDERING where no window can be opened or closed now.
    virtual int AddView(int view) = 0;
    virtual int RemoveView(int view) = 0;
    /// Bits as for KST_SetViewOptions.
    virtual void SetViewOptions(int view, int options) = 0;
    /// Three floats each.
    virtual void ApplyViewParams(int view, const float* eye, const float* point,
                                 const float* up) noexcept = 0;
    /// `up` may be null.
    virtual void GetViewParams(int view, float* eye, float* point, float* up) noexcept = 0;
    virtual void SetBackgroundColor(int view, float r, float g, float b) = 0;
    /// Brings the window in line with what the record says now.
    virtual void ApplyViewSettings(int view) = 0;
    virtual void ResetView(int view) noexcept = 0;
    /// With the next frame, both: near and far clipping, fog and navigation speed of an open view
    /// suit the size and distance of all that it shows; and before that, with ShowAll, the camera
    /// goes where it sees all of it, looking the same way.
    virtual void ShowAll(int view) = 0;
    virtual void FitClipping(int view) = 0;
    /// With the next frame: size of the drawing area of an open view, in the window system's units,
    /// as far as the window system lets it.
    virtual void SetWindowSize(int view, int width, int height) = 0;

    // ---- Camera paths ----
    /// Arguments as for CViewMotion::AddKeyState, without the camera.
    virtual void AddViewKeyState(int view, float time, const float* eye, const float* point,
                                 const float* up) = 0;
    virtual void SetViewCyclic(int view, bool cyclic) noexcept = 0;
    virtual void ClearViewKeyStates(int view) noexcept = 0;

    // ---- The rest ----
    /// Light 0 goes with the eye; off takes its specular part away.
    virtual void SetHeadlight(bool on) = 0;
    /// Flies to where all that the view shows is seen. Does not wait for the end.
    virtual void AnimateToScene(int view) = 0;
    /// The image is read by the render thread, before the next frame; a file that is no portable
    /// pixmap leaves the slot as it was.
    virtual void LoadTexture(int index, const std::string& path, float alpha) = 0;
    /// Writes what the view's window shows now as a BMP file of 32 bits a pixel. A file that cannot
    /// be written is not reported. KST_ERROR_NOT_RENDERING where no frame can be had.
    virtual int CaptureView(int view, const std::string& path) = 0;
    virtual void SetSelectCallback(KstSelectCallback callback) noexcept = 0;

    /// Stores the places of the windows in the records of the views, ends the render thread and
    /// waits for it. Called without the model lock. Afterwards nothing is drawn, and all operations
    /// do nothing.
    virtual void Stop() noexcept = 0;
};

/// Opens the main view, on a thread of its own, for the records in g_views. Null where neither a
/// screen nor windows in memory can be had, or the library was built without windows.
std::unique_ptr<CDisplay> StartDisplay();

/// The caller is a render thread: it runs in the host's select callback, and may not wait for
/// frames or for the end of the display.
bool IsRenderThread() noexcept;
