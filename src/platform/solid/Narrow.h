#pragma once

/// Questions about two placed shapes. The three answers agree: contact where and only where the
/// distance is 0 and there is a depth. Placements must be finite and shapes not empty.

#include <limits>

#include "platform/solid/Shape.h"

namespace solid {

/// What the pair tests need to know of a placed shape beforehand, found once for each placement.
struct Traits {
    /// The columns of the placement are orthogonal (and, for cylinder and cone, x and z equally
    /// long; for a sphere all three), so that closed forms in the frame of the shape are exact.
    bool rigid = false;
    bool large = false;  ///< some coordinate or size is beyond kComfortableSize
    bool small = false;  ///< no size is above the inverse of kComfortableSize
    /// Radii of balls about the middle of the shape in the world, margin included: one that lies
    /// within the body, for certain, and one that the body lies in. A mesh or a hull may have no
    /// inner one: its radius is minus infinity.
    float inner = 0;
    float outer = std::numeric_limits<float>::infinity();
};

struct Placed {
    const Shape* shape = nullptr;
    Affine placement;
    double margin = 0;
    Traits traits;
};

/// From the other members, which must be finite. `traits` is not read.
Traits FindTraits(const Placed& placed);

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
