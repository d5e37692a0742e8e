#pragma once

/// A binary tree of axis-parallel boxes over numbered items, which answers which items may overlap
/// a given box. It can be built at once, refitted to moved items, and changed item by item.
///
/// A box in the tree may be larger than its item; it is never smaller. Nothing here recurses, so no
/// arrangement of items can exhaust the stack.

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/solid/Aabb.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace solid {

/// Closed box in single precision. All bounds are finite: what lies beyond the range of float is
/// moved to its end, which keeps together whatever overlaps.
struct FloatBox {
    float lower[3] = {0, 0, 0};
    float upper[3] = {0, 0, 0};

    /// The smallest such box around `box`, which must not be empty. A NaN bound counts as infinite.
    static FloatBox Around(const Aabb& box);
    /// Larger on all sides by `fraction` of the longest edge.
    FloatBox Grown(float fraction) const;
    bool Contains(const FloatBox& b) const {
        return lower[0] <= b.lower[0] && lower[1] <= b.lower[1] && lower[2] <= b.lower[2] &&
               upper[0] >= b.upper[0] && upper[1] >= b.upper[1] && upper[2] >= b.upper[2];
    }
    bool Overlaps(const FloatBox& b) const {
        return lower[0] <= b.upper[0] && lower[1] <= b.upper[1] && lower[2] <= b.upper[2] &&
               upper[0] >= b.lower[0] && upper[1] >= b.lower[1] && upper[2] >= b.lower[2];
    }
};

/// One box against many: the same answers as FloatBox::Overlaps, in two comparisons of four floats
/// where the machine has them.
class BoxProbe {
  public:
#if defined(__SSE2__)
    explicit BoxProbe(const FloatBox& box)
        : m_upper(_mm_setr_ps(box.upper[0], box.upper[1], box.upper[2], kMost)),
          m_lower(_mm_setr_ps(-kMost, box.lower[0], box.lower[1], box.lower[2])) {}
    bool Overlaps(const FloatBox& box) const {
        // Elements 0 to 3 and 2 to 5 of the box: the middle ones meet bounds that always hold.
        const __m128 first = _mm_loadu_ps(box.lower);
        const __m128 last = _mm_loadu_ps(box.lower + 2);
        const __m128 both = _mm_and_ps(_mm_cmple_ps(first, m_upper), _mm_cmple_ps(m_lower, last));
        return _mm_movemask_ps(both) == 15;
    }

  private:
    static constexpr float kMost = std::numeric_limits<float>::max();
    __m128 m_upper;
    __m128 m_lower;
#else
    explicit BoxProbe(const FloatBox& box) : m_box(box) {}
    bool Overlaps(const FloatBox& box) const {
        return m_box.Overlaps(box);
    }

  private:
    FloatBox m_box;
#endif
};

class DynamicTree {
  public:
    struct Item {
        FloatBox box;
        std::uint32_t id = 0;
    };

    /// Makes room for items 0 to `ids` - 1, so that inserting them allocates nothing. May throw
    /// std::bad_alloc, and then nothing has changed.
    void Reserve(std::size_t ids);
    /// Number of items in the tree.
    std::size_t Count() const { return m_count; }
    bool Has(std::uint32_t id) const { return m_leafOf[id] != kNone; }
    /// Box that the tree holds for an item in it.
    const FloatBox& Box(std::uint32_t id) const { return At(m_leafOf[id]).box; }

    /// Insertion at the place where the boxes above grow least. Needs room and an item not yet in.
    void Insert(std::uint32_t id, const FloatBox& box) noexcept;
    void Remove(std::uint32_t id) noexcept;
    /// Replaces the whole content; reorders `items`. Needs room.
    void Build(std::vector<Item>& items) noexcept;
    /// True when nothing was inserted or removed since Build.
    bool CanRefit() const { return m_ordered; }
    /// Takes `boxOf(id)` for each item in the tree. False when the tree has become so much worse
    /// than it was built that it should be built anew; it is right in any case.
    template <class BoxOf>
    bool Refit(BoxOf&& boxOf);
    /// True when single changes have been so many that it should be built anew; it is right in any
    /// case.
    bool WantsBuild() const { return m_changes > 2 * m_count + 64; }

    /// Calls `visit(id)` once for each item whose box in the tree overlaps `box`.
    template <class Visit>
    void Query(const FloatBox& box, Visit&& visit) const;

  private:
    static constexpr std::uint32_t kNone = 0xffffffffu;
    static constexpr std::uint32_t kLeaf = 0x80000000u;

    /// `link`: of a leaf its item and kLeaf, else the pair that holds the two children.
    struct Node {
        FloatBox box;
        std::uint32_t link = kNone;
        std::uint32_t parent = kNone;

        bool IsLeaf() const { return (link & kLeaf) != 0; }
        std::uint32_t Id() const { return link & ~kLeaf; }
    };
    /// Siblings lie in one line of the cache. Node n is number n % 2 of pair n / 2; node 0 is the
    /// root, node 1 is not used.
    struct alignas(64) Pair {
        Node nodes[2];
    };
    class Stack;

    Node& At(std::uint32_t n) { return m_pairs[n >> 1].nodes[n & 1]; }
    const Node& At(std::uint32_t n) const { return m_pairs[n >> 1].nodes[n & 1]; }
    std::uint32_t NewPair() noexcept;
    void FreePair(std::uint32_t pair) noexcept;
    /// Puts `node` at place n and tells its children, or its item, where it now is.
    void Place(std::uint32_t n, const Node& node) noexcept;
    struct Position {
        std::uint32_t node;
        unsigned depth;
    };
    /// Where to insert; makes the boxes above larger by `box`.
    Position FindSibling(std::uint32_t id, const FloatBox& box) noexcept;
    /// Gives the node `top` the items, which must not be none.
    void BuildBelow(std::uint32_t top, std::vector<Item>& items, unsigned depthOfTop) noexcept;
    void Collect(std::uint32_t top, std::vector<Item>& items) const;
    /// Builds anew the smallest part around a leaf that is much higher than it need be. (I.
    /// Galperin, R. Rivest, "Scapegoat Trees", 1993: the time for it is logarithmic for each
    /// insertion.)
    void Balance(std::uint32_t leaf);
    double InnerCost() const;

    std::vector<Pair> m_pairs;
    std::vector<std::uint32_t> m_leafOf;  ///< node of each item
    std::size_t m_count = 0;
    std::size_t m_changes = 0;
    std::uint32_t m_freePair = kNone;  ///< linked through the first node's parent
    bool m_ordered = false;            ///< no free pairs, and children behind their parents
    double m_builtCost = 0;
};

/// Pairs still to be looked at. Trees are rarely deep enough for the second part.
class DynamicTree::Stack {
  public:
    bool IsEmpty() const { return m_size == 0; }
    void Push(std::uint32_t pair) {
        if (m_size < m_near.size()) {
            m_near[m_size] = pair;
        } else {
            m_far.push_back(pair);
        }
        ++m_size;
    }
    std::uint32_t Pop() {
        if (--m_size < m_near.size()) {
            return m_near[m_size];
        }
        const std::uint32_t pair = m_far.back();
        m_far.pop_back();
        return pair;
    }

  private:
    std::size_t m_size = 0;
    std::array<std::uint32_t, 96> m_near;  // not set: most of it is never used
    std::vector<std::uint32_t> m_far;
};

inline FloatBox Union(const FloatBox& a, const FloatBox& b) {
    FloatBox both;
    for (int i = 0; i < 3; ++i) {
        both.lower[i] = std::min(a.lower[i], b.lower[i]);
        both.upper[i] = std::max(a.upper[i], b.upper[i]);
    }
    return both;
}

template <class BoxOf>
bool DynamicTree::Refit(BoxOf&& boxOf) {
    constexpr double kWorse = 1.5;  // trade between slower queries and building more often
    for (std::size_t n = 2 * m_pairs.size(); n-- > 0;) {
        if (n == 1 || m_count == 0) {
            continue;
        }
        Node& node = At(static_cast<std::uint32_t>(n));
        if (node.IsLeaf()) {
            node.box = boxOf(node.Id());
        } else {
            const Pair& children = m_pairs[node.link];
            node.box = Union(children.nodes[0].box, children.nodes[1].box);
        }
    }
    return InnerCost() <= kWorse * m_builtCost;
}

template <class Visit>
void DynamicTree::Query(const FloatBox& box, Visit&& visit) const {
    const BoxProbe probe(box);
    if (m_count == 0 || !probe.Overlaps(At(0).box)) {
        return;
    }
    if (At(0).IsLeaf()) {
        visit(At(0).Id());
        return;
    }
    Stack stack;
    std::uint32_t pair = At(0).link;
    for (;;) {
        const Node& left = m_pairs[pair].nodes[0];
        const Node& right = m_pairs[pair].nodes[1];
        bool goLeft = probe.Overlaps(left.box);
        bool goRight = probe.Overlaps(right.box);
        if (goLeft && left.IsLeaf()) {
            visit(left.Id());
            goLeft = false;
        }
        if (goRight && right.IsLeaf()) {
            visit(right.Id());
            goRight = false;
        }
        if (goLeft) {
            if (goRight) {
                stack.Push(right.link);
            }
            pair = left.link;
        } else if (goRight) {
            pair = right.link;
        } else if (stack.IsEmpty()) {
            return;
        } else {
            pair = stack.Pop();
        }
    }
}

}  // namespace solid
