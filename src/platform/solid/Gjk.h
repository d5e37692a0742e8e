#pragma once

/// The distance of two convex cores by the iteration of Gilbert, Johnson and Keerthi ("A fast
/// procedure for computing the distance between complex objects in three-dimensional space", 1988),
/// with the bounds on the distance that van den Bergen gives ("A fast and robust GJK implementation
/// for collision detection of convex objects", 1999).

#include "platform/solid/Core.h"

namespace solid {

/// A point of each core, and their difference, a point of the Minkowski difference a - b.
struct SupportPoint {
    Vec3 a, b, w;
};

/// The support point of a - b along `direction`.
inline SupportPoint SupportDifference(const Core& a, const Core& b, const Vec3& direction) {
    SupportPoint p;
    p.a = Support(a, direction);
    p.b = Support(b, -direction);
    p.w = p.a - p.b;
    return p;
}

struct Simplex {
    SupportPoint points[4];
    double weights[4] = {};
    int count = 0;
};

struct GjkResult {
    /// The bodies (cores with their radii) touch. The same for every question.
    bool contact = false;
    /// The cores themselves touch: there is no direction from one to the other.
    bool coresTouch = false;
    double distance = 0;  ///< of the cores; 0 when they touch
    Vec3 a, b;            ///< the points of the cores that have it; a common point when they touch
    Vec3 axis;            ///< unit direction from b to a; zero when the cores touch
};

enum class GjkQuestion {
    kContact,   ///< ends as soon as `contact` is known; only that is valid
    kDistance,  ///< ends at once, too, when there is contact, but with the points valid
    kCores,     ///< the distance of the cores, also where the radii make them touch
};

/// `last` takes the simplex that the iteration ends with.
GjkResult RunGjk(const Core& a, const Core& b, GjkQuestion question, Simplex* last = nullptr);

}  // namespace solid
