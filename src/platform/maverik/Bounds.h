#pragma once

/// Extents of drawables, for mav_objectBounds and for leaving out what a view does not show.

#include <array>

#include "platform/maverik/Drawing.h"

/// An affine map in double precision: three rows of four.
using AffineRows = std::array<double, 12>;

/// What an object of one of the shapes with sizes looks like after scaling each axis: the box is
/// the cube of side 1, the sphere has radius 1, cylinder and cone radius and height 1.
struct SizedShape {
    double sizeX, sizeY, sizeZ;
    double topRatio, bottomRatio;  ///< of the radii at the ends by sizeX; of cylinder and cone
    const MAV_matrix* matrix;
};
/// False for the shapes made of vertices.
bool ReadSizedShape(const MAV_object& object, SizedShape& shape) noexcept;

/// The matrix of any drawable.
const MAV_matrix& ObjectMatrix(const MAV_object& object) noexcept;

/// Rows of the matrix with the columns scaled.
AffineRows ScaledRows(const MAV_matrix& matrix, double x, double y, double z) noexcept;
bool IsFinite(const AffineRows& rows) noexcept;

/// Radius around the image of the origin that holds the image of what ReadSizedShape describes.
double SizedRadius(MAV_class shape, const AffineRows& rows) noexcept;
/// Factor by which the map makes lengths grow at most; exact where its columns stand at right
/// angles.
double GreatestStretch(const AffineRows& rows) noexcept;

/// The arrays of a shape that is made of vertices.
struct VertexArrays {
    const MAV_vector* vertices;
    const MAV_texCoord* texCoords;
    const MAV_vector* normals;
    const int* counts;  ///< null: `uniformCount` each
    int uniformCount;
    int pieces;

    int Count(int piece) const noexcept { return counts ? counts[piece] : uniformCount; }
    std::size_t VertexCount() const noexcept;
};
/// False for the shapes that have sizes.
bool ReadVertexArrays(const MAV_object& object, VertexArrays& arrays) noexcept;
GeometrySource SourceOf(const VertexArrays& arrays) noexcept;
/// Over the vertices that are finite.
LocalExtent ExtentOf(const VertexArrays& arrays) noexcept;
