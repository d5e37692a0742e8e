#include "platform/solid/Shape.h"

#include <algorithm>
#include <utility>

#include "platform/solid/DeferredMesh.h"
#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// Sizes that make no sense count as 0.
double CleanSize(double size) {
    return size > 0 ? size : 0;
}

/// Rounded to single precision. Volatile, since gcc 12 takes two such conversions side by side for
/// none when it vectorises.
double ToSingle(double value) {
    const volatile float single = static_cast<float>(value);
    return static_cast<double>(single);
}

/// Half the extent along each world axis of x -> linear * x over the unit sphere in (x, z) of
/// radius `radius`: the length of the part of a row that lies in that plane.
Vec3 DiscExtent(const Mat3& m, double radius) {
    const auto row = [&](int i) {
        return radius * std::sqrt(m.col[0][i] * m.col[0][i] + m.col[2][i] * m.col[2][i]);
    };
    return {row(0), row(1), row(2)};
}

}  // namespace

Shape::Shape(ShapeKind kind) : m_kind(kind) {}
Shape::~Shape() = default;

std::unique_ptr<Shape> Shape::NewBox(double width, double height, double depth) {
    std::unique_ptr<Shape> shape(new Shape(ShapeKind::kBox));
    shape->m_half = Vec3{CleanSize(width), CleanSize(height), CleanSize(depth)} * 0.5;
    return shape;
}

std::unique_ptr<Shape> Shape::NewSphere(double radius) {
    std::unique_ptr<Shape> shape(new Shape(ShapeKind::kSphere));
    const double r = CleanSize(radius);
    shape->m_half = {r, r, r};
    shape->m_inner = r;
    return shape;
}

std::unique_ptr<Shape> Shape::NewCylinder(double radius, double height) {
    std::unique_ptr<Shape> shape(new Shape(ShapeKind::kCylinder));
    const double r = CleanSize(radius);
    shape->m_half = {r, CleanSize(height) * 0.5, r};
    return shape;
}

std::unique_ptr<Shape> Shape::NewCone(double radius, double height) {
    std::unique_ptr<Shape> shape(new Shape(ShapeKind::kCone));
    const double r = CleanSize(radius);
    shape->m_half = {r, CleanSize(height) * 0.5, r};
    return shape;
}

std::unique_ptr<Shape> Shape::NewSegment(const Vec3& source, const Vec3& target) {
    std::unique_ptr<Shape> shape(new Shape(ShapeKind::kSegment));
    shape->m_half = target * 0.5 - source * 0.5;
    shape->m_more = std::make_unique<More>();
    shape->m_more->centre = source * 0.5 + target * 0.5;
    shape->m_empty = !IsFinite(shape->m_half) || !IsFinite(shape->Centre());
    return shape;
}

std::unique_ptr<Shape> Shape::NewUnbuilt(ShapeKind kind) {
    std::unique_ptr<Shape> shape(new Shape(kind));
    shape->m_empty = true;
    return shape;
}

namespace {

/// Distance from a point inside a tetrahedron to the nearest face; 0 if it is not inside. The
/// corners are relative to the point.
double DepthInTetrahedron(const std::vector<Vec3>& p) {
    static constexpr std::size_t kFaces[4][4] = {
        {0, 1, 2, 3}, {0, 1, 3, 2}, {0, 2, 3, 1}, {1, 2, 3, 0}};
    double depth = Aabb::kInfinity;
    for (const auto& f : kFaces) {
        const Vec3 normal = Cross(p[f[1]] - p[f[0]], p[f[2]] - p[f[0]]);
        const double height = Dot(p[f[0]], normal);
        const double opposite = Dot(p[f[0]] - p[f[3]], normal);
        if (!(height * opposite > 0))
            return 0;
        depth = std::min(depth, std::fabs(height) / Length(normal));
    }
    return depth;
}

}  // namespace

void Shape::BuildPolytope(std::vector<Vec3> points) {
    std::erase_if(points, [](const Vec3& p) { return !IsFinite(p); });
    if (points.empty())
        return;
    auto more = std::make_unique<More>();
    // The mean lies within the hull. As floats, so that differences of it are exact.
    Vec3 mean;
    for (const Vec3& p : points)
        mean += p * (1 / static_cast<double>(points.size()));
    more->centre = {ToSingle(mean.x), ToSingle(mean.y), ToSingle(mean.z)};
    for (Vec3& p : points) {
        p -= more->centre;
        m_half = Max(m_half, Abs(p));
    }
    if (points.size() == 4) {
        const double depth = DepthInTetrahedron(points);
        m_inner = depth > kBallLeast * MaxNorm(m_half) ? depth : 0;
    }
    points.shrink_to_fit();
    more->points = std::move(points);
    m_more = std::move(more);
    m_empty = false;
}

namespace {

/// Of the polygons that stay: one that is left out must not move the middle of the others.
Aabb BoundsOfPolygons(const std::vector<FloatPoint>& points, const std::vector<int>& counts) {
    FloatPoint lower{points[0]}, upper{points[0]};
    float finite = 0;
    for (const FloatPoint& p : points) {
        lower = {std::min(lower.x, p.x), std::min(lower.y, p.y), std::min(lower.z, p.z)};
        upper = {std::max(upper.x, p.x), std::max(upper.y, p.y), std::max(upper.z, p.z)};
        finite += (p.x * 0 + p.y * 0) + p.z * 0;
    }
    // Not a number as soon as one of them is not finite.
    if (finite == 0)
        return {ToVec3(lower), ToVec3(upper)};
    Aabb bounds;
    auto first = points.begin();
    for (std::size_t i = 0; first != points.end(); ++i) {
        const auto last = first + (counts.empty() ? 3 : counts[i]);
        if (std::all_of(first, last, [](const FloatPoint& p) { return IsFinite(ToVec3(p)); }))
            std::for_each(first, last, [&](const FloatPoint& p) { bounds.Include(ToVec3(p)); });
        first = last;
    }
    return bounds;
}

}  // namespace

void Shape::BuildMesh(std::vector<FloatPoint>&& points, std::vector<int>&& counts) {
    if (points.empty())
        return;
    const Aabb bounds = BoundsOfPolygons(points, counts);
    if (bounds.IsEmpty())
        return;
    if (std::all_of(counts.begin(), counts.end(), [](int count) { return count == 3; }))
        counts = {};
    auto more = std::make_unique<More>();
    more->centre = bounds.Centre();
    // As the tree has them.
    const Aabb relative{bounds.lower - more->centre, bounds.upper - more->centre};
    more->middle = relative.Centre();
    more->mesh = std::make_unique<DeferredMesh>(std::move(points), std::move(counts), more->centre);
    m_half = relative.HalfSize();
    m_more = std::move(more);
    m_empty = false;
}

const MeshTree& Shape::Mesh() const {
    return m_more->mesh->Tree();
}

Aabb Shape::WorldBox(const Affine& placement, double margin) const {
    const Mat3& m = placement.linear;
    Vec3 centre = placement * Centre();
    Vec3 extent;
    switch (m_kind) {
        case ShapeKind::kSphere: {
            if (m_half.x == 0)
                break;
            const auto row = [&](int i) {
                return m_half.x * Length({m.col[0][i], m.col[1][i], m.col[2][i]});
            };
            extent = {row(0), row(1), row(2)};
            break;
        }
        case ShapeKind::kSegment:
            extent = Abs(m * m_half);
            break;
        case ShapeKind::kBox:
            extent = Abs(m.col[0]) * m_half.x + Abs(m.col[1]) * m_half.y + Abs(m.col[2]) * m_half.z;
            break;
        case ShapeKind::kCylinder:
            extent = DiscExtent(m, m_half.x) + Abs(m.col[1]) * m_half.y;
            break;
        case ShapeKind::kCone: {
            const Vec3 axis = m.col[1] * m_half.y;
            const Vec3 disc = DiscExtent(m, m_half.x);
            Aabb box;
            box.Include(axis);
            box.Include(disc - axis);
            box.Include(-disc - axis);
            centre += box.Centre();
            extent = box.HalfSize();
            break;
        }
        case ShapeKind::kPolytope: {
            Aabb box;
            for (const Vec3& p : m_more->points)
                box.Include(m * p);
            centre += box.Centre();
            extent = box.HalfSize();
            break;
        }
        case ShapeKind::kMesh: {
            centre += m * m_more->middle;
            extent = Abs(m.col[0]) * m_half.x + Abs(m.col[1]) * m_half.y + Abs(m.col[2]) * m_half.z;
            break;
        }
    }
    // The closed forms take a placement that is a rotation but for rounding for one.
    if (m_kind == ShapeKind::kSphere || m_kind == ShapeKind::kBox ||
        m_kind == ShapeKind::kCylinder || m_kind == ShapeKind::kCone)
        extent *= 1 + 4 * kRigid;
    Aabb box{centre - extent, centre + extent};
    box.Grow(margin);
    return box;
}

}  // namespace solid
