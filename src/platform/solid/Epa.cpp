#include "platform/solid/Epa.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/solid/CurvedDepth.h"
#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

struct Face {
    std::int32_t vertex[3];
    std::int32_t neighbour[3];  ///< across the edge from vertex[i] to vertex[(i + 1) % 3]
    std::int32_t edge[3];       ///< which edge of that neighbour it is
    bool alive;
    Vec3 normal;    ///< unit, outwards
    double offset;  ///< of the plane along the normal; below 0 if the origin is outside
};

constexpr int Following(int edge) {
    return edge < 2 ? edge + 1 : 0;
}

constexpr int Before(int edge) {
    return edge > 0 ? edge - 1 : 2;
}

/// A face of the border of the hull, and the offset it was entered with.
struct Candidate {
    double offset;
    std::int32_t face;
    /// For a heap whose top is the least offset; equal ones come out in the order of their making.
    bool operator<(const Candidate& other) const {
        return offset != other.offset ? offset > other.offset : face > other.face;
    }
};

/// An edge of a face.
struct FaceEdge {
    std::int32_t face, edge;
};

/// An edge of the faces that a new point sees: the edge of the face beyond, and its vertices as
/// they are passed by who goes round those faces to the left.
struct RimEdge {
    std::int32_t face, edge;
    std::int32_t from, to;
};

/// The lists of an expansion. They are kept from query to query of a thread, since making them anew
/// takes longer than a query does.
struct Workspace {
    std::vector<SupportPoint> points;
    std::vector<std::int32_t> rimOf;  ///< by point: the last rim that it was on, as its apex
    std::vector<Face> faces;          ///< the first `faceCount` of them
    std::size_t faceCount = 0;
    std::vector<Candidate> heap;
    std::vector<std::int32_t> visible;
    std::vector<FaceEdge> open;
    std::vector<RimEdge> rim;
    LocalDepth locals[kMaxLocalDepths];

    void Clear() {
        points.clear();
        rimOf.clear();
        faceCount = 0;
        heap.clear();
    }
    Face& NewFace() {
        if (faceCount == faces.size())
            faces.resize(2 * faceCount + 64);
        return faces[faceCount++];
    }
};

class Expansion {
  public:
    Expansion(const Core& a, const Core& b, Workspace& space)
        : m_a(a), m_b(b), m_space(space), m_curved(IsCurved(a) || IsCurved(b)) {
        space.Clear();
    }
    DepthResult Run(const Simplex* start);

  private:
    SupportPoint Probe(const Vec3& unit);
    bool StartFrom(const Simplex& simplex);
    std::optional<DepthResult> MakeTetrahedron();
    DepthResult Flat(const Vec3& unit, const SupportPoint& anyPoint);
    bool AddTetrahedron(const SupportPoint* corners);
    std::int32_t AddPoint(const SupportPoint& point);
    Face& FaceAt(std::int32_t index) { return m_space.faces[static_cast<std::size_t>(index)]; }
    const Vec3& W(std::int32_t point) const {
        return m_space.points[static_cast<std::size_t>(point)].w;
    }
    bool AddFace(std::int32_t i, std::int32_t j, std::int32_t k, const Vec3& toI, const Vec3& toJ);
    void Join(FaceEdge one, FaceEdge other);
    bool Expand(std::int32_t face, const SupportPoint& point);
    bool CollectRim(std::int32_t face, std::int32_t apex);
    DepthResult Finish(const Vec3& axis, double height);
    void Take(const LocalDepth& local);
    void Refine(std::int32_t face, const Vec3& normal, double offset, double height);
    void Insert(const SupportPoint& point);
    bool IsWithin(std::int32_t face, const LocalDepth& local, double open);
    bool IsSettled(std::int32_t face, double open);

    const Core& m_a;
    const Core& m_b;
    Workspace& m_space;
    double m_scale = 0;
    double m_best = Aabb::kInfinity;  ///< least height of a support plane so far: a certain depth
    Vec3 m_bestAxis{1, 0, 0};
    bool m_curved;
    int m_localCount = 0;
    int m_refined = 0;     ///< how often a direction was
    int m_bestLocal = -1;  ///< that has the best height, if one has
};

/// The support point along a unit direction; each is a depth that would part the two.
SupportPoint Expansion::Probe(const Vec3& unit) {
    const SupportPoint p = SupportDifference(m_a, m_b, unit);
    m_scale = std::max({m_scale, MaxNorm(p.w), MaxNorm(p.a - m_a.centre)});
    const double height = Dot(p.w, unit);
    if (height < m_best) {
        m_best = height;
        m_bestAxis = unit;
        m_bestLocal = -1;
    }
    return p;
}

/// The difference body is flat across `unit`: no depth but rounding.
DepthResult Expansion::Flat(const Vec3& unit, const SupportPoint& anyPoint) {
    DepthResult result;
    result.axis = unit;
    result.depth = std::max(0.0, Dot(anyPoint.w, unit));
    FindDepthPoints(m_a, m_b, result);
    return result;
}

/// Takes over a simplex that holds the origin. False if it is no tetrahedron, or nearly flat.
bool Expansion::StartFrom(const Simplex& simplex) {
    if (simplex.count != 4)
        return false;
    const SupportPoint* p = simplex.points;
    const Vec3 edge[3] = {p[1].w - p[0].w, p[2].w - p[0].w, p[3].w - p[0].w};
    const double volume = Dot(Cross(edge[0], edge[1]), edge[2]);
    const double longest =
        std::max({LengthSquared(edge[0]), LengthSquared(edge[1]), LengthSquared(edge[2])});
    if (!(volume * volume > kStartVolume * kStartVolume * longest * longest * longest))
        return false;
    for (int i = 0; i < 4; ++i)
        m_scale = std::max({m_scale, MaxNorm(p[i].w), MaxNorm(p[i].a - m_a.centre)});
    SupportPoint corners[4] = {p[0], p[1], p[2], p[3]};
    if (volume > 0)
        std::swap(corners[1], corners[2]);
    return AddTetrahedron(corners);
}

/// Builds a tetrahedron with volume from extreme points, or finds that there is none.
std::optional<DepthResult> Expansion::MakeTetrahedron() {
    static constexpr Vec3 kAxes[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    SupportPoint ends[2];
    double longest = -1;
    for (const Vec3& axis : kAxes) {
        const SupportPoint up = Probe(axis), down = Probe(-axis);
        const double length = LengthSquared(up.w - down.w);
        if (length > longest) {
            longest = length;
            ends[0] = up;
            ends[1] = down;
        }
    }
    const double extent = std::sqrt(longest);
    const double flat = kFlat * std::max(extent, kTouch * m_scale);
    if (!(extent > 0))
        return Flat({1, 0, 0}, ends[0]);

    const Vec3 line = (ends[1].w - ends[0].w) * (1 / extent);
    const Vec3 across = Perpendicular(line);
    const Vec3 across2 = Cross(line, across);
    SupportPoint third;
    double furthest = -1;
    Vec3 plane;
    for (const Vec3& axis : {across, -across, across2, -across2}) {
        const SupportPoint p = Probe(axis);
        const Vec3 normal = Cross(line, p.w - ends[0].w);
        const double distance = Length(normal);
        if (distance > furthest) {
            furthest = distance;
            third = p;
            plane = normal;
        }
    }
    if (!(furthest > flat))
        return Flat(across, third);

    plane *= 1 / furthest;
    const SupportPoint above = Probe(plane), below = Probe(-plane);
    const double up = Dot(above.w - ends[0].w, plane);
    const double down = -Dot(below.w - ends[0].w, plane);
    if (!(std::max(up, down) > flat))
        return Flat(plane, above);

    SupportPoint corners[4] = {ends[0], ends[1], third, up >= down ? above : below};
    if (up >= down)
        std::swap(corners[1], corners[2]);
    if (!AddTetrahedron(corners))
        return Flat(plane, above);
    return std::nullopt;
}

/// Of four points of which the last lies below the first three. False if a face has no area.
bool Expansion::AddTetrahedron(const SupportPoint* corners) {
    for (int i = 0; i < 4; ++i)
        AddPoint(corners[i]);
    static constexpr std::int32_t kCorners[4][3] = {{0, 1, 2}, {0, 3, 1}, {1, 3, 2}, {2, 3, 0}};
    for (const auto& c : kCorners) {
        const Vec3& last = corners[c[2]].w;
        if (!AddFace(c[0], c[1], c[2], corners[c[0]].w - last, corners[c[1]].w - last)) {
            m_space.Clear();
            return false;
        }
    }
    static constexpr FaceEdge kEdges[6][2] = {{{0, 0}, {1, 2}}, {{0, 1}, {2, 2}}, {{0, 2}, {3, 2}},
                                              {{1, 0}, {3, 1}}, {{1, 1}, {2, 0}}, {{2, 1}, {3, 0}}};
    for (const auto& edge : kEdges)
        Join(edge[0], edge[1]);
    return true;
}

std::int32_t Expansion::AddPoint(const SupportPoint& point) {
    m_space.points.push_back(point);
    m_space.rimOf.push_back(-1);
    return static_cast<std::int32_t>(m_space.points.size()) - 1;
}

/// Adds a face without neighbours to the list, unless its corners stand in a line. `toI` and `toJ`
/// lead from the corner k to the two others.
bool Expansion::AddFace(std::int32_t i, std::int32_t j, std::int32_t k, const Vec3& toI,
                        const Vec3& toJ) {
    const Vec3 normal = Cross(toI, toJ);
    const double squared = LengthSquared(normal);
    const double longest = std::max(LengthSquared(toI), LengthSquared(toJ));
    if (!(squared > kFaceArea * kFaceArea * longest * longest))
        return false;
    const Vec3 unit = normal * (1 / std::sqrt(squared));
    // The mean over the corners balances the rounding.
    const double offset = Dot(W(k), unit) + Dot(toI + toJ, unit) * (1.0 / 3);
    const auto index = static_cast<std::int32_t>(m_space.faceCount);
    Face& face = m_space.NewFace();
    face.vertex[0] = i;
    face.vertex[1] = j;
    face.vertex[2] = k;
    face.alive = true;
    face.normal = unit;
    face.offset = offset;
    // A face above the best depth so far bounds nothing any more.
    if (offset < m_best) {
        m_space.heap.push_back({offset, index});
        std::push_heap(m_space.heap.begin(), m_space.heap.end());
    }
    return true;
}

/// Makes two faces neighbours across an edge of each.
void Expansion::Join(FaceEdge one, FaceEdge other) {
    Face& f = FaceAt(one.face);
    Face& g = FaceAt(other.face);
    f.neighbour[one.edge] = other.face;
    f.edge[one.edge] = other.edge;
    g.neighbour[other.edge] = one.face;
    g.edge[other.edge] = one.edge;
}

/// Gathers the faces that the point sees, from `face` on, and the edges around them, which belong
/// to faces that it does not see, in the order of one ring. False when rounding has left no simple
/// ring.
bool Expansion::CollectRim(std::int32_t face, std::int32_t apex) {
    const double eps = kDepthFloor * m_scale;
    const Vec3 point = W(apex);
    auto& visible = m_space.visible;
    auto& open = m_space.open;
    auto& rim = m_space.rim;
    visible.clear();
    open.clear();
    rim.clear();
    const auto enter = [&](const Face& seen, int first, int count) {
        for (int e = first; count > 0; e = e > 0 ? e - 1 : 2, --count)
            open.push_back({seen.neighbour[e], seen.edge[e]});
    };
    FaceAt(face).alive = false;
    visible.push_back(face);
    enter(FaceAt(face), 2, 3);
    while (!open.empty()) {
        const FaceEdge next = open.back();
        open.pop_back();
        Face& other = FaceAt(next.face);
        if (!other.alive)
            continue;
        if (Dot(other.normal, point) - other.offset > eps) {
            other.alive = false;
            visible.push_back(next.face);
            // The two other edges, the one after `next.edge` on top.
            enter(other, next.edge > 0 ? next.edge - 1 : 2, 2);
            continue;
        }
        // One simple ring: each edge starts where the one before ends, and no vertex comes twice.
        const std::int32_t from = other.vertex[Following(next.edge)];
        std::int32_t& seenBy = m_space.rimOf[static_cast<std::size_t>(from)];
        if (seenBy == apex || (!rim.empty() && rim.back().to != from))
            return false;
        seenBy = apex;
        rim.push_back({next.face, next.edge, from, other.vertex[next.edge]});
    }
    return rim.size() >= 3 && rim.back().to == rim.front().from;
}

/// Adds a point above `face`. False, and nothing changed, when rounding stands in the way.
bool Expansion::Expand(std::int32_t face, const SupportPoint& point) {
    const auto before = static_cast<std::int32_t>(m_space.faceCount);
    const std::int32_t apex = AddPoint(point);
    bool good = CollectRim(face, apex);
    const Vec3 top = point.w;
    Vec3 toFrom = good ? W(m_space.rim.front().from) - top : Vec3{};
    for (std::size_t i = 0; good && i < m_space.rim.size(); ++i) {
        const RimEdge& edge = m_space.rim[i];
        const Vec3 to = W(edge.to) - top;
        good = AddFace(edge.from, edge.to, apex, toFrom, to);
        toFrom = to;
    }
    if (!good) {
        for (const std::int32_t seen : m_space.visible)
            FaceAt(seen).alive = true;
        m_space.faceCount = static_cast<std::size_t>(before);
        std::erase_if(m_space.heap, [&](const Candidate& c) { return c.face >= before; });
        std::make_heap(m_space.heap.begin(), m_space.heap.end());
        // The number is not used again: it marks vertices of the rim.
        return false;
    }
    const auto count = static_cast<std::int32_t>(m_space.rim.size());
    for (std::int32_t i = 0; i < count; ++i) {
        const RimEdge& edge = m_space.rim[static_cast<std::size_t>(i)];
        Join({before + i, 0}, {edge.face, edge.edge});
        Join({before + i, 1}, {before + (i + 1 < count ? i + 1 : 0), 2});
    }
    return true;
}

/// The result along an axis whose support plane has that height. The points come from where the
/// axis leaves the hull, which is as high but for what is left open.
DepthResult Expansion::Finish(const Vec3& axis, double height) {
    if (m_bestLocal >= 0)
        return m_space.locals[m_bestLocal].deep;
    DepthResult result;
    result.depth = std::max(height, 0.0);
    result.axis = axis;
    const Face* leaving = nullptr;
    double exit = Aabb::kInfinity;
    for (std::size_t i = 0; i < m_space.faceCount; ++i) {
        const Face& face = m_space.faces[i];
        if (!face.alive)
            continue;
        const double along = Dot(face.normal, axis);
        if (along > 0 && face.offset < exit * along) {
            exit = face.offset / along;
            leaving = &face;
        }
    }
    if (leaving == nullptr || !(std::fabs(exit - result.depth) <= kPointGap * m_scale)) {
        FindDepthPoints(m_a, m_b, result);
        return result;
    }
    const SupportPoint* corner[3];
    for (int i = 0; i < 3; ++i)
        corner[i] = &m_space.points[static_cast<std::size_t>(leaving->vertex[i])];
    const Vec3 foot = axis * exit;
    double weight[3];
    double sum = 0;
    for (int i = 0; i < 3; ++i) {
        const Vec3& from = corner[(i + 1) % 3]->w;
        const Vec3 side = corner[(i + 2) % 3]->w - from;
        weight[i] = std::max(0.0, Dot(Cross(side, foot - from), leaving->normal));
        sum += weight[i];
    }
    Vec3 a, b;
    for (int i = 0; i < 3; ++i) {
        a += corner[i]->a * (weight[i] / sum);
        b += corner[i]->b * (weight[i] / sum);
    }
    if (!(Length(a - b - axis * result.depth) <= kPointGap * m_scale)) {
        FindDepthPoints(m_a, m_b, result);
        return result;
    }
    const Vec3 middle = (a + b) * 0.5;
    result.a = middle + result.axis * (0.5 * result.depth);
    result.b = middle - result.axis * (0.5 * result.depth);
    return result;
}

void Expansion::Take(const LocalDepth& local) {
    if (m_localCount == kMaxLocalDepths)
        return;
    m_space.locals[m_localCount] = local;
    if (local.deep.depth <= m_best) {
        m_best = local.deep.depth;
        m_bestAxis = local.deep.axis;
        m_bestLocal = m_localCount;
    }
    ++m_localCount;
}

/// Looks for the local depth near a face's normal, and makes its points vertices.
void Expansion::Refine(std::int32_t face, const Vec3& normal, double offset, double height) {
    if (m_refined == kMaxLocalDepths || height > (1 + kRefineAbove) * m_best ||
        height - offset > kRefineBelow * height)
        return;
    for (int i = 0; i < m_localCount; ++i) {
        if (Dot(normal, m_space.locals[i].deep.axis) > kSameLocal)
            return;
    }
    ++m_refined;
    SupportPoint corners[3];
    for (int i = 0; i < 3; ++i)
        corners[i] = m_space.points[static_cast<std::size_t>(FaceAt(face).vertex[i])];
    LocalDepth local;
    if (!RefineDepth(m_a, m_b, normal, corners, local))
        return;
    // Another piece of the border may reach further.
    const SupportPoint point = SupportDifference(m_a, m_b, local.deep.axis);
    if (Dot(point.w, local.deep.axis) > local.deep.depth + kDepthFloor * m_scale)
        return;
    Take(local);
    for (int i = 0; i < local.count; ++i)
        Insert(local.points[i]);
}

/// Makes a point a vertex if it lies outside the hull.
void Expansion::Insert(const SupportPoint& point) {
    for (auto face = static_cast<std::int32_t>(m_space.faceCount) - 1; face >= 0; --face) {
        const Face& f = FaceAt(face);
        if (f.alive && Dot(f.normal, point.w) - f.offset > kDepthFloor * m_scale) {
            Expand(face, point);
            return;
        }
    }
}

/// Whether a cone about a local depth holds all better directions that belong to a face. Those in
/// which a vertex is the furthest of the hull are a spherical polygon; its corners are the normals
/// of the faces about the vertex. Those of them with a height of at least `open` are a disc. What
/// is left of the polygon lies in the hull of its low corners and of the points where the sides
/// between a low and a high one reach that height: so only these are looked at, and only those next
/// to the face, for others have low corners of their own.
bool Expansion::IsWithin(std::int32_t face, const LocalDepth& local, double open) {
    const double cosine = 1 / std::sqrt(1 + local.tangent * local.tangent);
    const Vec3& axis = local.deep.axis;
    if (!(Dot(FaceAt(face).normal, axis) >= cosine))
        return false;
    for (int corner = 0; corner < 3; ++corner) {
        for (const bool forth : {true, false}) {
            FaceEdge low{face, forth ? corner : Before(corner)};
            for (;;) {
                const Face& current = FaceAt(low.face);
                const FaceEdge beyond{current.neighbour[low.edge], current.edge[low.edge]};
                const Face& next = FaceAt(beyond.face);
                if (next.offset >= open) {
                    const double part = (open - current.offset) / (next.offset - current.offset);
                    const Vec3 end = current.normal + (next.normal - current.normal) * part;
                    if (!(Dot(end, axis) >= cosine * Length(end)))
                        return false;
                    break;
                }
                if (beyond.face == face)
                    break;
                if (!(Dot(next.normal, axis) >= cosine))
                    return false;
                low = {beyond.face, forth ? Following(beyond.edge) : Before(beyond.edge)};
            }
        }
    }
    return true;
}

/// Whether a local depth tells that no direction that belongs to a face is better.
bool Expansion::IsSettled(std::int32_t face, double open) {
    for (int i = 0; i < m_localCount; ++i) {
        if (IsWithin(face, m_space.locals[i], open))
            return true;
    }
    return false;
}

DepthResult Expansion::Run(const Simplex* start) {
    if (start == nullptr || !StartFrom(*start)) {
        if (const auto flat = MakeTetrahedron())
            return *flat;
    }
    if (m_curved) {
        LocalDepth ends[4];
        const int count = FindEndDepths(m_a, m_b, ends);
        for (int i = 0; i < count; ++i)
            Take(ends[i]);
    }
    auto& heap = m_space.heap;
    double gap = kDepthGap;
    for (int step = 0; step < kMaxDepthSteps && !heap.empty();) {
        const Candidate candidate = heap.front();
        std::pop_heap(heap.begin(), heap.end());
        heap.pop_back();
        if (!FaceAt(candidate.face).alive)
            continue;
        ++step;
        const Vec3 normal = FaceAt(candidate.face).normal;
        const double offset = candidate.offset;
        if (m_curved && step > kPatientSteps)
            gap = std::min(gap * kGapGrowth, kWidestGap);
        const double enough = gap * m_best + kDepthFloor * m_scale;
        if (offset >= m_best - enough)
            break;  // no direction can do better than the best one so far
        if (IsSettled(candidate.face, m_best - enough))
            continue;
        const SupportPoint point = Probe(normal);
        const double height = Dot(point.w, normal);
        if (height - offset <= gap * height + kDepthFloor * m_scale) {
            if (height <= m_best + enough)
                return m_bestLocal < 0 ? Finish(normal, height) : Finish(m_bestAxis, m_best);
            continue;
        }
        if (Expand(candidate.face, point) && m_curved)
            Refine(candidate.face, normal, offset, height);
    }
    return Finish(m_bestAxis, m_best);
}

}  // namespace

void FindDepthPoints(const Core& a, const Core& b, DepthResult& result) {
    // Moved apart by the depth the two just touch, and where they do is a point of both.
    Core moved = b;
    moved.centre += result.axis * result.depth;
    const GjkResult touch = RunGjk(a, moved, GjkQuestion::kCores);
    const Vec3 common = (touch.a + touch.b) * 0.5;
    result.a = common;
    result.b = common - result.axis * result.depth;
}

DepthResult ExpandPolytope(const Core& a, const Core& b, const Simplex* start) {
    DepthResult result;
    if (FindParallelDepth(a, b, result))
        return result;
    thread_local Workspace space;
    return Expansion(a, b, space).Run(start);
}

}  // namespace solid
