#pragma once

/// A point against every kind of core in closed form: from it follow all answers about spheres.

#include "platform/solid/Core.h"

namespace solid {

/// Where a point stands to a body.
struct PointPlace {
    double distance = 0;  ///< from the border of the core; below 0 inside
    Vec3 border;          ///< the point of the border nearest to it
    Vec3 normal;          ///< unit, outwards at `border`: point = border + distance * normal
};

PointPlace PlaceAtPoint(const Core& core, const Vec3& point);
PointPlace PlaceAtSegment(const Core& core, const Vec3& point);
/// Need `core.traits.rigid`.
PointPlace PlaceAtBox(const Core& core, const Vec3& point);
PointPlace PlaceAtCylinder(const Core& core, const Vec3& point);
PointPlace PlaceAtCone(const Core& core, const Vec3& point);

}  // namespace solid
