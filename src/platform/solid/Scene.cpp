#include "platform/solid/Scene.h"

#include <algorithm>
#include <new>
#include <utility>

#include "platform/solid/Growth.h"

namespace solid {

namespace {

/// A moved object gets a box larger by this share of its size on all sides, so that small further
/// moves change nothing in the tree. More saves changes and costs queries.
constexpr float kFattening = 0.1f;
/// With more than one object in so many to be put elsewhere in the tree, and more than the least
/// number, the whole tree is treated at once. Estimates: neither changes an answer.
constexpr std::size_t kBulkShare = 6;
constexpr std::size_t kBulkLeast = 16;
/// A scene with fewer objects than one in so many of its places, and more places than the least
/// number, gives memory back. The share is well below that of growing, so that it pays for itself.
constexpr std::size_t kShrinkShare = 16;
constexpr std::size_t kShrinkLeast = 1024;

}  // namespace

Scene::~Scene() {
    for (const Entry& entry : m_entries) {
        if (entry.object != nullptr) {
            entry.object->m_scene = nullptr;
        }
    }
}

void Scene::Add(Object& object) {
    if (object.m_scene == this) {
        return;
    }
    // All room is made here: neither moving an object nor putting the tree right by single changes
    // allocates.
    GrowCapacity(m_entries, m_count + 1);
    GrowCapacity(m_pending, m_count + 1);
    m_tree.Reserve(m_count + 1);
    if (object.m_scene != nullptr) {
        object.m_scene->Remove(object);
    }
    std::uint32_t slot = m_free;
    if (slot != kNone) {
        m_free = m_entries[slot].pending;
        m_entries[slot] = {};
    } else {
        slot = static_cast<std::uint32_t>(m_entries.size());
        m_entries.emplace_back();
    }
    ++m_count;
    m_entries[slot].object = &object;
    object.m_scene = this;
    object.m_slot = slot;
    Moved(slot);
}

void Scene::Remove(Object& object) noexcept {
    if (object.m_scene != this) {
        return;
    }
    const std::uint32_t slot = object.m_slot;
    object.m_scene = nullptr;
    if (m_tree.Has(slot)) {
        m_tree.Remove(slot);
    }
    Unpend(slot);
    m_entries[slot].object = nullptr;
    m_entries[slot].pending = m_free;
    m_free = slot;
    --m_count;
    if (m_entries.capacity() > kShrinkLeast && m_count < m_entries.capacity() / kShrinkShare) {
        Shrink();
    }
}

void Scene::Shrink() noexcept {
    try {
        std::vector<Entry> entries;
        std::vector<std::uint32_t> pending;
        DynamicTree tree;
        entries.reserve(m_count);
        pending.reserve(m_count);
        tree.Reserve(m_count);
        for (const Entry& entry : m_entries) {
            if (entry.object != nullptr) {
                const auto slot = static_cast<std::uint32_t>(entries.size());
                entries.emplace_back().object = entry.object;
                entries.back().pending = slot;
                pending.push_back(slot);
            }
        }
        for (std::uint32_t slot = 0; slot < entries.size(); ++slot) {
            entries[slot].object->m_slot = slot;
        }
        m_entries.swap(entries);
        m_pending.swap(pending);
        m_tree = std::move(tree);
        m_free = kNone;
    } catch (const std::bad_alloc&) {
        // It stays as large as it is.
    }
}

void Scene::Unpend(std::uint32_t slot) noexcept {
    const std::uint32_t at = m_entries[slot].pending;
    if (at != kNone) {
        SwapPending(at, m_pending.size() - 1);
        m_pending.pop_back();
        m_entries[slot].pending = kNone;
    }
}

void Scene::Refresh(Entry& entry) noexcept {
    entry.takesPart = entry.object->TakesPart();
    if (entry.takesPart) {
        entry.box = FloatBox::Around(entry.object->WorldBox());
    }
    entry.stale = false;
}

void Scene::Settle(std::size_t first) noexcept {
    for (std::size_t i = m_pending.size(); i-- > first;) {
        const std::uint32_t slot = m_pending[i];
        const FloatBox* const box = Box(slot);
        const bool has = m_tree.Has(slot);
        if (box == nullptr && has) {
            m_tree.Remove(slot);
        }
        if (box == nullptr || (has && m_tree.Box(slot).Contains(*box))) {
            Unpend(slot);
        }
    }
}

void Scene::UpdateFrom(std::size_t first) {
    Settle(first);
    const std::size_t changes = m_pending.size() - first;
    if (changes > kBulkLeast && changes * kBulkShare > m_tree.Count()) {
        UpdateAtOnce();
        return;
    }
    while (m_pending.size() > first) {
        const std::uint32_t slot = m_pending.back();
        const FloatBox& box = m_entries[slot].box;
        if (m_tree.Has(slot)) {
            m_tree.Remove(slot);
            m_tree.Insert(slot, box.Grown(kFattening));
        } else {
            m_tree.Insert(slot, box);
        }
        Unpend(slot);
    }
    if (m_tree.WantsBuild()) {
        UpdateAtOnce();
    }
}

void Scene::UpdateAtOnce() {
    Settle(0);
    const bool sameItems = std::all_of(m_pending.begin(), m_pending.end(),
                                       [this](std::uint32_t slot) { return m_tree.Has(slot); });
    const auto boxOf = [this](std::uint32_t slot) { return m_entries[slot].box; };
    if (!m_tree.CanRefit() || !sameItems || !m_tree.Refit(boxOf)) {
        std::vector<DynamicTree::Item> items;
        items.reserve(m_count);
        for (std::uint32_t slot = 0; slot < m_entries.size(); ++slot) {
            if (m_entries[slot].object != nullptr && m_entries[slot].takesPart) {
                items.push_back({m_entries[slot].box, slot});
            }
        }
        m_tree.Build(items);
    }
    for (const std::uint32_t slot : m_pending) {
        m_entries[slot].pending = kNone;
    }
    m_pending.clear();
}

}  // namespace solid
