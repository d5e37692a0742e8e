#pragma once

/// What the display draws straight out of: one record per object, owned and filled by the object.
/// Nothing here needs a window.

#include <cstddef>

#include "platform/maverik/Maverik.h"

/// What decides the look of a surface.
enum MAV_surfaceMode : int {
    MAV_COLOUR = 1,
    MAV_MATERIAL = 2,
    MAV_TEXTURE = 3,
};

/// The indices are those of the default palette; only the one that `mode` names has a meaning.
struct MAV_surfaceParams {
    MAV_surfaceMode mode;
    int colour;
    int material;
    int texture;
};

inline constexpr MAV_surfaceParams mav_surfaceParamsNew(MAV_surfaceMode mode, int colour,
                                                        int material, int texture) {
    return {mode, colour, material, texture};
}

/// Which of the records below an object's record is.
enum MAV_class : int {
    mav_class_box,
    mav_class_sphere,
    mav_class_cylinder,
    mav_class_cone,
    mav_class_polygon,
    mav_class_polygonGrp,
    mav_class_polyline,
};

/// A drawable object: the pair of a class and a pointer to a record (Objects.h).
struct MAV_object;

// In all records `matrix` is the placement in the world, and `surfaceParams` may be null: then
// no surface that the shape can show was ever given, and material 0 is to be drawn.

/// Middle at the origin.
struct MAV_box {
    float width, height, depth;
    float xTile, yTile;
    const MAV_surfaceParams* surfaceParams;
    MAV_matrix matrix;
};

struct MAV_sphere {
    float radius;
    int vertexCount;
    int sliceCount;
    float xTile, yTile;
    const MAV_surfaceParams* surfaceParams;
    MAV_matrix matrix;
};

/// Stands along z, middle at the origin.
struct MAV_cylinder {
    float radius, height;
    int vertexCount;
    int endCaps;
    float xTile, yTile;
    const MAV_surfaceParams* surfaceParams;
    MAV_matrix matrix;
};

/// Stands along z, top at +z, middle at the origin.
struct MAV_cone {
    float topRadius, bottomRadius, height;
    int vertexCount;
    int endCaps;
    float xTile, yTile;
    const MAV_surfaceParams* surfaceParams;
    MAV_matrix matrix;
};

/// Texture coordinates are two floats.
struct MAV_texCoord {
    float u, v;
};

struct MAV_polygon {
    int vertexCount;
    MAV_vector normal;
    const MAV_texCoord* texCoords;  ///< null: all 0
    const MAV_vector* vertices;
    const MAV_surfaceParams* surfaceParams;
    MAV_matrix matrix;
};

/// The vertices of all polygons stand one after the other, and so do their texture coordinates. One
/// surface covers all polygons.
struct MAV_polygonGrp {
    int polygonCount;
    const int* vertexCounts;        ///< one per polygon; null: each has 3
    const MAV_vector* normals;      ///< one per polygon
    const MAV_texCoord* texCoords;  ///< null: all 0
    const MAV_vector* vertices;
    const MAV_surfaceParams* surfaceParams;
    MAV_matrix matrix;

    int VertexCount(int polygon) const { return vertexCounts ? vertexCounts[polygon] : 3; }
};

/// The vertices of all lines stand one after the other. No line is closed. A line has the surface
/// of its own, where there are such, else the one of all.
struct MAV_polyline {
    int lineCount;
    const int* vertexCounts;
    const MAV_vector* vertices;
    const MAV_surfaceParams* surfaceParams;
    MAV_matrix matrix;
    const MAV_surfaceParams* const* lineSurfaces = nullptr;  ///< one per line, or null
};
