#include "platform/solid/BoxDepth.h"

#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// Half edges: the generators of a zonotope. 0 to 2 are those of the first box.
using HalfEdges = Vec3[6];

/// The search for the face of the difference that is nearest to the origin. The difference of two
/// parallelepipeds is a zonotope of six generators; the normals of its faces are the cross products
/// of every two of them (Stefan Gottschalk, "Separating axis theorem", 1996, for the rectangular
/// case). Faces and edges count alike. How far the body reaches along such a product is a sum of
/// triple products, of which each serves three faces.
class FaceSearch {
  public:
    FaceSearch(const HalfEdges& edges, const Vec3& apart) : m_edges(edges), m_apart(apart) {
        double size = LengthSquared(apart);
        for (int i = 0; i < 6; ++i) {
            m_squared[i] = LengthSquared(edges[i]);
            size += m_squared[i];
        }
        m_unsure = kBoxUnsure * kBoxUnsure * size;
    }

    BoxAnswer Run(BoxFace& face) {
        double ofSides[2][3][3];  // triple products: of the side [box][i] and an edge of the other
        for (int box = 0; box < 2; ++box) {
            const Vec3* own = m_edges + 3 * box;
            const Vec3* other = m_edges + 3 * (1 - box);
            for (int i = 0; i < 3; ++i) {
                const Vec3 normal = Cross(own[(i + 1) % 3], own[(i + 2) % 3]);
                double reach = std::fabs(Dot(normal, own[i]));
                for (int k = 0; k < 3; ++k) {
                    ofSides[box][i][k] = std::fabs(Dot(normal, other[k]));
                    reach += ofSides[box][i][k];
                }
                if (!Look(3 * box + (i + 1) % 3, 3 * box + (i + 2) % 3, normal, reach))
                    return BoxAnswer::kApart;
            }
        }
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                const double reach = ofSides[0][(i + 1) % 3][j] + ofSides[0][(i + 2) % 3][j] +
                                     ofSides[1][(j + 1) % 3][i] + ofSides[1][(j + 2) % 3][i];
                if (!Look(i, 3 + j, Cross(m_edges[i], m_edges[3 + j]), reach))
                    return BoxAnswer::kApart;
            }
        }
        face.i = m_i;
        face.j = m_j;
        // The difference a - b has its middle at `apart`; its nearer side lies against it.
        if (m_i >= 0)
            face.normal = m_normal * ((Dot(m_normal, m_apart) > 0 ? -1 : 1) / Length(m_normal));
        return m_least > m_unsure ? BoxAnswer::kTouch : BoxAnswer::kUnknown;
    }

  private:
    /// False if the axis parts the boxes for certain.
    bool Look(int i, int j, const Vec3& axis, double reach) {
        const double squared = LengthSquared(axis);
        if (!(squared > kBoxParallel * m_squared[i] * m_squared[j]))
            return true;
        const double depth = reach - std::fabs(Dot(axis, m_apart));
        const double candidate = depth * std::fabs(depth) / squared;
        if (candidate < m_least) {
            m_least = candidate;
            m_i = i;
            m_j = j;
            m_normal = axis;
        }
        return candidate >= -m_unsure;
    }

    const HalfEdges& m_edges;
    const Vec3 m_apart;
    double m_squared[6];
    double m_unsure;
    double m_least = Aabb::kInfinity;  ///< the square of the depth, with its sign
    int m_i = -1, m_j = -1;
    Vec3 m_normal;
};

void SetHalfEdges(const Core& a, const Core& b, HalfEdges& edges) {
    for (int i = 0; i < 3; ++i) {
        edges[i] = a.linear.col[i] * a.half[i];
        edges[3 + i] = b.linear.col[i] * b.half[i];
    }
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

    TouchingSides(const HalfEdges& g, const Vec3* centres, const BoxFace& face) {
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

BoxAnswer FindBoxFace(const Core& a, const Core& b, BoxFace& face) {
    HalfEdges edges;
    SetHalfEdges(a, b, edges);
    return FaceSearch(edges, a.centre - b.centre).Run(face);
}

DepthResult BoxFaceDepth(const Core& a, const Core& b, const BoxFace& face) {
    HalfEdges edges;
    SetHalfEdges(a, b, edges);
    double height = Dot(face.normal, a.centre - b.centre);
    for (const Vec3& edge : edges)
        height += std::fabs(Dot(face.normal, edge));
    DepthResult result;
    result.depth = std::max(height, 0.0);
    result.axis = face.normal;
    const Vec3 centres[2] = {a.centre, b.centre};
    const TouchingSides sides(edges, centres, face);
    const Vec3 foot = face.normal * result.depth;
    const bool simple = sides.count[0] + sides.count[1] == 2;
    const bool found =
        simple ? PointsOfParallelogram(sides, foot, result) : PointsOfOverlap(sides, foot, result);
    if (!found)
        FindDepthPoints(a, b, result);
    return result;
}

}  // namespace solid
