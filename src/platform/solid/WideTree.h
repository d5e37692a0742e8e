#pragma once

/// A tree of axis-parallel boxes over numbered items that is built at once: it serves items that
/// rest, or that move all together. Each node holds the boxes of up to four children side by side,
/// so that a query meets four of them at a time. (H. Dammertz, J. Hanika, A. Keller, "Shallow
/// Bounding Volume Hierarchies for Fast SIMD Ray Tracing of Incoherent Rays", 2008.)
///
/// A box in the tree may be larger than its item; it is never smaller. Nothing here recurses, so no
/// arrangement of items can exhaust the stack.

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/solid/BoxSplit.h"
#include "platform/solid/FloatBox.h"

namespace solid {

class WideTree {
  public:
    enum class How {
        kFast,  ///< about a tenth of the time to build, up to half more for each query
        kClosely
    };

    /// Makes room for items 0 to `ids` - 1. May throw std::bad_alloc, and then nothing has changed.
    void Reserve(std::size_t ids);
    /// Number of items in the tree.
    std::size_t Count() const { return m_count; }
    /// Number of items when it was built.
    std::size_t BuiltCount() const { return m_builtCount; }
    bool Has(std::uint32_t id) const { return m_laneOf[id] != kNone; }
    /// Box that the tree holds for an item in it.
    FloatBox Box(std::uint32_t id) const;
    /// Appends all items to `items`, which must have room.
    void Collect(std::vector<TreeItem>& items) const noexcept;

    /// Replaces the whole content; reorders `items`. Needs room for the numbers. May throw
    /// std::bad_alloc, and then nothing has changed.
    void Build(std::vector<TreeItem>& items, How how);
    void Remove(std::uint32_t id) noexcept;
    /// To be followed by Refit before any query.
    void SetBox(std::uint32_t id, const FloatBox& box) noexcept;
    /// Puts all boxes above those of items right.
    void Refit() noexcept;
    /// True when moves have made the tree so much worse than it was built that it should be built
    /// anew; it is right in any case. As of the last Refit.
    bool IsWorn() const { return m_cost > kWorn * m_builtCost; }

    /// Calls `visit(id)` once for each item whose box in the tree overlaps the volume; where the
    /// volume is slanted, perhaps for some that overlap no more than its box.
    template <class Visit>
    void Query(const QueryVolume& volume, Visit&& visit) const;

  private:
    static constexpr std::uint32_t kNone = 0xffffffffu;
    static constexpr std::uint32_t kLeaf = 0x80000000u;
    static constexpr unsigned kLanes = 4;
    /// Deeper than this, a build halves by number: the depth stays below this and 32.
    static constexpr unsigned kMaxSplits = 48;
    static constexpr unsigned kMaxDepth = kMaxSplits + 32;
    /// Trade between slower queries and building more often.
    static constexpr double kWorn = 1.5;

    /// Boxes by coordinate, then by child. An empty lane has a box that overlaps nothing.
    struct alignas(64) Node {
        float lower[3][kLanes];
        float upper[3][kLanes];
        /// Of an item, its number and kLeaf; else the child's place. Children stand behind parents.
        std::uint32_t link[kLanes];

        Node();
        void SetLane(unsigned lane, const FloatBox& box);
        FloatBox LaneBox(unsigned lane) const;
        FloatBox Bounds() const;
        /// A bit for each lane that holds an item, or is empty.
        unsigned Items() const {
#if defined(__SSE2__)
            const __m128i links = _mm_load_si128(reinterpret_cast<const __m128i*>(link));
            return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(links)));
#else
            return link[0] >> 31 | link[1] >> 31 << 1 | link[2] >> 31 << 2 | link[3] >> 31 << 3;
#endif
        }
    };
    class BoxLanes;
    class SlantLanes;
    class Builder;

    static void Prefetch(const Node& node) {
#if defined(__GNUC__)
        __builtin_prefetch(&node);
        __builtin_prefetch(node.link);
#endif
    }
    template <class Lanes, class Visit>
    void Walk(const Lanes& lanes, Visit&& visit) const;

    std::vector<Node> m_nodes;
    std::vector<std::uint32_t> m_laneOf;  ///< of each item kLanes * node + lane
    std::size_t m_count = 0;
    std::size_t m_builtCount = 0;
    double m_cost = 0;
    double m_builtCost = 0;
};

#if defined(__SSE2__)

/// One box against the four of a node: a bit for each that it overlaps.
class WideTree::BoxLanes {
  public:
    explicit BoxLanes(const FloatBox& box) {
        for (int a = 0; a < 3; ++a) {
            m_lower[a] = _mm_set1_ps(box.lower[a]);
            m_upper[a] = _mm_set1_ps(box.upper[a]);
        }
    }
    unsigned Overlapping(const Node& node) const {
        const auto along = [&](int a) {
            return _mm_and_ps(_mm_cmple_ps(_mm_load_ps(node.lower[a]), m_upper[a]),
                              _mm_cmple_ps(m_lower[a], _mm_load_ps(node.upper[a])));
        };
        const __m128 all = _mm_and_ps(_mm_and_ps(along(0), along(1)), along(2));
        return static_cast<unsigned>(_mm_movemask_ps(all));
    }

  private:
    __m128 m_lower[3];
    __m128 m_upper[3];
};

/// The same of a slanted volume, by the axes at right angles to it and to an edge of the boxes. (C.
/// Ericson, "Real-Time Collision Detection", 2005, section 5.3.3.)
class WideTree::SlantLanes {
  public:
    explicit SlantLanes(const QueryVolume& volume) : m_box(volume.box) {
        for (int a = 0; a < 3; ++a) {
            const float middle = volume.slant.middle[a];
            m_middle[a] = _mm_set1_ps(middle);
            m_direction[a] = _mm_set1_ps(volume.slant.direction[a]);
            const float own = volume.slant.radius + kRounding * volume.slant.radius;
            m_around[a] = _mm_set1_ps(own + kRounding * (middle < 0 ? -middle : middle));
        }
    }
    unsigned Overlapping(const Node& node) const {
        const unsigned inBox = m_box.Overlapping(node);
        // A single child far larger than the segment is met in most cases; one that holds more is
        // looked at more closely below.
        if ((inBox & (inBox - 1)) == 0 && (inBox & node.Items()) == 0) {
            return inBox;
        }
        const __m128 sign = _mm_set1_ps(-0.0f);
        const __m128 half = _mm_set1_ps(0.5f);
        __m128 apart[3], reach[3], along[3];
        for (int a = 0; a < 3; ++a) {
            const __m128 lower = _mm_load_ps(node.lower[a]);
            const __m128 upper = _mm_load_ps(node.upper[a]);
            const __m128 lowerHalf = _mm_mul_ps(half, lower);
            const __m128 upperHalf = _mm_mul_ps(half, upper);
            apart[a] = _mm_sub_ps(_mm_add_ps(lowerHalf, upperHalf), m_middle[a]);
            const __m128 size = _mm_add_ps(_mm_andnot_ps(sign, lower), _mm_andnot_ps(sign, upper));
            reach[a] = _mm_add_ps(_mm_add_ps(_mm_sub_ps(upperHalf, lowerHalf), m_around[a]),
                                  _mm_mul_ps(_mm_set1_ps(kRounding), size));
            along[a] = _mm_andnot_ps(sign, m_direction[a]);
        }
        __m128 parted = _mm_setzero_ps();
        for (int a = 0; a < 3; ++a) {
            const int b = (a + 1) % 3;
            const __m128 gap = _mm_sub_ps(_mm_mul_ps(m_direction[a], apart[b]),
                                          _mm_mul_ps(m_direction[b], apart[a]));
            const __m128 most =
                _mm_add_ps(_mm_mul_ps(along[a], reach[b]), _mm_mul_ps(along[b], reach[a]));
            // False where one of the two is no number.
            parted = _mm_or_ps(parted, _mm_cmpgt_ps(_mm_andnot_ps(sign, gap), most));
        }
        return inBox & ~static_cast<unsigned>(_mm_movemask_ps(parted));
    }

  private:
    /// Relative to the coordinates: several times what single precision rounds above.
    static constexpr float kRounding = 1e-6f;

    BoxLanes m_box;
    __m128 m_middle[3];
    __m128 m_direction[3];
    __m128 m_around[3];
};

#else

class WideTree::BoxLanes {
  public:
    explicit BoxLanes(const FloatBox& box) : m_box(box) {}
    unsigned Overlapping(const Node& node) const {
        unsigned overlapping = 0;
        for (unsigned lane = 0; lane < kLanes; ++lane) {
            overlapping |= m_box.Overlaps(node.LaneBox(lane)) ? 1u << lane : 0u;
        }
        return overlapping;
    }

  private:
    FloatBox m_box;
};

/// Without the machine's help, no more than the box.
class WideTree::SlantLanes : public WideTree::BoxLanes {
  public:
    explicit SlantLanes(const QueryVolume& volume) : BoxLanes(volume.box) {}
};

#endif

template <class Visit>
void WideTree::Query(const QueryVolume& volume, Visit&& visit) const {
    if (m_count == 0) {
        return;
    }
    if (volume.slanted) {
        Walk(SlantLanes(volume), visit);
    } else {
        Walk(BoxLanes(volume.box), visit);
    }
}

template <class Lanes, class Visit>
void WideTree::Walk(const Lanes& lanes, Visit&& visit) const {
    std::array<std::uint32_t, kMaxDepth*(kLanes - 1)> waiting;  // not set: most is never used
    std::size_t waitingCount = 0;
    for (const Node* node = m_nodes.data();;) {
        const unsigned hit = lanes.Overlapping(*node);
        const unsigned items = node->Items();
        for (unsigned found = hit & items; found != 0; found &= found - 1) {
            visit(node->link[std::countr_zero(found)] & ~kLeaf);
        }
        unsigned inner = hit & ~items;
        if (inner != 0) {
            const Node* const next = &m_nodes[node->link[std::countr_zero(inner)]];
            while ((inner &= inner - 1) != 0) {
                const std::uint32_t link = node->link[std::countr_zero(inner)];
                Prefetch(m_nodes[link]);
                waiting[waitingCount++] = link;
            }
            node = next;
        } else if (waitingCount > 0) {
            node = &m_nodes[waiting[--waitingCount]];
        } else {
            return;
        }
    }
}

}  // namespace solid
