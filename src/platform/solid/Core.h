#pragma once

/// A convex body placed in the world: a core and a radius. The body is all that lies within the
/// radius of the core. Spheres are points with a radius; a margin adds to the radius.

#include <cstdint>

#include "platform/solid/Narrow.h"
#include "platform/solid/Shape.h"
#include "platform/solid/Vec3.h"

namespace solid {

/// The order is that of the pair table: in a pair the smaller kind comes first.
enum class CoreKind : std::uint8_t {
    kPoint,
    kSegment,
    kBox,
    kCylinder,
    kCone,
    kEllipsoid,
    kHull,
};
inline constexpr int kCoreKindCount = 7;

struct Core {
    CoreKind kind = CoreKind::kPoint;
    Traits traits;  ///< of the placed shape
    Mat3 linear;
    Vec3 centre;
    Vec3 half;            ///< as Shape::Half()
    VertexSpan vertices;  ///< of a hull, relative to `centre` after `linear`
    double radius = 0;
};

/// The core of a placed convex shape whose middle stands at `centre`. `hull` names the polygon when
/// the shape is a mesh.
inline Core MakeCoreAt(const Placed& placed, const Vec3& centre, const VertexSpan* hull = nullptr);

/// Where the middle of a placed shape stands in the world.
inline Vec3 WorldCentre(const Placed& placed) {
    return placed.placement * placed.shape->Centre();
}

/// The same, relative to `reference` in the world.
inline Core MakeCore(const Placed& placed, const Vec3& reference,
                     const VertexSpan* hull = nullptr) {
    return MakeCoreAt(placed, WorldCentre(placed) - reference, hull);
}

/// The point of the core (without radius) that lies furthest along `direction`, which need not have
/// length 1.
inline Vec3 Support(const Core& core, const Vec3& direction);

/// Half the extents of the core along the axes of the world, about `core.centre`. Hulls: an upper
/// bound.
Vec3 CoreExtent(const Core& core);

/// Multiplies all lengths by `factor`.
void Scale(Core& core, double factor);

/// The furthest point in the frame of the core.
Vec3 LocalSupport(const Core& core, const Vec3& direction);

/// Any unit vector at right angles to `v`; (1, 0, 0) for the zero vector.
Vec3 Perpendicular(const Vec3& v);

/// A sphere that a rigid placement leaves round becomes a point with a radius.
inline void PlaceSphere(Core& core) {
    if (core.half.x == 0) {
        core.kind = CoreKind::kPoint;
    } else if (core.traits.rigid) {
        const Mat3& m = core.linear;
        const double squares =
            LengthSquared(m.col[0]) + LengthSquared(m.col[1]) + LengthSquared(m.col[2]);
        core.kind = CoreKind::kPoint;
        core.radius += core.half.x * std::sqrt(squares / 3);
    }
}

inline Core MakeCoreAt(const Placed& placed, const Vec3& centre, const VertexSpan* hull) {
    static constexpr CoreKind kKinds[kShapeKindCount] = {
        CoreKind::kEllipsoid, CoreKind::kSegment, CoreKind::kBox,  CoreKind::kCylinder,
        CoreKind::kCone,      CoreKind::kHull,    CoreKind::kHull,
    };
    const Shape& shape = *placed.shape;
    Core core{kKinds[static_cast<int>(shape.Kind())],
              placed.traits,
              placed.placement.linear,
              centre,
              shape.Half(),
              {},
              placed.margin};
    if (core.kind == CoreKind::kHull) {
        core.vertices = hull != nullptr ? *hull : shape.Vertices();
    } else if (core.kind == CoreKind::kEllipsoid) {
        PlaceSphere(core);
    }
    return core;
}

inline Vec3 Support(const Core& core, const Vec3& direction) {
    if (core.kind == CoreKind::kPoint)
        return core.centre;
    return core.linear * LocalSupport(core, core.linear.TransposeTimes(direction)) + core.centre;
}

}  // namespace solid
