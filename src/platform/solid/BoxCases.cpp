#include "platform/solid/BoxCases.h"

#include "platform/solid/Tolerances.h"

namespace solid {

/// The difference of two parallelepipeds is a zonotope of six generators; the normals of its faces
/// are the cross products of every two of them (Stefan Gottschalk, "Separating axis theorem", 1996,
/// for the rectangular case). Faces and edges count alike, so the depth is the true least one.
BoxAxes TestBoxAxes(const Core& a, const Core& b) {
    Vec3 generators[6];
    double scale = 0;
    for (int i = 0; i < 3; ++i) {
        generators[i] = a.linear.col[i] * a.half[i];
        generators[3 + i] = b.linear.col[i] * b.half[i];
        scale = std::max({scale, MaxNorm(generators[i]), MaxNorm(generators[3 + i])});
    }
    const Vec3 apart = a.centre - b.centre;
    const double rounding = kTouch * std::max(scale, MaxNorm(apart));
    BoxAxes result;
    result.depth = Aabb::kInfinity;
    double widest = 0, thinnest = Aabb::kInfinity;
    for (int i = 0; i < 6; ++i) {
        for (int j = i + 1; j < 6; ++j) {
            Vec3 axis = Cross(generators[i], generators[j]);
            const double squared = LengthSquared(axis);
            // Nearly parallel: the axis is rounding, and its directions are covered by others.
            if (!(squared > 1e-20 * LengthSquared(generators[i]) * LengthSquared(generators[j])))
                continue;
            axis *= 1 / std::sqrt(squared);
            double reach = 0;
            for (const Vec3& g : generators)
                reach += std::fabs(Dot(axis, g));
            const double along = Dot(axis, apart);
            const double depth = reach - std::fabs(along);
            widest = std::max(widest, reach);
            thinnest = std::min(thinnest, reach);
            if (depth < -rounding) {
                result.separated = true;
                return result;
            }
            if (depth < result.depth) {
                result.depth = depth;
                // The difference a - b has its middle at `apart`; its nearer side lies against it.
                result.axis = along > 0 ? -axis : axis;
            }
        }
    }
    result.depth = std::max(result.depth, 0.0);
    result.full = widest > 0 && thinnest > kFlat * scale;
    return result;
}

}  // namespace solid
