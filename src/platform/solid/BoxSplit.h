#pragma once

/// How the items of a tree are divided, from the whole down to single ones.

#include <cstdint>

#include "platform/solid/FloatBox.h"

namespace solid {

struct TreeItem {
    FloatBox box;
    std::uint32_t id = 0;
    std::uint32_t code = 0;  ///< place along a curve through space, where one is used
};

/// Items that lie one behind the other, at least one, and the box around them.
struct ItemRange {
    TreeItem* first = nullptr;
    TreeItem* last = nullptr;
    FloatBox box;

    std::uint32_t Count() const { return static_cast<std::uint32_t>(last - first); }
};

ItemRange RangeOf(TreeItem* first, TreeItem* last);

/// A quarter of the sum of two bounds: differences of such middles do not overflow.
inline float QuarterSum(const FloatBox& box, int axis) {
    return 0.25f * box.lower[axis] + 0.25f * box.upper[axis];
}

/// Divides at least two items into two parts, neither of them empty, where queries cost least.
void SplitCheapest(const ItemRange& all, double pad, ItemRange& left, ItemRange& right);
/// The same for few items; the first part has a multiple of `unit` of them. Needs more items than
/// `unit`.
void SplitPacked(const ItemRange& all, std::uint32_t unit, double pad, ItemRange& left,
                 ItemRange& right);
/// The same into parts of equal number (but for one item), where the items lie along the longest
/// axis.
void SplitInHalves(const ItemRange& all, ItemRange& left, ItemRange& right);

}  // namespace solid
