#pragma once

/// Placed convex sets, as the oracle sees them: the image of a simple set under an affine map,
/// grown by a sphere. World coordinates, double precision.

#include <vector>

#include "Spec.h"
#include "platform/solid/Vec3.h"

namespace oracle {

using solid::Vec3;

inline Vec3 Widened(const float* p) {
    return {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])};
}

struct Convex {
    enum class Set {
        kHull,      ///< of `vertices`
        kBox,       ///< |u_i| <= 1
        kBall,      ///< |u| <= 1
        kCylinder,  ///< u_x^2 + u_z^2 <= 1, |u_y| <= 1
        kCone,      ///< sqrt(u_x^2 + u_z^2) <= (1 - u_y) / 2, u_y >= -1
    };
    Set set = Set::kHull;
    Vec3 centre;
    /// Images of the axes of u, half the size long.
    Vec3 axis[3];
    /// Relative to `centre`.
    std::vector<Vec3> vertices;
    double margin = 0;

    /// Greatest value of Dot(n, x - centre) over the set, margin included.
    double Extent(const Vec3& n) const;
    /// Radius of a sphere about `centre` that holds the set, margin included.
    double Radius() const;
    bool IsPolyhedral() const { return set == Set::kHull || set == Set::kBox; }
};

/// The convex sets that a placed shape is the union of: one, or each polygon of a mesh. Relative to
/// `reference`, which should be near: differences of places far from the origin are lost to
/// rounding.
std::vector<Convex> Pieces(const Spec& spec, const Vec3& reference = {});

/// Radius of a sphere about the first piece's centre that holds all of them.
double Radius(const std::vector<Convex>& pieces);

}  // namespace oracle
