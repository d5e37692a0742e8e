#include "Convex.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace oracle {

namespace {

double Positive(float size) {
    return size > 0 ? static_cast<double>(size) : 0.0;
}

Convex Hull(const Spec& spec, const Vec3& origin, std::size_t first, std::size_t count) {
    const Vec3 x = Widened(&spec.matrix[0]);
    const Vec3 y = Widened(&spec.matrix[4]);
    const Vec3 z = Widened(&spec.matrix[8]);
    const auto turned = [&](const Vec3& p) { return x * p.x + y * p.y + z * p.z; };
    Vec3 middle;
    for (std::size_t i = 0; i < count; ++i) {
        middle += Widened(spec.points[first + i].data()) * (1.0 / static_cast<double>(count));
    }
    Convex hull;
    hull.centre = turned(middle) + origin;
    for (std::size_t i = 0; i < count; ++i) {
        hull.vertices.push_back(turned(Widened(spec.points[first + i].data()) - middle));
    }
    hull.margin = Positive(spec.margin);
    return hull;
}

Convex Simple(const Spec& spec, const Vec3& origin, Convex::Set set, double x, double y, double z) {
    Convex convex;
    convex.set = set;
    convex.centre = origin;
    convex.axis[0] = Widened(&spec.matrix[0]) * x;
    convex.axis[1] = Widened(&spec.matrix[4]) * y;
    convex.axis[2] = Widened(&spec.matrix[8]) * z;
    convex.margin = Positive(spec.margin);
    return convex;
}

}  // namespace

double Convex::Extent(const Vec3& n) const {
    const double x = Dot(axis[0], n);
    const double y = Dot(axis[1], n);
    const double z = Dot(axis[2], n);
    double extent = 0;
    switch (set) {
        case Set::kHull:
            extent = Dot(vertices[0], n);
            for (const Vec3& v : vertices) {
                extent = std::max(extent, Dot(v, n));
            }
            break;
        case Set::kBox:
            extent = std::fabs(x) + std::fabs(y) + std::fabs(z);
            break;
        case Set::kBall:
            extent = std::sqrt(x * x + y * y + z * z);
            break;
        case Set::kCylinder:
            extent = std::sqrt(x * x + z * z) + std::fabs(y);
            break;
        case Set::kCone:
            extent = std::max(y, std::sqrt(x * x + z * z) - y);
            break;
    }
    return margin == 0 ? extent : extent + margin * Length(n);
}

double Convex::Radius() const {
    double radius = 0;
    switch (set) {
        case Set::kHull:
            for (const Vec3& v : vertices) {
                radius = std::max(radius, Length(v));
            }
            break;
        case Set::kBox:
            radius = Length(axis[0]) + Length(axis[1]) + Length(axis[2]);
            break;
        case Set::kBall:
            radius =
                std::sqrt(LengthSquared(axis[0]) + LengthSquared(axis[1]) + LengthSquared(axis[2]));
            break;
        case Set::kCylinder:
        case Set::kCone:
            radius = std::sqrt(LengthSquared(axis[0]) + LengthSquared(axis[2])) + Length(axis[1]);
            break;
    }
    return radius + margin;
}

std::vector<Convex> Pieces(const Spec& spec, const Vec3& reference) {
    const Vec3 origin = Widened(&spec.matrix[12]) - reference;
    const double a = Positive(spec.size[0]);
    const double b = Positive(spec.size[1]);
    std::vector<Convex> pieces;
    switch (spec.kind) {
        case Kind::kBox:
            pieces.push_back(
                Simple(spec, origin, Convex::Set::kBox, a / 2, b / 2, Positive(spec.size[2]) / 2));
            break;
        case Kind::kSphere:
            pieces.push_back(Simple(spec, origin, Convex::Set::kBall, a, a, a));
            break;
        case Kind::kCylinder:
            pieces.push_back(Simple(spec, origin, Convex::Set::kCylinder, a, b / 2, a));
            break;
        case Kind::kCone:
            pieces.push_back(Simple(spec, origin, Convex::Set::kCone, a, b / 2, a));
            break;
        case Kind::kSegment:
        case Kind::kPolytope:
            pieces.push_back(Hull(spec, origin, 0, spec.points.size()));
            break;
        case Kind::kMesh: {
            std::size_t first = 0;
            for (const int count : spec.counts) {
                pieces.push_back(Hull(spec, origin, first, static_cast<std::size_t>(count)));
                first += static_cast<std::size_t>(count);
            }
            break;
        }
    }
    return pieces;
}

double Radius(const std::vector<Convex>& pieces) {
    double radius = 0;
    for (const Convex& piece : pieces) {
        radius = std::max(radius, piece.Radius() + Length(piece.centre - pieces[0].centre));
    }
    return radius;
}

}  // namespace oracle
