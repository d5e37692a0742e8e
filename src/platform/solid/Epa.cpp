#include "platform/solid/Epa.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

struct Face {
    std::int32_t vertex[3];
    std::int32_t neighbour[3];  ///< across the edge from vertex[i] to vertex[(i + 1) % 3]
    Vec3 normal;                ///< unit, outwards
    double offset;              ///< of the plane along the normal; below 0 if the origin is outside
    bool alive = true;
};

/// A face of the border of the hull, and the offset it was entered with.
struct Candidate {
    double offset;
    std::int32_t face;
    /// For a heap whose top is the least offset; equal ones come out in the order of their making.
    bool operator<(const Candidate& other) const {
        return offset != other.offset ? offset > other.offset : face > other.face;
    }
};

/// A border edge of the faces that a new point sees.
struct HorizonEdge {
    std::int32_t from, to;
    std::int32_t outside;  ///< the face beyond, which does not see the point
};

/// The lists of an expansion. They are kept from query to query of a thread, since making them anew
/// takes longer than a query does.
struct Workspace {
    std::vector<SupportPoint> points;
    std::vector<Face> faces;
    std::vector<Candidate> heap;
    std::vector<std::int32_t> visible;
    std::vector<HorizonEdge> horizon;
    std::vector<std::int32_t> faceFrom;  ///< by vertex: the new face whose rim edge starts there

    void Clear() {
        points.clear();
        faces.clear();
        heap.clear();
    }
};

class Expansion {
  public:
    Expansion(const Core& a, const Core& b, Workspace& space)
        : m_a(a),
          m_b(b),
          m_points(space.points),
          m_faces(space.faces),
          m_heap(space.heap),
          m_visible(space.visible),
          m_horizon(space.horizon),
          m_faceFrom(space.faceFrom) {
        space.Clear();
    }
    DepthResult Run();

  private:
    SupportPoint Probe(const Vec3& unit);
    std::optional<DepthResult> MakeTetrahedron();
    DepthResult Flat(const Vec3& unit, const SupportPoint& anyPoint);
    int AddFace(std::int32_t i, std::int32_t j, std::int32_t k);
    bool Expand(std::int32_t face, const SupportPoint& point);
    bool CollectHorizon(std::int32_t face, const Vec3& point);
    DepthResult Finish(const Face& face, double height);

    const Core& m_a;
    const Core& m_b;
    double m_scale = 0;
    double m_best = Aabb::kInfinity;  ///< least height of a support plane so far: a certain depth
    Vec3 m_bestAxis{1, 0, 0};
    std::vector<SupportPoint>& m_points;
    std::vector<Face>& m_faces;
    std::vector<Candidate>& m_heap;
    std::vector<std::int32_t>& m_visible;
    std::vector<HorizonEdge>& m_horizon;
    std::vector<std::int32_t>& m_faceFrom;
};

/// The support point along a unit direction; each is a depth that would part the two.
SupportPoint Expansion::Probe(const Vec3& unit) {
    const SupportPoint p = SupportDifference(m_a, m_b, unit);
    m_scale = std::max({m_scale, MaxNorm(p.w), MaxNorm(p.a - m_a.centre)});
    const double height = Dot(p.w, unit);
    if (height < m_best) {
        m_best = height;
        m_bestAxis = unit;
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

    m_points.assign({ends[0], ends[1], third, up >= down ? above : below});
    if (up >= down)
        std::swap(m_points[1], m_points[2]);
    static constexpr std::int32_t kCorners[4][3] = {{0, 1, 2}, {0, 3, 1}, {1, 3, 2}, {2, 3, 0}};
    for (const auto& c : kCorners) {
        if (AddFace(c[0], c[1], c[2]) < 0)
            return Flat(plane, above);
    }
    // The faces beyond the edges of each, in the order of its vertices.
    static constexpr std::int32_t kNeighbours[4][3] = {{1, 2, 3}, {3, 2, 0}, {1, 3, 0}, {2, 1, 0}};
    for (int f = 0; f < 4; ++f)
        std::copy_n(kNeighbours[f], 3, m_faces[static_cast<std::size_t>(f)].neighbour);
    return std::nullopt;
}

/// The index of the new face, or -1 if its corners stand in a line.
int Expansion::AddFace(std::int32_t i, std::int32_t j, std::int32_t k) {
    const Vec3& p = m_points[static_cast<std::size_t>(i)].w;
    const Vec3 pq = m_points[static_cast<std::size_t>(j)].w - p;
    const Vec3 pr = m_points[static_cast<std::size_t>(k)].w - p;
    Face face{{i, j, k}, {-1, -1, -1}, Cross(pq, pr), 0, true};
    const double area = Length(face.normal);
    const double longest = std::max(LengthSquared(pq), LengthSquared(pr));
    if (!(area > 1e-15 * longest))
        return -1;
    face.normal *= 1 / area;
    // Of the three corners the one nearest to the foot loses least; the mean balances the rounding.
    face.offset = (Dot(p, face.normal) * 3 + Dot(pq, face.normal) + Dot(pr, face.normal)) / 3;
    m_faces.push_back(face);
    const auto index = static_cast<std::int32_t>(m_faces.size()) - 1;
    // A face above the best depth so far bounds nothing any more.
    if (face.offset < m_best) {
        m_heap.push_back({face.offset, index});
        std::push_heap(m_heap.begin(), m_heap.end());
    }
    return index;
}

/// Gathers the faces that `point` sees, from `face` on, and the edges around them in one ring.
/// False when rounding has left no simple ring.
bool Expansion::CollectHorizon(std::int32_t face, const Vec3& point) {
    const double eps = kDepthFloor * m_scale;
    m_visible.assign(1, face);
    m_horizon.clear();
    m_faces[static_cast<std::size_t>(face)].alive = false;
    for (std::size_t next = 0; next < m_visible.size(); ++next) {
        const Face current = m_faces[static_cast<std::size_t>(m_visible[next])];
        for (int e = 0; e < 3; ++e) {
            Face& other = m_faces[static_cast<std::size_t>(current.neighbour[e])];
            if (!other.alive)
                continue;
            if (Dot(other.normal, point) - other.offset > eps) {
                other.alive = false;
                m_visible.push_back(current.neighbour[e]);
            }
        }
    }
    for (const std::int32_t seen : m_visible) {
        const Face& current = m_faces[static_cast<std::size_t>(seen)];
        for (int e = 0; e < 3; ++e) {
            if (m_faces[static_cast<std::size_t>(current.neighbour[e])].alive)
                m_horizon.push_back(
                    {current.vertex[e], current.vertex[(e + 1) % 3], current.neighbour[e]});
        }
    }
    // One simple ring: each vertex starts one edge, and following the edges visits them all.
    m_faceFrom.assign(m_points.size() + 1, -1);
    for (std::size_t i = 0; i < m_horizon.size(); ++i) {
        std::int32_t& slot = m_faceFrom[static_cast<std::size_t>(m_horizon[i].from)];
        if (slot >= 0)
            return false;
        slot = static_cast<std::int32_t>(i);
    }
    std::size_t visited = 0;
    for (std::int32_t i = 0; visited < m_horizon.size(); ++visited) {
        i = m_faceFrom[static_cast<std::size_t>(m_horizon[static_cast<std::size_t>(i)].to)];
        if (i < 0 || (i == 0 && visited + 1 < m_horizon.size()))
            return false;
    }
    return m_horizon.size() >= 3;
}

/// Adds a point above `face`. False, and nothing changed, when rounding stands in the way.
bool Expansion::Expand(std::int32_t face, const SupportPoint& point) {
    const std::size_t facesBefore = m_faces.size();
    const auto apex = static_cast<std::int32_t>(m_points.size());
    const auto undo = [&] {
        for (const std::int32_t seen : m_visible)
            m_faces[static_cast<std::size_t>(seen)].alive = true;
        m_faces.resize(facesBefore, m_faces.front());
        std::erase_if(m_heap, [&](const Candidate& c) {
            return c.face >= static_cast<std::int32_t>(facesBefore);
        });
        std::make_heap(m_heap.begin(), m_heap.end());
        return false;
    };
    if (!CollectHorizon(face, point.w))
        return undo();
    m_points.push_back(point);
    for (const HorizonEdge& edge : m_horizon) {
        const int added = AddFace(edge.from, edge.to, apex);
        if (added < 0) {
            m_points.pop_back();
            return undo();
        }
        m_faceFrom[static_cast<std::size_t>(edge.from)] = added;
    }
    for (std::size_t i = 0; i < m_horizon.size(); ++i) {
        const HorizonEdge& edge = m_horizon[i];
        const auto index = static_cast<std::int32_t>(facesBefore + i);
        const std::int32_t following = m_faceFrom[static_cast<std::size_t>(edge.to)];
        m_faces[static_cast<std::size_t>(index)].neighbour[0] = edge.outside;
        m_faces[static_cast<std::size_t>(index)].neighbour[1] = following;
        m_faces[static_cast<std::size_t>(following)].neighbour[2] = index;
        Face& outside = m_faces[static_cast<std::size_t>(edge.outside)];
        for (int e = 0; e < 3; ++e) {
            if (outside.vertex[e] == edge.to && outside.vertex[(e + 1) % 3] == edge.from)
                outside.neighbour[e] = index;
        }
    }
    return true;
}

/// The result from the face that holds the foot of the origin; `height` is that of the support
/// plane parallel to it.
DepthResult Expansion::Finish(const Face& face, double height) {
    DepthResult result;
    result.depth = std::max(height, 0.0);
    result.axis = face.normal;
    const SupportPoint* corner[3];
    for (int i = 0; i < 3; ++i)
        corner[i] = &m_points[static_cast<std::size_t>(face.vertex[i])];
    const Vec3 foot = face.normal * face.offset;
    double weight[3];
    double sum = 0, least = Aabb::kInfinity;
    for (int i = 0; i < 3; ++i) {
        const Vec3 side = corner[(i + 2) % 3]->w - corner[(i + 1) % 3]->w;
        weight[i] = Dot(Cross(side, foot - corner[(i + 1) % 3]->w), face.normal);
        sum += weight[i];
        least = std::min(least, weight[i]);
    }
    // A face of the difference that is no triangle stands as several in one plane, and the foot may
    // lie in another of them.
    if (!(least >= -kFootOutside * sum)) {
        FindDepthPoints(m_a, m_b, result);
        return result;
    }
    Vec3 a, b;
    for (int i = 0; i < 3; ++i) {
        a += corner[i]->a * (weight[i] / sum);
        b += corner[i]->b * (weight[i] / sum);
    }
    const Vec3 middle = (a + b) * 0.5;
    result.a = middle + result.axis * (0.5 * result.depth);
    result.b = middle - result.axis * (0.5 * result.depth);
    return result;
}

DepthResult Expansion::Run() {
    if (const auto flat = MakeTetrahedron())
        return *flat;
    for (int step = 0; step < kMaxDepthSteps && !m_heap.empty(); ++step) {
        std::pop_heap(m_heap.begin(), m_heap.end());
        const Candidate candidate = m_heap.back();
        m_heap.pop_back();
        const Face face = m_faces[static_cast<std::size_t>(candidate.face)];
        if (!face.alive) {
            --step;
            continue;
        }
        const double enough = kDepthGap * m_best + kDepthFloor * m_scale;
        if (face.offset >= m_best - enough)
            break;  // no direction can do better than the best one so far
        const SupportPoint point = Probe(face.normal);
        const double height = Dot(point.w, face.normal);
        if (height - face.offset <= kDepthGap * height + kDepthFloor * m_scale) {
            if (height <= m_best + enough)
                return Finish(face, height);
            continue;
        }
        Expand(candidate.face, point);
    }
    DepthResult result;
    result.depth = std::max(m_best, 0.0);
    result.axis = m_bestAxis;
    FindDepthPoints(m_a, m_b, result);
    return result;
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

DepthResult ExpandPolytope(const Core& a, const Core& b) {
    thread_local Workspace space;
    return Expansion(a, b, space).Run();
}

}  // namespace solid
