#pragma once

class CGroup;

/// While one stands, the objects that enter groups are counted in these alone: in the target, and
/// in those made since. The groups above get their counts at its end, each once, so that a subtree
/// is built in time that does not grow with its depth for each object. No group leaves the scene or
/// moves meanwhile.
class CDeferredCounts {
  public:
    /// Of one that stands already, the inner one does nothing.
    explicit CDeferredCounts(int targetId) noexcept;
    ~CDeferredCounts();
    CDeferredCounts(const CDeferredCounts&) = delete;
    CDeferredCounts& operator=(const CDeferredCounts&) = delete;

    static bool IsOf(const CGroup& group) noexcept;

  private:
    int m_targetId;
    int m_firstNewId;
};
