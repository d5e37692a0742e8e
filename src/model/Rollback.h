#pragma once

#include <utility>

/// Undoes one step when the steps after it fail: runs `undo` at the end of its scope unless
/// dismissed.
template <class Undo>
class CRollback {
  public:
    explicit CRollback(Undo undo) : m_undo(std::move(undo)) {}
    ~CRollback() {
        if (m_armed)
            m_undo();
    }
    CRollback(const CRollback&) = delete;
    CRollback& operator=(const CRollback&) = delete;
    void Dismiss() noexcept { m_armed = false; }

  private:
    Undo m_undo;
    bool m_armed = true;
};
