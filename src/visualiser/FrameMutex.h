#pragma once

#include <mutex>

/// A recursive mutex that its owner can give back as a whole.
class CFrameMutex {
  public:
    void lock() {
        m_mutex.lock();
        ++m_depth;
    }
    void unlock() {
        --m_depth;
        m_mutex.unlock();
    }
    /// By a thread that will never go on; also if it does not hold the mutex.
    void Abandon() noexcept {
        // Taken here by the owner, if that is the caller, or else by a newcomer.
        lock();
        for (int depth = m_depth; depth > 0; --depth) {
            unlock();
        }
    }

  private:
    std::recursive_mutex m_mutex;
    int m_depth = 0;  ///< under m_mutex
};
