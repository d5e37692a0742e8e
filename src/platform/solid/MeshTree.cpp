#include "platform/solid/MeshTree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace solid {

namespace {

constexpr int kBins = 16;

/// Not less than `value`, and the same where single precision holds it.
float RoundUp(double value) {
    const auto rounded = static_cast<float>(value);
    return static_cast<double>(rounded) < value
               ? std::nextafter(rounded, std::numeric_limits<float>::infinity())
               : rounded;
}

}  // namespace

/// Extents in units of the tree. New ones are empty.
struct MeshTree::Extents {
    static constexpr float kMost = std::numeric_limits<float>::max();
    float lower[3] = {kMost, kMost, kMost};
    float upper[3] = {-kMost, -kMost, -kMost};

    void Include(const Extents& b) {
        for (int i = 0; i < 3; ++i) {
            lower[i] = std::min(lower[i], b.lower[i]);
            upper[i] = std::max(upper[i], b.upper[i]);
        }
    }
    /// Half the surface, the usual measure of what a tree node costs.
    float HalfArea() const {
        const float x = upper[0] - lower[0], y = upper[1] - lower[1], z = upper[2] - lower[2];
        return x * y + y * z + z * x;
    }
    /// Twice the coordinate of the middle.
    float Middle(int axis) const { return lower[axis] + upper[axis]; }
};

/// A polygon yet to be put in the tree.
struct MeshTree::Item {
    Extents box;
    std::uint32_t polygon;
};

/// Top-down. A set of polygons is split in two where the surface area heuristic over equal bins is
/// least (Ingo Wald, "On fast Construction of SAH-based Bounding Volume Hierarchies", 2007), and
/// the larger parts again until they are as many as a node holds (Ingo Wald, Carsten Benthin,
/// Solomon Boulos, "Getting Rid of Packets", 2008).
class MeshTree::Builder {
  public:
    Builder(std::vector<Item>& items, std::vector<Node>& nodes) : m_items(items), m_nodes(nodes) {}
    /// Afterwards the items stand in the order of the numbers by which the nodes call them.
    void Build();

  private:
    struct Range {
        int begin = 0, end = 0;
        Extents box;

        int Count() const { return end - begin; }
    };

    Range MakeRange(int begin, int end) const;
    int Split(const Range& range);
    void SetBox(Node& node, std::size_t place, const Extents& box) const;

    std::vector<Item>& m_items;
    std::vector<Node>& m_nodes;
};

MeshTree::Builder::Range MeshTree::Builder::MakeRange(int begin, int end) const {
    Range range{begin, end, {}};
    for (int i = begin; i < end; ++i)
        range.box.Include(m_items[static_cast<std::size_t>(i)].box);
    return range;
}

/// Where to split, strictly within: in halves by count where the heuristic finds no split or one so
/// uneven that the tree would grow deep.
int MeshTree::Builder::Split(const Range& range) {
    const auto begin = m_items.begin() + range.begin;
    const auto end = m_items.begin() + range.end;
    const int count = range.Count();
    float lower[3], upper[3];
    for (int i = 0; i < 3; ++i)
        lower[i] = upper[i] = begin->box.Middle(i);
    for (auto it = begin; it != end; ++it) {
        for (int i = 0; i < 3; ++i) {
            lower[i] = std::min(lower[i], it->box.Middle(i));
            upper[i] = std::max(upper[i], it->box.Middle(i));
        }
    }
    const float spread[3] = {upper[0] - lower[0], upper[1] - lower[1], upper[2] - lower[2]};
    const int axis = spread[0] >= spread[1] && spread[0] >= spread[2] ? 0
                     : spread[1] >= spread[2]                         ? 1
                                                                      : 2;
    auto middle = begin;
    // Below that the bins would overflow, and all middles are one for any use.
    if (spread[axis] > 1e-30F && count > 2) {
        const float perBin = kBins / spread[axis];
        const auto binOf = [&](const Item& item) {
            return std::min(static_cast<int>((item.box.Middle(axis) - lower[axis]) * perBin),
                            kBins - 1);
        };
        struct Bin {
            Extents box;
            int count = 0;
        };
        std::array<Bin, kBins> bins;
        for (auto it = begin; it != end; ++it) {
            Bin& bin = bins[static_cast<std::size_t>(binOf(*it))];
            bin.box.Include(it->box);
            ++bin.count;
        }
        std::array<float, kBins> rightCost{};
        Extents right;
        int rightCount = 0;
        for (std::size_t i = kBins - 1; i > 0; --i) {
            right.Include(bins[i].box);
            rightCount += bins[i].count;
            rightCost[i] = rightCount > 0 ? right.HalfArea() * static_cast<float>(rightCount) : 0;
        }
        Extents left;
        int leftCount = 0, bestSplit = 0;
        float best = std::numeric_limits<float>::infinity();
        for (std::size_t i = 0; i + 1 < kBins; ++i) {
            left.Include(bins[i].box);
            leftCount += bins[i].count;
            if (leftCount == 0 || leftCount == count)
                continue;
            const float cost = left.HalfArea() * static_cast<float>(leftCount) + rightCost[i + 1];
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
            return a.box.Middle(axis) != b.box.Middle(axis)
                       ? a.box.Middle(axis) < b.box.Middle(axis)
                       : a.polygon < b.polygon;
        });
    }
    return range.begin + static_cast<int>(middle - begin);
}

void MeshTree::Builder::SetBox(Node& node, std::size_t place, const Extents& box) const {
    for (std::size_t i = 0; i < 3; ++i) {
        const double lower = static_cast<double>(box.lower[i]);
        const double upper = static_cast<double>(box.upper[i]);
        const auto centre = static_cast<float>((lower + upper) * 0.5);
        node.centre[i][place] = centre;
        node.half[i][place] = RoundUp(
            std::max(upper - static_cast<double>(centre), static_cast<double>(centre) - lower));
    }
}

void MeshTree::Builder::Build() {
    struct Task {
        Range range;
        std::size_t parent;  ///< where to write the number of the node: node and place in it
        std::size_t place;
    };
    const std::size_t count = m_items.size();
    std::vector<Item> ordered;
    ordered.reserve(count);
    m_nodes.reserve(count / 2 + 1);
    std::vector<Task> stack{{MakeRange(0, static_cast<int>(count)), 0, 0}};
    while (!stack.empty()) {
        const Task task = stack.back();
        stack.pop_back();
        const std::size_t index = m_nodes.size();
        Range parts[kWidth] = {task.range};
        std::size_t partCount = 1;
        while (partCount < kWidth) {
            Range* widest = nullptr;
            for (std::size_t i = 0; i < partCount; ++i) {
                if (parts[i].Count() > 1 &&
                    (widest == nullptr || parts[i].box.HalfArea() > widest->box.HalfArea()))
                    widest = &parts[i];
            }
            if (widest == nullptr)
                break;
            const int middle = Split(*widest);
            parts[partCount++] = MakeRange(middle, widest->end);
            *widest = MakeRange(widest->begin, middle);
        }
        if (index > 0)
            m_nodes[task.parent].link[task.place] = static_cast<std::uint32_t>(index);
        Node& node = m_nodes.emplace_back();
        for (std::size_t place = 0; place < kWidth; ++place) {
            const Range& part = parts[place < partCount ? place : 0];
            SetBox(node, place, part.box);
            node.link[place] = kNone;
            if (place >= partCount)
                continue;
            if (part.Count() == 1) {
                node.link[place] = static_cast<std::uint32_t>(ordered.size()) | kPolygon;
                ordered.push_back(m_items[static_cast<std::size_t>(part.begin)]);
            } else {
                stack.push_back({part, index, place});
            }
        }
    }
    m_items = std::move(ordered);
}

MeshTree::MeshTree(const std::vector<FloatPoint>& points, const std::vector<int>& counts,
                   const Vec3& centre)
    : m_centre(centre) {
    // Where the points of each polygon that stays begin, and their number.
    std::vector<std::pair<std::size_t, int>> polygons;
    const std::size_t polygonCount = counts.empty() ? points.size() / 3 : counts.size();
    polygons.reserve(polygonCount);
    std::size_t next = 0;
    for (std::size_t polygon = 0; polygon < polygonCount; ++polygon) {
        const int count = counts.empty() ? 3 : counts[polygon];
        const std::size_t first = next;
        next += static_cast<std::size_t>(count);
        bool finite = count > 0;
        for (std::size_t i = first; i < next; ++i)
            finite = finite && IsFinite(ToVec3(points[i]));
        if (!finite)
            continue;
        for (std::size_t i = first; i < next; ++i)
            m_bounds.Include(ToVec3(points[i]) - centre);
        polygons.emplace_back(first, count);
    }
    if (polygons.empty())
        return;

    const double size = std::max(MaxNorm(m_bounds.lower), MaxNorm(m_bounds.upper));
    m_unit = size > 0 ? std::ldexp(1.0, std::ilogb(size) + 1) : 1;
    const double perUnit = 1 / m_unit;
    std::vector<Item> items(polygons.size());
    for (std::size_t p = 0; p < polygons.size(); ++p) {
        Aabb box;
        for (std::size_t i = 0; i < static_cast<std::size_t>(polygons[p].second); ++i)
            box.Include(ToVec3(points[polygons[p].first + i]) - centre);
        for (int i = 0; i < 3; ++i) {
            items[p].box.lower[i] = -RoundUp(-box.lower[i] * perUnit);
            items[p].box.upper[i] = RoundUp(box.upper[i] * perUnit);
        }
        items[p].polygon = static_cast<std::uint32_t>(p);
    }
    Builder(items, m_nodes).Build();
    m_nodes.shrink_to_fit();

    std::size_t total = 0;
    bool triangles = true;
    for (const auto& [first, count] : polygons) {
        total += static_cast<std::size_t>(count);
        triangles = triangles && count == 3;
    }
    m_points.reserve(total);
    if (!triangles) {
        m_starts.reserve(polygons.size() + 1);
        m_starts.push_back(0);
    }
    for (const Item& item : items) {
        const auto& [first, count] = polygons[item.polygon];
        const auto begin = points.begin() + static_cast<std::ptrdiff_t>(first);
        m_points.insert(m_points.end(), begin, begin + count);
        if (!triangles)
            m_starts.push_back(static_cast<std::uint32_t>(m_points.size()));
    }
    BuildSlabs();
}

void MeshTree::BuildSlabs() {
    // More of a surface is hardly ever flat.
    constexpr std::uint32_t kMostPolygons = 1024;
    struct Polygons {
        std::uint32_t begin = kNone, end = 0;
    };
    // The polygons below a node have numbers in a row, and nodes stand before those below them.
    std::vector<Polygons> below(m_nodes.size());
    m_slabs.resize(m_nodes.size());
    for (std::size_t n = m_nodes.size(); n-- > 0;) {
        for (std::size_t place = 0; place < kWidth; ++place) {
            const std::uint32_t link = m_nodes[n].link[place];
            if (link == kNone)
                break;
            const std::uint32_t polygon = PolygonOf(link);
            const Polygons part = IsPolygon(link) ? Polygons{polygon, polygon + 1} : below[link];
            below[n].begin = std::min(below[n].begin, part.begin);
            below[n].end = std::max(below[n].end, part.end);
            if (part.end - part.begin <= kMostPolygons)
                SetSlab(m_slabs[n], place, part.begin, part.end);
        }
    }
}

Vec3 MeshTree::Normal(std::uint32_t polygon) const {
    const double perUnit = 1 / m_unit;
    const Vec3 first = Corner(polygon, 0);
    Vec3 normal;
    for (int i = 2; i < CornerCount(polygon); ++i) {
        normal += Cross((Corner(polygon, i - 1) - first) * perUnit,
                        (Corner(polygon, i) - first) * perUnit);
    }
    return normal;
}

void MeshTree::SetSlab(Slabs& slabs, std::size_t place, std::uint32_t begin,
                       std::uint32_t end) const {
    Vec3 sum;
    for (std::uint32_t polygon = begin; polygon < end; ++polygon) {
        // Nothing says that the polygons of a mesh all face the same way.
        const Vec3 normal = Normal(polygon);
        sum += Dot(normal, sum) < 0 ? -normal : normal;
    }
    const double length = Length(sum);
    if (!(length > 0))
        return;
    float normal[3];
    for (int i = 0; i < 3; ++i)
        normal[i] = static_cast<float>(sum[i] / length);
    const Vec3 rounded{static_cast<double>(normal[0]), static_cast<double>(normal[1]),
                       static_cast<double>(normal[2])};
    double lower = Aabb::kInfinity, upper = -Aabb::kInfinity;
    for (std::uint32_t polygon = begin; polygon < end; ++polygon) {
        for (int i = 0; i < CornerCount(polygon); ++i) {
            const double along = Dot(rounded, Corner(polygon, i)) / m_unit;
            lower = std::min(lower, along);
            upper = std::max(upper, along);
        }
    }
    for (std::size_t i = 0; i < 3; ++i)
        slabs.normal[i][place] = normal[i];
    slabs.lower[place] = -RoundUp(-lower);
    slabs.upper[place] = RoundUp(upper);
}

}  // namespace solid
