#pragma once

/// A quick look at two boxes in single precision, which leaves what is close to those who look
/// closer.

#include "platform/solid/Vec3.h"

namespace solid {

enum class BoxAnswer {
    kApart,
    kTouch,
    kUnknown,
};

/// What is looked at: the first three columns of a placement, which must be at right angles, half
/// extents along them, and the middle in the world.
struct FilterBox {
    const float (*columns)[3];
    Vec3 half;
    Vec3 centre;
};

/// `margins` is the sum of both. kApart and kTouch are certain.
BoxAnswer FilterBoxes(const FilterBox& a, const FilterBox& b, double margins);

}  // namespace solid
