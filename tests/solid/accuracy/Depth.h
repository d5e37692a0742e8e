#pragma once

/// Penetration depth of convex sets: the least, over all directions, of how far one must move to
/// leave the other that way.

#include "Convex.h"

namespace oracle {

/// How far `a` must move along the unit direction n to part from `b`; below 0 when they are parted.
double Overlap(const Convex& a, const Convex& b, const Vec3& n);

struct Depth {
    double value = 0;
    Vec3 direction;  ///< in which to move the first
};

/// For polyhedra exact: all directions in which the least can be are looked at. Else the best of
/// many thousand directions after local search, and of `guess` if it has a length; never below the
/// true depth.
Depth DepthOf(const Convex& a, const Convex& b, const Vec3& guess = {});

/// By search alone, whatever the sets.
Depth SearchedDepthOf(const Convex& a, const Convex& b, const Vec3& guess = {});

}  // namespace oracle
