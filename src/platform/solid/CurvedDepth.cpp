#include "platform/solid/CurvedDepth.h"

#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// A piece of the border of a core on which the support point moves smoothly with the direction:
/// the points centre + sum of x[k] * axis[k] with x of length 1; a vertex without axes.
struct Piece {
    Vec3 centre;
    Vec3 axes[3];
    int count = 0;
};

/// The piece of a core that a point of its border lies on, which is a support point.
Piece PieceAt(const Core& core, const Vec3& point) {
    Piece piece;
    piece.centre = point;
    if (core.kind == CoreKind::kEllipsoid) {
        piece.centre = core.centre;
        for (int i = 0; i < 3; ++i)
            piece.axes[i] = core.linear.col[i] * core.half.x;
        piece.count = 3;
    } else if (core.kind == CoreKind::kCylinder || core.kind == CoreKind::kCone) {
        const Vec3 axis = core.linear.col[1] * core.half.y;
        const Vec3 p = core.linear.col[0], q = core.linear.col[2];
        const Vec3 normal = Cross(p, q);
        const Vec3 fromMiddle = point - core.centre;
        const bool up = Dot(normal, fromMiddle) * Dot(normal, axis) > 0;
        piece.centre = up ? core.centre + axis : core.centre - axis;
        if (core.kind == CoreKind::kCone && up)
            return piece;
        piece.axes[0] = p * core.half.x;
        piece.axes[1] = q * core.half.x;
        piece.count = 2;
    }
    return piece;
}

/// The greatest length of sum of x[k] * axes[k] over all x of length 1, or a bound of it.
double Widest(const Piece& piece) {
    const double p = LengthSquared(piece.axes[0]);
    const double q = LengthSquared(piece.axes[1]);
    if (piece.count == 3)
        return std::sqrt(p + q + LengthSquared(piece.axes[2]));
    const double pq = Dot(piece.axes[0], piece.axes[1]);
    const double half = 0.5 * (p - q);
    return std::sqrt(0.5 * (p + q) + std::sqrt(half * half + pq * pq));
}

/// What a piece adds to a support function, at a direction: the length of x -> (axes * x) there,
/// and its gradient.
struct Bulge {
    double length = 0;
    Vec3 gradient;
};

/// Of each body a piece; together a smooth piece of the border of the difference.
struct Family {
    Piece pieces[2];

    bool operator==(const Family& other) const {
        return pieces[0].centre == other.pieces[0].centre &&
               pieces[1].centre == other.pieces[1].centre;
    }
};

/// The form x -> |axes * x|^2 - (gradient * x)^2 in the coordinates of two directions.
struct Form {
    double xx = 0, xy = 0, yy = 0;
};

/// A family's support point along a direction and all that its derivatives there need.
struct FamilyPoint {
    SupportPoint point;
    Bulge bulges[2];
    double height = 0;
};

class Refinement {
  public:
    Refinement(const Core& a, const Core& b) : m_a(a), m_b(b) {}
    bool Run(const Vec3& start, const SupportPoint (&corners)[3], LocalDepth& local);

  private:
    Family FamilyAt(const SupportPoint& point) const {
        return {{PieceAt(m_a, point.a), PieceAt(m_b, point.b)}};
    }
    bool Add(const Family& family);
    void Drop(int index);
    bool Evaluate(int index);
    bool IncludeHighest();
    bool DropIdle();
    bool Step(Vec3& step);
    bool StepAlongRidge(Vec3& step) const;
    bool StepOnPiece(Vec3& step) const;
    bool SetFrame();
    Form Curvature(int index, double tangent) const;
    double CertifiedTangent();
    bool IsCertified(double tangent) const;
    bool IsRidgeCertified(double tangent) const;
    bool Finish(LocalDepth& local);

    const Core& m_a;
    const Core& m_b;
    Vec3 m_n;
    Family m_families[3];
    FamilyPoint m_at[3];
    double m_weights[3] = {};  ///< of the points, for the point nearest to the foot of the origin
    int m_count = 0;
    Vec3 m_x, m_y;  ///< with the direction a frame; of two families x is along their ridge
    double m_ridgeWidth = 0;
    Form m_forms[2][2];  ///< of each family's bulges
    double m_widths[2][2];
};

bool Refinement::Add(const Family& family) {
    for (int i = 0; i < m_count; ++i) {
        if (m_families[i] == family)
            return false;
    }
    if (m_count == 3) {
        int lowest = 0;
        for (int i = 1; i < 3; ++i)
            lowest = m_at[i].height < m_at[lowest].height ? i : lowest;
        Drop(lowest);
    }
    m_families[m_count++] = family;
    return true;
}

void Refinement::Drop(int index) {
    --m_count;
    for (int i = index; i < m_count; ++i) {
        m_families[i] = m_families[i + 1];
        m_at[i] = m_at[i + 1];
    }
}

/// False where the direction is that of a pole, at which the support point jumps.
bool Refinement::Evaluate(int index) {
    const Family& family = m_families[index];
    FamilyPoint& at = m_at[index];
    for (int body = 0; body < 2; ++body) {
        const Piece& piece = family.pieces[body];
        Bulge& bulge = at.bulges[body];
        bulge = {};
        if (piece.count == 0)
            continue;
        double squared = 0, size = 0;
        for (int k = 0; k < piece.count; ++k) {
            const double along = Dot(piece.axes[k], m_n);
            bulge.gradient += piece.axes[k] * along;
            squared += along * along;
            size = std::max(size, LengthSquared(piece.axes[k]));
        }
        if (!(squared > kPole * kPole * size))
            return false;
        bulge.length = std::sqrt(squared);
        bulge.gradient *= 1 / bulge.length;
    }
    at.point.a = family.pieces[0].centre + at.bulges[0].gradient;
    at.point.b = family.pieces[1].centre - at.bulges[1].gradient;
    at.point.w = at.point.a - at.point.b;
    at.height = Dot(at.point.w, m_n);
    return true;
}

/// Takes in the family that holds the support point.
bool Refinement::IncludeHighest() {
    return !Add(FamilyAt(SupportDifference(m_a, m_b, m_n))) || Evaluate(m_count - 1);
}

/// Finds the point nearest to the foot of the origin between the families' points, and drops the
/// families that have no part in it. True if any was dropped.
bool Refinement::DropIdle() {
    const Vec3 foot = m_n * m_at[0].height;
    if (m_count == 3) {
        const Vec3& p = m_at[0].point.w;
        const Vec3& q = m_at[1].point.w;
        const Vec3& r = m_at[2].point.w;
        const Vec3 normal = Cross(q - p, r - p);
        const double sign = Dot(normal, m_n) < 0 ? -1 : 1;
        const double area = sign * Dot(normal, m_n);
        m_weights[0] = sign * Dot(Cross(r - q, foot - q), m_n);
        m_weights[1] = sign * Dot(Cross(p - r, foot - r), m_n);
        m_weights[2] = sign * Dot(Cross(q - p, foot - p), m_n);
        int least = 0;
        for (int i = 1; i < 3; ++i)
            least = m_weights[i] < m_weights[least] ? i : least;
        if (m_weights[least] < 0 || !(area > 0)) {
            Drop(least);
            return true;
        }
        for (double& weight : m_weights)
            weight /= area;
    } else if (m_count == 2) {
        const Vec3 side = m_at[1].point.w - m_at[0].point.w;
        const double squared = LengthSquared(side);
        const double along = Dot(foot - m_at[0].point.w, side);
        if (!(along > 0) || !(along < squared)) {
            Drop(along > 0 ? 0 : 1);
            return true;
        }
        m_weights[1] = along / squared;
        m_weights[0] = 1 - m_weights[1];
    } else {
        m_weights[0] = 1;
    }
    return false;
}

/// Of up to two families. False if the two have no ridge.
bool Refinement::SetFrame() {
    if (m_count == 1) {
        m_x = Perpendicular(m_n);
        m_y = Cross(m_n, m_x);
    } else {
        const Vec3 apart = m_at[0].point.w - m_at[1].point.w;
        const Vec3 flat = apart - m_n * Dot(apart, m_n);
        m_ridgeWidth = Length(flat);
        if (!(m_ridgeWidth > 0))
            return false;
        m_y = flat * (1 / m_ridgeWidth);
        m_x = Cross(m_n, m_y);
    }
    for (int i = 0; i < m_count; ++i) {
        for (int body = 0; body < 2; ++body) {
            const Piece& piece = m_families[i].pieces[body];
            if (piece.count == 0)
                continue;
            const Vec3& gradient = m_at[i].bulges[body].gradient;
            const double x = Dot(gradient, m_x), y = Dot(gradient, m_y);
            Form form{-x * x, -x * y, -y * y};
            for (int k = 0; k < piece.count; ++k) {
                const double p = Dot(piece.axes[k], m_x), q = Dot(piece.axes[k], m_y);
                form.xx += p * p;
                form.xy += p * q;
                form.yy += q * q;
            }
            m_forms[i][body] = form;
        }
    }
    return true;
}

/// The second derivative of a family's support function in the frame; with a tangent above 0 a
/// lower bound of what counts for it up to there, see IsCertified.
Form Refinement::Curvature(int index, double tangent) const {
    Form sum;
    for (int body = 0; body < 2; ++body) {
        if (m_families[index].pieces[body].count == 0)
            continue;
        double length = m_at[index].bulges[body].length;
        if (tangent > 0)
            length += 1.5 * tangent * m_widths[index][body];
        const Form& form = m_forms[index][body];
        sum.xx += form.xx / length;
        sum.xy += form.xy / length;
        sum.yy += form.yy / length;
    }
    return sum;
}

/// Two families: to where both are as high, and to the least height along that ridge.
bool Refinement::StepAlongRidge(Vec3& step) const {
    const double stepAcross = (m_at[1].height - m_at[0].height) / m_ridgeWidth;
    double slope = 0, curvature = 0, mixed = 0;
    for (int i = 0; i < 2; ++i) {
        const Form form = Curvature(i, 0);
        slope += m_weights[i] * Dot(m_at[i].point.w, m_x);
        curvature += m_weights[i] * (form.xx - m_at[i].height);
        mixed += m_weights[i] * form.xy;
    }
    if (!(curvature > kLeastCurvature * m_at[0].height))
        return false;
    step = m_y * stepAcross - m_x * ((slope + mixed * stepAcross) / curvature);
    return true;
}

/// One family: to the least height on it, by Newton's method on the sphere of directions.
bool Refinement::StepOnPiece(Vec3& step) const {
    const double height = m_at[0].height;
    const Form form = Curvature(0, 0);
    const double xx = form.xx - height, yy = form.yy - height, xy = form.xy;
    const double determinant = xx * yy - xy * xy;
    const double trace = xx + yy;
    if (!(trace > 0) || !(determinant > kLeastCurvature * trace * height))
        return false;
    const double slopeX = Dot(m_at[0].point.w, m_x);
    const double slopeY = Dot(m_at[0].point.w, m_y);
    step = m_x * ((xy * slopeY - yy * slopeX) / determinant) +
           m_y * ((xy * slopeX - xx * slopeY) / determinant);
    return true;
}

/// Newton's step to where all families are as high and their points hold the foot of the origin.
bool Refinement::Step(Vec3& step) {
    if (m_count < 3)
        return SetFrame() && (m_count == 1 ? StepOnPiece(step) : StepAlongRidge(step));
    const Vec3& p = m_at[0].point.w;
    const Vec3 normal = Cross(m_at[1].point.w - p, m_at[2].point.w - p);
    const double along = Dot(normal, m_n);
    if (!(along * along > 0))
        return false;
    step = normal * (1 / along) - m_n;
    return true;
}

bool Refinement::Run(const Vec3& start, const SupportPoint (&corners)[3], LocalDepth& local) {
    m_n = start;
    for (const SupportPoint& corner : corners)
        Add(FamilyAt(corner));
    double last = 1;
    for (int i = 0; i < kMaxRefinements; ++i) {
        for (int k = 0; k < m_count; ++k) {
            if (!Evaluate(k))
                return false;
        }
        const bool arrived = last <= kRefined;
        if ((i == 0 || arrived) && !IncludeHighest())
            return false;
        while (DropIdle()) {
        }
        if (!(m_at[0].height > 0))
            return false;
        if (arrived)
            return Finish(local);
        Vec3 step;
        if (!Step(step))
            return false;
        const double squared = LengthSquared(step);
        if (!(squared <= kLongestStep * kLongestStep))
            return false;
        const Vec3 next = m_n + step;
        m_n = next * (1 / Length(next));
        last = std::sqrt(squared);
    }
    return false;
}

bool Refinement::Finish(LocalDepth& local) {
    DepthResult& deep = local.deep;
    deep.axis = m_n;
    deep.depth = m_at[0].height;
    deep.a = deep.b = {};
    double scale = 0;
    for (int i = 0; i < m_count; ++i) {
        local.points[i] = m_at[i].point;
        deep.a += m_at[i].point.a * m_weights[i];
        deep.b += m_at[i].point.b * m_weights[i];
        deep.depth = std::max(deep.depth, m_at[i].height);
        scale = std::max({scale, MaxNorm(m_at[i].point.w), MaxNorm(m_at[i].point.a - m_a.centre)});
    }
    local.count = m_count;
    if (!(MaxNorm(deep.a - deep.b - m_n * deep.depth) <= kFootOutside * scale))
        return false;
    local.tangent = m_count == 3 || SetFrame() ? CertifiedTangent() : 0;
    return true;
}

double Refinement::CertifiedTangent() {
    const double height = m_at[0].height;
    if (m_count == 3) {
        // The circle about the foot in the triangle: the border rises as fast as that is wide.
        double width = Aabb::kInfinity;
        const Vec3 foot = m_n * height;
        for (int i = 0; i < 3; ++i) {
            const Vec3& from = m_at[i].point.w;
            const Vec3 side = m_at[i < 2 ? i + 1 : 0].point.w - from;
            width = std::min(width, Length(Cross(side, foot - from)) / Length(side));
        }
        return std::min(kWidestTangent, 2 * width / height);
    }
    for (int i = 0; i < m_count; ++i) {
        for (int body = 0; body < 2; ++body)
            m_widths[i][body] = Widest(m_families[i].pieces[body]);
    }
    for (double tangent = kWidestTangent; tangent > kNarrowestTangent; tangent *= 0.5) {
        if (IsCertified(tangent))
            return tangent;
    }
    return 0;
}

/// Whether no direction n + t * e, with e a unit vector at right angles to n and t up to `tangent`,
/// has a lower height. A bulge |E(n + t e)| exceeds its tangent by (sqrt(s^2 + t^2 k^2) - s), where
/// k^2 / |E n| is its curvature along e and s = |E n| + t (slope); that is at least t^2 k^2 / (2
/// |E n| + 3 t |E|). The height of the unit vector falls short of it by the root of 1 + t^2, which
/// is at most 1 + t^2 / 2: the curvature, with |E n| made longer by 1.5 t |E|, must be at least
/// the height.
bool Refinement::IsCertified(double tangent) const {
    if (m_count == 2)
        return IsRidgeCertified(tangent);
    const double height = m_at[0].height;
    const Form form = Curvature(0, tangent);
    const double xx = form.xx - height, yy = form.yy - height;
    return xx >= 0 && yy >= 0 && xx * yy >= form.xy * form.xy;
}

/// The same with two families. Across their ridge the one or the other rises in proportion to t,
/// which is enough but for directions that deviate from the ridge by a small sine; for these the
/// curvature is bounded by that along the ridge, the root of the form being a seminorm.
bool Refinement::IsRidgeCertified(double tangent) const {
    const double height = m_at[0].height;
    const double rise = m_ridgeWidth * std::min(m_weights[0], m_weights[1]);
    const double sine = height * tangent / (2 * rise);
    if (!(sine < 1))
        return false;
    const double cosine = std::sqrt(1 - sine * sine);
    double sum = 0;
    for (int i = 0; i < 2; ++i) {
        const Form form = Curvature(i, tangent);
        const double root =
            cosine * std::sqrt(std::max(0.0, form.xx)) - sine * std::sqrt(std::max(0.0, form.yy));
        if (root > 0)
            sum += m_weights[i] * root * root;
    }
    return sum >= height;
}

/// The end of a cylinder or cone that faces `side` along its axis (1 or -1): the depth across it.
bool FindEndDepth(const Core& core, const Core& other, double side, LocalDepth& local) {
    const Vec3 p = core.linear.col[0] * core.half.x;
    const Vec3 q = core.linear.col[2] * core.half.x;
    const Vec3 normal = Cross(p, q);
    const double area = Length(normal);
    const Vec3 axis = core.linear.col[1] * core.half.y;
    if (!(area > 0))
        return false;
    const Vec3 n = normal * ((Dot(normal, axis) * side < 0 ? -1 : 1) / area);
    const Vec3 middle = core.centre + axis * side;
    const Vec3 under = Support(other, -n);
    const double depth = Dot(middle - under, n);
    const Vec3 foot = under + n * depth - middle;
    const double x = Dot(Cross(foot, q), normal) / (area * area);
    const double y = Dot(Cross(p, foot), normal) / (area * area);
    const double within = 1 - std::sqrt(x * x + y * y);
    if (!(within > 0) || !(depth > 0))
        return false;
    local.deep = {depth, n, under + n * depth, under};
    // The narrower half axis of the ellipse that the end is.
    const double width = area / Widest({{}, {p, q, {}}, 2});
    local.tangent = std::min(kWidestTangent, 2 * within * width / depth);
    local.count = 0;
    return true;
}

bool IsRound(const Core& core) {
    return core.traits.rigid &&
           (core.kind == CoreKind::kCylinder || core.kind == CoreKind::kCone) && core.half.x > 0;
}

/// The normal of the side of a round core in the plane of its axis and `radial`, both unit.
Vec3 SideNormal(const Core& core, const Vec3& axis, const Vec3& radial) {
    if (core.kind == CoreKind::kCylinder)
        return radial;
    const double height = 2 * core.half.y * Length(core.linear.col[1]);
    const double radius = core.half.x * Length(core.linear.col[0]);
    const Vec3 normal = radial * height + axis * radius;
    return normal * (1 / Length(normal));
}

}  // namespace

/// The difference is a body of revolution. Its profile is the sum of the two profiles, and the
/// least depth is across one of the profile's sides.
bool FindParallelDepth(const Core& a, const Core& b, DepthResult& result) {
    if (!IsRound(a) || !IsRound(b))
        return false;
    const Vec3 axisA = a.linear.col[1] * (1 / Length(a.linear.col[1]));
    const Vec3 axisB = b.linear.col[1] * (1 / Length(b.linear.col[1]));
    if (!(LengthSquared(Cross(axisA, axisB)) <= kRigid * kRigid))
        return false;
    const Vec3 apart = b.centre - a.centre;
    const Vec3 across = apart - axisA * Dot(apart, axisA);
    const double distance = Length(across);
    const Vec3 radial = distance > 0 ? across * (1 / distance) : Perpendicular(axisA);
    result.depth = Aabb::kInfinity;
    for (const Vec3& n :
         {axisA, -axisA, SideNormal(a, axisA, radial), -SideNormal(b, axisB, -radial)}) {
        const double height = Dot(SupportDifference(a, b, n).w, n);
        if (height < result.depth) {
            result.depth = height;
            result.axis = n;
        }
    }
    result.depth = std::max(result.depth, 0.0);
    FindDepthPoints(a, b, result);
    return true;
}

bool IsCurved(const Core& core) {
    return core.kind == CoreKind::kCylinder || core.kind == CoreKind::kCone ||
           core.kind == CoreKind::kEllipsoid;
}

bool RefineDepth(const Core& a, const Core& b, const Vec3& start, const SupportPoint (&corners)[3],
                 LocalDepth& local) {
    return Refinement(a, b).Run(start, corners, local);
}

int FindEndDepths(const Core& a, const Core& b, LocalDepth* locals) {
    int count = 0;
    for (const Core* core : {&a, &b}) {
        const Core& other = core == &a ? b : a;
        for (const double side : {-1.0, 1.0}) {
            if (core->kind != CoreKind::kCylinder && (core->kind != CoreKind::kCone || side > 0))
                continue;
            LocalDepth& local = locals[count];
            if (!FindEndDepth(*core, other, side, local))
                continue;
            if (core == &b) {
                local.deep.axis = -local.deep.axis;
                std::swap(local.deep.a, local.deep.b);
            }
            ++count;
        }
    }
    return count;
}

}  // namespace solid
