#pragma once

/// Placed shapes as plain data: the same floats go to the engine and, widened, to the oracle.

#include <array>
#include <string>
#include <vector>

namespace oracle {

enum class Kind { kBox, kSphere, kCylinder, kCone, kSegment, kPolytope, kMesh };
inline constexpr int kKindCount = 7;
const char* Name(Kind kind);

using Point = std::array<float, 3>;
/// Column-major, as DT_SetMatrixf takes it.
using Matrix = std::array<float, 16>;

inline constexpr Matrix kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

struct Spec {
    Kind kind = Kind::kBox;
    /// Width, height, depth of a box; the radius of a sphere; radius and height of a cylinder or
    /// cone. Not used by the others.
    Point size{};
    /// Ends of a segment, vertices of a polytope, vertices of all polygons of a mesh.
    std::vector<Point> points;
    /// Vertices of each polygon of a mesh.
    std::vector<int> counts;
    Matrix matrix = kIdentity;
    float margin = 0;
};

Spec Box(float width, float height, float depth);
Spec Sphere(float radius);
Spec Cylinder(float radius, float height);
Spec Cone(float radius, float height);
Spec Segment(const Point& source, const Point& target);
Spec Polytope(std::vector<Point> points);
Spec Mesh(std::vector<Point> points, std::vector<int> counts);
/// The twelve triangles of an axis-parallel box.
Spec MeshBox(float width, float height, float depth);

Spec At(Spec spec, float x, float y, float z);
Spec Scaled(Spec spec, float x, float y, float z);
Spec WithMargin(Spec spec, float margin);

/// All numbers in hexadecimal, so that a failing pair can be typed in again exactly.
std::string Describe(const Spec& spec);

}  // namespace oracle
