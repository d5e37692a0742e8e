/// The oracle against closed forms, and against its own certificates.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "Convex.h"
#include "Depth.h"
#include "Distance.h"
#include "Random.h"

namespace oracle {
namespace {

Convex One(const Spec& spec) {
    return Pieces(spec)[0];
}

double Middle(const Distance& d) {
    return (d.lower + d.upper) / 2;
}

Spec Sized(Kind kind, double a, double b, double c) {
    Spec spec;
    spec.kind = kind;
    spec.size = {static_cast<float>(a), static_cast<float>(b), static_cast<float>(c)};
    return spec;
}

Spec Moved(Random& random, Spec spec, double reach) {
    return At(std::move(spec), static_cast<float>(random.Uniform(-reach, reach)),
              static_cast<float>(random.Uniform(-reach, reach)),
              static_cast<float>(random.Uniform(-reach, reach)));
}

TEST(Oracle, SpheresAreAsFarApartAsTheirMiddlesLessTheirRadii) {
    Random random(1);
    for (int i = 0; i < 2000; ++i) {
        const Convex a = One(Moved(random, Sized(Kind::kSphere, random.Uniform(0.1, 2), 0, 0), 2));
        const Convex b = One(Moved(random, Sized(Kind::kSphere, random.Uniform(0.1, 2), 0, 0), 2));
        const double apart = Length(a.centre - b.centre) - a.axis[0].x - b.axis[0].x;
        const Distance d = DistanceOf(a, b);
        ASSERT_NEAR(Middle(d), std::max(0.0, apart), 1e-9);
        if (apart < -1e-5) {
            ASSERT_GE(d.inside, 1e-7);
            ASSERT_NEAR(DepthOf(a, b).value, -apart, 1e-9);
        } else if (apart > 1e-5) {
            ASSERT_LT(d.inside, 0);
        }
    }
}

TEST(Oracle, ParallelBoxesAreAsFarApartAsTheirIntervals) {
    Random random(2);
    for (int i = 0; i < 2000; ++i) {
        const auto box = [&] {
            return One(Moved(random,
                             Sized(Kind::kBox, random.Uniform(0.1, 3), random.Uniform(0.1, 3),
                                   random.Uniform(0.1, 3)),
                             2));
        };
        const Convex a = box();
        const Convex b = box();
        Vec3 gap;
        for (int k = 0; k < 3; ++k) {
            gap[k] = std::fabs(a.centre[k] - b.centre[k]) - a.axis[k][k] - b.axis[k][k];
        }
        const Distance d = DistanceOf(a, b);
        ASSERT_NEAR(Middle(d), Length(Max(gap, Vec3{})), 1e-9);
        const double depth = -std::max({gap.x, gap.y, gap.z});
        if (depth > 1e-5) {
            ASSERT_GE(d.inside, 1e-7);
            ASSERT_NEAR(DepthOf(a, b).value, depth, 1e-12);
            ASSERT_NEAR(SearchedDepthOf(a, b).value, depth, 1e-5);
        }
    }
}

TEST(Oracle, PointsBesideCylinderAndCone) {
    Random random(3);
    for (int i = 0; i < 2000; ++i) {
        const Spec cylinder =
            Sized(Kind::kCylinder, random.Uniform(0.1, 2), random.Uniform(0.1, 2), 0);
        Spec cone = cylinder;
        cone.kind = Kind::kCone;
        const double radius = static_cast<double>(cylinder.size[0]);
        const double half = static_cast<double>(cylinder.size[1]) / 2;
        const Vec3 p{random.Uniform(-3, 3), random.Uniform(-3, 3), random.Uniform(-3, 3)};
        const double r = std::hypot(p.x, p.z);
        const double besides = std::max(0.0, r - radius);
        ASSERT_NEAR(DistanceOfPoint(p, Pieces(cylinder)),
                    std::hypot(besides, std::max(0.0, std::fabs(p.y) - half)), 1e-9);

        // In the half-plane of the point, the cone is a triangle: tip, rim, middle of the bottom.
        const double slant = std::hypot(radius, 2 * half);
        const double outside = (r * 2 * half + (p.y - half) * radius) / slant;
        const double along = (r * radius - (p.y - half) * 2 * half) / slant;
        double expected = 0;
        if (p.y < -half && r <= radius) {
            expected = -half - p.y;
        } else if (outside > 0 || p.y < -half) {
            const double t = std::clamp(along, 0.0, slant);
            expected = std::hypot(outside, along - t);
        }
        ASSERT_NEAR(DistanceOfPoint(p, Pieces(cone)), expected, 1e-9);
    }
}

TEST(Oracle, DepthOfASphereInABoxIsToTheNearestSide) {
    const Convex box = One(Box(4, 6, 8));
    const Convex sphere = One(At(Sphere(0.5F), 1, 0, 0));
    EXPECT_NEAR(DepthOf(sphere, box).value, 1.5, 1e-9);
    EXPECT_NEAR(DepthOf(sphere, box).direction.x, 1, 1e-4);
    EXPECT_NEAR(DepthOf(box, sphere).direction.x, -1, 1e-4);
    EXPECT_NEAR(DepthOf(box, One(WithMargin(At(Box(1, 1, 1), 2.75F, 0, 0), 0.5F))).value, 0.25,
                1e-9);
    EXPECT_NEAR(DepthOf(box, One(WithMargin(At(Box(1, 1, 1), 2, 0, 0), 0.5F))).value, 1, 1e-9);
}

TEST(Oracle, FlatDifferencesHaveNoDepth) {
    const Convex line = One(Segment({-1, 0, 0}, {1, 0, 0}));
    EXPECT_EQ(DepthOf(line, One(Segment({0, 0, 0}, {3, 0, 0}))).value, 0);
    EXPECT_EQ(DepthOf(line, One(Segment({0, -1, 0}, {0, 1, 0}))).value, 0);
    EXPECT_EQ(DepthOf(line, One(Polytope({{0.5F, 0, 0}}))).value, 0);
    EXPECT_EQ(DepthOf(One(Polytope({{1, 1, 1}})), One(Polytope({{1, 1, 1}}))).value, 0);
    EXPECT_EQ(DepthOf(One(Box(2, 0, 2)), One(Box(1, 0, 4))).value, 0);
    EXPECT_EQ(DepthOf(One(Box(2, 0, 2)), One(Box(1, 2, 4))).value, 1);
    // Points that are in one line but for rounding.
    const Convex row = One(Polytope({{0.1F, 0.7F, 0.3F}, {0.2F, 1.4F, 0.6F}, {0.3F, 2.1F, 0.9F}}));
    const Convex ends = One(Segment({0.1F, 0.7F, 0.3F}, {0.3F, 2.1F, 0.9F}));
    EXPECT_NEAR(DepthOf(row, One(Box(2, 2, 2))).value, DepthOf(ends, One(Box(2, 2, 2))).value,
                1e-6);
}

/// Every kind with every other: the two bounds meet, a point found to be inside both is so, and the
/// exact depth of polyhedra is what the search finds.
TEST(Oracle, BoundsMeetForAllKinds) {
    Random random(6);
    int unsure = 0;
    int pairs = 0;
    for (int i = 0; i < 20000; ++i) {
        const Kind kind1 = static_cast<Kind>(random.Below(kKindCount - 1));
        const Kind kind2 = static_cast<Kind>(random.Below(kKindCount - 1));
        const Pair pair = RandomPair(random, kind1, kind2);
        const Convex a = One(pair.a);
        const Convex b = One(pair.b);
        const double size = a.Radius() + b.Radius();
        const Distance d = DistanceOf(a, b);
        ++pairs;
        ASSERT_LE(d.lower, d.upper + 1e-12 * size);
        unsure += d.inside < 1e-7 && d.upper < 1e-6 * size ? 1 : 0;
        if (d.inside >= 1e-7) {
            ASSERT_LT(Length(d.point1 - d.point2), 1e-9 * size);
        } else {
            EXPECT_LT(d.upper - d.lower, 1e-9 * size)
                << d.upper << " " << d.inside << " " << Describe(pair.a) << Describe(pair.b);
            ASSERT_NEAR(Length(d.point1 - d.point2), d.upper, 1e-9 * size);
        }
        if (i % 20 == 0 && d.inside >= 1e-7 && a.IsPolyhedral() && b.IsPolyhedral()) {
            const Depth exact = DepthOf(a, b);
            const Depth searched = SearchedDepthOf(a, b);
            ASSERT_GE(searched.value, exact.value - 1e-9 * size);
            EXPECT_NEAR(searched.value, exact.value, 1e-3 * exact.value + 1e-6 * size);
        }
    }
    EXPECT_LT(unsure, pairs / 500);
}

}  // namespace
}  // namespace oracle
