#pragma once

#include <string>

#include "model/Group.h"

/// Copies groups one below the other, like a pen that goes down and up in the tree. Until Finish
/// nothing outside the copies has changed but the ids, and if it is never reached, all copies go.
class CGroupCloner {
  public:
    explicit CGroupCloner(CGroup* target) noexcept;
    ~CGroupCloner();
    CGroupCloner(const CGroupCloner&) = delete;
    CGroupCloner& operator=(const CGroupCloner&) = delete;

    /// Copies the group and its direct objects to below the copy that was opened last and not
    /// closed yet, the first one to below the target.
    CGroup* Open(const CGroup& source, bool colCheck, const std::string& label);
    void Close() noexcept;
    /// Closes what is open; labels of the objects, counts of the ancestors and the panel follow.
    /// Returns the copy that was opened first.
    CGroup* Finish() noexcept;

  private:
    CGroup* m_target;
    CGroup* m_top = nullptr;
    CGroup* m_current;
    int m_firstGroupId;
    int m_firstObjectId;
    bool m_finished = false;
};
