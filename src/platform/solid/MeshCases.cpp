#include "platform/solid/MeshCases.h"

#include <array>
#include <bit>
#include <optional>
#include <vector>

#include "platform/solid/ConvexPair.h"
#include "platform/solid/Core.h"
#include "platform/solid/MeshFrames.h"
#include "platform/solid/MeshTree.h"
#include "platform/solid/Tolerances.h"
#include "platform/solid/TriangleCases.h"

namespace solid {

namespace {

using Node = MeshTree::Node;
constexpr int kWidth = MeshTree::kWidth;

// ---- Walks -------------------------------------------------------------------------------------

/// What is still to be looked at, last in first out. Walks are rarely deep enough for the heap.
template <class T>
class Stack {
  public:
    bool IsEmpty() const { return m_size == 0; }
    void Push(const T& value) {
        if (m_size < m_near.size()) {
            m_near[m_size] = value;
        } else {
            m_far.push_back(value);
        }
        ++m_size;
    }
    T Pop() {
        if (--m_size < m_near.size())
            return m_near[m_size];
        const T value = m_far.back();
        m_far.pop_back();
        return value;
    }

  private:
    std::size_t m_size = 0;
    std::array<T, 128> m_near;  // not set: most of it is never used
    std::vector<T> m_far;
};

/// A place in a node: a box, and what it stands for.
struct Place {
    std::uint32_t node;
    int place;
};

// ---- Polygons ----------------------------------------------------------------------------------

/// The polygons of a mesh in the world.
class Polygons {
  public:
    Polygons(const Placed& mesh, const Vec3& reference) : m_tree(mesh.shape->Mesh()) {
        const VertexSpan none;
        m_core = MakeCore(mesh, reference, &none);
        m_linear = m_core.linear;
        m_centre = m_core.centre;
        m_closed = !mesh.traits.large && !mesh.traits.small;
    }
    /// Valid until the next one is asked for.
    const Core& At(std::uint32_t index) {
        const int count = m_tree.CornerCount(index);
        Vec3* corners = m_few.data();
        if (count > static_cast<int>(m_few.size())) {
            m_many.resize(static_cast<std::size_t>(count));
            corners = m_many.data();
        }
        Aabb box;
        for (int i = 0; i < count; ++i) {
            corners[i] = m_tree.Corner(index, i);
            box.Include(corners[i]);
        }
        // Iterations start from the centre and are as exact as coordinates about it are small.
        const Vec3 middle = box.Centre();
        for (int i = 0; i < count; ++i)
            corners[i] -= middle;
        m_core.vertices = {corners, count};
        m_core.centre = m_linear * middle + m_centre;
        return m_core;
    }
    /// False if the polygon is no triangle, or of a size that closed forms are not good for.
    bool GetTriangle(std::uint32_t index, Triangle& triangle) const {
        if (m_tree.CornerCount(index) != 3 || !m_closed)
            return false;
        for (int i = 0; i < 3; ++i)
            triangle.corner[i] = m_linear * m_tree.Corner(index, i) + m_centre;
        return true;
    }
    double Radius() const { return m_core.radius; }
    /// How far the polygon reaches along a direction.
    double Reach(std::uint32_t index, const Vec3& direction) const {
        const Vec3 local = m_linear.TransposeTimes(direction);
        double most = -Aabb::kInfinity;
        for (int i = 0; i < m_tree.CornerCount(index); ++i)
            most = std::max(most, Dot(local, m_tree.Corner(index, i)));
        return most + Dot(m_centre, direction);
    }

  private:
    const MeshTree& m_tree;
    Mat3 m_linear;
    Vec3 m_centre;
    Core m_core;
    std::array<Vec3, 4> m_few;
    std::vector<Vec3> m_many;  ///< for a polygon of more corners
    bool m_closed;
};

Triangle Along(const Triangle& triangle, const Mat3& axes, const Vec3& middle) {
    Triangle result;
    for (int i = 0; i < 3; ++i)
        result.corner[i] = axes.TransposeTimes(triangle.corner[i]) - middle;
    return result;
}

// ---- Searches for the nearest ------------------------------------------------------------------

/// The nearest polygon found so far, and a direction along which others are likely to be further.
class Nearest {
  public:
    /// What is further than `limit` is of no interest.
    explicit Nearest(double limit) : m_limit(limit) {}

    const PointPair& Best() const { return m_best; }
    /// Bodies that are further apart than this are none of the nearest.
    double Limit() const { return m_limit; }
    /// False before there is a nearest, and where it is so near that it has no direction.
    bool HasDirection() const { return m_hasDirection; }
    /// Unit, from the first body to the second.
    const Vec3& Direction() const { return m_direction; }
    /// True if it is the nearest.
    bool Take(const PointPair& pair) {
        if (!(pair.value < m_best.value))
            return false;
        m_best = pair;
        m_limit = std::min(m_limit, pair.value);
        const Vec3 apart = pair.point2 - pair.point1;
        const double length = Length(apart);
        m_hasDirection = length > 0;
        if (m_hasDirection)
            m_direction = apart * (1 / length);
        return true;
    }
    /// Cores, whose radii add up to `radius`, are not nearer than `squared` tells.
    bool IsNotBeyond(double squared, double radius) const { return squared >= Reach(radius); }
    /// The square of the distance of cores from which on they are none of the nearest.
    double Reach(double radius) const { return (m_limit + radius) * (m_limit + radius); }

  private:
    PointPair m_best{{}, {}, Aabb::kInfinity};
    double m_limit;
    Vec3 m_direction;
    bool m_hasDirection = false;
};

// ---- A convex body and a mesh ------------------------------------------------------------------

/// The axes of a convex body that its box is best taken along.
Mat3 AxesOf(const Core& core) {
    if (core.kind == CoreKind::kPoint)
        return {};
    if (core.kind == CoreKind::kSegment)
        return Orthonormal({{core.linear * core.half, {}, {}}});
    return Orthonormal(core.linear);
}

/// A convex body and a mesh; everything relative to the reference.
class ConvexAndMesh {
  public:
    ConvexAndMesh(const Core& convex, const Placed& mesh, const Vec3& reference)
        : m_core(convex),
          m_axes{{Orthonormal(mesh.placement.linear), AxesOf(m_core)}},
          m_view(ViewOf(m_core, m_axes)),
          m_tree(mesh, reference, m_axes, 0),
          m_polygons(mesh, reference),
          m_radius(m_core.radius + m_polygons.Radius()),
          m_closed(!m_core.traits.large && !m_core.traits.small) {
        m_slack = kBoxSlack * SizeOf(m_view, m_tree.Whole());
    }

    bool Contact() { return FindTouching() != MeshTree::kNone; }
    PointPair Closest();
    /// Of those nearer than `limit`; at an infinite distance if there is none.
    PointPair ClosestWithin(double limit);
    bool Penetration(PointPair& result);

  private:
    static double SizeOf(const View& a, const View& b) {
        return MaxNorm(a.middle[0] - b.middle[0]) + MaxNorm(a.half[0]) + MaxNorm(b.half[0]);
    }
    /// The number of a polygon, or kNone.
    std::uint32_t FindTouching();
    bool Touches(std::uint32_t polygon);
    PointPair ClosestTo(std::uint32_t polygon);
    bool IsFurther(std::uint32_t polygon, const Nearest& nearest) const;
    bool PenetrationOf(std::uint32_t polygon, PointPair& result);
    double DepthBoundOf(std::uint32_t polygon);
    /// A sphere and a triangle that closed forms are good for.
    bool PlaceSphere(std::uint32_t polygon, PointPlace& place) const;

    const Core m_core;
    const Axes m_axes;
    const View m_view;
    const PlacedTree m_tree;
    Polygons m_polygons;
    const double m_radius;
    const bool m_closed;
    double m_slack;
};

bool ConvexAndMesh::PlaceSphere(std::uint32_t polygon, PointPlace& place) const {
    Triangle triangle;
    if (m_core.kind != CoreKind::kPoint || !m_closed ||
        !m_polygons.GetTriangle(polygon, triangle) || triangle.IsNeedle())
        return false;
    place = PlaceAtTriangle(triangle, m_core.centre);
    // Within rounding of touching it does.
    const double size = std::max(MaxNorm(m_core.centre - triangle.corner[0]), m_radius);
    if (std::fabs(place.distance - m_radius) <= kTouch * size)
        place.distance = m_radius;
    return true;
}

bool ConvexAndMesh::Touches(std::uint32_t polygon) {
    PointPlace place;
    if (PlaceSphere(polygon, place))
        return place.distance <= m_radius;
    Triangle triangle;
    if (m_closed && m_polygons.GetTriangle(polygon, triangle)) {
        const std::optional<bool> touch = FilterTriangleBox(
            Along(triangle, m_axes.of[1], m_view.middle[1]), m_view.half[1], m_radius);
        const bool isBox = m_core.kind == CoreKind::kBox && m_core.traits.rigid;
        if (touch.has_value() && (!*touch || isBox))
            return *touch;
    }
    return ConvexContact(m_core, m_polygons.At(polygon));
}

PointPair ConvexAndMesh::ClosestTo(std::uint32_t polygon) {
    PointPlace place;
    if (!PlaceSphere(polygon, place))
        return ConvexClosest(m_core, m_polygons.At(polygon));
    if (place.distance <= m_radius) {
        const double part = m_radius > 0 ? m_core.radius / m_radius : 0;
        const Vec3 common = m_core.centre + (place.border - m_core.centre) * part;
        return {common, common, 0};
    }
    // Never 0: that is the answer for contact.
    return {m_core.centre - place.normal * m_core.radius,
            place.border + place.normal * m_polygons.Radius(),
            std::max(place.distance - m_radius, std::numeric_limits<double>::min())};
}

bool ConvexAndMesh::PenetrationOf(std::uint32_t polygon, PointPair& result) {
    PointPlace place;
    if (!PlaceSphere(polygon, place))
        return ConvexPenetration(m_core, m_polygons.At(polygon), result);
    if (place.distance > m_radius)
        return false;
    result = {m_core.centre - place.normal * m_core.radius,
              place.border + place.normal * m_polygons.Radius(), m_radius - place.distance};
    return true;
}

double ConvexAndMesh::DepthBoundOf(std::uint32_t polygon) {
    PointPlace place;
    if (PlaceSphere(polygon, place))
        return m_radius - place.distance;
    Triangle triangle;
    if (!m_closed || !m_polygons.GetTriangle(polygon, triangle))
        return Aabb::kInfinity;
    return DepthBound(triangle, m_core, m_axes.of[1]) + m_radius + m_slack;
}

std::uint32_t ConvexAndMesh::FindTouching() {
    const NodeTest test(m_tree, m_view, m_radius + m_slack);
    const NodeTest::Box box = test.Prepare(m_view);
    Stack<std::uint32_t> stack;
    stack.Push(0);
    while (!stack.IsEmpty()) {
        const Node& node = m_tree.Tree().NodeAt(stack.Pop());
        for (unsigned left = test.Overlapping(node, box); left != 0; left &= left - 1) {
            const std::uint32_t link = node.link[std::countr_zero(left)];
            if (link == MeshTree::kNone)
                break;
            if (!MeshTree::IsPolygon(link)) {
                stack.Push(link);
            } else if (Touches(MeshTree::PolygonOf(link))) {
                return MeshTree::PolygonOf(link);
            }
        }
    }
    return MeshTree::kNone;
}

struct NearLink {
    std::uint32_t link;
    double squared;
};

/// Puts the places of a node that may hold something nearer in order, the furthest first.
int SortPlaces(const Node& node, const double (&squared)[kWidth], const Nearest& nearest,
               double radius, int (&order)[kWidth]) {
    int count = 0;
    for (int k = 0; k < kWidth && node.link[k] != MeshTree::kNone; ++k) {
        if (nearest.IsNotBeyond(squared[k], radius))
            continue;
        int at = count++;
        for (; at > 0 && squared[order[at - 1]] < squared[k]; --at)
            order[at] = order[at - 1];
        order[at] = k;
    }
    return count;
}

/// A quick look along directions in which the two are likely to be apart: the normal of a triangle,
/// and from the nearest point of the body so far.
bool ConvexAndMesh::IsFurther(std::uint32_t polygon, const Nearest& nearest) const {
    Triangle triangle;
    if (m_core.kind == CoreKind::kPoint || !m_closed ||
        !m_polygons.GetTriangle(polygon, triangle) || triangle.IsNeedle())
        return false;
    const Vec3 from = nearest.Best().point1 - nearest.Direction() * m_core.radius;
    const PointPlace place = PlaceAtTriangle(triangle, from);
    const Vec3 normal = triangle.Normal();
    const double least = nearest.Limit() + m_radius + m_slack;
    return IsBeyond(triangle, m_core, place.border - from, least) ||
           IsBeyond(triangle, m_core, Dot(normal, place.border - from) < 0 ? -normal : normal,
                    least);
}

PointPair ConvexAndMesh::Closest() {
    const std::uint32_t touching = FindTouching();
    if (touching != MeshTree::kNone) {
        const PointPair common = ClosestTo(touching);
        if (common.value == 0)
            return common;
    }
    return ClosestWithin(Aabb::kInfinity);
}

PointPair ConvexAndMesh::ClosestWithin(double limit) {
    Nearest nearest(limit);
    double bodyReach = 0;
    const NodeTest test(m_tree, m_view, m_slack);
    const NodeTest::Box box = test.Prepare(m_view);
    Stack<NearLink> stack;
    stack.Push({0, 0});
    while (!stack.IsEmpty()) {
        const NearLink top = stack.Pop();
        if (nearest.IsNotBeyond(top.squared, m_radius))
            continue;
        if (MeshTree::IsPolygon(top.link)) {
            const std::uint32_t polygon = MeshTree::PolygonOf(top.link);
            if (nearest.HasDirection()) {
                const double gap = -m_polygons.Reach(polygon, -nearest.Direction()) - bodyReach;
                if (gap - m_slack - m_radius >= nearest.Limit() || IsFurther(polygon, nearest))
                    continue;
            }
            if (nearest.Take(ClosestTo(polygon))) {
                if (nearest.Limit() == 0)
                    break;
                if (nearest.HasDirection())
                    bodyReach = Dot(Support(m_core, nearest.Direction()), nearest.Direction());
            }
            continue;
        }
        const Node& node = m_tree.Tree().NodeAt(top.link);
        double squared[kWidth];
        test.Distances(node, box, squared);
        int order[kWidth];
        const int count = SortPlaces(node, squared, nearest, m_radius, order);
        for (int i = 0; i < count; ++i)
            stack.Push({node.link[order[i]], squared[order[i]]});
    }
    return nearest.Best();
}

/// Whether something that cannot be deeper than `bound` may be deeper than what is known. Depths of
/// faces in one plane differ by rounding, and are not worth finding one by one.
bool IsDeeper(double bound, double deepest, double slack) {
    return bound > deepest * (1 + kDepthGap) + 2 * slack;
}

/// Polygons, and boxes of them, by the depth that they cannot exceed.
class DepthQueue {
  public:
    struct Entry {
        double bound;
        std::uint64_t number;
        bool exact;  ///< nothing better than this bound can be had without the depth itself
        std::uint32_t link;

        /// Of equal ones the last: it is nearest to a polygon.
        bool operator<(const Entry& other) const {
            return bound != other.bound ? bound < other.bound : number < other.number;
        }
    };
    /// Depths nearer than `slack` are all the same.
    explicit DepthQueue(double slack) : m_slack(slack) {}

    void Push(std::uint32_t link, double bound, bool exact) {
        m_heap.push_back({bound, m_next++, exact, link});
        std::push_heap(m_heap.begin(), m_heap.end());
    }
    /// The one that may be deepest. False when none is deeper than the one known already.
    bool Pop(bool contact, double deepest, Entry& entry) {
        if (m_heap.empty())
            return false;
        std::pop_heap(m_heap.begin(), m_heap.end());
        entry = m_heap.back();
        m_heap.pop_back();
        return !contact || IsDeeper(entry.bound, deepest, m_slack);
    }

  private:
    std::vector<Entry> m_heap;
    std::uint64_t m_next = 0;
    double m_slack;
};

bool ConvexAndMesh::Penetration(PointPair& result) {
    bool contact = false;
    DepthQueue queue(m_slack);
    DepthQueue::Entry top;
    queue.Push(0, Aabb::kInfinity, false);
    while (queue.Pop(contact, result.value, top)) {
        if (!MeshTree::IsPolygon(top.link)) {
            const Node& node = m_tree.Tree().NodeAt(top.link);
            double depth[kWidth];
            m_tree.Depths(node, m_view, m_slack, depth);
            for (int k = 0; k < kWidth && node.link[k] != MeshTree::kNone; ++k) {
                if (depth[k] + m_radius >= 0)
                    queue.Push(node.link[k], depth[k] + m_radius, false);
            }
            continue;
        }
        const std::uint32_t polygon = MeshTree::PolygonOf(top.link);
        if (!top.exact) {
            const double bound = std::min(top.bound, DepthBoundOf(polygon));
            if (bound >= 0)
                queue.Push(top.link, bound, true);
            continue;
        }
        PointPair pair;
        if (PenetrationOf(polygon, pair) && (!contact || pair.value > result.value)) {
            contact = true;
            result = pair;
        }
    }
    return contact;
}

// ---- Two meshes --------------------------------------------------------------------------------

class TwoMeshes {
  public:
    TwoMeshes(const Placed& a, const Placed& b, const Vec3& reference)
        : m_axes{{Orthonormal(a.placement.linear), Orthonormal(b.placement.linear)}},
          m_a(a, reference, m_axes, 0),
          m_b(b, reference, m_axes, 1),
          m_polygonsA(a, reference),
          m_polygonsB(b, reference),
          m_radius(m_polygonsA.Radius() + m_polygonsB.Radius()),
          m_bareA(a),
          m_bareB(b),
          m_reference(reference) {
        m_bareA.margin = m_bareB.margin = 0;
        const View wholeA = m_a.Whole(), wholeB = m_b.Whole();
        m_slack = kBoxSlack * (MaxNorm(wholeA.middle[0] - wholeB.middle[0]) +
                               MaxNorm(wholeA.half[0]) + MaxNorm(wholeB.half[0]));
    }

    bool Contact() { return FindTouching().has_value(); }
    PointPair Closest();
    bool Penetration(PointPair& result);

  private:
    /// A box of each, or the whole of one: then its link is the root.
    struct Pair {
        std::uint32_t linkA, linkB;
        Place a, b;  ///< where the boxes are; node kNone: the whole tree
    };
    struct NearPair {
        Pair pair;
        double squared;
    };
    struct DeepPair {
        Pair pair;
        double bound;
    };

    std::optional<Pair> FindTouching();
    bool Touch(std::uint32_t a, std::uint32_t b);
    bool AreFurther(std::uint32_t a, std::uint32_t b, const Nearest& nearest) const;
    double FindLimit() const;
    PointPair ClosestWithin(double limit);
    double DepthBoundOf(std::uint32_t a, std::uint32_t b);
    static View ViewOf(const PlacedTree& tree, const Place& place) {
        return place.node == MeshTree::kNone ? tree.Whole() : tree.Of(place.node, place.place);
    }
    static double SizeOf(const View& view, int f) {
        const Vec3& h = view.half[f];
        return h.x + h.y + h.z;
    }
    /// Whether to look into a's box, of which b's is then one box, or the other way round.
    bool OpensA(const Pair& pair, const View& viewA, const View& viewB) const {
        return !MeshTree::IsPolygon(pair.linkA) &&
               (MeshTree::IsPolygon(pair.linkB) || SizeOf(viewA, 0) >= SizeOf(viewB, 1));
    }
    static Pair Opened(const Pair& pair, bool opensA, const Node& node, int place) {
        Pair next = pair;
        if (opensA) {
            next.a = {pair.linkA, place};
            next.linkA = node.link[place];
        } else {
            next.b = {pair.linkB, place};
            next.linkB = node.link[place];
        }
        return next;
    }
    static bool ArePolygons(const Pair& pair) {
        return MeshTree::IsPolygon(pair.linkA) && MeshTree::IsPolygon(pair.linkB);
    }
    static Pair Roots() { return {0, 0, {MeshTree::kNone, 0}, {MeshTree::kNone, 0}}; }

    const Axes m_axes;
    const PlacedTree m_a, m_b;
    Polygons m_polygonsA, m_polygonsB;
    const double m_radius;
    double m_slack;
    Placed m_bareA, m_bareB;
    const Vec3 m_reference;
};

bool TwoMeshes::Touch(std::uint32_t a, std::uint32_t b) {
    Triangle triangleA, triangleB;
    if (m_polygonsA.GetTriangle(a, triangleA) && m_polygonsB.GetTriangle(b, triangleB)) {
        const std::optional<bool> touch = FilterTriangles(triangleA, triangleB, m_radius);
        if (touch.has_value())
            return *touch;
    }
    return ConvexContact(m_polygonsA.At(a), m_polygonsB.At(b));
}

double TwoMeshes::DepthBoundOf(std::uint32_t a, std::uint32_t b) {
    Triangle triangleA, triangleB;
    if (!m_polygonsA.GetTriangle(a, triangleA) || !m_polygonsB.GetTriangle(b, triangleB))
        return Aabb::kInfinity;
    return DepthBound(triangleA, triangleB) + m_radius + m_slack;
}

std::optional<TwoMeshes::Pair> TwoMeshes::FindTouching() {
    const View wholeA = m_a.Whole(), wholeB = m_b.Whole();
    const NodeTest testA(m_a, wholeB, m_radius + m_slack);
    const NodeTest testB(m_b, wholeA, m_radius + m_slack);
    Stack<Pair> stack;
    stack.Push(Roots());
    while (!stack.IsEmpty()) {
        const Pair pair = stack.Pop();
        const View viewA = ViewOf(m_a, pair.a), viewB = ViewOf(m_b, pair.b);
        const bool opensA = OpensA(pair, viewA, viewB);
        const Node& node = opensA ? m_a.Tree().NodeAt(pair.linkA) : m_b.Tree().NodeAt(pair.linkB);
        unsigned left = opensA ? testA.Overlapping(node, testA.Prepare(viewB))
                               : testB.Overlapping(node, testB.Prepare(viewA));
        for (; left != 0; left &= left - 1) {
            const int place = std::countr_zero(left);
            if (node.link[place] == MeshTree::kNone)
                break;
            const Pair next = Opened(pair, opensA, node, place);
            if (!ArePolygons(next)) {
                stack.Push(next);
            } else if (Touch(MeshTree::PolygonOf(next.linkA), MeshTree::PolygonOf(next.linkB))) {
                return next;
            }
        }
    }
    return std::nullopt;
}

/// The same quick look as of a convex body: normals, and the way between points that are near.
bool TwoMeshes::AreFurther(std::uint32_t a, std::uint32_t b, const Nearest& nearest) const {
    Triangle triangleA, triangleB;
    if (!m_polygonsA.GetTriangle(a, triangleA) || !m_polygonsB.GetTriangle(b, triangleB) ||
        triangleA.IsNeedle() || triangleB.IsNeedle())
        return false;
    const double least = nearest.Limit() + m_radius + m_slack;
    const Vec3 onB =
        PlaceAtTriangle(triangleB, (triangleA.corner[0] + triangleA.corner[1]) * 0.5).border;
    const Vec3 onA = PlaceAtTriangle(triangleA, onB).border;
    const Vec3 apart = onB - onA;
    const Vec3 normalA = triangleA.Normal(), normalB = triangleB.Normal();
    return IsBeyond(triangleB, triangleA, apart, least) ||
           IsBeyond(triangleB, triangleA, Dot(normalA, apart) < 0 ? -normalA : normalA, least) ||
           IsBeyond(triangleB, triangleA, Dot(normalB, apart) < 0 ? -normalB : normalB, least);
}

/// A distance of the cores that is found by going to and fro between the two, each time to the
/// nearest point of the other: not less than the least, and mostly near to it.
double TwoMeshes::FindLimit() const {
    constexpr int kMaxSteps = 8;
    constexpr double kWorthwhile = 0.95;
    Core point;
    point.centre = m_axes.of[0] * m_a.Whole().middle[0];
    double limit = Aabb::kInfinity;
    bool fromA = true;
    for (int step = 0; step < kMaxSteps; ++step) {
        const PointPair pair =
            ConvexAndMesh(point, fromA ? m_bareB : m_bareA, m_reference).ClosestWithin(limit);
        // The first point is of neither.
        const bool better = pair.value < kWorthwhile * limit;
        if (step > 0 && pair.value < limit)
            limit = pair.value;
        if (!better)
            break;
        point.centre = pair.point2;
        fromA = !fromA;
    }
    return limit;
}

PointPair TwoMeshes::Closest() {
    if (const auto touching = FindTouching()) {
        const PointPair common =
            ConvexClosest(m_polygonsA.At(MeshTree::PolygonOf(touching->linkA)),
                          m_polygonsB.At(MeshTree::PolygonOf(touching->linkB)));
        if (common.value == 0)
            return common;
    }
    const double limit = std::max(FindLimit() - m_radius, 0.0);
    const PointPair nearest = ClosestWithin(limit + kBoxSlack * limit + m_slack);
    // Rounding may have left nothing within a limit that is all but exact.
    return nearest.value < Aabb::kInfinity ? nearest : ClosestWithin(Aabb::kInfinity);
}

PointPair TwoMeshes::ClosestWithin(double limit) {
    Nearest nearest(limit);
    const NodeTest testA(m_a, m_b.Whole(), m_slack), testB(m_b, m_a.Whole(), m_slack);
    Stack<NearPair> stack;
    stack.Push({Roots(), 0});
    while (!stack.IsEmpty()) {
        const auto [pair, bound] = stack.Pop();
        if (nearest.IsNotBeyond(bound, m_radius))
            continue;
        if (ArePolygons(pair)) {
            const std::uint32_t a = MeshTree::PolygonOf(pair.linkA);
            const std::uint32_t b = MeshTree::PolygonOf(pair.linkB);
            if (nearest.HasDirection()) {
                const Vec3& n = nearest.Direction();
                const double gap = -m_polygonsB.Reach(b, -n) - m_polygonsA.Reach(a, n);
                if (gap - m_slack - m_radius >= nearest.Limit())
                    continue;
            }
            if (AreFurther(a, b, nearest))
                continue;
            nearest.Take(ConvexClosest(m_polygonsA.At(a), m_polygonsB.At(b)));
            if (nearest.Limit() == 0)
                break;
            continue;
        }
        const View viewA = ViewOf(m_a, pair.a), viewB = ViewOf(m_b, pair.b);
        const bool opensA = OpensA(pair, viewA, viewB);
        const Node& node = opensA ? m_a.Tree().NodeAt(pair.linkA) : m_b.Tree().NodeAt(pair.linkB);
        double squared[kWidth];
        if (opensA) {
            testA.Distances(node, testA.Prepare(viewB), squared);
            m_a.RaiseDistances(m_a.Tree().SlabsAt(pair.linkA), viewB, m_slack, squared);
        } else {
            testB.Distances(node, testB.Prepare(viewA), squared);
            m_b.RaiseDistances(m_b.Tree().SlabsAt(pair.linkB), viewA, m_slack, squared);
        }
        int order[kWidth];
        const int count = SortPlaces(node, squared, nearest, m_radius, order);
        for (int i = 0; i < count; ++i)
            stack.Push({Opened(pair, opensA, node, order[i]), squared[order[i]]});
    }
    return nearest.Best();
}

/// Depth first: among the polygons of two meshes the bounds on boxes tell little before the end, so
/// that an order by them is not worth its price.
bool TwoMeshes::Penetration(PointPair& result) {
    bool contact = false;
    const auto mayBeDeeper = [&](double bound) {
        return contact ? IsDeeper(bound, result.value, m_slack) : bound >= 0;
    };
    Stack<DeepPair> stack;
    stack.Push({Roots(), Aabb::kInfinity});
    while (!stack.IsEmpty()) {
        const auto [pair, bound] = stack.Pop();
        if (!mayBeDeeper(bound))
            continue;
        if (ArePolygons(pair)) {
            const std::uint32_t a = MeshTree::PolygonOf(pair.linkA);
            const std::uint32_t b = MeshTree::PolygonOf(pair.linkB);
            PointPair found;
            if (mayBeDeeper(DepthBoundOf(a, b)) &&
                ConvexPenetration(m_polygonsA.At(a), m_polygonsB.At(b), found) &&
                (!contact || found.value > result.value)) {
                contact = true;
                result = found;
            }
            continue;
        }
        const View viewA = ViewOf(m_a, pair.a), viewB = ViewOf(m_b, pair.b);
        const bool opensA = OpensA(pair, viewA, viewB);
        const Node& node = opensA ? m_a.Tree().NodeAt(pair.linkA) : m_b.Tree().NodeAt(pair.linkB);
        double depth[kWidth];
        if (opensA) {
            m_a.Depths(node, viewB, m_slack, depth);
        } else {
            m_b.Depths(node, viewA, m_slack, depth);
        }
        for (int k = 0; k < kWidth && node.link[k] != MeshTree::kNone; ++k) {
            if (mayBeDeeper(depth[k] + m_radius))
                stack.Push({Opened(pair, opensA, node, k), depth[k] + m_radius});
        }
    }
    return contact;
}

}  // namespace

bool MeshContact(const Placed& convex, const Placed& mesh, const Vec3& reference) {
    return ConvexAndMesh(MakeCore(convex, reference), mesh, reference).Contact();
}

PointPair MeshClosest(const Placed& convex, const Placed& mesh, const Vec3& reference) {
    return ConvexAndMesh(MakeCore(convex, reference), mesh, reference).Closest();
}

bool MeshPenetration(const Placed& convex, const Placed& mesh, const Vec3& reference,
                     PointPair& result) {
    return ConvexAndMesh(MakeCore(convex, reference), mesh, reference).Penetration(result);
}

bool MeshesContact(const Placed& a, const Placed& b, const Vec3& reference) {
    return TwoMeshes(a, b, reference).Contact();
}

PointPair MeshesClosest(const Placed& a, const Placed& b, const Vec3& reference) {
    return TwoMeshes(a, b, reference).Closest();
}

bool MeshesPenetration(const Placed& a, const Placed& b, const Vec3& reference, PointPair& result) {
    return TwoMeshes(a, b, reference).Penetration(result);
}

}  // namespace solid
