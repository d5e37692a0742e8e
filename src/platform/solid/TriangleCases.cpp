#include "platform/solid/TriangleCases.h"

#include "platform/solid/Float4.h"
#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// What a filter calls touching overlaps by this part of the size along each axis: twice the
/// rounding, since edges that are nearly parallel are taken for parallel.
constexpr float kClearly = 2 * kFilterRounding;
constexpr float kNearlyParallel = kFilterRounding / 4;

double LargestCoordinate(const Triangle& t) {
    return std::max({MaxNorm(t.corner[0]), MaxNorm(t.corner[1]), MaxNorm(t.corner[2])});
}

/// Corners, or edges, of a triangle: x holds the first coordinates of all three, and so on.
struct Corners {
    Float4 x, y, z;

    Corners(const Triangle& t, double scale) {
        float c[3][3];
        for (int i = 0; i < 3; ++i) {
            for (int k = 0; k < 3; ++k)
                c[i][k] = static_cast<float>(t.corner[k][i] * scale);
        }
        x = Float4(c[0][0], c[0][1], c[0][2], 0);
        y = Float4(c[1][0], c[1][1], c[1][2], 0);
        z = Float4(c[2][0], c[2][1], c[2][2], 0);
    }
    Corners(Float4 xs, Float4 ys, Float4 zs) : x(xs), y(ys), z(zs) {}
    /// From each corner to the next.
    Corners Edges() const { return {x.Next() - x, y.Next() - y, z.Next() - z}; }
    /// Of each edge the corner that is not on it.
    Corners Opposite() const { return {x.AfterNext(), y.AfterNext(), z.AfterNext()}; }
    Float4 Lengths() const { return Abs(x) + Abs(y) + Abs(z); }
};

/// What separating axes say together, in coordinates of at most 1.
class Verdict {
  public:
    explicit Verdict(double radius)
        : m_apart(2 * (kFilterRounding + static_cast<float>(radius) * (1 + kFilterRounding))) {}

    /// Three axes with twice the gap along each, and a bound on the length of the axis. Lengths
    /// below `least` are rounding: the axis tells nothing.
    void Include(Float4 doubleGap, Float4 bound, Float4 length, Float4 least) {
        m_apartAny = m_apartAny || doubleGap.AnyAbove(bound * Float4(m_apart));
        const Float4 passedOver = Max(least - length, Float4(0)) * Float4(16);
        const Float4 overlap = bound * Float4(2 * kClearly) - passedOver + doubleGap;
        m_touchAll = m_touchAll && !overlap.AnyAbove(Float4(0));
    }
    void Include(double gap, double length) {
        m_apartAny = m_apartAny || 2 * gap > length * static_cast<double>(m_apart);
        m_touchAll = m_touchAll && gap < -length * static_cast<double>(kClearly);
    }
    bool Apart() const { return m_apartAny; }
    std::optional<bool> Touch() const {
        if (!m_apartAny && !m_touchAll)
            return std::nullopt;
        return !m_apartAny;
    }

  private:
    float m_apart;
    bool m_apartAny = false;
    bool m_touchAll = true;
};

/// How far a body with this extent along an axis is from the corners of a triangle along it.
double Gap(double p, double q, double r, double lower, double upper) {
    return std::max(std::min({p, q, r}) - upper, lower - std::max({p, q, r}));
}

/// At most how deep two bodies with these extents along an axis of this length reach into each
/// other.
struct LeastDepth {
    double least = Aabb::kInfinity;

    void Include(const Vec3& axis, double lowerA, double upperA, double lowerB, double upperB) {
        const double overlap = std::min(upperA - lowerB, upperB - lowerA);
        const double length = Length(axis);
        if (overlap < least * length)
            least = overlap / length;
    }
};

struct Extent {
    double lower, upper;
};

Extent ExtentOf(const Triangle& t, const Vec3& axis) {
    const double p = Dot(t.corner[0], axis), q = Dot(t.corner[1], axis), r = Dot(t.corner[2], axis);
    return {std::min({p, q, r}), std::max({p, q, r})};
}

Extent ExtentOf(const Core& core, const Vec3& axis) {
    if (core.kind == CoreKind::kBox) {
        const Vec3 along = Abs(core.linear.TransposeTimes(axis));
        const double reach = Dot(along, core.half), middle = Dot(core.centre, axis);
        return {middle - reach, middle + reach};
    }
    return {Dot(Support(core, -axis), axis), Dot(Support(core, axis), axis)};
}

template <class Body>
void IncludeAxis(const Triangle& a, const Body& b, const Vec3& axis, LeastDepth& depth) {
    const Extent extentA = ExtentOf(a, axis), extentB = ExtentOf(b, axis);
    depth.Include(axis, extentA.lower, extentA.upper, extentB.lower, extentB.upper);
}

/// Across an edge of each, unless they are parallel and the axis is rounding.
template <class Body>
void IncludeEdges(const Triangle& a, const Body& b, const Vec3& edgeA, const Vec3& edgeB,
                  LeastDepth& depth) {
    const Vec3 axis = Cross(edgeA, edgeB);
    if (LengthSquared(axis) > kParallel * LengthSquared(edgeA) * LengthSquared(edgeB))
        IncludeAxis(a, b, axis, depth);
}

}  // namespace

bool Triangle::IsNeedle() const {
    const double longest =
        std::max({LengthSquared(corner[1] - corner[0]), LengthSquared(corner[2] - corner[0]),
                  LengthSquared(corner[2] - corner[1])});
    return !(LengthSquared(Normal()) > kNeedle * longest * longest);
}

/// Christer Ericson, "Real-Time Collision Detection", 2005, section 5.1.5.
PointPlace PlaceAtTriangle(const Triangle& triangle, const Vec3& point) {
    const Vec3& a = triangle.corner[0];
    const Vec3& b = triangle.corner[1];
    const Vec3& c = triangle.corner[2];
    const Vec3 normal = triangle.Normal();
    const Vec3 ab = b - a, ac = c - a, bc = c - b;
    const Vec3 ap = point - a, bp = point - b, cp = point - c;
    const auto onEdge = [](const Vec3& start, const Vec3& edge, const Vec3& fromStart) {
        const double t = Dot(fromStart, edge) / LengthSquared(edge);
        return start + edge * std::clamp(t, 0.0, 1.0);
    };
    // Which sides of the triangle the point is beyond.
    const bool beyondAb = Dot(Cross(ab, ap), normal) < 0;
    const bool beyondBc = Dot(Cross(bc, bp), normal) < 0;
    const bool beyondCa = Dot(Cross(cp, ac), normal) < 0;
    PointPlace place;
    const double height = Dot(ap, normal);
    if (!beyondAb && !beyondBc && !beyondCa) {
        const double squared = LengthSquared(normal);
        const double length = std::sqrt(squared);
        place.border = point - normal * (height / squared);
        place.distance = std::fabs(height) / length;
        place.normal = normal * ((height < 0 ? -1 : 1) / length);
        return place;
    }
    double nearest = Aabb::kInfinity;
    const auto consider = [&](bool beyond, const Vec3& start, const Vec3& edge,
                              const Vec3& fromStart) {
        if (!beyond)
            return;
        const Vec3 foot = onEdge(start, edge, fromStart);
        const double squared = LengthSquared(point - foot);
        if (squared < nearest) {
            nearest = squared;
            place.border = foot;
        }
    };
    consider(beyondAb, a, ab, ap);
    consider(beyondBc, b, bc, bp);
    consider(beyondCa, a, ac, ap);
    place.distance = std::sqrt(nearest);
    place.normal = place.distance > 0 ? (point - place.border) * (1 / place.distance)
                                      : normal * ((height < 0 ? -1 : 1) / Length(normal));
    return place;
}

/// Thirteen axes (Tomas Akenine-Moeller, "Fast 3D Triangle-Box Overlap Testing", 2001).
std::optional<bool> FilterTriangleBox(const Triangle& triangle, const Vec3& half, double radius) {
    const double size = LargestCoordinate(triangle) + MaxNorm(half);
    const double scale = 1 / size;
    if (!(size > 0) || !(scale < Aabb::kInfinity))
        return std::nullopt;
    Verdict verdict(radius * scale);
    const Vec3* const p = triangle.corner;
    for (int i = 0; i < 3; ++i)
        verdict.Include(Gap(p[0][i], p[1][i], p[2][i], -half[i], half[i]) * scale, 1);
    if (verdict.Apart())
        return false;
    const Vec3 normal = triangle.Normal() * (scale * scale);
    // All corners: the normal of a needle may point anywhere.
    const double reach = Dot(Abs(normal), half);
    verdict.Include(
        Gap(Dot(normal, p[0]), Dot(normal, p[1]), Dot(normal, p[2]), -reach, reach) * scale,
        std::fabs(normal.x) + std::fabs(normal.y) + std::fabs(normal.z));
    if (verdict.Apart())
        return false;

    const Corners corners(triangle, scale);
    const Corners edges = corners.Edges(), opposite = corners.Opposite();
    const auto across = [&](Float4 v, Float4 w, Float4 ev, Float4 ew, Float4 ov, Float4 ow,
                            double halfV, double halfW) {
        const Float4 atEdge = ev * w - ew * v, atCorner = ev * ow - ew * ov;
        const Float4 boxReach = Abs(ew) * Float4(static_cast<float>(halfV * scale)) +
                                Abs(ev) * Float4(static_cast<float>(halfW * scale));
        const Float4 length = Abs(ev) + Abs(ew);
        verdict.Include(Abs(atEdge + atCorner) - Abs(atEdge - atCorner) - boxReach * Float4(2),
                        length, length, Float4(kNearlyParallel));
    };
    across(corners.y, corners.z, edges.y, edges.z, opposite.y, opposite.z, half.y, half.z);
    across(corners.z, corners.x, edges.z, edges.x, opposite.z, opposite.x, half.z, half.x);
    across(corners.x, corners.y, edges.x, edges.y, opposite.x, opposite.y, half.x, half.y);
    return verdict.Touch();
}

namespace {

/// The axes across edge `kEdge` of a and each edge of b.
template <int kEdge>
void IncludeEdgesOf(const Corners& a, const Corners& edgesA, const Corners& b,
                    const Corners& edgesB, const Corners& oppositeB, Verdict& verdict) {
    constexpr int kOther = (kEdge + 2) % 3;
    const Float4 ex = edgesA.x.Spread<kEdge>(), ey = edgesA.y.Spread<kEdge>(),
                 ez = edgesA.z.Spread<kEdge>();
    const Corners axis(ey * edgesB.z - ez * edgesB.y, ez * edgesB.x - ex * edgesB.z,
                       ex * edgesB.y - ey * edgesB.x);
    const auto along = [&axis](Float4 x, Float4 y, Float4 z) {
        return axis.x * x + axis.y * y + axis.z * z;
    };
    const Float4 a1 = along(a.x.Spread<kEdge>(), a.y.Spread<kEdge>(), a.z.Spread<kEdge>());
    const Float4 a2 = along(a.x.Spread<kOther>(), a.y.Spread<kOther>(), a.z.Spread<kOther>());
    const Float4 b1 = along(b.x, b.y, b.z);
    const Float4 b2 = along(oppositeB.x, oppositeB.y, oppositeB.z);
    const Float4 bound = (Abs(ex) + Abs(ey) + Abs(ez)) * edgesB.Lengths();
    verdict.Include(Abs((a1 + a2) - (b1 + b2)) - (Abs(a1 - a2) + Abs(b1 - b2)), bound,
                    axis.Lengths(), bound * Float4(kNearlyParallel));
}

/// The normal of a.
void IncludeNormal(const Triangle& a, const Triangle& b, double scale, Verdict& verdict) {
    const Vec3 normal = a.Normal() * (scale * scale);
    const Extent reach = ExtentOf(a, normal);
    verdict.Include(Gap(Dot(normal, b.corner[0]), Dot(normal, b.corner[1]),
                        Dot(normal, b.corner[2]), reach.lower, reach.upper) *
                        scale,
                    std::fabs(normal.x) + std::fabs(normal.y) + std::fabs(normal.z));
}

}  // namespace

/// The eleven axes of two triangles that are not in one plane.
std::optional<bool> FilterTriangles(const Triangle& a, const Triangle& b, double radius) {
    Triangle nearA, nearB;
    for (int i = 0; i < 3; ++i) {
        nearA.corner[i] = a.corner[i] - a.corner[0];
        nearB.corner[i] = b.corner[i] - a.corner[0];
    }
    const double size = std::max(LargestCoordinate(nearA), LargestCoordinate(nearB));
    const double scale = 1 / size;
    if (!(size > 0) || !(scale < Aabb::kInfinity))
        return std::nullopt;
    Verdict verdict(radius * scale);
    IncludeNormal(nearA, nearB, scale, verdict);
    if (verdict.Apart())
        return false;
    IncludeNormal(nearB, nearA, scale, verdict);
    if (verdict.Apart())
        return false;
    const Corners cornersA(nearA, scale), cornersB(nearB, scale);
    const Corners edgesA = cornersA.Edges(), edgesB = cornersB.Edges();
    const Corners opposite = cornersB.Opposite();
    IncludeEdgesOf<0>(cornersA, edgesA, cornersB, edgesB, opposite, verdict);
    IncludeEdgesOf<1>(cornersA, edgesA, cornersB, edgesB, opposite, verdict);
    IncludeEdgesOf<2>(cornersA, edgesA, cornersB, edgesB, opposite, verdict);
    return verdict.Touch();
}

namespace {

bool IsGap(double gap, const Vec3& direction, double distance) {
    return gap > 0 && gap * gap >= distance * distance * LengthSquared(direction);
}

}  // namespace

bool IsBeyond(const Triangle& triangle, const Core& core, const Vec3& direction, double distance) {
    const double reach = Dot(Support(core, direction), direction);
    return IsGap(ExtentOf(triangle, direction).lower - reach, direction, distance);
}

bool IsBeyond(const Triangle& triangle, const Triangle& other, const Vec3& direction,
              double distance) {
    const double gap = ExtentOf(triangle, direction).lower - ExtentOf(other, direction).upper;
    return IsGap(gap, direction, distance);
}

double DepthBound(const Triangle& triangle, const Core& core, const Mat3& axes) {
    LeastDepth depth;
    const Vec3* const p = triangle.corner;
    const Vec3 edges[3] = {p[1] - p[0], p[2] - p[1], p[0] - p[2]};
    IncludeEdges(triangle, core, edges[0], edges[2], depth);
    for (const Vec3& axis : axes.col)
        IncludeAxis(triangle, core, axis, depth);
    if (core.kind == CoreKind::kBox) {
        for (const Vec3& edge : edges) {
            for (int i = 0; i < 3; ++i)
                IncludeEdges(triangle, core, edge, core.linear.col[i], depth);
        }
    }
    return depth.least;
}

double DepthBound(const Triangle& a, const Triangle& b) {
    LeastDepth depth;
    const Vec3* const p = a.corner;
    const Vec3* const q = b.corner;
    const Vec3 edgesA[3] = {p[1] - p[0], p[2] - p[1], p[0] - p[2]};
    const Vec3 edgesB[3] = {q[1] - q[0], q[2] - q[1], q[0] - q[2]};
    IncludeEdges(a, b, edgesA[0], edgesA[2], depth);
    IncludeEdges(a, b, edgesB[0], edgesB[2], depth);
    for (const Vec3& edgeA : edgesA) {
        for (const Vec3& edgeB : edgesB)
            IncludeEdges(a, b, edgeA, edgeB, depth);
    }
    return depth.least;
}

}  // namespace solid
