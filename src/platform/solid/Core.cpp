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

/// Of a shape in a rigid placement: of a ball about its middle that lies within it. `half` and
/// `scale` are half extents and lengths of columns in the world.
double InnerRadius(const Shape& shape, const Vec3& half, const Vec3& scale) {
    switch (shape.Kind()) {
        case ShapeKind::kBox:
        case ShapeKind::kCylinder:
            return std::min({half.x, half.y, half.z});
        case ShapeKind::kCone: {
            // The slope passes the middle at half the radius.
            const double radius = std::min(half.x, half.z);
            const double slope = Length({radius, 2 * half.y, 0});
            return slope > 0 ? std::min(half.y, radius * (half.y / slope)) : 0;
        }
        default:
            return shape.InnerRadius() * std::min({scale.x, scale.y, scale.z});
    }
}

/// Of a ball that such a shape lies in.
double OuterRadius(ShapeKind kind, const Vec3& half) {
    switch (kind) {
        case ShapeKind::kSphere:
            return std::max({half.x, half.y, half.z});
        case ShapeKind::kCylinder:
        case ShapeKind::kCone:
            return Length({std::max(half.x, half.z), half.y, 0});
        default:
            return Length(half);
    }
}

}  // namespace

Traits FindTraits(const Placed& placed) {
    const Shape& shape = *placed.shape;
    const Mat3& m = placed.placement.linear;
    const ShapeKind kind = shape.Kind();
    const bool round = kind == ShapeKind::kCylinder || kind == ShapeKind::kCone;
    const bool alike = kind == ShapeKind::kSphere || kind == ShapeKind::kPolytope;
    Traits traits;
    traits.rigid = kind != ShapeKind::kMesh && IsRigid(m, round || alike, alike);

    const Vec3 scale{Length(m.col[0]), Length(m.col[1]), Length(m.col[2])};
    const Vec3 half{scale.x * std::fabs(shape.Half().x), scale.y * std::fabs(shape.Half().y),
                    scale.z * std::fabs(shape.Half().z)};
    const double size = std::max(MaxNorm(half), placed.margin);
    traits.small = !(size * kComfortableSize > 1);
    traits.large = !(std::max(size, MaxNorm(WorldCentre(placed))) < kComfortableSize);
    // Radii of small bodies would be rounded by more than the slack.
    if (!traits.large && (!traits.small || size == 0)) {
        const double inner = traits.rigid ? InnerRadius(shape, half, scale) : 0;
        const double outer = traits.rigid ? OuterRadius(kind, half) : half.x + half.y + half.z;
        traits.inner = static_cast<float>((inner + placed.margin) * (1 - kBallSlack));
        traits.outer = static_cast<float>((outer + placed.margin) * (1 + kBallSlack));
    }
    // The middle of any other kind belongs to it; that of a surface need not, nor that of a hull so
    // flat that it is outside by the rounding of its middle.
    if (kind == ShapeKind::kMesh || (kind == ShapeKind::kPolytope && shape.InnerRadius() == 0))
        traits.inner = -std::numeric_limits<float>::infinity();
    return traits;
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
