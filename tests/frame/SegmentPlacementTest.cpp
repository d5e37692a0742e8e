#include "collision/SegmentPlacement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

using Point = std::array<float, 3>;

double Dot(const std::array<float, 16>& m, int column1, int column2) {
    double sum = 0;
    for (int i = 0; i < 3; ++i) {
        sum += static_cast<double>(m[static_cast<std::size_t>(4 * column1 + i)]) *
               static_cast<double>(m[static_cast<std::size_t>(4 * column2 + i)]);
    }
    return sum;
}

struct Segment {
    const char* what;
    Point start;
    Point end;
};

std::vector<Segment> Segments() {
    std::vector<Segment> segments = {
        {"up", {1, 2, 3}, {1, 5, 3}},
        {"down", {1, 2, 3}, {1, -5, 3}},
        {"nearly down", {0, 0, 0}, {1e-7F, -1, 0}},
        {"nearly up", {0, 0, 0}, {0, 1, 1e-30F}},
        {"along x", {0, 0, 0}, {4, 0, 0}},
        {"along -z", {0, 0, 0}, {0, 0, -4}},
        {"smallest", {0, 0, 0}, {std::numeric_limits<float>::denorm_min(), 0, 0}},
        {"huge", {-1e38F, 1e38F, 0}, {1e38F, -1e38F, 1e38F}},
        {"small, far away", {1e6F, 1e6F, 1e6F}, {1e6F + 0.0625F, 1e6F, 1e6F}},
    };
    std::mt19937 random(1);
    std::uniform_real_distribution<float> uniform(-10, 10);
    for (int i = 0; i < 1000; ++i) {
        segments.push_back({"random",
                            {uniform(random), uniform(random), uniform(random)},
                            {uniform(random), uniform(random), uniform(random)}});
    }
    return segments;
}

TEST(SegmentPlacement, CarriesTheUnitSegmentOntoTheGivenOne) {
    for (const Segment& s : Segments()) {
        SCOPED_TRACE(s.what);
        const std::array<float, 16> m = PlaceUnitSegment(s.start, s.end);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(s.start[i], m[12 + i]);
            EXPECT_EQ(s.end[i] - s.start[i], m[4 + i]);
        }
        EXPECT_EQ(1.0F, m[15]);
    }
}

TEST(SegmentPlacement, TurnsWithoutStretchingAcross) {
    for (const Segment& s : Segments()) {
        SCOPED_TRACE(s.what);
        const std::array<float, 16> m = PlaceUnitSegment(s.start, s.end);
        const double length = std::sqrt(Dot(m, 1, 1));
        EXPECT_NEAR(1.0, Dot(m, 0, 0), 1e-6);
        EXPECT_NEAR(1.0, Dot(m, 2, 2), 1e-6);
        EXPECT_NEAR(0.0, Dot(m, 0, 2), 1e-6);
        EXPECT_NEAR(0.0, Dot(m, 0, 1) / length, 1e-5);
        EXPECT_NEAR(0.0, Dot(m, 2, 1) / length, 1e-5);
        // x, y and z stay right-handed: z is x times y.
        const double zx = static_cast<double>(m[1]) * static_cast<double>(m[6]) -
                          static_cast<double>(m[2]) * static_cast<double>(m[5]);
        EXPECT_NEAR(static_cast<double>(m[8]), zx / length, 1e-5);
    }
}

TEST(SegmentPlacement, OfLengthZeroIsThePoint) {
    const std::array<float, 16> m = PlaceUnitSegment({1, 2, 3}, {1, 2, 3});
    EXPECT_EQ((std::array<float, 16>{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1}), m);
}

}  // namespace
