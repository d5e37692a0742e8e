#include "visualiser/RenderThread.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <memory>
#include <system_error>

#include "platform/maverik/Windows.h"
#include "visualiser/SignalMask.h"
#include "visualiser/Visualiser.h"

std::atomic<bool> g_sceneDirty{false};
std::atomic<int> g_activeInteractions{0};

namespace {

/// Between two looks at the events while there is nothing to draw.
constexpr std::chrono::milliseconds kRest{25};
/// Between the beginnings of two frames that nobody waits for: what moves once a frame goes at the
/// same speed on every machine that is fast enough.
constexpr std::chrono::milliseconds kFrame{16};

thread_local bool isRenderThread = false;

/// The thread that draws, for the end of the process.
class DrawingThread {
  public:
    void Set(CRenderThread* thread) {
        const std::lock_guard lock(m_mutex);
        m_thread = thread;
    }
    void Halt() {
        const std::lock_guard lock(m_mutex);
        if (m_thread != nullptr) {
            m_thread->HaltForExit();
        }
    }
    static DrawingThread& Instance() {
        // Stands until the process ends.
        static DrawingThread& instance = *std::make_unique<DrawingThread>().release();
        return instance;
    }

  private:
    std::mutex m_mutex;
    CRenderThread* m_thread = nullptr;
};

}  // namespace

bool IsRenderThread() noexcept {
    return isRenderThread;
}

CRenderThread::CRenderThread(CVisualiser& visualiser) : m_visualiser(visualiser) {}

CRenderThread::~CRenderThread() {
    Stop();
}

bool CRenderThread::Start() {
    {
        // Signals are the host's: they are not to interrupt this thread, or those that the drivers
        // start from it.
        const AllSignalsBlocked blocked;
        try {
            m_thread = std::thread([this] { Run(); });
        } catch (const std::system_error&) {
            return false;
        }
    }
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_state != State::kStarting; });
    const bool running = m_state == State::kRunning;
    lock.unlock();
    if (!running) {
        Stop();
        return false;
    }
    // A host may leave without KST_End. Only now: what the drivers do at the end comes afterwards.
    std::atexit([] { DrawingThread::Instance().Halt(); });
    DrawingThread::Instance().Set(this);
    return true;
}

void CRenderThread::HaltForExit() noexcept {
    constexpr std::chrono::seconds kLongest{1};
    std::unique_lock lock(m_mutex);
    if (IsRenderThread() || m_state != State::kRunning) {
        return;
    }
    ++m_pausedInternally;
    m_wake.notify_all();
    m_changed.wait_for(lock, kLongest,
                       [this] { return m_standingStill || m_state != State::kRunning; });
}

void CRenderThread::Stop() noexcept {
    DrawingThread::Instance().Set(nullptr);
    {
        const std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_all();
    if (!m_thread.joinable()) {
        return;
    }
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_state == State::kEnded; });
    if (m_abandoned) {
        m_thread.detach();
    } else {
        lock.unlock();
        m_thread.join();
    }
}

void CRenderThread::Abandon() noexcept {
    const std::lock_guard lock(m_mutex);
    m_abandoned = true;
    m_state = State::kEnded;
    m_standingStill = false;
    m_changed.notify_all();
}

int CRenderThread::Pause(bool internal) noexcept {
    std::unique_lock lock(m_mutex);
    if (m_state != State::kRunning) {
        return KST_ERROR_NOT_RENDERING;
    }
    if (internal) {
        ++m_pausedInternally;
    } else {
        m_pausedByUser = true;
    }
    if (IsRenderThread()) {
        return KST_OK;
    }
    m_wake.notify_all();
    m_changed.wait(lock, [this] { return m_standingStill || m_state != State::kRunning; });
    return m_state == State::kRunning ? KST_OK : KST_ERROR_NOT_RENDERING;
}

int CRenderThread::Resume(bool internal) noexcept {
    {
        const std::lock_guard lock(m_mutex);
        if (internal && m_pausedInternally > 0) {
            --m_pausedInternally;
        } else if (!internal) {
            m_pausedByUser = false;
        }
        if (m_state != State::kRunning) {
            return KST_ERROR_NOT_RENDERING;
        }
    }
    m_wake.notify_all();
    return KST_OK;
}

bool CRenderThread::IsStandingStill() const noexcept {
    const std::lock_guard lock(m_mutex);
    return m_pausedByUser || m_state != State::kRunning;
}

bool CRenderThread::HasEnded() const noexcept {
    const std::lock_guard lock(m_mutex);
    return m_state == State::kEnded;
}

bool CRenderThread::WaitForFrame() noexcept {
    if (IsRenderThread()) {
        return false;
    }
    std::unique_lock lock(m_mutex);
    // A frame that has begun already may have looked at the scene before the caller changed it.
    const std::uint64_t wanted = m_framesBegun + 1;
    m_framesAwaited = std::max(m_framesAwaited, wanted);
    g_sceneDirty = true;
    m_wake.notify_all();
    m_changed.wait(lock, [this, wanted] {
        return m_framesEnded >= wanted || m_stop || m_pausedByUser || m_state != State::kRunning;
    });
    return m_framesEnded >= wanted;
}

void CRenderThread::Redraw() noexcept {
    if (!g_sceneDirty.load(std::memory_order_relaxed) && !g_sceneDirty.exchange(true)) {
        // Without the lock a thread that is just going to rest may miss this: it looks again soon.
        m_wake.notify_all();
    }
}

void CRenderThread::SetState(State state) noexcept {
    {
        const std::lock_guard lock(m_mutex);
        m_state = state;
        m_standingStill = false;
    }
    m_changed.notify_all();
}

void CRenderThread::Run() noexcept {
    isRenderThread = true;
    bool open = false;
    try {
        open = m_visualiser.OpenDisplay();
    } catch (const std::exception&) {
        // As good as no display.
    }
    if (open) {
        SetState(State::kRunning);
        Loop();
    }
    m_visualiser.CloseDisplay();
    SetState(State::kEnded);
}

void CRenderThread::Loop() noexcept {
    for (;;) {
        try {
            mav_eventsCheck();
        } catch (const std::exception&) {
            // Memory is short: the event is lost.
        }
        bool draw = false;
        {
            const std::lock_guard lock(m_mutex);
            if (m_stop) {
                return;
            }
            draw = !IsPaused() && IsFrameWanted();
            if (draw) {
                ++m_framesBegun;
                m_frameBegin = std::chrono::steady_clock::now();
                g_sceneDirty = false;
            }
        }
        if (draw) {
            DrawFrame();
        } else {
            Rest();
        }
        StandStill();
    }
}

void CRenderThread::DrawFrame() noexcept {
    try {
        m_visualiser.DrawFrame();
    } catch (const std::exception&) {
        // Memory is short: the windows keep what they show, and it is tried again.
        g_sceneDirty = true;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_framesEnded = m_framesBegun;
    }
    m_changed.notify_all();
}

bool CRenderThread::IsFrameWanted() const noexcept {
    if (m_framesAwaited > m_framesEnded) {
        return true;
    }
    const bool wanted = g_sceneDirty || g_activeInteractions > 0 || mav_viewParamsAnimating() ||
                        mav_frameRefinable();
    return wanted && std::chrono::steady_clock::now() - m_frameBegin >= kFrame;
}

void CRenderThread::Rest() {
    std::unique_lock lock(m_mutex);
    const bool soon = g_sceneDirty || g_activeInteractions > 0 || mav_viewParamsAnimating();
    const auto end = soon ? m_frameBegin + kFrame : std::chrono::steady_clock::now() + kRest;
    m_wake.wait_until(lock, end, [this, soon] {
        return m_framesAwaited > m_framesEnded || (g_sceneDirty && !soon) || m_stop || IsPaused();
    });
}

bool CRenderThread::IsPaused() const noexcept {
    return m_pausedByUser || m_pausedInternally > 0;
}

void CRenderThread::StandStill() {
    std::unique_lock lock(m_mutex);
    while (IsPaused() && !m_stop) {
        m_standingStill = true;
        m_changed.notify_all();
        m_wake.wait_for(lock, kRest);
        if (m_pausedByUser && m_pausedInternally == 0 && !m_stop) {
            // A host may suspend drawing for long; its windows still have to answer.
            m_standingStill = false;
            lock.unlock();
            try {
                mav_eventsCheck(/*discard=*/true);
            } catch (const std::exception&) {
                // Memory is short: the event is lost.
            }
            lock.lock();
        }
    }
    m_standingStill = false;
}
