#include "platform/solid/DynamicTree.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "platform/solid/Growth.h"

namespace solid {

namespace {

/// Deeper than this, a build halves by number: the depth of a built tree stays below this and 32.
constexpr unsigned kMaxCostSplits = 48;
/// An insertion that ends deeper than any built tree makes a part of the tree balanced.
constexpr unsigned kMaxDescent = 96;
/// The part that is balanced is the smallest around the new leaf that is higher by this than 1.5
/// times the logarithm of its items.
constexpr double kUnbalanced = 8;

}  // namespace

void DynamicTree::Reserve(std::size_t ids, std::size_t count) {
    GrowCapacity(m_pairs, count);
    GrowCapacity(m_leafOf, ids);
    if (m_leafOf.size() < ids) {
        m_leafOf.resize(ids, kNone);
    }
}

std::uint32_t DynamicTree::NewPair() noexcept {
    if (m_freePair == kNone) {
        m_pairs.emplace_back();
        return static_cast<std::uint32_t>(m_pairs.size() - 1);
    }
    const std::uint32_t pair = m_freePair;
    m_freePair = m_pairs[pair].nodes[0].parent;
    return pair;
}

void DynamicTree::FreePair(std::uint32_t pair) noexcept {
    m_pairs[pair].nodes[0].parent = m_freePair;
    m_freePair = pair;
}

void DynamicTree::Place(std::uint32_t n, const Node& node) noexcept {
    At(n) = node;
    if (node.IsLeaf()) {
        m_leafOf[node.Id()] = n;
    } else {
        m_pairs[node.link].nodes[0].parent = n;
        m_pairs[node.link].nodes[1].parent = n;
    }
}

DynamicTree::Position DynamicTree::FindSibling(std::uint32_t id, const FloatBox& box) noexcept {
    // Where costs are equal, bits of the item's number decide: equal boxes then spread evenly.
    std::uint32_t ties = id * 0x9e3779b9u;
    const double pad = PadFor(Union(At(0).box, box));
    double above = 0;  // growth of the boxes above the current node
    std::uint32_t n = 0;
    for (unsigned depth = 0;; ++depth) {
        Node& node = At(n);
        const FloatBox joined = Union(node.box, box);
        if (node.IsLeaf()) {
            return {n, depth};
        }
        const double here = above + Measure(joined, pad);
        above = here - Measure(node.box, pad);
        double cost[2];
        for (unsigned side = 0; side < 2; ++side) {
            const Node& child = m_pairs[node.link].nodes[side];
            cost[side] = above + Measure(Union(child.box, box), pad) -
                         (child.IsLeaf() ? 0 : Measure(child.box, pad));
        }
        if (here < std::min(cost[0], cost[1])) {
            return {n, depth};
        }
        const bool tie = !(cost[0] < cost[1]) && !(cost[1] < cost[0]);
        const std::uint32_t side = tie ? ties >> 31 : cost[1] < cost[0] ? 1u : 0u;
        ties = ties * 0x9e3779b9u + 1;
        node.box = joined;
        n = 2 * node.link + side;
    }
}

void DynamicTree::Insert(std::uint32_t id, const FloatBox& box) noexcept {
    ++m_changes;
    Node leaf;
    leaf.box = box;
    leaf.link = id | kLeaf;
    if (m_count++ == 0) {
        if (m_pairs.empty()) {
            m_pairs.emplace_back();
        }
        Place(0, leaf);
        return;
    }
    const auto [n, depth] = FindSibling(id, box);
    const std::uint32_t pair = NewPair();
    Node sibling = At(n);
    At(n).box = Union(sibling.box, box);
    At(n).link = pair;
    sibling.parent = leaf.parent = n;
    Place(2 * pair, sibling);
    Place(2 * pair + 1, leaf);
    if (depth > kMaxDescent) {
        try {
            Balance(2 * pair + 1);
        } catch (const std::bad_alloc&) {
            // It can wait: a deep tree is slow, not wrong.
        }
    }
}

void DynamicTree::Remove(std::uint32_t id) noexcept {
    ++m_changes;
    const std::uint32_t n = std::exchange(m_leafOf[id], kNone);
    if (--m_count == 0) {
        m_pairs.clear();
        m_freePair = kNone;
        m_changes = 0;
        return;
    }
    std::uint32_t parent = At(n).parent;
    Node sibling = At(n ^ 1);
    sibling.parent = At(parent).parent;
    FreePair(n >> 1);
    Place(parent, sibling);
    while ((parent = At(parent).parent) != kNone) {
        Node& node = At(parent);
        const Pair& children = m_pairs[node.link];
        const FloatBox box = Union(children.nodes[0].box, children.nodes[1].box);
        if (box.Contains(node.box)) {
            break;
        }
        node.box = box;
    }
}

void DynamicTree::Clear() noexcept {
    std::fill(m_leafOf.begin(), m_leafOf.end(), kNone);
    m_pairs.clear();
    m_count = 0;
    m_changes = 0;
    m_freePair = kNone;
}

void DynamicTree::Build() {
    if (m_count > 0) {
        std::vector<TreeItem> items;
        items.reserve(m_count);
        Collect(0, items);
        m_pairs.clear();
        m_freePair = kNone;
        m_pairs.emplace_back();
        BuildBelow(0, items, 0);
    }
    m_changes = 0;
}

void DynamicTree::BuildBelow(std::uint32_t top, std::vector<TreeItem>& items,
                             unsigned depthOfTop) noexcept {
    struct Task {
        ItemRange range;
        std::uint32_t node;
        unsigned depth;
    };
    // One waiting task for each level at most.
    std::array<Task, kMaxCostSplits + 34> tasks;
    std::size_t waiting = 0;
    tasks[waiting++] = {RangeOf(items.data(), items.data() + items.size()), top, depthOfTop};
    const double pad = PadFor(tasks[0].range.box);
    while (waiting > 0) {
        const Task task = tasks[--waiting];
        Node& node = At(task.node);
        node.box = task.range.box;
        if (task.range.Count() == 1) {
            node.link = task.range.first->id | kLeaf;
            m_leafOf[task.range.first->id] = task.node;
            continue;
        }
        const std::uint32_t pair = NewPair();
        Task left{{}, 2 * pair, task.depth + 1};
        Task right{{}, 2 * pair + 1, task.depth + 1};
        if (task.depth >= kMaxCostSplits) {
            SplitInHalves(task.range, left.range, right.range);
        } else {
            SplitCheapest(task.range, pad, left.range, right.range);
        }
        At(task.node).link = pair;
        At(left.node).parent = At(right.node).parent = task.node;
        tasks[waiting++] = right;
        tasks[waiting++] = left;
    }
}

void DynamicTree::Collect(std::uint32_t top, std::vector<TreeItem>& items) const {
    Stack stack;
    for (std::uint32_t n = top;;) {
        const Node& node = At(n);
        if (!node.IsLeaf()) {
            stack.Push(2 * node.link + 1);
            n = 2 * node.link;
            continue;
        }
        items.push_back({node.box, node.Id(), 0});
        if (stack.IsEmpty()) {
            return;
        }
        n = stack.Pop();
    }
}

void DynamicTree::Balance(std::uint32_t leaf) {
    std::vector<TreeItem> items;
    Collect(leaf, items);
    double height = 0;
    for (std::uint32_t n = leaf; n != 0;) {
        const std::uint32_t parent = At(n).parent;
        Collect(n ^ 1, items);
        n = parent;
        if (++height <= kUnbalanced + 1.5 * std::log2(static_cast<double>(items.size()))) {
            continue;
        }
        Stack stack;
        for (std::uint32_t pair = At(n).link;;) {
            for (const Node& node : m_pairs[pair].nodes) {
                if (!node.IsLeaf()) {
                    stack.Push(node.link);
                }
            }
            FreePair(pair);
            if (stack.IsEmpty()) {
                break;
            }
            pair = stack.Pop();
        }
        BuildBelow(n, items, kMaxCostSplits);
        return;
    }
}

}  // namespace solid
