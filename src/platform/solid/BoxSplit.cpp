#include "platform/solid/BoxSplit.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace solid {

namespace {

constexpr float kFloatMax = std::numeric_limits<float>::max();
constexpr int kBins = 16;

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

/// The axis along which the middles differ most.
struct Spread {
    explicit Spread(const ItemRange& items) {
        float lower[3], upper[3];
        for (int a = 0; a < 3; ++a) {
            lower[a] = upper[a] = QuarterSum(items.first->box, a);
        }
        for (const TreeItem* i = items.first + 1; i != items.last; ++i) {
            for (int a = 0; a < 3; ++a) {
                const float m = QuarterSum(i->box, a);
                lower[a] = std::min(lower[a], m);
                upper[a] = std::max(upper[a], m);
            }
        }
        for (int a = 1; a < 3; ++a) {
            axis = upper[a] - lower[a] > upper[axis] - lower[axis] ? a : axis;
        }
        lowest = lower[axis];
        length = upper[axis] - lower[axis];
    }

    int axis = 0;
    float lowest;
    float length;
};

/// Order of middles, and of numbers where those are equal.
struct AlongAxis {
    bool operator()(const TreeItem& a, const TreeItem& b) const {
        return std::pair(QuarterSum(a.box, axis), a.id) < std::pair(QuarterSum(b.box, axis), b.id);
    }

    int axis;
};

/// Maps middles along one axis to bins.
struct Binning {
    int BinOf(const FloatBox& box) const {
        return std::min(count - 1, static_cast<int>((QuarterSum(box, axis) - lowest) * scale));
    }

    int axis;
    int count;
    float lowest;
    float scale;
};

/// Cuts between the two bins where the parts are cheapest. (I. Wald, "On fast Construction of
/// SAH-based Bounding Volume Hierarchies", 2007.)
void CutCheapest(const ItemRange& all, const Binning& binning, double pad, ItemRange& left,
                 ItemRange& right) {
    Bin bins[kBins];
    for (const TreeItem* i = all.first; i != all.last; ++i) {
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
        all.first, all.last, [&](const TreeItem& i) { return binning.BinOf(i.box) < cut; });
}

void Halve(const ItemRange& all, const Spread& spread, ItemRange& left, ItemRange& right) {
    TreeItem* const half = all.first + (all.last - all.first) / 2;
    if (spread.length > 0) {
        const int axis = spread.axis;
        std::nth_element(all.first, half, all.last, AlongAxis{axis});
    }
    left = RangeOf(all.first, half);
    right = RangeOf(half, all.last);
}

}  // namespace

ItemRange RangeOf(TreeItem* first, TreeItem* last) {
    ItemRange range{first, last, first->box};
    while (++first != last) {
        range.box = Union(range.box, first->box);
    }
    return range;
}

void SplitInHalves(const ItemRange& all, ItemRange& left, ItemRange& right) {
    Halve(all, Spread(all), left, right);
}

void SplitCheapest(const ItemRange& all, double pad, ItemRange& left, ItemRange& right) {
    if (all.Count() == 2) {
        left = RangeOf(all.first, all.first + 1);
        right = RangeOf(all.first + 1, all.last);
        return;
    }
    const Spread spread(all);
    const int bins = all.Count() <= 8 ? 4 : all.Count() <= 64 ? 8 : kBins;
    const float scale = static_cast<float>(bins) / spread.length;
    if (scale <= kFloatMax) {
        CutCheapest(all, {spread.axis, bins, spread.lowest, scale}, pad, left, right);
    } else {
        Halve(all, spread, left, right);
    }
}

void SplitPacked(const ItemRange& all, std::uint32_t unit, double pad, ItemRange& left,
                 ItemRange& right) {
    double best = std::numeric_limits<double>::infinity();
    int bestAxis = 0;
    std::uint32_t cut = unit;
    for (int axis = 0; axis < 3; ++axis) {
        std::sort(all.first, all.last, AlongAxis{axis});
        for (std::uint32_t n = unit; n < all.Count(); n += unit) {
            const ItemRange below = RangeOf(all.first, all.first + n);
            const ItemRange above = RangeOf(all.first + n, all.last);
            const double cost =
                Measure(below.box, pad) * below.Count() + Measure(above.box, pad) * above.Count();
            if (cost < best) {
                best = cost;
                bestAxis = axis;
                cut = n;
            }
        }
    }
    std::sort(all.first, all.last, AlongAxis{bestAxis});
    left = RangeOf(all.first, all.first + cut);
    right = RangeOf(all.first + cut, all.last);
}

}  // namespace solid
