#pragma once

#if !defined(_WIN32)
#include <pthread.h>

#include <csignal>
#endif

/// While this stands, no signal is delivered to the calling thread; threads that it starts keep it
/// so.
class AllSignalsBlocked {
  public:
#if defined(_WIN32)
    AllSignalsBlocked() noexcept {}
#else
    AllSignalsBlocked() noexcept {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_former);
    }
    ~AllSignalsBlocked() {
        pthread_sigmask(SIG_SETMASK, &m_former, nullptr);
    }
#endif
    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

#if !defined(_WIN32)
  private:
    sigset_t m_former;
#endif
};
