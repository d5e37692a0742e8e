#include "platform/solid/Gjk.h"

#include <tuple>

#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// A point of the simplex nearest to the origin, as weights of its vertices.
struct Nearest {
    Vec3 point;
    double weights[4] = {};
    double squared = Aabb::kInfinity;
};

Nearest NearestOfVertex(const Simplex& s, int i) {
    Nearest n;
    n.point = s.points[i].w;
    n.weights[i] = 1;
    n.squared = LengthSquared(n.point);
    return n;
}

Nearest NearestOfEdge(const Simplex& s, int i, int j) {
    const Vec3& p = s.points[i].w;
    const Vec3& q = s.points[j].w;
    const Vec3 edge = q - p;
    const double squared = LengthSquared(edge);
    const double alongP = -Dot(p, edge);
    const double alongQ = Dot(q, edge);
    if (!(squared > 0) || alongP <= 0)
        return NearestOfVertex(s, i);
    if (alongQ <= 0)
        return NearestOfVertex(s, j);
    Nearest n;
    n.weights[j] = alongP / (alongP + alongQ);
    n.weights[i] = alongQ / (alongP + alongQ);
    // From the nearer end, where less is lost to cancellation.
    n.point = alongP < alongQ ? p + edge * n.weights[j] : q - edge * n.weights[i];
    n.squared = LengthSquared(n.point);
    return n;
}

const Nearest& Better(const Nearest& a, const Nearest& b) {
    return b.squared < a.squared ? b : a;
}

/// Along the longest side, and along the height on it, so that thin triangles, which the iteration
/// makes where bodies are curved, lose nothing to cancellation.
Nearest NearestOfTriangle(const Simplex& s, int i, int j, int k) {
    const double ij = LengthSquared(s.points[j].w - s.points[i].w);
    const double jk = LengthSquared(s.points[k].w - s.points[j].w);
    const double ki = LengthSquared(s.points[i].w - s.points[k].w);
    if (jk > ij && jk >= ki)
        std::tie(i, j, k) = std::tuple(j, k, i);
    else if (ki > ij)
        std::tie(i, j, k) = std::tuple(k, i, j);

    const Vec3& p = s.points[i].w;
    const Vec3 side = s.points[j].w - p;
    const double perSide = 1 / LengthSquared(side);
    const Vec3 other = s.points[k].w - p;
    const double lean = Dot(side, other) * perSide;
    Vec3 height = other - side * lean;
    height -= side * (Dot(side, height) * perSide);
    const double squared = LengthSquared(height);
    const bool needle = !(squared * perSide > kNeedleTriangle);

    const double along = -Dot(p, side) * perSide;
    const Vec3 across = p + side * along;
    const double weightK = -Dot(across, height) / squared;
    const double weightJ = along - lean * weightK;
    const double weightI = 1 - weightJ - weightK;
    if (!needle && weightI > 0 && weightJ > 0 && weightK > 0) {
        Nearest n;
        n.weights[i] = weightI;
        n.weights[j] = weightJ;
        n.weights[k] = weightK;
        n.point = across + height * weightK;
        n.point -= side * (Dot(n.point, side) * perSide);
        n.squared = LengthSquared(n.point);
        return n;
    }
    Nearest best;
    if (needle || !(weightK > 0))
        best = Better(best, NearestOfEdge(s, i, j));
    if (needle || !(weightI > 0))
        best = Better(best, NearestOfEdge(s, j, k));
    if (needle || !(weightJ > 0))
        best = Better(best, NearestOfEdge(s, k, i));
    return best;
}

/// Of those faces of a tetrahedron that stand opposite the vertices named.
Nearest NearestOfFaces(const Simplex& s, bool of0, bool of1, bool of2, bool of3) {
    Nearest best;
    if (of3)
        best = Better(best, NearestOfTriangle(s, 0, 1, 2));
    if (of2)
        best = Better(best, NearestOfTriangle(s, 0, 1, 3));
    if (of1)
        best = Better(best, NearestOfTriangle(s, 0, 2, 3));
    if (of0)
        best = Better(best, NearestOfTriangle(s, 1, 2, 3));
    return best;
}

/// `inside` tells whether the tetrahedron holds the origin.
Nearest NearestOfTetrahedron(const Simplex& s, bool& inside) {
    const Vec3& p = s.points[0].w;
    const Vec3& q = s.points[1].w;
    const Vec3& r = s.points[2].w;
    const Vec3& t = s.points[3].w;
    const Vec3 pq = q - p, pr = r - p, pt = t - p;
    const double volume = Dot(pq, Cross(pr, pt));
    const double sign = volume < 0 ? -1 : 1;
    // Volumes, signed, of the tetrahedra that the origin makes with the faces; from edges, which
    // are short where the origin is far.
    const double ofP = sign * Dot(q, Cross(r - q, t - q));
    const double ofQ = -sign * Dot(p, Cross(pr, pt));
    const double ofR = sign * Dot(p, Cross(pq, pt));
    const double ofT = -sign * Dot(p, Cross(pq, pr));
    const double edges = LengthSquared(pq) * LengthSquared(pr) * LengthSquared(pt);
    const bool flat = !(volume * volume > kFlatTetrahedron * edges);
    inside = !flat && ofP >= 0 && ofQ >= 0 && ofR >= 0 && ofT >= 0;
    if (inside) {
        const double sum = ofP + ofQ + ofR + ofT;
        Nearest n;
        n.weights[0] = ofP / sum;
        n.weights[1] = ofQ / sum;
        n.weights[2] = ofR / sum;
        n.weights[3] = ofT / sum;
        n.point = p * n.weights[0] + q * n.weights[1] + r * n.weights[2] + t * n.weights[3];
        n.squared = LengthSquared(n.point);
        const double size = std::max({MaxNorm(p), MaxNorm(q), MaxNorm(r), MaxNorm(t)});
        if (MaxNorm(n.point) <= kTouch * size)
            return n;
        // In a sliver the volumes tell inside from outside but as weights are rounding: a face then
        // comes nearer to the origin than they do.
        return Better(n, NearestOfFaces(s, true, true, true, true));
    }
    return NearestOfFaces(s, flat || ofP < 0, flat || ofQ < 0, flat || ofR < 0, flat || ofT < 0);
}

/// The point of the simplex nearest to the origin.
Nearest FindNearest(const Simplex& s, bool& inside) {
    switch (s.count) {
        case 1:
            return NearestOfVertex(s, 0);
        case 2:
            return NearestOfEdge(s, 0, 1);
        case 3:
            return NearestOfTriangle(s, 0, 1, 2);
        default:
            return NearestOfTetrahedron(s, inside);
    }
}

/// Reduces the simplex to the face that holds the point.
void Reduce(Simplex& s, const Nearest& n) {
    int kept = 0;
    for (int i = 0; i < s.count; ++i) {
        if (n.weights[i] > 0) {
            if (kept != i)
                s.points[kept] = s.points[i];
            s.weights[kept] = n.weights[i];
            ++kept;
        }
    }
    s.count = kept;
}

bool Holds(const Simplex& s, const Vec3& w) {
    for (int i = 0; i < s.count; ++i) {
        if (s.points[i].w == w)
            return true;
    }
    return false;
}

void Witness(const Simplex& s, GjkResult& result) {
    result.a = result.b = {};
    for (int i = 0; i < s.count; ++i) {
        result.a += s.points[i].a * s.weights[i];
        result.b += s.points[i].b * s.weights[i];
    }
}

double Square(double x) {
    return x * x;
}

/// The greatest certified lower bound of the distance, as the square of a fraction, which saves a
/// root and a division in every step.
struct LowerBound {
    double squaredAlong = 0;
    double squaredLength = 1;

    /// The support plane of direction v, of squared length `squared`, at `along` times its length.
    void Include(double along, double squared) {
        if (along > 0 && along * along * squaredLength > squaredAlong * squared) {
            squaredAlong = along * along;
            squaredLength = squared;
        }
    }
    bool IsAtLeast(double distanceSquared) const {
        return squaredAlong >= distanceSquared * squaredLength;
    }
};

}  // namespace

GjkResult RunGjk(const Core& a, const Core& b, GjkQuestion question, Simplex* last) {
    const double radius = a.radius + b.radius;
    GjkResult result;
    bool decided = false;
    const auto decide = [&](bool contact) {
        if (!decided) {
            decided = true;
            result.contact = contact;
        }
        return question == GjkQuestion::kContact ||
               (question == GjkQuestion::kDistance && result.contact);
    };

    Simplex simplex;
    const Vec3 towardsB = b.centre - a.centre;
    simplex.points[0] = SupportDifference(a, b, towardsB);
    simplex.weights[0] = 1;
    simplex.count = 1;
    Vec3 v = simplex.points[0].w;
    double squared = LengthSquared(v);
    double scale = std::max(MaxNorm(v), MaxNorm(simplex.points[0].a - a.centre));
    LowerBound lower;
    int stalls = 0;
    const auto isApart = [&](double along, double lengthSquared) {
        return along > 0 && along * along > Square(radius + kTouch * scale) * lengthSquared;
    };
    // The line of the middles tells of most bodies that are far from each other.
    if (isApart(-Dot(towardsB, v), LengthSquared(towardsB)) && decide(false))
        return result;

    for (int step = 0; step < kMaxDistanceSteps; ++step) {
        if (squared <= Square(kTouch * scale)) {
            result.coresTouch = true;
            break;
        }
        if (squared <= radius * radius && decide(true))
            break;
        const SupportPoint next = SupportDifference(a, b, -v);
        scale = std::max({scale, MaxNorm(next.w), MaxNorm(next.a - a.centre)});
        const double along = Dot(v, next.w);
        lower.Include(along, squared);
        if (isApart(along, squared) && decide(false))
            break;
        if (lower.IsAtLeast(Square(1 - kDistanceGap) * squared) ||
            Square(squared - along) <= Square(kDistanceFloor * scale) * squared ||
            Holds(simplex, next.w)) {
            break;
        }
        simplex.points[simplex.count++] = next;
        bool inside = false;
        const Nearest nearest = FindNearest(simplex, inside);
        if (inside) {
            Reduce(simplex, nearest);
            result.coresTouch = true;
            break;
        }
        // Near contact a step may turn v by more than rounding and yet shorten it by less.
        const auto isNoise = [&] {
            return nearest.squared < squared + kDistanceFloor * scale * std::sqrt(squared);
        };
        if (!(nearest.squared < squared) && (!isNoise() || ++stalls > kMaxStalls)) {
            --simplex.count;
            break;  // no better point will be found
        }
        Reduce(simplex, nearest);
        v = nearest.point;
        squared = nearest.squared;
    }

    if (last != nullptr)
        *last = simplex;
    if (result.coresTouch)
        decide(true);
    const double distance = result.coresTouch ? 0 : std::sqrt(squared);
    decide(distance <= radius + kTouch * scale);
    if (question == GjkQuestion::kContact)
        return result;
    Witness(simplex, result);
    if (result.coresTouch) {
        result.a = result.b = (result.a + result.b) * 0.5;
    } else {
        result.distance = distance;
        result.axis = v * (1 / distance);
        // The weights are rounding where the simplex is thin: the points shall be v apart.
        const Vec3 off = (v - (result.a - result.b)) * 0.5;
        result.a += off;
        result.b -= off;
    }
    return result;
}

}  // namespace solid
