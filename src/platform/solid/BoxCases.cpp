#include "platform/solid/BoxCases.h"

#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// Half edges of both boxes, and what rounding is at their size.
struct Generators {
    Vec3 of[6];
    Vec3 apart;
    double scale = 0;
    double rounding = 0;

    Generators(const Core& a, const Core& b) : apart(a.centre - b.centre) {
        for (int i = 0; i < 3; ++i) {
            of[i] = a.linear.col[i] * a.half[i];
            of[3 + i] = b.linear.col[i] * b.half[i];
            scale = std::max({scale, MaxNorm(of[i]), MaxNorm(of[3 + i])});
        }
        rounding = kTouch * std::max(scale, MaxNorm(apart));
    }
    /// How far the difference body reaches along an axis of any length.
    double Reach(const Vec3& axis) const {
        double reach = 0;
        for (const Vec3& g : of)
            reach += std::fabs(Dot(axis, g));
        return reach;
    }
    bool Parts(const Vec3& axis) const {
        const double gap = std::fabs(Dot(axis, apart)) - Reach(axis);
        return gap > 0 && gap * gap > rounding * rounding * LengthSquared(axis);
    }
    /// Along the axis across edges i and j.
    bool EdgesPart(int i, int j) const {
        const Vec3 axis = Cross(of[i], of[j]);
        return LengthSquared(axis) > kParallel * LengthSquared(of[i]) * LengthSquared(of[j]) &&
               Parts(axis);
    }
    /// A box with more than this has volume, for certain: its half edges are neither short nor
    /// nearly in a plane.
    double LeastVolume() const { return kFlat * scale * scale * scale; }
    bool HasVolume(int first) const {
        return std::fabs(Dot(of[first], Cross(of[first + 1], of[first + 2]))) > LeastVolume();
    }
};

/// For boxes of any affine placement: nothing is taken to be at right angles.
BoxAnswer AskAllAxes(const Generators& g) {
    for (int box = 0; box < 6; box += 3) {
        for (int i = 0; i < 3; ++i) {
            if (g.Parts(Cross(g.of[box + i], g.of[box + (i + 1) % 3])))
                return BoxAnswer::kApart;
        }
    }
    for (int i = 0; i < 3; ++i) {
        for (int j = 3; j < 6; ++j) {
            if (g.EdgesPart(i, j))
                return BoxAnswer::kApart;
        }
    }
    return g.HasVolume(0) || g.HasVolume(3) ? BoxAnswer::kTouch : BoxAnswer::kUnknown;
}

}  // namespace

/// The fifteen axes of two boxes with right angles (Stefan Gottschalk, "Separating axis theorem",
/// 1996), by triple products: with the normals n of a's faces and m of b's, taken as cross products
/// of half edges, the half edges g of a and h of b reach n.h and m.g along any of the axes, the
/// edge axes g x h included.
BoxAnswer AskBoxAxes(const Core& a, const Core& b) {
    const Generators generators(a, b);
    if (!a.traits.rigid || !b.traits.rigid)
        return AskAllAxes(generators);
    const Vec3* const g = generators.of;
    const Vec3* const h = generators.of + 3;
    const Vec3& t = generators.apart;
    const auto parts = [&](const Vec3& axis, double gap) {
        const double rounding = generators.rounding;
        return gap > 0 && gap * gap > rounding * rounding * LengthSquared(axis);
    };

    const Vec3 n[3] = {Cross(g[1], g[2]), Cross(g[2], g[0]), Cross(g[0], g[1])};
    double nh[3][3];
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            nh[i][j] = std::fabs(Dot(n[i], h[j]));
        const double reach = std::fabs(Dot(n[i], g[i])) + nh[i][0] + nh[i][1] + nh[i][2];
        if (parts(n[i], std::fabs(Dot(n[i], t)) - reach))
            return BoxAnswer::kApart;
    }
    const Vec3 m[3] = {Cross(h[1], h[2]), Cross(h[2], h[0]), Cross(h[0], h[1])};
    double mg[3][3];
    for (int j = 0; j < 3; ++j) {
        for (int i = 0; i < 3; ++i)
            mg[j][i] = std::fabs(Dot(m[j], g[i]));
        const double reach = std::fabs(Dot(m[j], h[j])) + mg[j][0] + mg[j][1] + mg[j][2];
        if (parts(m[j], std::fabs(Dot(m[j], t)) - reach))
            return BoxAnswer::kApart;
    }
    // What looks like a gap within rounding is measured along the axis itself.
    const double unsure =
        -kTripleRounding * generators.scale * generators.scale * (generators.scale + MaxNorm(t));
    for (int i = 0; i < 3; ++i) {
        const int i1 = (i + 1) % 3, i2 = (i + 2) % 3;
        const Vec3 moment = Cross(t, g[i]);
        for (int j = 0; j < 3; ++j) {
            const int j1 = (j + 1) % 3, j2 = (j + 2) % 3;
            const double reach = nh[i1][j] + nh[i2][j] + mg[j1][i] + mg[j2][i];
            if (std::fabs(Dot(moment, h[j])) - reach > unsure && generators.EdgesPart(i, 3 + j))
                return BoxAnswer::kApart;
        }
    }
    const bool full = std::fabs(Dot(g[0], n[0])) > generators.LeastVolume() ||
                      std::fabs(Dot(h[0], m[0])) > generators.LeastVolume();
    return full ? BoxAnswer::kTouch : BoxAnswer::kUnknown;
}

}  // namespace solid
