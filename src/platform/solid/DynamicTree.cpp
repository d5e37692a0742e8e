#include "platform/solid/DynamicTree.h"

#include <algorithm>
#include <cmath>
#include <cstring>
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

/// Next float downwards of a finite one.
float StepDown(float f) {
    std::uint32_t bits;
    std::memcpy(&bits, &f, sizeof bits);
    bits = f > 0 ? bits - 1 : f < 0 ? bits + 1 : 0x80000001u;
    std::memcpy(&f, &bits, sizeof f);
    return f;
}

float RoundDown(double d) {
    if (!(d > -static_cast<double>(kFloatMax))) {
        return -kFloatMax;
    }
    if (d >= static_cast<double>(kFloatMax)) {
        return kFloatMax;
    }
    const float f = static_cast<float>(d);
    return static_cast<double>(f) > d ? StepDown(f) : f;
}

float RoundUp(double d) {
    return -RoundDown(-d);
}

/// How likely a query is to meet a box: half its surface, with each edge longer by `extra`, a share
/// of the whole scene, so that flat and point-like boxes still differ. (J. Goldsmith, J. Salmon,
/// "Automatic Creation of Object Hierarchies for Ray Tracing", 1987.)
double Measure(const FloatBox& b) {
    const double x = static_cast<double>(b.upper[0]) - static_cast<double>(b.lower[0]);
    const double y = static_cast<double>(b.upper[1]) - static_cast<double>(b.lower[1]);
    const double z = static_cast<double>(b.upper[2]) - static_cast<double>(b.lower[2]);
    return x + y + z;
}

struct Bin {
    FloatBox box;
    std::size_t count = 0;

    void Include(const FloatBox& b, std::size_t n) {
        box = count == 0 ? b : Union(box, b);
        count += n;
    }
};

double Middle(const FloatBox& box, int axis) {
    return static_cast<double>(box.lower[axis]) + static_cast<double>(box.upper[axis]);
}

/// Maps middles along one axis to bins.
class Binning {
  public:
    Binning() = default;
    Binning(int axis, double lowest, double highest)
        : m_axis(axis), m_lowest(lowest), m_scale(kBins / (highest - lowest)) {}
    int BinOf(const FloatBox& box) const {
        return std::min(kBins - 1, static_cast<int>((Middle(box, m_axis) - m_lowest) * m_scale));
    }

  private:
    int m_axis = 0;
    double m_lowest = 0;
    double m_scale = 0;
};

using Item = DynamicTree::Item;

/// The cheapest cut of `items` between two bins along one axis. Wald's method: I. Wald, "On fast
/// Construction of SAH-based Bounding Volume Hierarchies", 2007.
double CheapestCut(const Item* first, const Item* last, const Binning& binning, int& cut) {
    Bin bins[kBins];
    for (const Item* i = first; i != last; ++i) {
        bins[binning.BinOf(i->box)].Include(i->box, 1);
    }
    double rightCost[kBins] = {};
    Bin right;
    for (int i = kBins - 1; i > 0; --i) {
        if (bins[i].count > 0) {
            right.Include(bins[i].box, bins[i].count);
        }
        rightCost[i] = right.count > 0 ? Measure(right.box) * static_cast<double>(right.count)
                                       : std::numeric_limits<double>::infinity();
    }
    double best = std::numeric_limits<double>::infinity();
    Bin left;
    for (int i = 1; i < kBins; ++i) {
        if (bins[i - 1].count > 0) {
            left.Include(bins[i - 1].box, bins[i - 1].count);
        }
        if (left.count == 0) {
            continue;
        }
        const double cost = Measure(left.box) * static_cast<double>(left.count) + rightCost[i];
        if (cost < best) {
            best = cost;
            cut = i;
        }
    }
    return best;
}

/// Divides the items, at least two, into two parts that are not empty; returns the first of the
/// second part.
Item* Divide(Item* first, Item* last, unsigned depth) {
    Item* const half = first + (last - first) / 2;
    if (last - first == 2) {
        return half;
    }
    double lowest[3], highest[3];
    for (int a = 0; a < 3; ++a) {
        lowest[a] = highest[a] = Middle(first->box, a);
    }
    for (const Item* i = first + 1; i != last; ++i) {
        for (int a = 0; a < 3; ++a) {
            const double m = Middle(i->box, a);
            lowest[a] = std::min(lowest[a], m);
            highest[a] = std::max(highest[a], m);
        }
    }
    int axis = 0;
    for (int a = 1; a < 3; ++a) {
        axis = highest[a] - lowest[a] > highest[axis] - lowest[axis] ? a : axis;
    }
    if (!(highest[axis] > lowest[axis])) {
        return half;
    }
    if (depth >= kMaxCostSplits) {
        std::nth_element(first, half, last, [axis](const Item& a, const Item& b) {
            return std::pair(Middle(a.box, axis), a.id) < std::pair(Middle(b.box, axis), b.id);
        });
        return half;
    }
    const Binning binning(axis, lowest[axis], highest[axis]);
    int cut = 1;
    CheapestCut(first, last, binning, cut);
    return std::partition(first, last, [&](const Item& i) { return binning.BinOf(i.box) < cut; });
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
    double above = 0;  // growth of the boxes above the current node
    std::uint32_t n = 0;
    for (unsigned depth = 0;; ++depth) {
        Node& node = At(n);
        const FloatBox joined = Union(node.box, box);
        if (node.IsLeaf()) {
            return {n, depth};
        }
        const double here = above + Measure(joined);
        above = here - Measure(node.box);
        double cost[2];
        for (unsigned side = 0; side < 2; ++side) {
            const Node& child = m_pairs[node.link].nodes[side];
            cost[side] =
                above + Measure(Union(child.box, box)) - (child.IsLeaf() ? 0 : Measure(child.box));
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
        Item* first;
        Item* last;
        std::uint32_t node;
        unsigned depth;
    };
    // One waiting task for each level at most.
    std::array<Task, kMaxCostSplits + 34> tasks;
    std::size_t waiting = 0;
    tasks[waiting++] = {items.data(), items.data() + items.size(), top, depthOfTop};
    while (waiting > 0) {
        const Task task = tasks[--waiting];
        Node& node = At(task.node);
        node.box = task.first->box;
        if (task.last - task.first == 1) {
            node.link = task.first->id | kLeaf;
            m_leafOf[task.first->id] = task.node;
            continue;
        }
        for (const Item* i = task.first + 1; i != task.last; ++i) {
            node.box = Union(node.box, i->box);
        }
        Item* const middle = Divide(task.first, task.last, task.depth);
        const std::uint32_t pair = NewPair();
        At(task.node).link = pair;
        At(2 * pair).parent = At(2 * pair + 1).parent = task.node;
        tasks[waiting++] = {middle, task.last, 2 * pair + 1, task.depth + 1};
        tasks[waiting++] = {task.first, middle, 2 * pair, task.depth + 1};
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
    for (const Pair& pair : m_pairs) {
        for (const Node& node : pair.nodes) {
            cost += node.IsLeaf() ? 0 : Measure(node.box);
        }
    }
    return cost;
}

void DynamicTree::Clear() noexcept {
    std::vector<Pair>().swap(m_pairs);
    std::vector<std::uint32_t>().swap(m_leafOf);
    m_count = m_changes = 0;
    m_freePair = kNone;
    m_ordered = false;
}

}  // namespace solid
