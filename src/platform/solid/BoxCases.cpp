#include "platform/solid/BoxCases.h"

#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// Half edges of both boxes, and what rounding is at their size.
struct Generators {
    Vec3 of[6];
    Vec3 apart;
    double scale = 0;
    double rounding = 0;

    Generators(const Core& a, const Core& b) : apart(a.centre - b.centre) {
        for (int i = 0; i < 3; ++i) {
            of[i] = a.linear.col[i] * a.half[i];
            of[3 + i] = b.linear.col[i] * b.half[i];
            scale = std::max({scale, MaxNorm(of[i]), MaxNorm(of[3 + i])});
        }
        rounding = kTouch * std::max(scale, MaxNorm(apart));
    }
    /// How far the difference body reaches along an axis of any length.
    double Reach(const Vec3& axis) const {
        double reach = 0;
        for (const Vec3& g : of)
            reach += std::fabs(Dot(axis, g));
        return reach;
    }
};

/// A box with volume, for certain: three half edges that are neither short nor nearly in a plane.
bool HasVolume(const Vec3* edges, double scale) {
    const double volume = std::fabs(Dot(edges[0], Cross(edges[1], edges[2])));
    return volume > kFlat * scale * scale * scale;
}

}  // namespace

BoxAnswer AskBoxAxes(const Core& a, const Core& b) {
    const Generators g(a, b);
    const auto parts = [&](const Vec3& axis) {
        const double gap = std::fabs(Dot(axis, g.apart)) - g.Reach(axis);
        return gap > 0 && gap * gap > g.rounding * g.rounding * LengthSquared(axis);
    };
    // The faces of each box first: they part most pairs.
    for (int box = 0; box < 6; box += 3) {
        for (int i = 0; i < 3; ++i) {
            if (parts(Cross(g.of[box + i], g.of[box + (i + 1) % 3])))
                return BoxAnswer::kApart;
        }
    }
    for (int i = 0; i < 3; ++i) {
        for (int j = 3; j < 6; ++j) {
            const Vec3 axis = Cross(g.of[i], g.of[j]);
            if (LengthSquared(axis) > kParallel * LengthSquared(g.of[i]) * LengthSquared(g.of[j]) &&
                parts(axis))
                return BoxAnswer::kApart;
        }
    }
    const bool full = HasVolume(g.of, g.scale) || HasVolume(g.of + 3, g.scale);
    return full ? BoxAnswer::kTouch : BoxAnswer::kUnknown;
}

/// The difference of two parallelepipeds is a zonotope of six generators; the normals of its faces
/// are the cross products of every two of them (Stefan Gottschalk, "Separating axis theorem", 1996,
/// for the rectangular case). Faces and edges count alike, so the depth is the true least one.
BoxAxes TestBoxAxes(const Core& a, const Core& b) {
    const Generators g(a, b);
    BoxAxes result;
    result.depth = Aabb::kInfinity;
    double widest = 0, thinnest = Aabb::kInfinity;
    for (int i = 0; i < 6; ++i) {
        for (int j = i + 1; j < 6; ++j) {
            Vec3 axis = Cross(g.of[i], g.of[j]);
            const double squared = LengthSquared(axis);
            // Nearly parallel: the axis is rounding, and its directions are covered by others.
            if (!(squared > kParallel * LengthSquared(g.of[i]) * LengthSquared(g.of[j])))
                continue;
            axis *= 1 / std::sqrt(squared);
            const double reach = g.Reach(axis);
            const double along = Dot(axis, g.apart);
            const double depth = reach - std::fabs(along);
            widest = std::max(widest, reach);
            thinnest = std::min(thinnest, reach);
            if (depth < -g.rounding) {
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
    result.full = widest > 0 && thinnest > kFlat * g.scale;
    return result;
}

}  // namespace solid
