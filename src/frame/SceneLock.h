#pragma once

#include "visualiser/Display.h"

/// While this stands, the render thread does. For operations after which the scene is another one.
class CSceneLock {
  public:
    /// `display` may be null.
    explicit CSceneLock(CDisplay* display) noexcept : m_display(display) {
        if (m_display != nullptr) {
            m_display->Pause(/*internal=*/true);
        }
    }
    ~CSceneLock() {
        if (m_display != nullptr) {
            m_display->Resume(/*internal=*/true);
        }
    }
    CSceneLock(const CSceneLock&) = delete;
    CSceneLock& operator=(const CSceneLock&) = delete;

  private:
    CDisplay* m_display;
};
