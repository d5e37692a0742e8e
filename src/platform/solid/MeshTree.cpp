#include "platform/solid/MeshTree.h"

#include <algorithm>
#include <array>

namespace solid {

namespace {

constexpr int kBins = 16;

struct Bin {
    Aabb box;
    int count = 0;
};

}  // namespace

MeshTree::MeshTree(const std::vector<Vec3>& points, const std::vector<int>& counts,
                   const Vec3& centre) {
    std::vector<Item> items;
    items.reserve(counts.size());
    m_points.reserve(points.size());
    m_starts.reserve(counts.size() + 1);
    m_starts.push_back(0);
    std::size_t next = 0;
    for (const int count : counts) {
        const std::size_t first = next;
        next += static_cast<std::size_t>(count);
        Item item;
        bool finite = count > 0;
        for (std::size_t i = first; i < next; ++i) {
            finite = finite && IsFinite(points[i]);
            item.box.Include(points[i] - centre);
        }
        if (!finite)
            continue;
        for (std::size_t i = first; i < next; ++i)
            m_points.push_back(points[i] - centre);
        item.centre = item.box.Centre();
        item.polygon = static_cast<std::int32_t>(items.size());
        items.push_back(item);
        m_starts.push_back(static_cast<std::int32_t>(m_points.size()));
    }
    m_points.shrink_to_fit();
    if (!items.empty())
        BuildNodes(items);
}

/// Top-down, each set split where the surface area heuristic over equal bins is least (Ingo Wald,
/// "On fast Construction of SAH-based Bounding Volume Hierarchies", 2007), or in halves by count
/// where the heuristic finds no split or one so uneven that the tree would grow deep.
void MeshTree::BuildNodes(std::vector<Item>& items) {
    struct Task {
        int begin, end;
        int parent;  ///< node whose far child this is, -1 if none
    };
    m_nodes.reserve(2 * items.size() - 1);
    std::vector<Task> stack{{0, static_cast<int>(items.size()), -1}};
    while (!stack.empty()) {
        const Task task = stack.back();
        stack.pop_back();
        const auto index = static_cast<std::int32_t>(m_nodes.size());
        if (task.parent >= 0)
            m_nodes[static_cast<std::size_t>(task.parent)].link = index;
        const auto begin = items.begin() + task.begin;
        const auto end = items.begin() + task.end;
        Aabb box, centres;
        for (auto it = begin; it != end; ++it) {
            box.Include(it->box);
            centres.Include(it->centre);
        }
        Node node;
        node.centre = box.Centre();
        node.half = box.HalfSize();
        const int count = task.end - task.begin;
        if (count == 1) {
            node.leaf = true;
            node.link = begin->polygon;
            m_nodes.push_back(node);
            continue;
        }
        m_nodes.push_back(node);

        const Vec3 spread = centres.upper - centres.lower;
        const int axis = spread.x >= spread.y && spread.x >= spread.z ? 0
                         : spread.y >= spread.z                       ? 1
                                                                      : 2;
        auto middle = begin;
        if (spread[axis] > 0) {
            const double perBin = kBins / spread[axis];
            const auto binOf = [&](const Item& item) {
                const double bin = (item.centre[axis] - centres.lower[axis]) * perBin;
                return std::clamp(static_cast<int>(bin), 0, kBins - 1);
            };
            std::array<Bin, kBins> bins;
            for (auto it = begin; it != end; ++it) {
                Bin& bin = bins[static_cast<std::size_t>(binOf(*it))];
                bin.box.Include(it->box);
                ++bin.count;
            }
            std::array<double, kBins> rightCost{};
            Aabb right;
            int rightCount = 0;
            for (std::size_t i = kBins - 1; i > 0; --i) {
                right.Include(bins[i].box);
                rightCount += bins[i].count;
                rightCost[i] = rightCount > 0 ? right.HalfArea() * rightCount : 0;
            }
            Aabb left;
            int leftCount = 0, bestSplit = 0;
            double best = Aabb::kInfinity;
            for (std::size_t i = 0; i + 1 < kBins; ++i) {
                left.Include(bins[i].box);
                leftCount += bins[i].count;
                if (leftCount == 0 || leftCount == count)
                    continue;
                const double cost = left.HalfArea() * leftCount + rightCost[i + 1];
                if (cost < best) {
                    best = cost;
                    bestSplit = static_cast<int>(i) + 1;
                }
            }
            if (bestSplit > 0) {
                middle = std::partition(begin, end,
                                        [&](const Item& item) { return binOf(item) < bestSplit; });
            }
        }
        const auto smaller = std::min(middle - begin, end - middle);
        if (smaller < count / 64 || smaller == 0) {
            middle = begin + count / 2;
            std::nth_element(begin, middle, end, [&](const Item& a, const Item& b) {
                return a.centre[axis] != b.centre[axis] ? a.centre[axis] < b.centre[axis]
                                                        : a.polygon < b.polygon;
            });
        }
        const int split = task.begin + static_cast<int>(middle - begin);
        // The near child is built next and so stands behind its parent.
        stack.push_back({split, task.end, index});
        stack.push_back({task.begin, split, -1});
    }
}

}  // namespace solid
