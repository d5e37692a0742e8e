#pragma once

/// The penetration depth of two convex cores that touch, by expanding a polytope inside their
/// Minkowski difference (Gino van den Bergen, "Proximity Queries and Penetration Depth Computation
/// on 3D Game Objects", 2001). Exact, up to rounding, for cores that are polytopes.

#include "platform/solid/Gjk.h"

namespace solid {

struct DepthResult {
    double depth = 0;    ///< not below 0
    Vec3 axis{1, 0, 0};  ///< unit; moving a by -depth * axis parts the cores
    Vec3 a, b;           ///< points of the cores with a - b = depth * axis
};

/// `start`: the simplex in which the contact test ended, if there is one.
DepthResult ExpandPolytope(const Core& a, const Core& b, const Simplex* start = nullptr);

/// Given a depth and its axis, the points a and b that have it.
void FindDepthPoints(const Core& a, const Core& b, DepthResult& result);

}  // namespace solid
