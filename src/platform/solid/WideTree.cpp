#include "platform/solid/WideTree.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "platform/solid/Growth.h"

namespace solid {

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr int kCodeBits = 10;  // for each axis

/// Every third bit from the lowest on.
std::uint32_t Spread(std::uint32_t bits) {
    bits = (bits | (bits << 16)) & 0x030000ffu;
    bits = (bits | (bits << 8)) & 0x0300f00fu;
    bits = (bits | (bits << 4)) & 0x030c30c3u;
    return (bits | (bits << 2)) & 0x09249249u;
}

/// Places the middles of items on a cubic grid over all of them, and that on a curve. (G. Morton,
/// "A Computer Oriented Geodetic Data Base and a New Technique in File Sequencing", 1966.)
void SetCodes(std::vector<TreeItem>& items) {
    float lowest[3], longest = 0;
    for (int a = 0; a < 3; ++a) {
        float highest = lowest[a] = QuarterSum(items[0].box, a);
        for (const TreeItem& item : items) {
            const float m = QuarterSum(item.box, a);
            lowest[a] = std::min(lowest[a], m);
            highest = std::max(highest, m);
        }
        longest = std::max(longest, highest - lowest[a]);
    }
    constexpr float kCells = 1 << kCodeBits;
    // Of the middles of points all in one place, or nearly so, all codes are 0.
    const float scale =
        kCells / longest <= std::numeric_limits<float>::max() ? kCells / longest : 0;
    for (TreeItem& item : items) {
        item.code = 0;
        for (int a = 0; a < 3; ++a) {
            const float cell = (QuarterSum(item.box, a) - lowest[a]) * scale;
            item.code |= Spread(static_cast<std::uint32_t>(std::min(cell, kCells - 1))) << a;
        }
    }
}

/// Orders by code, equal ones as they were. (H. Seward, "Information Sorting in the Application of
/// Electronic Digital Computers to Business Operations", 1954.)
void SortByCode(std::vector<TreeItem>& items, std::vector<TreeItem>& spare) {
    constexpr int kDigit = 10;
    for (int shift = 0; shift < 3 * kCodeBits; shift += kDigit) {
        std::array<std::uint32_t, 1 << kDigit> places{};
        const auto digit = [shift](const TreeItem& item) {
            return (item.code >> shift) & ((1u << kDigit) - 1);
        };
        for (const TreeItem& item : items) {
            ++places[digit(item)];
        }
        std::uint32_t before = 0;
        for (std::uint32_t& place : places) {
            before += std::exchange(place, before);
        }
        for (const TreeItem& item : items) {
            spare[places[digit(item)]++] = item;
        }
        items.swap(spare);
    }
}

/// Where the highest bit that is not the same in all codes changes. (C. Lauterbach et al., "Fast
/// BVH Construction on GPUs", 2009.)
TreeItem* FindCodeSplit(const ItemRange& range) {
    const std::uint32_t common = range.first->code ^ (range.last - 1)->code;
    const std::uint32_t bit = std::bit_floor(common);
    return std::partition_point(range.first, range.last,
                                [bit](const TreeItem& item) { return (item.code & bit) == 0; });
}

}  // namespace

WideTree::Node::Node() {
    for (int a = 0; a < 3; ++a) {
        std::fill(lower[a], lower[a] + kLanes, kInfinity);
        std::fill(upper[a], upper[a] + kLanes, -kInfinity);
    }
    std::fill(link, link + kLanes, kNone);
}

void WideTree::Node::SetLane(unsigned lane, const FloatBox& box) {
    for (int a = 0; a < 3; ++a) {
        lower[a][lane] = box.lower[a];
        upper[a][lane] = box.upper[a];
    }
}

FloatBox WideTree::Node::LaneBox(unsigned lane) const {
    return {{lower[0][lane], lower[1][lane], lower[2][lane]},
            {upper[0][lane], upper[1][lane], upper[2][lane]}};
}

FloatBox WideTree::Node::Bounds() const {
    FloatBox box;
    for (int a = 0; a < 3; ++a) {
        box.lower[a] =
            std::min(std::min(lower[a][0], lower[a][1]), std::min(lower[a][2], lower[a][3]));
        box.upper[a] =
            std::max(std::max(upper[a][0], upper[a][1]), std::max(upper[a][2], upper[a][3]));
    }
    return box;
}

void WideTree::Reserve(std::size_t ids) {
    GrowCapacity(m_laneOf, ids);
    if (m_laneOf.size() < ids) {
        m_laneOf.resize(ids, kNone);
    }
}

FloatBox WideTree::Box(std::uint32_t id) const {
    const std::uint32_t place = m_laneOf[id];
    return m_nodes[place / kLanes].LaneBox(place % kLanes);
}

void WideTree::SetBox(std::uint32_t id, const FloatBox& box) noexcept {
    const std::uint32_t place = m_laneOf[id];
    m_nodes[place / kLanes].SetLane(place % kLanes, box);
}

void WideTree::Remove(std::uint32_t id) noexcept {
    const std::uint32_t place = std::exchange(m_laneOf[id], kNone);
    Node& node = m_nodes[place / kLanes];
    node.SetLane(place % kLanes,
                 {{kInfinity, kInfinity, kInfinity}, {-kInfinity, -kInfinity, -kInfinity}});
    node.link[place % kLanes] = kNone;
    if (--m_count == 0) {
        std::vector<Node>().swap(m_nodes);
        m_builtCount = 0;
    }
}

void WideTree::Collect(std::vector<TreeItem>& items) const noexcept {
    for (const Node& node : m_nodes) {
        for (unsigned lane = 0; lane < kLanes; ++lane) {
            const std::uint32_t link = node.link[lane];
            if (link != kNone && (link & kLeaf) != 0) {
                items.push_back({node.LaneBox(lane), link & ~kLeaf, 0});
            }
        }
    }
}

/// Divides items from the top down into up to four parts at a time. Sets the links, and the boxes
/// of items.
class WideTree::Builder {
  public:
    Builder(std::vector<Node>& nodes, How how, double pad)
        : m_nodes(nodes), m_byCode(how == How::kFast), m_pad(pad) {}

    void Build(const ItemRange& all, std::vector<std::uint32_t>& laneOf) {
        // One waiting task for each lane of each level at most.
        std::array<Task, kMaxDepth*(kLanes - 1) + 1> tasks;
        std::size_t waiting = 0;
        m_nodes.emplace_back();
        tasks[waiting++] = {all, 0, 0};
        while (waiting > 0) {
            const Task task = tasks[--waiting];
            ItemRange parts[kLanes];
            const unsigned count = Divide(task, parts);
            for (unsigned lane = 0; lane < count; ++lane) {
                if (parts[lane].Count() == 1) {
                    const TreeItem& item = *parts[lane].first;
                    m_nodes[task.node].SetLane(lane, item.box);
                    m_nodes[task.node].link[lane] = item.id | kLeaf;
                    laneOf[item.id] = kLanes * task.node + lane;
                } else {
                    const auto child = static_cast<std::uint32_t>(m_nodes.size());
                    m_nodes[task.node].link[lane] = child;
                    m_nodes.emplace_back();
                    tasks[waiting++] = {parts[lane], child, task.depth + 1};
                }
            }
        }
    }

  private:
    struct Task {
        ItemRange range;
        std::uint32_t node;
        unsigned depth;
    };

    /// Parts of as many items as a node has lanes stay together, so that the lowest nodes are full.
    unsigned Divide(const Task& task, ItemRange parts[kLanes]) const {
        if (task.range.Count() <= kLanes) {
            for (unsigned i = 0; i < task.range.Count(); ++i) {
                parts[i] = {task.range.first + i, task.range.first + i + 1, {}};
            }
            return task.range.Count();
        }
        unsigned count = 1;
        parts[0] = task.range;
        while (count < kLanes) {
            const unsigned next = Largest(parts, count);
            if (parts[next].Count() <= kLanes) {
                break;
            }
            const ItemRange whole = parts[next];
            Split(whole, task.depth >= kMaxSplits, parts[next], parts[count]);
            ++count;
        }
        return count;
    }
    /// The part to be divided next.
    unsigned Largest(const ItemRange* parts, unsigned count) const {
        unsigned best = 0;
        double most = -1;
        for (unsigned i = 0; i < count; ++i) {
            const double size = parts[i].Count() <= kLanes ? -1
                                : m_byCode                 ? parts[i].Count()
                                                           : Measure(parts[i].box, m_pad);
            if (size > most) {
                most = size;
                best = i;
            }
        }
        return best;
    }
    void Split(const ItemRange& whole, bool halve, ItemRange& left, ItemRange& right) const {
        if (halve) {
            SplitInHalves(whole, left, right);
        } else if (m_byCode && whole.first->code != (whole.last - 1)->code) {
            TreeItem* cut = FindCodeSplit(whole);
            if (whole.Count() <= kLanes * kLanes) {
                // To the next full node.
                const auto below = static_cast<std::uint32_t>(cut - whole.first);
                const std::uint32_t most = (whole.Count() - 1) / kLanes;
                cut = whole.first + kLanes * std::clamp((below + 1) / kLanes, 1u, most);
            }
            // Boxes are not needed on this way.
            left = {whole.first, cut, {}};
            right = {cut, whole.last, {}};
        } else if (whole.Count() <= kLanes * kLanes) {
            SplitPacked(whole, kLanes, m_pad, left, right);
        } else {
            // With codes: many in one cell, where the grid is too coarse.
            SplitCheapest(whole, m_pad, left, right);
        }
    }

    std::vector<Node>& m_nodes;
    bool m_byCode;
    double m_pad;
};

void WideTree::Build(std::vector<TreeItem>& items, How how) {
    // Each node divides its items as often as it can, so that those with two children stand at the
    // lower end, and no more than two nodes serve three items.
    const std::size_t most = 2 * items.size() / 3 + 1;
    std::vector<TreeItem> spare;
    std::vector<Node> fresh;
    const bool makeRoom = m_nodes.capacity() < most;
    if (makeRoom) {
        fresh.reserve(most);
    }
    if (how == How::kFast) {
        spare.resize(items.size());
    }

    std::fill(m_laneOf.begin(), m_laneOf.end(), kNone);
    if (makeRoom) {
        m_nodes.swap(fresh);
    }
    m_nodes.clear();
    m_count = m_builtCount = items.size();
    if (!items.empty()) {
        if (how == How::kFast) {
            SetCodes(items);
            SortByCode(items, spare);
        }
        const ItemRange all = RangeOf(items.data(), items.data() + items.size());
        Builder(m_nodes, how, PadFor(all.box)).Build(all, m_laneOf);
        if (m_nodes.capacity() > m_nodes.size() + m_nodes.size() / 4 && how == How::kClosely) {
            m_nodes.shrink_to_fit();
        }
    }
    Refit();
    m_builtCost = m_cost;
}

void WideTree::Refit() noexcept {
    m_cost = 0;
    const double pad = m_nodes.empty() ? 0 : PadFor(m_nodes[0].Bounds());
    for (std::size_t n = m_nodes.size(); n-- > 0;) {
        Node& node = m_nodes[n];
        for (unsigned lane = 0; lane < kLanes; ++lane) {
            if ((node.link[lane] & kLeaf) == 0) {
                const FloatBox box = m_nodes[node.link[lane]].Bounds();
                node.SetLane(lane, box);
                // Nothing is left in some.
                m_cost += box.lower[0] <= box.upper[0] ? Measure(box, pad) : 0;
            }
        }
    }
}

}  // namespace solid
