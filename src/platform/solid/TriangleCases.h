#pragma once

/// Triangles, placed, against points, boxes and each other in closed form.

#include <optional>

#include "platform/solid/Core.h"
#include "platform/solid/PointCases.h"

namespace solid {

struct Triangle {
    Vec3 corner[3];

    Vec3 Normal() const { return Cross(corner[1] - corner[0], corner[2] - corner[0]); }
    /// Too thin for closed forms, or a segment or point.
    bool IsNeedle() const;
};

/// A point against a triangle that is no needle; the distance is never below 0.
PointPlace PlaceAtTriangle(const Triangle& triangle, const Vec3& point);

/// A quick look in single precision at a triangle and a body with this radius around a core, in
/// coordinates along axes at right angles and relative to the middle of a box of these half
/// extents. No is certain for every core in that box; yes for one that fills it but for kRigid.
/// Nothing: too near to just touching to tell.
std::optional<bool> FilterTriangleBox(const Triangle& triangle, const Vec3& half, double radius);

/// The same of two triangles with the sum of their radii.
std::optional<bool> FilterTriangles(const Triangle& a, const Triangle& b, double radius);

/// True if the triangle is at least `distance` beyond the core, or the other triangle, in this
/// direction of any length.
bool IsBeyond(const Triangle& triangle, const Core& core, const Vec3& direction, double distance);
bool IsBeyond(const Triangle& triangle, const Triangle& other, const Vec3& direction,
              double distance);

/// At most how deep the triangle and the core, without radii, reach into each other; below 0 where
/// they are apart for certain. `axes` are some of unit length along which to look as well.
double DepthBound(const Triangle& triangle, const Core& core, const Mat3& axes);
double DepthBound(const Triangle& a, const Triangle& b);

}  // namespace solid
