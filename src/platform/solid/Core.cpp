#include "platform/solid/Core.h"

#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// Whether the columns are orthogonal, and x as long as z (and as y, with `allEqual`).
bool IsRigid(const Mat3& m, bool roundAboutY, bool allEqual) {
    const double xx = LengthSquared(m.col[0]);
    const double yy = LengthSquared(m.col[1]);
    const double zz = LengthSquared(m.col[2]);
    if (!(std::min({xx, yy, zz}) > 0))
        return false;
    constexpr double squared = kRigid * kRigid;
    const double xy = Dot(m.col[0], m.col[1]);
    const double yz = Dot(m.col[1], m.col[2]);
    const double zx = Dot(m.col[2], m.col[0]);
    if (xy * xy > squared * xx * yy || yz * yz > squared * yy * zz || zx * zx > squared * zz * xx)
        return false;
    // Squares of lengths differ by twice as much as the lengths.
    if (roundAboutY && std::fabs(xx - zz) > 2 * kRigid * std::max(xx, zz))
        return false;
    return !allEqual || std::fabs(xx - yy) <= 2 * kRigid * std::max(xx, yy);
}

/// An ellipsoid that is round becomes a point with a radius.
void PlaceSphere(Core& core) {
    if (core.half.x == 0) {
        core.kind = CoreKind::kPoint;
    } else if (core.traits.rigid) {
        const double squares = LengthSquared(core.linear.col[0]) +
                               LengthSquared(core.linear.col[1]) +
                               LengthSquared(core.linear.col[2]);
        core.kind = CoreKind::kPoint;
        core.radius += core.half.x * std::sqrt(squares / 3);
    }
}

}  // namespace

Vec3 WorldCentre(const Placed& placed) {
    return placed.placement * placed.shape->Centre();
}

Traits FindTraits(const Placed& placed) {
    const Shape& shape = *placed.shape;
    const Mat3& m = placed.placement.linear;
    Traits traits;
    const ShapeKind kind = shape.Kind();
    if (kind == ShapeKind::kSphere || kind == ShapeKind::kBox || kind == ShapeKind::kCylinder ||
        kind == ShapeKind::kCone)
        traits.rigid = IsRigid(m, kind != ShapeKind::kBox, kind == ShapeKind::kSphere);
    double size = placed.margin;
    for (int i = 0; i < 3; ++i)
        size = std::max(size, MaxNorm(m.col[i] * shape.Half()[i]));
    traits.small = !(size * kComfortableSize > 1);
    traits.large = !(std::max(size, MaxNorm(WorldCentre(placed))) < kComfortableSize);
    return traits;
}

Core MakeCore(const Placed& placed, const Vec3& reference, const VertexSpan* hull) {
    static constexpr CoreKind kKinds[kShapeKindCount] = {
        CoreKind::kEllipsoid, CoreKind::kSegment, CoreKind::kBox,  CoreKind::kCylinder,
        CoreKind::kCone,      CoreKind::kHull,    CoreKind::kHull,
    };
    const Shape& shape = *placed.shape;
    Core core;
    core.kind = kKinds[static_cast<int>(shape.Kind())];
    core.traits = placed.traits;
    core.linear = placed.placement.linear;
    core.centre = WorldCentre(placed) - reference;
    core.half = shape.Half();
    core.radius = placed.margin;
    if (core.kind == CoreKind::kHull) {
        core.vertices = hull != nullptr ? *hull : shape.Vertices();
    } else if (core.kind == CoreKind::kEllipsoid) {
        PlaceSphere(core);
    }
    return core;
}

Vec3 LocalSupport(const Core& core, const Vec3& d) {
    switch (core.kind) {
        case CoreKind::kPoint:
            return {};
        case CoreKind::kSegment:
            return Dot(d, core.half) < 0 ? -core.half : core.half;
        case CoreKind::kBox:
            return {std::copysign(core.half.x, d.x), std::copysign(core.half.y, d.y),
                    std::copysign(core.half.z, d.z)};
        case CoreKind::kCylinder: {
            const double rho = std::sqrt(d.x * d.x + d.z * d.z);
            const double y = std::copysign(core.half.y, d.y);
            if (rho == 0)
                return {core.half.x, y, 0};
            return {core.half.x * (d.x / rho), y, core.half.x * (d.z / rho)};
        }
        case CoreKind::kCone: {
            const double rho = std::sqrt(d.x * d.x + d.z * d.z);
            // The tip against the rim of the base.
            if (d.y * core.half.y >= core.half.x * rho - d.y * core.half.y)
                return {0, core.half.y, 0};
            if (rho == 0)
                return {core.half.x, -core.half.y, 0};
            return {core.half.x * (d.x / rho), -core.half.y, core.half.x * (d.z / rho)};
        }
        case CoreKind::kEllipsoid: {
            const double length = Length(d);
            return length > 0 ? d * (core.half.x / length) : Vec3{core.half.x, 0, 0};
        }
        case CoreKind::kHull: {
            const Vec3* best = core.vertices.points;
            double furthest = Dot(d, *best);
            for (int i = 1; i < core.vertices.count; ++i) {
                const double along = Dot(d, core.vertices.points[i]);
                if (along > furthest) {
                    furthest = along;
                    best = core.vertices.points + i;
                }
            }
            return *best;
        }
    }
    return {};
}

Vec3 CoreExtent(const Core& core) {
    if (core.kind == CoreKind::kPoint)
        return {};
    Vec3 half = core.half;
    if (core.kind == CoreKind::kHull) {
        half = {};
        for (int i = 0; i < core.vertices.count; ++i)
            half = Max(half, Abs(core.vertices.points[i]));
    }
    return Abs(core.linear.col[0]) * std::fabs(half.x) +
           Abs(core.linear.col[1]) * std::fabs(half.y) +
           Abs(core.linear.col[2]) * std::fabs(half.z);
}

void Scale(Core& core, double factor) {
    for (Vec3& column : core.linear.col)
        column *= factor;
    core.centre *= factor;
    core.radius *= factor;
}

Vec3 Perpendicular(const Vec3& v) {
    const Vec3 a = Abs(v);
    const Vec3 axis = a.x <= a.y && a.x <= a.z ? Vec3{1, 0, 0}
                      : a.y <= a.z             ? Vec3{0, 1, 0}
                                               : Vec3{0, 0, 1};
    const Vec3 p = Cross(v, axis);
    const double length = Length(p);
    return length > 0 ? p * (1 / length) : Vec3{1, 0, 0};
}

}  // namespace solid
