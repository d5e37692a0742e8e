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

/// Columns of a placement without its last row, translation last; they must be at right angles.
using FloatColumns = const float (*)[3];

/// Boxes of these half extents with the sum of their margins. kApart and kTouch are certain.
BoxAnswer FilterBoxes(FloatColumns a, const Vec3& halfA, FloatColumns b, const Vec3& halfB,
                      double margins);

}  // namespace solid
