#include "platform/solid/DynamicTree.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <new>
#include <utility>

#include "platform/solid/Growth.h"

namespace solid {

namespace {

constexpr float kFloatMax = std::numeric_limits<float>::max();
/// Deeper than this, a build halves by number: the depth of a built tree stays below this and 32.
constexpr unsigned kMaxCostSplits = 48;
/// An insertion that ends deeper than any built tree makes a part of the tree balanced.
constexpr unsigned kMaxDescent = 96;
/// The part that is balanced is the smallest around the new leaf that is higher by this than 1.5
/// times the logarithm of its items.
constexpr double kUnbalanced = 8;
constexpr int kBins = 16;

/// The largest float of finite value that is not above `d`, and -kFloatMax for what is below all;
/// without a branch, which would be foretold wrongly every other time.
float RoundDown(double d) {
    constexpr double kMost = static_cast<double>(kFloatMax);
    const double inRange = d > -kMost ? std::min(d, kMost) : -kMost;  // NaN becomes -kMost
    const float f = static_cast<float>(inRange);
    const std::uint32_t above = static_cast<double>(f) > inRange ? 1 : 0;
    // What lies below 0 becomes at most -0, so that the sign bit tells which way is down.
    auto bits = std::bit_cast<std::uint32_t>(f);
    bits += (bits >> 31) != 0 ? above : 0 - above;
    return std::bit_cast<float>(bits);
}

float RoundUp(double d) {
    return -RoundDown(-d);
}

double Edge(const FloatBox& b, int axis) {
    return static_cast<double>(b.upper[axis]) - static_cast<double>(b.lower[axis]);
}

/// A ten-thousandth of the longest edge: what boxes are made larger by before they are measured, so
/// that flat ones and points still differ.
double PadFor(const FloatBox& b) {
    double longest = 0;
    for (int i = 0; i < 3; ++i) {
        longest = std::max(longest, Edge(b, i));
    }
    return longest * 1e-4;
}

/// How likely a query is to meet a box: half its surface. (J. Goldsmith, J. Salmon, "Automatic
/// Creation of Object Hierarchies for Ray Tracing", 1987.)
double Measure(const FloatBox& b, double pad) {
    const double x = Edge(b, 0) + pad;
    const double y = Edge(b, 1) + pad;
    const double z = Edge(b, 2) + pad;
    return x * y + y * z + z * x;
}

/// A quarter of the sum of two bounds: differences of such middles do not overflow.
float Middle(const FloatBox& box, int axis) {
    return 0.25f * box.lower[axis] + 0.25f * box.upper[axis];
}

/// Items whose middles lie in one interval.
struct Bin {
    FloatBox box;
    std::uint32_t count = 0;

    void Include(const FloatBox& b, std::uint32_t n) {
        box = count == 0 ? b : Union(box, b);
        count += n;
    }
    double Cost(double pad) const { return Measure(box, pad) * count; }
};

/// Maps middles along one axis to bins.
struct Binning {
    int BinOf(const FloatBox& box) const {
        return std::min(count - 1, static_cast<int>((Middle(box, axis) - lowest) * scale));
    }

    int axis;
    int count;
    float lowest;
    float scale;
};

using Item = DynamicTree::Item;

struct Range {
    Item* first;
    Item* last;
    FloatBox box;
};

/// Cuts between the two bins where the parts are cheapest. (I. Wald, "On fast Construction of
/// SAH-based Bounding Volume Hierarchies", 2007.)
void CutCheapest(const Range& all, const Binning& binning, double pad, Range& left, Range& right) {
    Bin bins[kBins];
    for (const Item* i = all.first; i != all.last; ++i) {
        bins[binning.BinOf(i->box)].Include(i->box, 1);
    }
    // The lowest and the highest middle are in the first and the last bin, so no part is empty.
    Bin above[kBins];
    above[binning.count - 1] = bins[binning.count - 1];
    for (int i = binning.count - 1; i-- > 1;) {
        above[i] = above[i + 1];
        if (bins[i].count > 0) {
            above[i].Include(bins[i].box, bins[i].count);
        }
    }
    double best = std::numeric_limits<double>::infinity();
    int cut = 1;
    Bin below;
    for (int i = 1; i < binning.count; ++i) {
        if (bins[i - 1].count == 0) {
            continue;
        }
        below.Include(bins[i - 1].box, bins[i - 1].count);
        const double cost = below.Cost(pad) + above[i].Cost(pad);
        if (cost < best) {
            best = cost;
            cut = i;
            left.box = below.box;
        }
    }
    right.box = above[cut].box;
    left.first = all.first;
    right.last = all.last;
    left.last = right.first = std::partition(
        all.first, all.last, [&](const Item& i) { return binning.BinOf(i.box) < cut; });
}

FloatBox BoxOf(const Item* first, const Item* last) {
    FloatBox box = first->box;
    while (++first != last) {
        box = Union(box, first->box);
    }
    return box;
}

/// Two parts of the same number of items, in the order of the middles along `axis` when `sort`.
void Halve(const Range& all, int axis, bool sort, Range& left, Range& right) {
    Item* const half = all.first + (all.last - all.first) / 2;
    if (sort) {
        std::nth_element(all.first, half, all.last, [axis](const Item& a, const Item& b) {
            return std::pair(Middle(a.box, axis), a.id) < std::pair(Middle(b.box, axis), b.id);
        });
    }
    left = {all.first, half, BoxOf(all.first, half)};
    right = {half, all.last, BoxOf(half, all.last)};
}

/// Divides at least two items into two parts, neither of them empty.
void Divide(const Range& all, bool balanced, double pad, Range& left, Range& right) {
    const std::ptrdiff_t count = all.last - all.first;
    if (count == 2) {
        Halve(all, 0, false, left, right);
        return;
    }
    float lowest[3], highest[3];
    for (int a = 0; a < 3; ++a) {
        lowest[a] = highest[a] = Middle(all.first->box, a);
    }
    for (const Item* i = all.first + 1; i != all.last; ++i) {
        for (int a = 0; a < 3; ++a) {
            const float m = Middle(i->box, a);
            lowest[a] = std::min(lowest[a], m);
            highest[a] = std::max(highest[a], m);
        }
    }
    int axis = 0;
    for (int a = 1; a < 3; ++a) {
        axis = highest[a] - lowest[a] > highest[axis] - lowest[axis] ? a : axis;
    }
    const int bins = count <= 8 ? 4 : count <= 64 ? 8 : kBins;
    const float scale = static_cast<float>(bins) / (highest[axis] - lowest[axis]);
    const bool distinct = scale <= kFloatMax;
    if (balanced || !distinct) {
        Halve(all, axis, distinct, left, right);
    } else {
        CutCheapest(all, {axis, bins, lowest[axis], scale}, pad, left, right);
    }
}

}  // namespace

FloatBox FloatBox::Around(const Aabb& box) {
    return {{RoundDown(box.lower.x), RoundDown(box.lower.y), RoundDown(box.lower.z)},
            {RoundUp(box.upper.x), RoundUp(box.upper.y), RoundUp(box.upper.z)}};
}

FloatBox FloatBox::Grown(float fraction) const {
    float longest = 0;
    for (int i = 0; i < 3; ++i) {
        longest = std::max(longest, upper[i] - lower[i]);
    }
    const float by = longest * fraction;
    FloatBox grown;
    for (int i = 0; i < 3; ++i) {
        grown.lower[i] = std::max(lower[i] - by, -kFloatMax);
        grown.upper[i] = std::min(upper[i] + by, kFloatMax);
    }
    return grown;
}

void DynamicTree::Reserve(std::size_t ids) {
    GrowCapacity(m_pairs, ids);
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
    m_ordered = false;
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
    m_ordered = false;
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

void DynamicTree::Build(std::vector<Item>& items) noexcept {
    std::fill(m_leafOf.begin(), m_leafOf.end(), kNone);
    m_pairs.clear();
    m_count = items.size();
    m_changes = 0;
    m_freePair = kNone;
    m_ordered = true;
    if (!items.empty()) {
        m_pairs.emplace_back();
        BuildBelow(0, items, 0);
    }
    m_builtCost = InnerCost();
}

void DynamicTree::BuildBelow(std::uint32_t top, std::vector<Item>& items,
                             unsigned depthOfTop) noexcept {
    struct Task {
        Range range;
        std::uint32_t node;
        unsigned depth;
    };
    // One waiting task for each level at most.
    std::array<Task, kMaxCostSplits + 34> tasks;
    std::size_t waiting = 0;
    Item* const end = items.data() + items.size();
    tasks[waiting++] = {{items.data(), end, BoxOf(items.data(), end)}, top, depthOfTop};
    const double pad = PadFor(tasks[0].range.box);
    while (waiting > 0) {
        const Task task = tasks[--waiting];
        Node& node = At(task.node);
        node.box = task.range.box;
        if (task.range.last - task.range.first == 1) {
            node.link = task.range.first->id | kLeaf;
            m_leafOf[task.range.first->id] = task.node;
            continue;
        }
        const std::uint32_t pair = NewPair();
        Task left{{}, 2 * pair, task.depth + 1};
        Task right{{}, 2 * pair + 1, task.depth + 1};
        Divide(task.range, task.depth >= kMaxCostSplits, pad, left.range, right.range);
        At(task.node).link = pair;
        At(left.node).parent = At(right.node).parent = task.node;
        tasks[waiting++] = right;
        tasks[waiting++] = left;
    }
}

void DynamicTree::Collect(std::uint32_t top, std::vector<Item>& items) const {
    Stack stack;
    for (std::uint32_t n = top;;) {
        const Node& node = At(n);
        if (!node.IsLeaf()) {
            stack.Push(2 * node.link + 1);
            n = 2 * node.link;
            continue;
        }
        items.push_back({node.box, node.Id()});
        if (stack.IsEmpty()) {
            return;
        }
        n = stack.Pop();
    }
}

void DynamicTree::Balance(std::uint32_t leaf) {
    std::vector<Item> items;
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

double DynamicTree::InnerCost() const {
    double cost = 0;
    const double pad = m_count > 0 ? PadFor(At(0).box) : 0;
    for (const Pair& pair : m_pairs) {
        for (const Node& node : pair.nodes) {
            cost += node.IsLeaf() ? 0 : Measure(node.box, pad);
        }
    }
    return cost;
}

}  // namespace solid
