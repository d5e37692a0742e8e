#pragma once

/// Distance of convex sets with a certificate, by an interior-point method: no simplices, no
/// support mappings in the iteration, nothing in common with the engine's way to the same answer.

#include "Convex.h"

namespace oracle {

/// The true distance lies between `lower` and `upper`, up to rounding: `upper` is the distance of
/// two points that belong to the sets, `lower` the gap of the sets along one direction, by their
/// exact extents.
struct Distance {
    double lower = 0;
    double upper = 0;
    /// Not below 0 only if the sets have a point in common; then how far that point is inside both,
    /// as a part of their sizes.
    double inside = -1;
    /// One point of each set that are `upper` apart.
    Vec3 point1, point2;
};

Distance DistanceOf(const Convex& a, const Convex& b);

/// Of a point; the lower and upper bounds' middle, where nothing better than 1e-9 is asked.
double DistanceOfPoint(const Vec3& point, const std::vector<Convex>& pieces);

/// Of unions: the least distance, the greatest `inside`.
Distance DistanceOf(const std::vector<Convex>& a, const std::vector<Convex>& b);

}  // namespace oracle
