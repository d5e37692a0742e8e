#pragma once

/// Cylinders and cones with parallel axes in closed form. Their difference body is a solid of
/// revolution as well, so that all happens in the plane of the two axes, between a point and a
/// convex polygon.

#include "platform/solid/Core.h"

namespace solid {

/// How two cores stand to each other.
struct RoundPlace {
    double distance = 0;  ///< below 0: how deep they reach into each other
    Vec3 a, b;            ///< points of their borders, so far apart
    Vec3 normal;          ///< unit; a - b = distance * normal
};

/// False for a pair that is not rigid, not parallel, or has a core without volume.
bool PlaceRound(const Core& a, const Core& b, RoundPlace& place);

}  // namespace solid
