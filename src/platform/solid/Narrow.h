#pragma once

/// Questions about two placed shapes. The three answers agree: contact where and only where the
/// distance is 0 and there is a depth. Placements must be finite and shapes not empty.

#include "platform/solid/Shape.h"

namespace solid {

struct Placed {
    const Shape* shape = nullptr;
    Affine placement;
    double margin = 0;
};

struct PointPair {
    Vec3 point1, point2;
    double value = 0;  ///< distance or depth
};

bool InContact(const Placed& a, const Placed& b);
/// One point on each and their distance; of shapes in contact 0 and one common point twice.
PointPair ClosestPoints(const Placed& a, const Placed& b);
/// False when not in contact. Moving a by point2 - point1 leaves the two touching; `value` is the
/// length of that move, the least of all (of a mesh: the largest such value of its polygons).
bool Penetration(const Placed& a, const Placed& b, PointPair& result);

}  // namespace solid
