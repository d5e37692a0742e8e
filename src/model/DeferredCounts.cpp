#include "model/DeferredCounts.h"

#include <utility>

#include "model/Group.h"
#include "model/Registries.h"

namespace {

const CDeferredCounts* g_deferred = nullptr;

}  // namespace

CDeferredCounts::CDeferredCounts(int targetId) noexcept
    : m_targetId(targetId), m_firstNewId(g_nextGroupId) {
    if (!g_deferred)
        g_deferred = this;
}

CDeferredCounts::~CDeferredCounts() {
    if (g_deferred != this)
        return;
    g_deferred = nullptr;
    // A new group's parent is older than it.
    for (int id = g_nextGroupId - 1; id >= m_firstNewId; --id) {
        CGroup* const group = g_groups.Find(id);
        const int count = group ? std::exchange(group->m_uncounted, 0) : 0;
        if (count != 0) {
            group->m_parent->m_subtreePrimitiveCount += count;
            group->m_parent->m_uncounted += count;
        }
    }
    CGroup* const target = g_groups.Find(m_targetId);
    const int count = target ? std::exchange(target->m_uncounted, 0) : 0;
    if (count != 0 && target->m_parent)
        target->m_parent->AddToSubtreeCounts(count);
}

bool CDeferredCounts::IsOf(const CGroup& group) noexcept {
    return g_deferred &&
           (group.Id() >= g_deferred->m_firstNewId || group.Id() == g_deferred->m_targetId);
}
