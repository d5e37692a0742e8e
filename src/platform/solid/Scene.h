#pragma once

/// The objects that are tested together, with two trees over their boxes: one of those that rest,
/// or move all together, and one of those that move one by one. The trees are kept lazily: a moved
/// object is marked in constant time, and put right when a query needs it.

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/solid/DynamicTree.h"
#include "platform/solid/Object.h"
#include "platform/solid/WideTree.h"

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

    /// Objects are known by their slots while they are in the scene. Null when the slot is free.
    Object* At(std::uint32_t slot) const { return m_entries[slot].object; }
    /// To be called by an object whose placement or margin has changed.
    void Moved(std::uint32_t slot) noexcept {
        Entry& entry = m_entries[slot];
        entry.moved = true;
        if (entry.pending == kNone) {
            entry.pending = static_cast<std::uint32_t>(m_pending.size());
            m_pending.push_back(slot);
        }
    }

    /// Puts the trees right for all objects for which `needed(object)` holds, and for those that
    /// have not moved since the last time; of the others, leaves alone at most `tolerated`. An
    /// object that only asks about others is so not put right while it moves, as a robot in front
    /// of a fixed cell, or a probe. May throw std::bad_alloc.
    template <class Needed>
    void Update(Needed&& needed, std::size_t tolerated);
    /// Where the object is to be looked for the others that it may touch. False when it takes no
    /// part.
    bool VolumeOf(const Object& object, QueryVolume& volume) const;
    /// Calls `visit(object)` once for each object in the trees whose box there overlaps the volume:
    /// all that may touch what is in it, and some that do not. Objects that an Update left alone
    /// may be missing, or found at a former place.
    template <class Visit>
    void Query(const QueryVolume& volume, Visit&& visit) {
        ++m_queries;
        const auto visitSlot = [&](std::uint32_t slot) { visit(*m_entries[slot].object); };
        m_resting.Query(volume, visitSlot);
        if (m_moving.Count() > 0) {
            m_moving.Query(volume.box, visitSlot);
        }
    }

  private:
    static constexpr std::uint32_t kNone = 0xffffffffu;

    struct Entry {
        Object* object = nullptr;
        std::uint32_t pending = kNone;  ///< place in m_pending; of a free slot, the next free one
        bool moved = false;             ///< since an Update last met it pending
    };

    /// False when the object takes no part.
    bool BoxOf(const Object& object, FloatBox& box) const;
    /// Gives the objects new slots in arrays no larger than they need.
    void Shrink() noexcept;
    void RemoveFromTrees(std::uint32_t slot) noexcept;
    /// Takes out of m_pending, from place `first` on, what needs no other place in the trees.
    void Settle(std::size_t first) noexcept;
    void UpdateFrom(std::size_t first);
    /// Gives objects of m_resting that are among them their new boxes where they stand in the tree,
    /// if there are enough of them.
    void RefitFrom(std::size_t first) noexcept;
    /// How many there are of them that m_moving does not have yet.
    std::size_t CountNew(std::size_t first) const noexcept;
    /// From place `first` of m_pending on.
    void UpdateOneByOne(std::size_t first);
    /// Puts everything right in one go.
    void UpdateAtOnce();
    void Build();
    /// Whether the tree of those that rest is no more what it should be for its queries.
    bool WantsBuild() const;
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
    /// An object that takes part is in one of the two, unless it is pending.
    WideTree m_resting;
    DynamicTree m_moving;
    std::uint64_t m_queries = 0;  ///< since m_resting was built
    WideTree::How m_built = WideTree::How::kClosely;
};

template <class Needed>
void Scene::Update(Needed&& needed, std::size_t tolerated) {
    std::size_t first = 0;
    if (m_pending.size() <= tolerated) {
        for (std::size_t i = 0; i < m_pending.size(); ++i) {
            Entry& entry = m_entries[m_pending[i]];
            if (!needed(*entry.object) && std::exchange(entry.moved, false)) {
                SwapPending(i, first++);
            }
        }
    }
    if (first < m_pending.size()) {
        UpdateFrom(first);
    }
    if (WantsBuild()) {
        UpdateAtOnce();
    }
}

}  // namespace solid
