#pragma once

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "model/Group.h"
#include "model/ViewMotion.h"
#include "platform/maverik/Windows.h"
#include "visualiser/Display.h"
#include "visualiser/FrameMutex.h"
#include "visualiser/RenderThread.h"
#include "visualiser/VisView.h"

class CNavigation;
class COverlays;

/// Colours of the default palette.
enum PaletteColour : int {
    kColourBlack = 0,
    kColourRed = 1,
    kColourDarkGrey = 2,
    kColourBlue = 3,
    kColourLightGrey = 4,
    kColourGreen = 5,
};

/// The whole vertical angle of a perspective view, in degrees.
inline constexpr float kFieldOfView = 45.0F;

/// The display: four views on the scene, in windows of a thread of their own.
///
/// m_frameLock guards everything that a frame reads of the scene: objects, records, lists, palette,
/// cameras and the records of the views. The render thread holds it while it runs frame functions
/// and takes over what is to be seen, not while it draws; others hold it around each change.
class CVisualiser : public CDisplay {
  public:
    CVisualiser();
    ~CVisualiser() override;
    CVisualiser(const CVisualiser&) = delete;
    CVisualiser& operator=(const CVisualiser&) = delete;

    /// Starts the render thread. False where no window can be had.
    bool Start();

    // CDisplayNeighbour
    MAV_object* NewObject(MAV_class shape, void* record) override;
    void DeleteObject(MAV_object* object) noexcept override;
    void AddObject(CSceneObject* object) override;
    void RemoveObject(CSceneObject* object) noexcept override;
    void MoveObject(CSceneObject* object, const CGroup& former) override;
    void UpdateObjectMatrix(CSceneObject* object, const MAV_matrix& world) noexcept override;
    void Redraw() noexcept override;
    void LockFrame() noexcept override { m_frameLock.lock(); }
    void UnlockFrame() noexcept override { m_frameLock.unlock(); }
    int NewMaterial(float r, float g, float b, float a) override;
    void ReleaseMaterial(int index) noexcept override;
    void GetMaterial(int index, float* r, float* g, float* b, float* a) noexcept override;
    void SetMaterialAlpha(int index, float alpha) override;
    void SetTextureAlpha(int index, float alpha) override;
    void ShowGroup(CGroup* group, int view) override;
    void HideGroup(CGroup* group, int view) override;
    void ApplyViewTime(int view, float time) override;

    // CDisplay
    int Pause(bool internal) noexcept override { return m_thread.Pause(internal); }
    int Resume(bool internal) noexcept override { return m_thread.Resume(internal); }
    bool IsStandingStill() const noexcept override { return m_thread.IsStandingStill(); }
    bool WaitForFrame() noexcept override { return m_thread.WaitForFrame(); }
    bool IsOnScreen() const noexcept override { return m_onScreen; }
    bool IsCloseWanted() const noexcept override { return m_closeWanted; }
    int AddView(int view) override;
    int RemoveView(int view) override;
    void SetViewOptions(int view, int options) override;
    void ApplyViewParams(int view, const float* eye, const float* point,
                         const float* up) noexcept override;
    void GetViewParams(int view, float* eye, float* point, float* up) noexcept override;
    void SetBackgroundColor(int view, float r, float g, float b) override;
    void ApplyViewSettings(int view) override;
    void ResetView(int view) noexcept override;
    void ShowAll(int view) override;
    void FitClipping(int view) override;
    void SetWindowSize(int view, int width, int height) override;
    void AddViewKeyState(int view, float time, const float* eye, const float* point,
                         const float* up) override;
    void SetViewCyclic(int view, bool cyclic) noexcept override;
    void ClearViewKeyStates(int view) noexcept override;
    void SetHeadlight(bool on) override;
    void AnimateToScene(int view) override;
    void LoadTexture(int index, const std::string& path, float alpha) override;
    int CaptureView(int view, const std::string& path) override;
    void SetSelectCallback(KstSelectCallback callback) noexcept override;
    void Stop() noexcept override;

    using Work = std::function<void()>;

    /// Queues work for the render thread: it runs with the next frame, under the frame lock, and a
    /// frame is asked for. Work that no frame came for is dropped when the display goes.
    void QueueWork(Work work);

    /// The host's; null: none. Under the frame lock.
    KstSelectCallback SelectCallback() const noexcept { return m_selectCallback; }

    /// Holds the frame lock.
    class FrameLock {
      public:
        explicit FrameLock(CVisualiser& visualiser) : m_lock(visualiser.m_frameLock) {}

      private:
        std::lock_guard<CFrameMutex> m_lock;
    };

    // ---- For the render thread ----
    /// Opens the main window and sets everything up. False, and nothing is left, where no window
    /// can be had.
    bool OpenDisplay();
    void DrawFrame();
    /// The screen is lost, and the render thread stands still where it is.
    void Abandon() noexcept;
    void CloseDisplay() noexcept;
    void CloseWindow(CVisView& view) noexcept;
    /// The user has asked the window system to close the view's window.
    void WindowClosedByUser(CVisView& view) noexcept;

  private:
    void OpenWindow(CVisView& view);
    /// What every window of a view gets: the record's camera and settings, mouse and keys.
    void FitOut(CVisView& view);
    void SaveWindowPlacements() noexcept;
    void EndFlights() noexcept;
    void EnterLists(CSceneObject* object);
    /// Takes the object out of the views in which `group` is not visible.
    void LeaveLists(CSceneObject* object, const CGroup& group) noexcept;
    /// Compass and status text, as the view's record says.
    void ShowOrHideOverlays(CVisView& view);
    void QueueWindowSettings(CVisView& view);
    void RunWork();
    void ReadTextures();
    /// Asks for a frame and waits for it. KST_OK or KST_ERROR_NOT_RENDERING.
    int WaitForWork() noexcept;

    mutable CFrameMutex m_frameLock;
    std::vector<Work> m_work;
    /// Runs after the frame is drawn, without the frame lock.
    std::vector<Work> m_workAfterFrame;
    /// Those of work that is queued and whose files are not read yet.
    class TextureOrder;
    std::vector<std::shared_ptr<TextureOrder>> m_textureOrders;
    KstSelectCallback m_selectCallback = nullptr;
    std::array<bool, kViewCount> m_settingsQueued = {};
    std::array<bool, kViewCount> m_viewAnimating = {};
    std::array<CViewMotion, kViewCount> m_viewMotion;
    /// The view flies to where it sees all; its centre follows at the end.
    std::array<bool, kViewCount> m_flyingToScene = {};
    std::atomic<bool> m_onScreen{false};
    std::atomic<bool> m_closeWanted{false};
    int m_nextMaterial = 0;
    std::vector<int> m_freeMaterials;
    /// All drawables of the scene; those that are still there when the display goes, go with it.
    MAV_SMS* const m_allObjects;
    std::unique_ptr<COverlays> m_overlays;
    std::unique_ptr<CNavigation> m_navigation;
    CRenderThread m_thread;
};

/// Background, culling, projection and fog of the view's window, which must be open, as the record
/// says.
void ApplyWindowSettings(CVisView& view) noexcept;
