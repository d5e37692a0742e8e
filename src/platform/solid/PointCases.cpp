#include "platform/solid/PointCases.h"

#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// Coordinates of the point along the axes of a rigid core, in world units, and these axes.
struct LocalFrame {
    Vec3 axis[3];
    double length[3];
    Vec3 point;

    LocalFrame(const Core& core, const Vec3& worldPoint) {
        const Vec3 p = worldPoint - core.centre;
        for (int i = 0; i < 3; ++i) {
            length[i] = Length(core.linear.col[i]);
            axis[i] = core.linear.col[i] * (1 / length[i]);
            point[i] = Dot(axis[i], p);
        }
    }
    Vec3 World(const Vec3& v) const { return axis[0] * v.x + axis[1] * v.y + axis[2] * v.z; }
    /// Of length 1 also where the axes are at right angles only as well as floats can say.
    Vec3 WorldUnit(const Vec3& v) const {
        const Vec3 world = World(v);
        return world * (1 / Length(world));
    }
};

/// A point outside, at `nearest` on the border of the core. `normal` is that of the border, for a
/// point so near to it that the direction between the two is rounding.
PointPlace Outside(const Core& core, const Vec3& point, const Vec3& nearest, const Vec3& normal) {
    PointPlace place;
    const Vec3 apart = point - nearest;
    place.border = nearest;
    place.distance = Length(apart);
    const double size = std::max(MaxNorm(point - core.centre), MaxNorm(nearest - core.centre));
    place.normal = place.distance > kTouch * size ? apart * (1 / place.distance) : normal;
    return place;
}

/// Inside, or on the border, at depth `depth` under a border whose normal is `normal`.
PointPlace Inside(const Vec3& point, double depth, const Vec3& normal) {
    return {-depth, point + normal * depth, normal};
}

/// The unit direction from the axis through the point, in the frame; any where it is on the axis.
Vec3 Radial(const LocalFrame& frame, double rho) {
    return rho > 0 ? Vec3{frame.point.x / rho, 0, frame.point.z / rho} : Vec3{1, 0, 0};
}

}  // namespace

PointPlace PlaceAtPoint(const Core& core, const Vec3& point) {
    return Outside(core, point, core.centre, {1, 0, 0});
}

PointPlace PlaceAtSegment(const Core& core, const Vec3& point) {
    const Vec3 half = core.linear * core.half;
    const Vec3 p = point - core.centre;
    const double squared = LengthSquared(half);
    const double along = squared > 0 ? std::clamp(Dot(p, half) / squared, -1.0, 1.0) : 0;
    return Outside(core, point, core.centre + half * along, Perpendicular(half));
}

PointPlace PlaceAtBox(const Core& core, const Vec3& point) {
    // Along the columns as they are: their lengths matter only inside.
    const Vec3 p = point - core.centre;
    Vec3 apart;
    double slack[3], squares[3], along[3];
    bool inside = true;
    for (int i = 0; i < 3; ++i) {
        const Vec3& column = core.linear.col[i];
        squares[i] = LengthSquared(column);
        along[i] = Dot(column, p);
        slack[i] = core.half[i] * squares[i] - std::fabs(along[i]);
        if (slack[i] < 0) {
            inside = false;
            apart += column * (std::copysign(slack[i], along[i]) / squares[i]);
        }
    }
    // So near to the border that the square of the distance is 0 counts as on it.
    const double distance = Length(apart);
    if (!inside && distance > 0)
        return {distance, point - apart, apart * (1 / distance)};
    double depth = Aabb::kInfinity;
    Vec3 normal;
    for (int i = 0; i < 3; ++i) {
        const double length = std::sqrt(squares[i]);
        if (slack[i] / length < depth) {
            depth = slack[i] / length;
            normal = core.linear.col[i] * std::copysign(1 / length, along[i]);
        }
    }
    return Inside(point, depth, normal);
}

PointPlace PlaceAtCylinder(const Core& core, const Vec3& point) {
    const LocalFrame frame(core, point);
    const double radius = core.half.x * 0.5 * (frame.length[0] + frame.length[2]);
    const double half = core.half.y * frame.length[1];
    const Vec3& p = frame.point;
    const double rho = std::sqrt(p.x * p.x + p.z * p.z);
    const Vec3 radial = Radial(frame, rho);
    const double sideDepth = radius - rho;
    const double capDepth = half - std::fabs(p.y);
    if (sideDepth >= 0 && capDepth >= 0) {
        if (sideDepth < capDepth)
            return Inside(point, sideDepth, frame.WorldUnit(radial));
        return Inside(point, capDepth, frame.axis[1] * (p.y < 0 ? -1 : 1));
    }
    Vec3 nearest = radial * std::min(rho, radius);
    nearest.y = std::clamp(p.y, -half, half);
    const Vec3 normal =
        sideDepth < capDepth ? frame.WorldUnit(radial) : frame.axis[1] * (p.y < 0 ? -1 : 1);
    return Outside(core, point, point + frame.World(nearest - p), normal);
}

PointPlace PlaceAtCone(const Core& core, const Vec3& point) {
    const LocalFrame frame(core, point);
    const double radius = core.half.x * 0.5 * (frame.length[0] + frame.length[2]);
    const double half = core.half.y * frame.length[1];
    const Vec3& p = frame.point;
    const double rho = std::sqrt(p.x * p.x + p.z * p.z);
    const Vec3 radial = Radial(frame, rho);
    // In the half plane through the axis and the point: the slope runs from the rim (radius, -half)
    // to the tip (0, half).
    const double slope = std::sqrt(radius * radius + 4 * half * half);
    const double baseDepth = p.y + half;
    // A cone without height is a disc, one without radius a segment: neither has an inside.
    const double normalRho = slope > 0 ? 2 * half / slope : 1;
    const double normalY = slope > 0 ? radius / slope : 0;
    const double sideDepth = -(normalRho * rho + normalY * (p.y - half));
    const Vec3 sideNormal = radial * normalRho + Vec3{0, normalY, 0};
    // The bounds of the cone as well: one without height or radius has no slope to be below.
    if (baseDepth >= 0 && sideDepth >= 0 && rho <= radius && p.y <= half) {
        if (baseDepth <= sideDepth)
            return Inside(point, baseDepth, -frame.axis[1]);
        return Inside(point, sideDepth, frame.WorldUnit(sideNormal));
    }
    // Outside the nearest point is on the base or on the slope.
    const Vec3 onBase{std::min(rho, radius), -half, 0};
    const double squared = slope * slope;
    double t = 0;  // 0 at the rim, 1 at the tip
    if (squared > 0)
        t = std::clamp(((radius - rho) * radius + (p.y + half) * 2 * half) / squared, 0.0, 1.0);
    const Vec3 onSlope{radius * (1 - t), half * (2 * t - 1), 0};
    const Vec3 flatPoint{rho, p.y, 0};
    const bool base = LengthSquared(flatPoint - onBase) <= LengthSquared(flatPoint - onSlope);
    const Vec3 best = base ? onBase : onSlope;
    const Vec3 nearest = radial * best.x + Vec3{0, best.y, 0};
    return Outside(core, point, point + frame.World(nearest - p),
                   base ? -frame.axis[1] : frame.WorldUnit(sideNormal));
}

}  // namespace solid
