/// Yes or no about millions of random pairs of each two kinds, each answer proved from what the
/// engine itself says: a plane between the two proves them apart, a common point in contact. What
/// that leaves open, mostly next to touching, is given to the oracle.
///
///   solid_millions [PAIRS [SEED [FIRST SECOND]]]     kinds by name, as Box or Cone
///
/// Prints a line for each two kinds; ends with 1 when an answer was wrong by more than a gap or an
/// overlap of 1e-6 of the size.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "Check.h"
#include "Convex.h"
#include "Depth.h"
#include "Distance.h"
#include "Engine.h"
#include "Random.h"

namespace oracle {
namespace {

/// Of the simple sets: u moved into the set, not always by the shortest way.
Vec3 MovedInside(Convex::Set set, Vec3 u) {
    const auto clamp = [](double& x, double most) { x = std::clamp(x, -most, most); };
    double most = 1;
    if (set == Convex::Set::kBox) {
        clamp(u.x, 1), clamp(u.y, 1), clamp(u.z, 1);
        return u;
    }
    if (set == Convex::Set::kBall) {
        return u * (1 / std::max(1.0, Length(u)));
    }
    clamp(u.y, 1);
    if (set == Convex::Set::kCone) {
        most = (1 - u.y) / 2;
    }
    const double radius = std::sqrt(u.x * u.x + u.z * u.z);
    if (radius > most) {
        u.x *= most / radius;
        u.z *= most / radius;
    }
    return u;
}

/// An upper bound of how far the point is from the set.
double Off(const Convex& c, const Vec3& point) {
    const Vec3 p = point - c.centre;
    const bool tetrahedron = c.set == Convex::Set::kHull && c.vertices.size() == 4;
    const Vec3 origin = tetrahedron ? c.vertices[3] : Vec3{};
    Vec3 axis[3] = {c.axis[0], c.axis[1], c.axis[2]};
    if (tetrahedron) {
        for (std::size_t i = 0; i < 3; ++i) {
            axis[i] = c.vertices[i] - origin;
        }
    }
    const double volume = Dot(axis[0], Cross(axis[1], axis[2]));
    if (volume != 0 && (tetrahedron || c.set != Convex::Set::kHull)) {
        const Vec3 q = p - origin;
        const Vec3 u{Dot(q, Cross(axis[1], axis[2])) / volume,
                     Dot(q, Cross(axis[2], axis[0])) / volume,
                     Dot(q, Cross(axis[0], axis[1])) / volume};
        Vec3 inside;
        if (tetrahedron) {
            inside = Max(u, Vec3{});
            inside *= 1 / std::max(1.0, inside.x + inside.y + inside.z);
        } else {
            inside = MovedInside(c.set, u);
        }
        const Vec3 there = axis[0] * inside.x + axis[1] * inside.y + axis[2] * inside.z;
        const double off = Length(q - there) - c.margin;
        if (off <= 0 || c.margin == 0) {
            return std::max(0.0, off);
        }
    }
    return DistanceOfPoint(point, {c});
}

class Judge {
  public:
    /// Whether the answer is wrong.
    bool IsWrong(const Pair& pair) {
        const Vec3 reference = Widened(&pair.a.matrix[12]);
        const std::vector<Convex> a = Pieces(pair.a, reference);
        const std::vector<Convex> b = Pieces(pair.b, reference);
        const double slack = bar::kTouching * (Radius(a) + Radius(b));
        const EngineObject object1(pair.a);
        const EngineObject object2(pair.b);
        Point point1{};
        Point point2{};
        const bool contact = DT_InContact(object1.Handle(), object2.Handle());
        const float distance =
            DT_GetClosestPair(object1.Handle(), object2.Handle(), point1.data(), point2.data());
        ++pairs;
        touching += contact ? 1 : 0;
        if (contact != (distance == 0)) {
            return true;
        }
        return contact ? !HaveInCommon(a, b, Widened(point1.data()) - reference, slack)
                       : !AreApart(a, b, Widened(point1.data()) - Widened(point2.data()), slack);
    }
    long pairs = 0;
    long touching = 0;
    long asked = 0;  ///< of the oracle

  private:
    bool HaveInCommon(const std::vector<Convex>& a, const std::vector<Convex>& b, const Vec3& point,
                      double slack) {
        const auto isNear = [&](const Convex& c) {
            return Length(point - c.centre) <= c.Radius() + slack && Off(c, point) <= slack / 4;
        };
        if (std::any_of(a.begin(), a.end(), isNear) && std::any_of(b.begin(), b.end(), isNear)) {
            return true;
        }
        ++asked;
        return DistanceOf(a, b).lower <= slack;
    }
    bool AreApart(const std::vector<Convex>& a, const std::vector<Convex>& b, const Vec3& n,
                  double slack) {
        bool known = true;
        for (const Convex& p : a) {
            for (const Convex& q : b) {
                if (-Overlap(p, q, n) > 0 || -Overlap(p, q, p.centre - q.centre) > 0) {
                    continue;
                }
                known = false;
                if (DistanceOf(p, q).inside > bar::kTouching && DepthOf(p, q).value > slack) {
                    return false;
                }
            }
        }
        asked += known ? 0 : 1;
        return true;
    }
};

/// Tells whether all answers were right.
bool Run(Kind first, Kind second, long count, std::uint64_t seed) {
    Random random(seed * 1000 + static_cast<std::uint64_t>(first) * 10 +
                  static_cast<std::uint64_t>(second));
    Judge judge;
    long wrong = 0;
    for (long i = 0; i < count; ++i) {
        const Pair pair = PairOfAnySort(random, first, second, i % 16 == 0);
        if (judge.IsWrong(pair)) {
            if (wrong++ == 0) {
                std::printf("%s%s", Describe(pair.a).c_str(), Describe(pair.b).c_str());
            }
        }
    }
    std::printf("%-8s %-8s %10ld pairs, %10ld in contact, %8ld by the oracle, %ld wrong\n",
                Name(first), Name(second), judge.pairs, judge.touching, judge.asked, wrong);
    std::fflush(stdout);
    return wrong == 0;
}

}  // namespace
}  // namespace oracle

int main(int argc, char** argv) {
    using oracle::Kind;
    const long count = argc > 1 ? std::atol(argv[1]) : 10000000;
    const auto seed = static_cast<std::uint64_t>(argc > 2 ? std::atol(argv[2]) : 1);
    bool right = true;
    for (int i = 0; i < oracle::kKindCount; ++i) {
        for (int k = i; k < oracle::kKindCount; ++k) {
            const Kind first = static_cast<Kind>(i);
            const Kind second = static_cast<Kind>(k);
            if (argc > 4 && (std::strcmp(argv[3], Name(first)) != 0 ||
                             std::strcmp(argv[4], Name(second)) != 0)) {
                continue;
            }
            right = oracle::Run(first, second, count, seed) && right;
        }
    }
    return right ? 0 : 1;
}
