#include "platform/solid/Scene.h"

#include <algorithm>
#include <new>
#include <utility>

#include "platform/solid/Growth.h"
#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// An object that moves gets a box larger by this share of its size on all sides, so that small
/// further moves change nothing in the tree. More saves changes and costs queries.
constexpr float kFattening = 0.1f;
/// With more than one object in so many to be put right, and more than the least number, a pass
/// over the whole tree of those that rest takes less time than single changes: 30 us with 10,000
/// objects, against 0.2 to 0.8 us for each object.
constexpr std::size_t kRefitShare = 64;
/// With more than one object in so many among those that move one by one, everything is built anew.
constexpr std::size_t kMovingShare = 6;
constexpr std::size_t kBulkLeast = 16;
/// After so many queries for each object, the time that a close build takes has paid for itself.
constexpr std::uint64_t kQueriesToPay = 4;
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
    // Moving an object allocates nothing: all room for it is made here.
    GrowCapacity(m_entries, m_count + 1);
    GrowCapacity(m_pending, m_count + 1);
    m_resting.Reserve(m_count + 1);
    m_moving.Reserve(m_count + 1, 0);
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
    RemoveFromTrees(slot);
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
        WideTree resting;
        DynamicTree moving;
        entries.reserve(m_count);
        pending.reserve(m_count);
        resting.Reserve(m_count);
        moving.Reserve(m_count, 0);
        for (const Entry& entry : m_entries) {
            if (entry.object != nullptr) {
                const auto slot = static_cast<std::uint32_t>(entries.size());
                entries.push_back({entry.object, slot, true});
                pending.push_back(slot);
            }
        }
        for (std::uint32_t slot = 0; slot < entries.size(); ++slot) {
            entries[slot].object->m_slot = slot;
        }
        m_entries.swap(entries);
        m_pending.swap(pending);
        m_resting = std::move(resting);
        m_moving = std::move(moving);
        m_free = kNone;
    } catch (const std::bad_alloc&) {
        // It stays as large as it is.
    }
}

void Scene::RemoveFromTrees(std::uint32_t slot) noexcept {
    if (m_resting.Has(slot)) {
        m_resting.Remove(slot);
    }
    if (m_moving.Has(slot)) {
        m_moving.Remove(slot);
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

bool Scene::BoxOf(const Object& object, FloatBox& box) const {
    if (!object.TakesPart()) {
        return false;
    }
    box = FloatBox::Around(object.WorldBox());
    return true;
}

bool Scene::VolumeOf(const Object& object, QueryVolume& volume) const {
    const std::uint32_t slot = object.m_slot;
    volume.slanted = false;
    if (m_entries[slot].pending == kNone && m_resting.Has(slot)) {
        volume.box = m_resting.Box(slot);
    } else if (!BoxOf(object, volume.box)) {
        return false;
    } else if (object.m_shape->Kind() == ShapeKind::kSegment) {
        const Placed placed = object.GetPlaced();
        const Vec3 half = placed.placement.linear * placed.shape->Half();
        const double slack = kBoxSlack * (MaxNorm(half) + placed.margin);
        volume.Narrow(placed.placement * placed.shape->Centre(), half, placed.margin + slack);
    }
    return true;
}

void Scene::Settle(std::size_t first) noexcept {
    for (std::size_t i = m_pending.size(); i-- > first;) {
        const std::uint32_t slot = m_pending[i];
        FloatBox box;
        if (m_moving.Has(slot) && BoxOf(*m_entries[slot].object, box) &&
            m_moving.Box(slot).Contains(box)) {
            Unpend(slot);
        }
    }
}

void Scene::UpdateFrom(std::size_t first) {
    Settle(first);
    RefitFrom(first);
    const std::size_t moving = m_moving.Count() + CountNew(first);
    if (m_resting.IsWorn() || (moving > kBulkLeast && moving * kMovingShare > m_count)) {
        UpdateAtOnce();
    } else {
        UpdateOneByOne(first);
    }
}

std::size_t Scene::CountNew(std::size_t first) const noexcept {
    return static_cast<std::size_t>(
        std::count_if(m_pending.begin() + static_cast<std::ptrdiff_t>(first), m_pending.end(),
                      [this](std::uint32_t slot) { return !m_moving.Has(slot); }));
}

void Scene::RefitFrom(std::size_t first) noexcept {
    const std::size_t changes = m_pending.size() - first;
    if (changes <= kBulkLeast || changes * kRefitShare <= m_count) {
        return;
    }
    for (std::size_t i = m_pending.size(); i-- > first;) {
        const std::uint32_t slot = m_pending[i];
        FloatBox box;
        if (m_resting.Has(slot)) {
            if (BoxOf(*m_entries[slot].object, box)) {
                m_resting.SetBox(slot, box);
            } else {
                m_resting.Remove(slot);
            }
            Unpend(slot);
        }
    }
    m_resting.Refit();
}

void Scene::UpdateOneByOne(std::size_t first) {
    m_moving.Reserve(0, m_moving.Count() + m_pending.size() - first);
    while (m_pending.size() > first) {
        const std::uint32_t slot = m_pending.back();
        const bool known = m_resting.Has(slot) || m_moving.Has(slot);
        RemoveFromTrees(slot);
        FloatBox box;
        if (BoxOf(*m_entries[slot].object, box)) {
            m_moving.Insert(slot, known && m_entries[slot].moved ? box.Grown(kFattening) : box);
        }
        Unpend(slot);
    }
    if (m_moving.WantsBuild()) {
        m_moving.Build();
    }
}

void Scene::UpdateAtOnce() {
    for (std::size_t i = m_pending.size(); i-- > 0;) {
        const std::uint32_t slot = m_pending[i];
        FloatBox box;
        if (!BoxOf(*m_entries[slot].object, box)) {
            RemoveFromTrees(slot);
            Unpend(slot);
        } else if (m_resting.Has(slot)) {
            m_resting.SetBox(slot, box);
            Unpend(slot);
        }
    }
    m_resting.Refit();
    Build();
}

bool Scene::WantsBuild() const {
    const bool paid = m_queries >= kQueriesToPay * m_resting.Count();
    return (m_built == WideTree::How::kFast && paid) ||
           m_resting.Count() < m_resting.BuiltCount() / 2;
}

void Scene::Build() {
    std::vector<TreeItem> items;
    items.reserve(m_count);
    m_resting.Collect(items);
    for (std::uint32_t slot = 0; slot < m_entries.size(); ++slot) {
        const Object* const object = m_entries[slot].object;
        TreeItem item;
        if (object != nullptr && !m_resting.Has(slot) && BoxOf(*object, item.box)) {
            item.id = slot;
            items.push_back(item);
        }
    }
    // Objects that were all put elsewhere soon after a build will be so again.
    const bool first = m_resting.BuiltCount() == 0;
    const bool soon = m_queries < kQueriesToPay * m_resting.Count();
    m_built = soon && !first ? WideTree::How::kFast : WideTree::How::kClosely;
    m_resting.Build(items, m_built);
    m_queries = 0;
    m_moving.Clear();
    for (const std::uint32_t slot : m_pending) {
        m_entries[slot].pending = kNone;
    }
    m_pending.clear();
}

}  // namespace solid
