#include "platform/solid/RoundCases.h"

#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// In the plane of the axes: x across them, y along them.
struct Vec2 {
    double x = 0, y = 0;
};

Vec2 operator+(const Vec2& a, const Vec2& b) {
    return {a.x + b.x, a.y + b.y};
}
Vec2 operator-(const Vec2& a, const Vec2& b) {
    return {a.x - b.x, a.y - b.y};
}
Vec2 operator*(const Vec2& a, double s) {
    return {a.x * s, a.y * s};
}
double Dot(const Vec2& a, const Vec2& b) {
    return a.x * b.x + a.y * b.y;
}
double Cross(const Vec2& a, const Vec2& b) {
    return a.x * b.y - a.y * b.x;
}
Vec2 Mix(const Vec2& a, const Vec2& b, double t) {
    return a + (b - a) * t;
}

/// The section of a core through its axis, about its middle: counterclockwise, from the lowest
/// corner on, of several as low from the leftmost.
struct Profile {
    Vec2 corners[4];
    int count = 0;
    double radius, half;

    /// `up` tells whether the axis of the core points along y.
    Profile(const Core& core, bool up)
        : radius(core.half.x * 0.5 * (Length(core.linear.col[0]) + Length(core.linear.col[2]))),
          half(core.half.y * Length(core.linear.col[1])) {
        if (core.kind == CoreKind::kCylinder) {
            Set({{-radius, -half}, {radius, -half}, {radius, half}, {-radius, half}}, 4);
        } else if (up) {
            Set({{-radius, -half}, {radius, -half}, {0, half}, {}}, 3);
        } else {
            Set({{0, -half}, {radius, half}, {-radius, half}, {}}, 3);
        }
    }
    const Vec2& At(int i) const { return corners[i % count]; }
    Vec2 Edge(int i) const { return At(i + 1) - At(i); }

  private:
    void Set(const Vec2 (&from)[4], int number) {
        std::copy_n(from, number, corners);
        count = number;
    }
};

/// An edge of the sum of two profiles: the ends of what makes it in each.
struct SumEdge {
    Vec2 fromA, toA, fromB, toB;

    Vec2 From() const { return fromA + fromB; }
    Vec2 To() const { return toA + toB; }
};

/// The edges of the sum in order, by merging those of both by their directions; both start with
/// the direction to the right (Mark de Berg and others, "Computational Geometry", section 13.3).
/// Parallel edges become one.
int AddProfiles(const Profile& a, const Profile& b, SumEdge* edges) {
    int i = 0, j = 0, count = 0;
    while (i < a.count || j < b.count) {
        const Vec2 ofA = a.Edge(i), ofB = b.Edge(j);
        const double turn = Cross(ofA, ofB);
        const bool hasA = i < a.count, hasB = j < b.count;
        const bool parallel =
            hasA && hasB && turn * turn <= kParallel * Dot(ofA, ofA) * Dot(ofB, ofB);
        const int stepA = hasA && (!hasB || parallel || turn > 0) ? 1 : 0;
        const int stepB = hasB && (!hasA || parallel || turn < 0) ? 1 : 0;
        edges[count++] = {a.At(i), a.At(i + stepA), b.At(j), b.At(j + stepB)};
        i += stepA;
        j += stepB;
    }
    return count;
}

/// The place of a point nearest to it on the border of the sum: edge, and share of its length.
struct BorderPlace {
    int edge = 0;
    double share = 0;
    double distance = 0;  ///< below 0 inside
    Vec2 normal;          ///< unit, from the border to the point outside
};

BorderPlace FindBorder(const SumEdge* edges, int count, const Vec2& point) {
    BorderPlace nearest, highest;
    nearest.distance = Aabb::kInfinity;
    highest.distance = -Aabb::kInfinity;
    for (int i = 0; i < count; ++i) {
        const Vec2 side = edges[i].To() - edges[i].From();
        const Vec2 from = point - edges[i].From();
        const double squared = Dot(side, side);
        const double share = std::clamp(Dot(from, side) / squared, 0.0, 1.0);
        const double length = std::sqrt(squared);
        const Vec2 outwards{side.y / length, -side.x / length};
        const double height = Dot(from, outwards);
        if (height > highest.distance)
            highest = {i, share, height, outwards};
        const Vec2 apart = from - side * share;
        const double distance = std::sqrt(Dot(apart, apart));
        if (height > 0 && distance > 0 && distance < nearest.distance)
            nearest = {i, share, distance, apart * (1 / distance)};
    }
    const bool outside = highest.distance > 0 && nearest.distance < Aabb::kInfinity;
    return outside ? nearest : highest;
}

/// The unit vector at right angles to `up` that is next to v.
Vec3 UnitAcross(const Vec3& v, const Vec3& up) {
    const Vec3 across = v - up * Dot(v, up);
    return across * (1 / Length(across));
}

}  // namespace

bool PlaceRound(const Core& a, const Core& b, RoundPlace& place) {
    const Vec3& axisA = a.linear.col[1];
    const Vec3& axisB = b.linear.col[1];
    if (!a.traits.rigid || !b.traits.rigid ||
        LengthSquared(Cross(axisA, axisB)) >
            kParallel * LengthSquared(axisA) * LengthSquared(axisB))
        return false;
    const Profile profileA(a, true);
    // The difference is the sum with b turned by half a turn.
    const Profile profileB(b, Dot(axisA, axisB) < 0);
    if (!(std::min({profileA.radius, profileA.half, profileB.radius, profileB.half}) > 0))
        return false;

    const Vec3 up = axisA * (1 / Length(axisA));
    const Vec3 apart = b.centre - a.centre;
    const double along = Dot(apart, up);
    // Twice: of an offset that is small beside the distance along the axes, once leaves rounding.
    Vec3 across = apart - up * along;
    across -= up * Dot(across, up);
    const double size =
        std::max({MaxNorm(apart), profileA.radius, profileA.half, profileB.radius, profileB.half});
    const bool coaxial = !(Length(across) > kTouch * size);
    const double offset = coaxial ? 0 : Length(across);
    const Vec3 right = coaxial ? Perpendicular(up) : UnitAcross(across * (1 / offset), up);
    const auto toWorld = [&](const Vec2& v) { return right * v.x + up * v.y; };

    SumEdge edges[8];
    const int count = AddProfiles(profileA, profileB, edges);
    const BorderPlace border = FindBorder(edges, count, {offset, along});
    const SumEdge& edge = edges[border.edge];
    place.distance = border.distance;
    place.normal = -toWorld(border.normal);
    place.a = a.centre + toWorld(Mix(edge.fromA, edge.toA, border.share));
    place.b = b.centre - toWorld(Mix(edge.fromB, edge.toB, border.share));
    return true;
}

}  // namespace solid
