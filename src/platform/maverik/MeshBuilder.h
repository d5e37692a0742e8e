#pragma once

/// Vertices and indices as graphics memory takes them.

#include <cstdint>
#include <vector>

#include "platform/maverik/Drawing.h"

struct Mesh {
    /// Of each vertex the position, then, where there are such, normal and texture coordinates.
    std::vector<float> vertices;
    bool hasNormals = false;
    bool hasTexCoords = false;
    std::vector<std::uint32_t> indices;

    std::size_t Stride() const noexcept {
        return 3 + (hasNormals ? 3u : 0u) + (hasTexCoords ? 2u : 0u);
    }
};

/// The polygons cut into triangles. Vertices that are equal become one. Positions are relative to
/// `centre`, so that an object far from its own origin loses no digits.
Mesh BuildPolygons(const Geometry& geometry, const MAV_vector& centre);

/// The pieces of all lines as pairs of indices; `firstIndices` gets the first one of each line, and
/// the end.
Mesh BuildLines(const Geometry& geometry, const MAV_vector& centre, std::vector<int>& firstIndices);

/// A box, sphere, cylinder or cone of unit size (SizedShape in Bounds.h).
struct UnitShape {
    MAV_class shape = mav_class_box;
    int around = 0;  ///< vertices of the circle
    int slices = 0;  ///< of the sphere, from pole to pole
    bool caps = false;
    float topRatio = 0, bottomRatio = 0;
    friend bool operator==(const UnitShape&, const UnitShape&) = default;
};
/// With normals and texture coordinates: of the box each face whole; round the others starting at
/// the back, as VRML97 (ISO/IEC 14772-1:1997) has it. The sphere's poles are on y.
Mesh BuildUnitShape(const UnitShape& shape);
