#include "platform/solid/BoxDepth.h"

#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// Half edges: the generators of a zonotope. 0 to 2 are those of the first box.
using HalfEdges = Vec3[6];

/// A face of the difference body: it is spanned by two generators.
struct ZonotopeFace {
    int i = -1, j = -1;
    Vec3 normal;  ///< unit, outwards
};

/// Finds the face nearest to the origin. The difference of two parallelepipeds is a zonotope of six
/// generators; the normals of its faces are the cross products of every two of them (Stefan
/// Gottschalk, "Separating axis theorem", 1996, for the rectangular case). Faces and edges count
/// alike. How far the body reaches along such a product is a sum of triple products, each of
/// which serves three faces.
ZonotopeFace NearestFace(const HalfEdges& g, const Vec3& apart) {
    Vec3 cross[6][6];
    double reach[6][6] = {};
    double squared[6];
    for (int i = 0; i < 6; ++i) {
        squared[i] = LengthSquared(g[i]);
        for (int j = i + 1; j < 6; ++j)
            cross[i][j] = Cross(g[i], g[j]);
    }
    for (int i = 0; i < 6; ++i) {
        for (int j = i + 1; j < 6; ++j) {
            for (int k = j + 1; k < 6; ++k) {
                const double volume = std::fabs(Dot(cross[i][j], g[k]));
                reach[i][j] += volume;
                reach[i][k] += volume;
                reach[j][k] += volume;
            }
        }
    }
    ZonotopeFace best;
    double least = Aabb::kInfinity;  // the square of the depth
    double leastSquared = 0;
    double leastAlong = 0;
    for (int i = 0; i < 6; ++i) {
        for (int j = i + 1; j < 6; ++j) {
            const double length = LengthSquared(cross[i][j]);
            if (!(length > kBoxParallel * squared[i] * squared[j]))
                continue;
            const double along = Dot(cross[i][j], apart);
            const double depth = std::max(reach[i][j] - std::fabs(along), 0.0);
            const double candidate = depth * depth / length;
            if (candidate < least) {
                least = candidate;
                leastSquared = length;
                leastAlong = along;
                best.i = i;
                best.j = j;
            }
        }
    }
    // The difference a - b has its middle at `apart`; its nearer side lies against it.
    if (best.i >= 0)
        best.normal = cross[best.i][best.j] * ((leastAlong > 0 ? -1 : 1) / std::sqrt(leastSquared));
    return best;
}

/// A convex polygon in the coordinates of a parallelogram, whose own corners are at (+-1, +-1).
struct Polygon2 {
    struct Corner {
        double u, v;
    };
    Corner corners[12];
    int count = 0;

    void Add(double u, double v) { corners[count++] = {u, v}; }
};

/// The part of the polygon with side * coordinate at most 1 (Ivan Sutherland and Gary Hodgman,
/// "Reentrant polygon clipping", 1974).
Polygon2 Clip(const Polygon2& polygon, double Polygon2::Corner::*coordinate, double side) {
    Polygon2 inside;
    for (int i = 0; i < polygon.count; ++i) {
        const Polygon2::Corner& p = polygon.corners[i];
        const Polygon2::Corner& q = polygon.corners[i + 1 < polygon.count ? i + 1 : 0];
        const double heightP = side * p.*coordinate - (1 + kFootOutside);
        const double heightQ = side * q.*coordinate - (1 + kFootOutside);
        if (heightP <= 0)
            inside.Add(p.u, p.v);
        if ((heightP < 0 && heightQ > 0) || (heightP > 0 && heightQ < 0)) {
            const double t = heightP / (heightP - heightQ);
            inside.Add(p.u + t * (q.u - p.u), p.v + t * (q.v - p.v));
        }
    }
    return inside;
}

/// A face of the difference as the sum of what lies in its plane of either box: of each the
/// generators that span it, and the middle of that vertex, edge or side.
struct TouchingSides {
    Vec3 middle[2];
    Vec3 span[2][3];
    int count[2] = {0, 0};

    TouchingSides(const HalfEdges& g, const Vec3* centres, const ZonotopeFace& face) {
        for (int k = 0; k < 6; ++k) {
            const int box = k / 3;
            if (k % 3 == 0)
                middle[box] = centres[box];
            const double along = Dot(g[k], face.normal);
            const double squared = LengthSquared(g[k]);
            if (k == face.i || k == face.j ||
                (squared > 0 && along * along <= kCoplanar * kCoplanar * squared))
                span[box][count[box]++] = g[k];
            else
                middle[box] += (along < 0) == (box == 0) ? -g[k] : g[k];
        }
    }
};

/// Coordinates of `r`, a point of the plane with that normal, as a combination of p and q.
Polygon2::Corner Coordinates(const Vec3& r, const Vec3& p, const Vec3& q, const Vec3& normal) {
    const double area = Dot(Cross(p, q), normal);
    return {Dot(Cross(r, q), normal) / area, Dot(Cross(p, r), normal) / area};
}

/// The points where the face meets its foot, where it is spanned by two generators alone.
bool PointsOfParallelogram(const TouchingSides& sides, const Vec3& foot, DepthResult& result) {
    const int boxOfP = sides.count[0] > 0 ? 0 : 1;
    const int boxOfQ = sides.count[1] > 0 ? 1 : 0;
    const Vec3& p = sides.span[boxOfP][0];
    const Vec3& q = sides.span[boxOfQ][boxOfP == boxOfQ ? 1 : 0];
    const Vec3 r = foot - (sides.middle[0] - sides.middle[1]);
    const auto [u, v] = Coordinates(r, p, q, result.axis);
    if (!(std::max(std::fabs(u), std::fabs(v)) <= 1 + kFootOutside))
        return false;
    Vec3 points[2] = {sides.middle[0], sides.middle[1]};
    points[boxOfP] += p * (boxOfP == 0 ? u : -u);
    points[boxOfQ] += q * (boxOfQ == 0 ? v : -v);
    result.a = points[0];
    result.b = points[1];
    return true;
}

/// The same where sides or a side and an edge are parallel: the middle of what they share after
/// the boxes have parted.
bool PointsOfOverlap(const TouchingSides& sides, const Vec3& foot, DepthResult& result) {
    const int flat = sides.count[0] == 2 ? 0 : 1;
    const int other = 1 - flat;
    if (sides.count[flat] != 2 || sides.count[other] > 2)
        return false;
    const Vec3& p = sides.span[flat][0];
    const Vec3& q = sides.span[flat][1];
    const auto in = [&](const Vec3& r) { return Coordinates(r, p, q, result.axis); };
    const Vec3 shift = flat == 0 ? foot : -foot;
    const auto middle = in(sides.middle[other] - sides.middle[flat] + shift);
    const auto first = in(sides.span[other][0]);
    Polygon2 shared;
    if (sides.count[other] == 1) {
        shared.Add(middle.u - first.u, middle.v - first.v);
        shared.Add(middle.u + first.u, middle.v + first.v);
    } else {
        const auto second = in(sides.span[other][1]);
        shared.Add(middle.u - first.u - second.u, middle.v - first.v - second.v);
        shared.Add(middle.u + first.u - second.u, middle.v + first.v - second.v);
        shared.Add(middle.u + first.u + second.u, middle.v + first.v + second.v);
        shared.Add(middle.u - first.u + second.u, middle.v - first.v + second.v);
    }
    for (const double side : {-1.0, 1.0}) {
        shared = Clip(shared, &Polygon2::Corner::u, side);
        shared = Clip(shared, &Polygon2::Corner::v, side);
    }
    if (shared.count == 0)
        return false;
    double u = 0, v = 0;
    for (int i = 0; i < shared.count; ++i) {
        u += shared.corners[i].u / shared.count;
        v += shared.corners[i].v / shared.count;
    }
    const Vec3 point =
        sides.middle[flat] + p * std::clamp(u, -1.0, 1.0) + q * std::clamp(v, -1.0, 1.0);
    result.a = flat == 0 ? point : point + foot;
    result.b = flat == 0 ? point - foot : point;
    return true;
}

}  // namespace

bool FindBoxDepth(const Core& a, const Core& b, DepthResult& result) {
    HalfEdges g;
    for (int i = 0; i < 3; ++i) {
        g[i] = a.linear.col[i] * a.half[i];
        g[3 + i] = b.linear.col[i] * b.half[i];
    }
    const Vec3 apart = a.centre - b.centre;
    const ZonotopeFace face = NearestFace(g, apart);
    if (face.i < 0)
        return false;
    double height = Dot(face.normal, apart);
    for (const Vec3& edge : g)
        height += std::fabs(Dot(face.normal, edge));
    result.depth = std::max(height, 0.0);
    result.axis = face.normal;
    const Vec3 centres[2] = {a.centre, b.centre};
    const TouchingSides sides(g, centres, face);
    const Vec3 foot = face.normal * result.depth;
    const bool simple = sides.count[0] + sides.count[1] == 2;
    const bool found =
        simple ? PointsOfParallelogram(sides, foot, result) : PointsOfOverlap(sides, foot, result);
    if (!found)
        FindDepthPoints(a, b, result);
    return true;
}

}  // namespace solid
