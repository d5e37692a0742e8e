#pragma once

/// A binary tree of axis-parallel boxes over numbered items, which is changed item by item: it
/// serves items that move one by one.
///
/// A box in the tree may be larger than its item; it is never smaller. Nothing here recurses, so no
/// arrangement of items can exhaust the stack.

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/solid/BoxSplit.h"
#include "platform/solid/FloatBox.h"

namespace solid {

class DynamicTree {
  public:
    /// Makes room for items 0 to `ids` - 1, and for so many to be in the tree at a time: inserting
    /// them then allocates nothing. May throw std::bad_alloc, and then nothing has changed.
    void Reserve(std::size_t ids, std::size_t count);
    /// Number of items in the tree.
    std::size_t Count() const { return m_count; }
    bool Has(std::uint32_t id) const { return m_leafOf[id] != kNone; }
    /// Box that the tree holds for an item in it.
    const FloatBox& Box(std::uint32_t id) const { return At(m_leafOf[id]).box; }

    /// Insertion at the place where the boxes above grow least. Needs room and an item not yet in.
    void Insert(std::uint32_t id, const FloatBox& box) noexcept;
    void Remove(std::uint32_t id) noexcept;
    void Clear() noexcept;
    /// True when changes have been so many that it should be built anew; it is right in any case.
    bool WantsBuild() const { return m_changes > 2 * m_count + 64; }
    /// Builds it anew of the items that it has. May throw std::bad_alloc, and then nothing has
    /// changed.
    void Build();

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
    void BuildBelow(std::uint32_t top, std::vector<TreeItem>& items, unsigned depthOfTop) noexcept;
    void Collect(std::uint32_t top, std::vector<TreeItem>& items) const;
    /// Builds anew the smallest part around a leaf that is much higher than it need be. (I.
    /// Galperin, R. Rivest, "Scapegoat Trees", 1993: the time for it is logarithmic for each
    /// insertion.)
    void Balance(std::uint32_t leaf);

    std::vector<Pair> m_pairs;
    std::vector<std::uint32_t> m_leafOf;  ///< node of each item
    std::size_t m_count = 0;
    std::size_t m_changes = 0;
    std::uint32_t m_freePair = kNone;  ///< linked through the first node's parent
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
