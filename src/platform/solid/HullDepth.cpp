#include "platform/solid/HullDepth.h"

#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// An edge between two vertices, and the faces beside it: the normal of `right` points to the side
/// of (to - from) x (the inside of that face), the normal of `left` away from it.
struct HullEdge {
    int from, to;
    int left, right;
};

/// The face opposite a vertex has the vertex's number.
constexpr HullEdge kTetrahedronEdges[6] = {{0, 1, 3, 2}, {0, 2, 1, 3}, {0, 3, 2, 1},
                                           {1, 2, 3, 0}, {1, 3, 0, 2}, {2, 3, 1, 0}};
/// Face 0 is the side from which the vertices go round to the left, face 1 the other.
constexpr HullEdge kTriangleEdges[3] = {{0, 1, 1, 0}, {1, 2, 1, 0}, {2, 0, 1, 0}};

/// A triangle or tetrahedron in the world.
struct SmallHull {
    int vertexCount = 0, faceCount = 0, edgeCount = 0;
    const HullEdge* edges = nullptr;
    Vec3 vertices[4];
    Vec3 normals[4];  ///< outwards, twice as long as the face has area
    int on[4] = {};   ///< a vertex of each face
    double squaredSize = 0;

    /// False if it is nearly flat or no such hull.
    bool Set(const Core& core);

  private:
    bool SetTriangle();
    bool SetTetrahedron();
};

bool SmallHull::Set(const Core& core) {
    vertexCount = core.vertices.count;
    if (vertexCount != 3 && vertexCount != 4)
        return false;
    for (int i = 0; i < vertexCount; ++i)
        vertices[i] = core.linear * core.vertices.points[i] + core.centre;
    return vertexCount == 3 ? SetTriangle() : SetTetrahedron();
}

bool SmallHull::SetTriangle() {
    const Vec3 p = vertices[1] - vertices[0], q = vertices[2] - vertices[0];
    squaredSize = std::max(LengthSquared(p), LengthSquared(q));
    normals[0] = Cross(p, q);
    normals[1] = -normals[0];
    faceCount = 2;
    edgeCount = 3;
    edges = kTriangleEdges;
    return LengthSquared(normals[0]) > kHullVolume * kHullVolume * squaredSize * squaredSize;
}

bool SmallHull::SetTetrahedron() {
    Vec3 d[3];
    for (int i = 0; i < 3; ++i) {
        d[i] = vertices[i + 1] - vertices[0];
        squaredSize = std::max(squaredSize, LengthSquared(d[i]));
    }
    double volume = Dot(d[0], Cross(d[1], d[2]));
    if (volume < 0) {
        std::swap(vertices[1], vertices[2]);
        std::swap(d[0], d[1]);
        volume = -volume;
    }
    normals[1] = Cross(d[2], d[1]);
    normals[2] = Cross(d[0], d[2]);
    normals[3] = Cross(d[1], d[0]);
    normals[0] = -(normals[1] + normals[2] + normals[3]);
    on[0] = 1;
    faceCount = 4;
    edgeCount = 6;
    edges = kTetrahedronEdges;
    return volume * volume > kHullVolume * kHullVolume * squaredSize * squaredSize * squaredSize;
}

/// The face of the difference that is nearest to the origin, of those looked at so far.
class NearestFace {
  public:
    enum class Kind { kNone, kFaceOfFirst, kFaceOfSecond, kEdges };

    explicit NearestFace(double squaredSize) : m_unsure(kBoxUnsure * kBoxUnsure * squaredSize) {}
    /// A face with this normal, outwards and of any length, at `height` times that length. False if
    /// it parts the two for certain.
    bool Look(Kind kind, int i, int j, const Vec3& normal, double height) {
        const double squared = LengthSquared(normal);
        const double candidate = height * std::fabs(height) / squared;
        if (candidate < m_least) {
            m_least = candidate;
            m_kind = kind;
            m_i = i;
            m_j = j;
            m_normal = normal;
        }
        return !(candidate < -m_unsure);
    }
    bool IsTouch() const { return m_least > m_unsure && m_kind != Kind::kNone; }
    Kind TheKind() const { return m_kind; }
    int I() const { return m_i; }
    int J() const { return m_j; }
    Vec3 Unit() const { return m_normal * (1 / Length(m_normal)); }

  private:
    double m_unsure;
    double m_least = Aabb::kInfinity;  ///< the square of the height, with its sign
    Kind m_kind = Kind::kNone;
    int m_i = 0, m_j = 0;
    Vec3 m_normal;
};
using Kind = NearestFace::Kind;

/// The products of the normals of one hull and the vertices of another.
using Products = double[4][4];

void SetProducts(const SmallHull& faces, const SmallHull& vertices, Products& products) {
    for (int f = 0; f < faces.faceCount; ++f) {
        for (int v = 0; v < vertices.vertexCount; ++v)
            products[f][v] = Dot(faces.normals[f], vertices.vertices[v]);
    }
}

/// The faces of `own` against the vertices of `other`: how far the difference reaches along them.
bool LookAtFaces(const SmallHull& own, const SmallHull& other, const Products& products, Kind kind,
                 NearestFace& nearest) {
    for (int f = 0; f < own.faceCount; ++f) {
        int lowest = 0;
        for (int v = 1; v < other.vertexCount; ++v)
            lowest = products[f][v] < products[f][lowest] ? v : lowest;
        const Vec3& n = own.normals[f];
        const double height = Dot(n, own.vertices[own.on[f]]) - products[f][lowest];
        if (!nearest.Look(kind, f, lowest, kind == Kind::kFaceOfFirst ? n : -n, height))
            return false;
    }
    return true;
}

/// How the arcs of two edges on the sphere of directions lie to each other: they cross, so that the
/// edges span a face of the difference, if all four products have one sign (Dirk Gregorius, "The
/// Separating Axis Test between Convex Polyhedra", 2013). The sign with which the cross product of
/// the edges points outwards, or 0.
double CrossingSign(double p, double q, double r, double s) {
    if (p <= 0 && q <= 0 && r <= 0 && s <= 0)
        return 1;
    return p >= 0 && q >= 0 && r >= 0 && s >= 0 ? -1 : 0;
}

bool AreParallel(const Vec3& cross, const Vec3& p, const Vec3& q) {
    return !(LengthSquared(cross) > kBoxParallel * LengthSquared(p) * LengthSquared(q));
}

Vec3 Along(const SmallHull& hull, const HullEdge& edge) {
    return hull.vertices[edge.to] - hull.vertices[edge.from];
}

bool LookAtEdges(const SmallHull& a, const SmallHull& b, const Products& ofA, const Products& ofB,
                 NearestFace& nearest) {
    double alongB[6][4];  // the normals of a times the edges of b
    for (int j = 0; j < b.edgeCount; ++j) {
        for (int f = 0; f < a.faceCount; ++f)
            alongB[j][f] = ofA[f][b.edges[j].to] - ofA[f][b.edges[j].from];
    }
    for (int i = 0; i < a.edgeCount; ++i) {
        const HullEdge& p = a.edges[i];
        double alongA[4];
        for (int f = 0; f < b.faceCount; ++f)
            alongA[f] = ofB[f][p.to] - ofB[f][p.from];
        for (int j = 0; j < b.edgeCount; ++j) {
            const HullEdge& q = b.edges[j];
            const double sign = CrossingSign(alongB[j][p.left], -alongB[j][p.right], alongA[q.left],
                                             -alongA[q.right]);
            if (sign == 0)
                continue;
            const Vec3 alongP = Along(a, p), alongQ = Along(b, q);
            const Vec3 normal = Cross(alongP, alongQ) * sign;
            if (AreParallel(normal, alongP, alongQ))
                continue;
            const double height = Dot(normal, a.vertices[p.from] - b.vertices[q.from]);
            if (!nearest.Look(Kind::kEdges, i, j, normal, height))
                return false;
        }
    }
    return true;
}

double LowestAlong(const SmallHull& hull, const Vec3& n) {
    double lowest = Dot(n, hull.vertices[0]);
    for (int i = 1; i < hull.vertexCount; ++i)
        lowest = std::min(lowest, Dot(n, hull.vertices[i]));
    return lowest;
}

/// Whether a point of a face's plane lies in the face.
bool IsInFace(const SmallHull& hull, int face, const Vec3& point) {
    const Vec3& normal = hull.normals[face];
    const double least = -kFootOutside * LengthSquared(normal);
    Vec3 corners[3];
    int count = 0;
    for (int i = 0; i < hull.vertexCount; ++i) {
        if (hull.vertexCount == 3 || i != face)
            corners[count++] = hull.vertices[i];
    }
    const double turn =
        Dot(Cross(corners[1] - corners[0], corners[2] - corners[0]), normal) < 0 ? -1 : 1;
    for (int i = 0; i < 3; ++i) {
        const Vec3& from = corners[i];
        const Vec3& to = corners[i < 2 ? i + 1 : 0];
        if (!(turn * Dot(Cross(to - from, point - from), normal) >= least))
            return false;
    }
    return true;
}

/// The points of two edges, from `p` along `alongP` and from `q` along `alongQ`, that are `axis`
/// times the depth apart. False if they are not on the edges.
bool PointsOfEdges(const Vec3& p, const Vec3& alongP, const Vec3& q, const Vec3& alongQ,
                   DepthResult& result) {
    const Vec3 normal = Cross(alongP, alongQ);
    const double squared = LengthSquared(normal);
    const double s = Dot(Cross(q - p, alongQ), normal) / squared;
    const double t = Dot(Cross(q - p, alongP), normal) / squared;
    if (!(std::min(s, t) >= -kFootOutside && std::max(s, t) <= 1 + kFootOutside))
        return false;
    result.a = p + alongP * s;
    result.b = q + alongQ * t;
    return true;
}

bool FindPoints(const SmallHull& a, const SmallHull& b, const NearestFace& nearest,
                DepthResult& result) {
    const Vec3 foot = result.axis * result.depth;
    if (nearest.TheKind() == Kind::kFaceOfFirst) {
        result.b = b.vertices[nearest.J()];
        result.a = result.b + foot;
        return IsInFace(a, nearest.I(), result.a);
    }
    if (nearest.TheKind() == Kind::kFaceOfSecond) {
        result.a = a.vertices[nearest.J()];
        result.b = result.a - foot;
        return IsInFace(b, nearest.I(), result.b);
    }
    const HullEdge& p = a.edges[nearest.I()];
    const HullEdge& q = b.edges[nearest.J()];
    return PointsOfEdges(a.vertices[p.from], Along(a, p), b.vertices[q.from], Along(b, q), result);
}

/// A box in the world by its half edges, and the normals of its sides.
struct WorldBox {
    Vec3 centre;
    Vec3 edges[3];
    Vec3 normals[3];
    double squaredSize = 0;

    explicit WorldBox(const Core& core) : centre(core.centre) {
        for (int i = 0; i < 3; ++i) {
            edges[i] = core.linear.col[i] * core.half[i];
            squaredSize += LengthSquared(edges[i]);
        }
        for (int i = 0; i < 3; ++i)
            normals[i] = Cross(edges[(i + 1) % 3], edges[(i + 2) % 3]);
    }
    double Reach(const Vec3& n) const {
        return std::fabs(Dot(n, edges[0])) + std::fabs(Dot(n, edges[1])) +
               std::fabs(Dot(n, edges[2]));
    }
    /// The middle of what reaches furthest along n; the edge `without`, if it is one, left out.
    Vec3 Furthest(const Vec3& n, int without) const {
        Vec3 point = centre;
        for (int i = 0; i < 3; ++i) {
            if (i != without)
                point += Dot(n, edges[i]) < 0 ? -edges[i] : edges[i];
        }
        return point;
    }
};

/// The sides of a box: i is that of the side, j the vertex of the hull.
bool LookAtSides(const WorldBox& box, const SmallHull& hull, double (&products)[3][4],
                 NearestFace& nearest) {
    for (int i = 0; i < 3; ++i) {
        const Vec3& n = box.normals[i];
        int lowest = 0, highest = 0;
        for (int v = 0; v < hull.vertexCount; ++v) {
            products[i][v] = Dot(n, hull.vertices[v] - box.centre);
            lowest = products[i][v] < products[i][lowest] ? v : lowest;
            highest = products[i][v] > products[i][highest] ? v : highest;
        }
        if (AreParallel(n, box.edges[(i + 1) % 3], box.edges[(i + 2) % 3]))
            continue;
        const double reach = std::fabs(Dot(n, box.edges[i]));
        if (!nearest.Look(Kind::kFaceOfFirst, i, lowest, n, reach - products[i][lowest]) ||
            !nearest.Look(Kind::kFaceOfFirst, i, highest, -n, reach + products[i][highest]))
            return false;
    }
    return true;
}

bool LookAtFacesAndEdges(const WorldBox& box, const SmallHull& hull, const double (&products)[3][4],
                         NearestFace& nearest) {
    double along[3][4];  // the edges of the box times the normals of the hull
    for (int f = 0; f < hull.faceCount; ++f) {
        const Vec3& n = hull.normals[f];
        double height = Dot(n, hull.vertices[hull.on[f]] - box.centre);
        for (int k = 0; k < 3; ++k) {
            along[k][f] = Dot(n, box.edges[k]);
            height += std::fabs(along[k][f]);
        }
        if (!nearest.Look(Kind::kFaceOfSecond, f, 0, -n, height))
            return false;
    }
    for (int j = 0; j < hull.edgeCount; ++j) {
        const HullEdge& q = hull.edges[j];
        const Vec3 alongQ = Along(hull, q);
        double beside[3];
        for (int i = 0; i < 3; ++i)
            beside[i] = std::fabs(products[i][q.to] - products[i][q.from]);
        for (int k = 0; k < 3; ++k) {
            const double left = along[k][q.left], right = -along[k][q.right];
            const double sign = CrossingSign(left, right, left, right);
            if (sign == 0)
                continue;
            const Vec3 normal = Cross(box.edges[k], alongQ) * sign;
            if (AreParallel(normal, box.edges[k], alongQ))
                continue;
            const double height = Dot(normal, box.centre - hull.vertices[q.from]) +
                                  beside[(k + 1) % 3] + beside[(k + 2) % 3];
            if (!nearest.Look(Kind::kEdges, k, j, normal, height))
                return false;
        }
    }
    return true;
}

bool FindPoints(const WorldBox& box, const SmallHull& hull, const NearestFace& nearest,
                DepthResult& result) {
    const Vec3 foot = result.axis * result.depth;
    if (nearest.TheKind() == Kind::kFaceOfFirst) {
        const int side = nearest.I();
        const Vec3& p = box.edges[(side + 1) % 3];
        const Vec3& q = box.edges[(side + 2) % 3];
        const Vec3& n = box.normals[side];
        result.b = hull.vertices[nearest.J()];
        result.a = result.b + foot;
        const Vec3 r = result.a - box.centre -
                       (Dot(result.axis, box.edges[side]) < 0 ? -box.edges[side] : box.edges[side]);
        const double bound = (1 + kFootOutside) * LengthSquared(n);
        return std::fabs(Dot(Cross(r, q), n)) <= bound && std::fabs(Dot(Cross(p, r), n)) <= bound;
    }
    if (nearest.TheKind() == Kind::kFaceOfSecond) {
        result.a = box.Furthest(result.axis, -1);
        result.b = result.a - foot;
        return IsInFace(hull, nearest.I(), result.b);
    }
    const Vec3& edge = box.edges[nearest.I()];
    const HullEdge& q = hull.edges[nearest.J()];
    return PointsOfEdges(box.Furthest(result.axis, nearest.I()) - edge, edge * 2,
                         hull.vertices[q.from], Along(hull, q), result);
}

}  // namespace

BoxAnswer FindHullDepth(const Core& a, const Core& b, DepthResult& result) {
    SmallHull hullA, hullB;
    if (!hullA.Set(a) || !hullB.Set(b))
        return BoxAnswer::kUnknown;
    const double squared =
        hullA.squaredSize + hullB.squaredSize + LengthSquared(a.centre - b.centre);
    if (!(std::min(hullA.squaredSize, hullB.squaredSize) > kLeastHull * squared))
        return BoxAnswer::kUnknown;
    NearestFace nearest(squared);
    Products ofA, ofB;
    SetProducts(hullA, hullB, ofA);
    if (!LookAtFaces(hullA, hullB, ofA, Kind::kFaceOfFirst, nearest))
        return BoxAnswer::kApart;
    SetProducts(hullB, hullA, ofB);
    if (!LookAtFaces(hullB, hullA, ofB, Kind::kFaceOfSecond, nearest) ||
        !LookAtEdges(hullA, hullB, ofA, ofB, nearest))
        return BoxAnswer::kApart;
    if (!nearest.IsTouch())
        return BoxAnswer::kUnknown;
    result.axis = nearest.Unit();
    result.depth = -LowestAlong(hullA, -result.axis) - LowestAlong(hullB, result.axis);
    if (!FindPoints(hullA, hullB, nearest, result))
        FindDepthPoints(a, b, result);
    return BoxAnswer::kTouch;
}

BoxAnswer FindBoxHullDepth(const Core& box, const Core& hull, DepthResult& result) {
    SmallHull small;
    if (!small.Set(hull))
        return BoxAnswer::kUnknown;
    const WorldBox world(box);
    const double squared =
        world.squaredSize + small.squaredSize + LengthSquared(box.centre - hull.centre);
    if (!(small.squaredSize > kLeastHull * squared))
        return BoxAnswer::kUnknown;
    NearestFace nearest(squared);
    double products[3][4];
    if (!LookAtSides(world, small, products, nearest) ||
        !LookAtFacesAndEdges(world, small, products, nearest))
        return BoxAnswer::kApart;
    if (!nearest.IsTouch())
        return BoxAnswer::kUnknown;
    result.axis = nearest.Unit();
    result.depth =
        Dot(result.axis, box.centre) + world.Reach(result.axis) - LowestAlong(small, result.axis);
    if (!FindPoints(world, small, nearest, result))
        FindDepthPoints(box, hull, result);
    return BoxAnswer::kTouch;
}

}  // namespace solid
