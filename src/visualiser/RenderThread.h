#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

class CVisualiser;

/// Asks for one frame. Set by whoever changes what is seen; cleared just before the frame.
extern std::atomic<bool> g_sceneDirty;
/// While above 0, frames are drawn without pause: buttons and keys held, mouse-look, flights.
extern std::atomic<int> g_activeInteractions;

/// The thread that draws: events, frames, standing still, and the handshakes of other threads with
/// it.
class CRenderThread {
  public:
    explicit CRenderThread(CVisualiser& visualiser);
    ~CRenderThread();
    CRenderThread(const CRenderThread&) = delete;
    CRenderThread& operator=(const CRenderThread&) = delete;

    /// Starts the thread and waits until it draws or has given up. False if it has given up.
    bool Start();
    void Stop() noexcept;

    /// At the end of the process: the thread stands still, after a second at the latest or not at
    /// all. What it draws with is about to go.
    void HaltForExit() noexcept;
    /// By the thread itself, which will never go on.
    void Abandon() noexcept;

    int Pause(bool internal) noexcept;
    int Resume(bool internal) noexcept;
    /// The host has suspended drawing, or nothing draws any more.
    bool IsStandingStill() const noexcept;
    /// Nothing draws any more.
    bool HasEnded() const noexcept;
    bool WaitForFrame() noexcept;
    /// Asks for a frame, and wakes the thread.
    void Redraw() noexcept;

  private:
    enum class State { kStarting, kRunning, kEnded };

    void Run() noexcept;
    void Loop() noexcept;
    void DrawFrame() noexcept;
    /// Sleeps until there is reason for a frame, or it is time to look at events.
    void Rest();
    /// Stands still as long as somebody wants it.
    void StandStill();
    void SetState(State state) noexcept;
    /// Both under m_mutex.
    bool IsPaused() const noexcept;
    bool IsFrameWanted() const noexcept;

    CVisualiser& m_visualiser;
    std::thread m_thread;
    mutable std::mutex m_mutex;
    std::condition_variable m_wake;     ///< for the render thread
    std::condition_variable m_changed;  ///< for those who wait for it
    // All under m_mutex.
    State m_state = State::kStarting;
    bool m_stop = false;
    bool m_abandoned = false;  ///< the thread stands still for ever
    bool m_pausedByUser = false;
    int m_pausedInternally = 0;
    bool m_standingStill = false;
    std::uint64_t m_framesBegun = 0;
    std::uint64_t m_framesEnded = 0;
    std::uint64_t m_framesAwaited = 0;  ///< the latest that somebody waits for
    std::chrono::steady_clock::time_point m_frameBegin;
};
