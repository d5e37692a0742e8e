#pragma once

/// The objects that are tested together, with a tree over their boxes. The tree is kept lazily: a
/// moved object is marked in constant time, and put right when a query needs it.

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/solid/DynamicTree.h"
#include "platform/solid/Object.h"

namespace solid {

class Scene {
  public:
    Scene() = default;
    /// Its objects live on without a scene.
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// An object is in one scene at most: it leaves the one that it was in. May throw
    /// std::bad_alloc, and then nothing has changed.
    void Add(Object& object);
    /// No effect on an object of another scene.
    void Remove(Object& object) noexcept;
    bool Has(const Object& object) const { return object.m_scene == this; }

    /// Objects are known by their slots while they are in the scene.
    static std::uint32_t SlotOf(const Object& object) { return object.m_slot; }
    /// Null when the slot is free.
    Object* At(std::uint32_t slot) const { return m_entries[slot].object; }
    /// The tight box of the object's present placement, null when it takes no part.
    const FloatBox* Box(std::uint32_t slot) {
        Entry& entry = m_entries[slot];
        if (entry.stale) {
            Refresh(entry);
        }
        return entry.takesPart ? &entry.box : nullptr;
    }
    /// To be called by an object whose placement or margin has changed.
    void Moved(std::uint32_t slot) noexcept {
        Entry& entry = m_entries[slot];
        entry.stale = true;
        if (entry.pending == kNone) {
            entry.pending = static_cast<std::uint32_t>(m_pending.size());
            m_pending.push_back(slot);
        }
    }

    /// Puts the tree right for all objects for which `needed(object)` holds; of the others, leaves
    /// alone at most `tolerated`. An object that only asks about others is so never put right, as
    /// a robot that moves in front of a fixed cell, or a probe. May throw std::bad_alloc.
    template <class Needed>
    void Update(Needed&& needed, std::size_t tolerated);
    /// Calls `visit(slot)` once for each object in the tree whose tight box overlaps `box`. Objects
    /// that an Update left alone may be missing, or found at a former place.
    template <class Visit>
    void Query(const FloatBox& box, Visit&& visit) const {
        m_tree.Query(box, [&](std::uint32_t slot) {
            if (m_entries[slot].box.Overlaps(box)) {
                visit(slot);
            }
        });
    }

  private:
    static constexpr std::uint32_t kNone = 0xffffffffu;

    struct Entry {
        FloatBox box;                   ///< tight
        std::uint32_t pending = kNone;  ///< place in m_pending; of a free slot, the next free one
        bool stale = true;              ///< box and takesPart are of a former placement
        bool takesPart = false;
        Object* object = nullptr;
    };

    static void Refresh(Entry& entry) noexcept;
    /// Gives the objects new slots in arrays no larger than they need.
    void Shrink() noexcept;
    /// Takes out of m_pending, from place `first` on, what needs no other place in the tree.
    void Settle(std::size_t first) noexcept;
    void UpdateFrom(std::size_t first);
    /// Puts the whole tree right in one go.
    void UpdateAtOnce();
    void Unpend(std::uint32_t slot) noexcept;
    void SwapPending(std::size_t i, std::size_t j) noexcept {
        std::swap(m_pending[i], m_pending[j]);
        m_entries[m_pending[i]].pending = static_cast<std::uint32_t>(i);
        m_entries[m_pending[j]].pending = static_cast<std::uint32_t>(j);
    }

    std::vector<Entry> m_entries;
    std::vector<std::uint32_t> m_pending;  ///< slots not right in the tree; has room for all
    std::size_t m_count = 0;
    std::uint32_t m_free = kNone;
    DynamicTree m_tree;
};

template <class Needed>
void Scene::Update(Needed&& needed, std::size_t tolerated) {
    std::size_t first = 0;
    if (m_pending.size() <= tolerated) {
        for (std::size_t i = 0; i < m_pending.size(); ++i) {
            if (!needed(*m_entries[m_pending[i]].object)) {
                SwapPending(i, first++);
            }
        }
    }
    if (first < m_pending.size()) {
        UpdateFrom(first);
    }
}

}  // namespace solid
