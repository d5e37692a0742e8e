#pragma once

/// Axis-parallel boxes, closed. A new box is empty and overlaps nothing.

#include <limits>

#include "platform/solid/Vec3.h"

namespace solid {

struct Aabb {
    static constexpr double kInfinity = std::numeric_limits<double>::infinity();
    Vec3 lower{kInfinity, kInfinity, kInfinity};
    Vec3 upper{-kInfinity, -kInfinity, -kInfinity};

    bool IsEmpty() const { return lower.x > upper.x; }
    Vec3 Centre() const { return (lower + upper) * 0.5; }
    Vec3 HalfSize() const { return (upper - lower) * 0.5; }
    void Include(const Vec3& p) { lower = Min(lower, p), upper = Max(upper, p); }
    void Include(const Aabb& b) { lower = Min(lower, b.lower), upper = Max(upper, b.upper); }
    void Grow(double r) { lower -= Vec3{r, r, r}, upper += Vec3{r, r, r}; }
    bool Overlaps(const Aabb& b) const {
        return lower.x <= b.upper.x && b.lower.x <= upper.x && lower.y <= b.upper.y &&
               b.lower.y <= upper.y && lower.z <= b.upper.z && b.lower.z <= upper.z;
    }
    bool Contains(const Aabb& b) const {
        return lower.x <= b.lower.x && b.upper.x <= upper.x && lower.y <= b.lower.y &&
               b.upper.y <= upper.y && lower.z <= b.lower.z && b.upper.z <= upper.z;
    }
    /// Half the surface, the usual measure of what a tree node costs.
    double HalfArea() const {
        const Vec3 d = upper - lower;
        return d.x * d.y + d.y * d.z + d.z * d.x;
    }
};

inline Aabb Union(Aabb a, const Aabb& b) {
    return a.Include(b), a;
}

/// The least distance between two boxes, 0 when they overlap.
inline double Distance(const Aabb& a, const Aabb& b) {
    return Length(Max(Max(a.lower - b.upper, b.lower - a.upper), Vec3{}));
}

}  // namespace solid
