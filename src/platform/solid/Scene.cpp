#include "platform/solid/Scene.h"

#include <algorithm>

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
    if (--m_count == 0) {
        std::vector<Entry>().swap(m_entries);
        std::vector<std::uint32_t>().swap(m_pending);
        m_tree.Clear();
        m_free = kNone;
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
