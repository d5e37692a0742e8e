#pragma once

/// Shapes in their own frames. A shape never changes after it was built.

#include <memory>
#include <vector>

#include "platform/solid/Aabb.h"
#include "platform/solid/Vec3.h"

namespace solid {

class DeferredMesh;
class MeshTree;

/// The order of the kinds is the order in which pairs are put before the pair table.
enum class ShapeKind : unsigned char {
    kSphere,
    kSegment,
    kBox,
    kCylinder,
    kCone,
    kPolytope,  ///< convex hull of points; also each polygon of a mesh
    kMesh,      ///< complex shape: a surface of convex polygons
};
inline constexpr int kShapeKindCount = 7;

/// Vertices of one convex hull: `count` points from `points`, in the frame of the shape.
struct VertexSpan {
    const Vec3* points = nullptr;
    int count = 0;
};

class Shape {
  public:
    static std::unique_ptr<Shape> NewBox(double width, double height, double depth);
    static std::unique_ptr<Shape> NewSphere(double radius);
    static std::unique_ptr<Shape> NewCylinder(double radius, double height);
    static std::unique_ptr<Shape> NewCone(double radius, double height);
    static std::unique_ptr<Shape> NewSegment(const Vec3& source, const Vec3& target);
    /// A polytope or mesh without any vertex yet. It stays empty until it is built, once.
    static std::unique_ptr<Shape> NewUnbuilt(ShapeKind kind);
    /// Points that are not finite are left out; with no point left the shape is empty.
    void BuildPolytope(std::vector<Vec3> points);
    /// `counts[i]` points of `points` for polygon i, one after the other; without counts, three
    /// each. A polygon with a point that is not finite, or without points, is left out; with no
    /// polygon left the shape is empty. The lists are moved from only if nothing failed.
    void BuildMesh(std::vector<FloatPoint>&& points, std::vector<int>&& counts);
    ~Shape();
    Shape(const Shape&) = delete;
    Shape& operator=(const Shape&) = delete;

    ShapeKind Kind() const { return m_kind; }
    /// Half extents of a box; (radius, half height, radius) of a cylinder or cone; (radius, radius,
    /// radius) of a sphere; half of target - source of a segment; of polytopes and meshes, the
    /// reach from Centre() along each axis.
    const Vec3& Half() const { return m_half; }
    /// The point of the shape's frame that all other coordinates here are relative to: it keeps
    /// shapes that lie far from their origin exact.
    const Vec3& Centre() const { return m_more == nullptr ? kOrigin : m_more->centre; }
    /// Radius of a ball about Centre() that lies within a sphere or a tetrahedron, for certain; 0
    /// of other shapes, and of tetrahedra so flat that their middle may be outside by its rounding.
    double InnerRadius() const { return m_inner; }
    /// Of a polytope, relative to Centre().
    VertexSpan Vertices() const {
        return m_more == nullptr
                   ? VertexSpan{}
                   : VertexSpan{m_more->points.data(), static_cast<int>(m_more->points.size())};
    }
    /// Of a mesh that is not empty. Throws std::bad_alloc if there is no memory for its tree, which
    /// stands from the first call on.
    const MeshTree& Mesh() const;
    bool IsEmpty() const { return m_empty; }
    /// An axis-parallel box of the shape placed by `placement` and grown by `margin`, in world
    /// coordinates: larger than the tightest by no more than what kRigid lets pass; of a mesh that
    /// of its placed bounds.
    Aabb WorldBox(const Affine& placement, double margin) const;

  private:
    static constexpr Vec3 kOrigin{};

    /// What most shapes do without: of segments, polytopes and meshes.
    struct More {
        Vec3 centre;
        std::vector<Vec3> points;
        Vec3 middle;  ///< of a mesh, the middle of its bounds
        std::unique_ptr<DeferredMesh> mesh;
    };

    explicit Shape(ShapeKind kind);

    ShapeKind m_kind;
    bool m_empty = false;
    Vec3 m_half;
    double m_inner = 0;
    std::unique_ptr<More> m_more;
};

}  // namespace solid
