#include "platform/maverik/Triangulation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "platform/maverik/MeshBuilder.h"

namespace {

using Outline = std::vector<MAV_vector>;

std::vector<std::uint32_t> Triangulate(const Outline& outline,
                                       const MAV_vector& normal = {0, 0, 0}) {
    std::vector<std::uint32_t> triangles;
    Triangulator().Add(outline.data(), outline.size(), normal, 0, triangles);
    return triangles;
}

double AreaXy(const Outline& outline, const std::vector<std::uint32_t>& corners, std::size_t first,
              std::size_t count) {
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const MAV_vector& a = outline[corners[first + i]];
        const MAV_vector& b = outline[corners[first + (i + 1) % count]];
        sum += static_cast<double>(a.x) * b.y - static_cast<double>(b.x) * a.y;
    }
    return sum / 2;
}

/// The triangles turn as the outline does and their areas add up to its own: together with being
/// made of its corners, n - 2 of them, that leaves no room for one that reaches outside.
void ExpectFilled(const Outline& outline) {
    const std::vector<std::uint32_t> triangles = Triangulate(outline);
    std::vector<std::uint32_t> all(outline.size());
    for (std::size_t i = 0; i < all.size(); ++i)
        all[i] = static_cast<std::uint32_t>(i);
    const double area = AreaXy(outline, all, 0, all.size());
    double sum = 0;
    for (std::size_t i = 0; i < triangles.size(); i += 3) {
        const double one = AreaXy(outline, triangles, i, 3);
        EXPECT_GT(one * area, 0);
        sum += one;
    }
    EXPECT_LE(triangles.size(), 3 * (outline.size() - 2));
    EXPECT_NEAR(sum, area, 1e-9 * std::abs(area) * static_cast<double>(outline.size()));
}

Outline Star(int corners, double least, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> radius(least, 1);
    Outline outline;
    for (int i = 0; i < corners; ++i) {
        const double angle = 2 * std::numbers::pi * i / corners, r = radius(random);
        outline.push_back(
            {static_cast<float>(r * std::cos(angle)), static_cast<float>(r * std::sin(angle)), 0});
    }
    return outline;
}

Outline Comb(int teeth) {
    Outline outline = {{static_cast<float>(teeth), -1, 0}};
    for (int i = teeth; i-- > 0;) {
        const auto x = static_cast<float>(i);
        outline.insert(outline.end(), {{x + 0.9f, 100, 0}, {x + 0.1f, 0, 0}});
    }
    outline.push_back({0, -1, 0});
    return outline;
}

Outline Spiral(int turns, int steps) {
    Outline outline;
    for (const int way : {1, -1}) {
        for (int k = 0; k <= turns * steps; ++k) {
            const int i = way > 0 ? k : turns * steps - k;
            const double angle = 2 * std::numbers::pi * i / steps;
            const double r = 1 + angle + (way > 0 ? 0 : 2);
            outline.push_back({static_cast<float>(r * std::cos(angle)),
                               static_cast<float>(r * std::sin(angle)), 0});
        }
    }
    return outline;
}

TEST(Triangulation, FillsConcaveOutlines) {
    ExpectFilled({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {2, 1, 0}, {0, 4, 0}});
    ExpectFilled({{0, 0, 0}, {0, 4, 0}, {4, 4, 0}, {4, 0, 0}, {3, 3, 0}});
    // Corners on straight edges, twice in one place, and a bridge to a hole.
    ExpectFilled({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 2, 0}, {2, 2, 0}, {0, 2, 0}, {0, 1, 0}});
    ExpectFilled({{0, 0, 0},
                  {9, 0, 0},
                  {9, 9, 0},
                  {0, 9, 0},
                  {0, 0, 0},
                  {3, 3, 0},
                  {3, 6, 0},
                  {6, 6, 0},
                  {6, 3, 0},
                  {3, 3, 0}});
    for (unsigned seed = 0; seed < 300; ++seed)
        ExpectFilled(Star(4 + static_cast<int>(seed) % 60, 0.05, seed));
    ExpectFilled(Comb(50));
    ExpectFilled(Spiral(5, 40));
}

TEST(Triangulation, FillsLargeOutlines) {
    ExpectFilled(Star(20000, 0.01, 1));
    ExpectFilled(Comb(10000));
    ExpectFilled(Spiral(50, 200));
}

TEST(Triangulation, KeepsTheSenseInAnyPlane) {
    for (const Outline& flat :
         {Star(30, 0.1, 3), Outline{{0, 0, 0}, {0, 4, 0}, {4, 4, 0}, {3, 3, 0}}}) {
        for (int axis = 0; axis < 3; ++axis) {
            Outline turned;
            for (const MAV_vector& v : flat) {
                turned.push_back(axis == 0   ? MAV_vector{5, v.x, v.y}
                                 : axis == 1 ? MAV_vector{v.y, 5, v.x}
                                             : MAV_vector{v.x, v.y, 5});
            }
            EXPECT_EQ(Triangulate(turned), Triangulate(flat)) << axis;
        }
    }
}

TEST(Triangulation, EndsWithAnyInput) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(Triangulate({}).empty());
    EXPECT_TRUE(Triangulate({{0, 0, 0}, {1, 0, 0}}).empty());
    EXPECT_TRUE(Triangulate({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}).empty());
    EXPECT_TRUE(Triangulate({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}}).empty());
    EXPECT_TRUE(Triangulate({{0, 0, 0}, {1, 0, 0}, {kNan, 1, 0}, {0, 1, 0}}).empty());
    // Two equal lobes have no normal of their own.
    const Outline bow = {{0, 0, 0}, {1, 1, 0}, {1, 0, 0}, {0, 1, 0}};
    EXPECT_TRUE(Triangulate(bow).empty());
    EXPECT_FALSE(Triangulate(bow, {0, 0, 1}).empty());
    std::mt19937 random(5);
    std::uniform_real_distribution<float> number(-1, 1);
    std::uniform_int_distribution<int> coarse(0, 3);
    for (int round = 0; round < 2000; ++round) {
        Outline tangle(4 + static_cast<std::size_t>(round) % 40);
        for (MAV_vector& v : tangle) {
            v = round % 2 == 0 ? MAV_vector{number(random), number(random), number(random)}
                               : MAV_vector{static_cast<float>(coarse(random)),
                                            static_cast<float>(coarse(random)), 0};
        }
        const std::vector<std::uint32_t> triangles = Triangulate(tangle);
        EXPECT_LE(triangles.size(), 3 * (tangle.size() - 2));
        for (const std::uint32_t corner : triangles)
            EXPECT_LT(corner, tangle.size());
    }
    Outline large(20000);
    for (MAV_vector& v : large)
        v = {number(random), number(random), 0};
    EXPECT_LE(Triangulate(large).size(), 3 * (large.size() - 2));
}

TEST(MeshBuilder, EqualVerticesBecomeOne) {
    Geometry geometry;
    geometry.pieces = 2;
    geometry.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {-0.0f, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    const Mesh plain = BuildPolygons(geometry, {0, 0, 0});
    EXPECT_EQ(plain.indices, (std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(plain.vertices.size(), 12u);
    // Not where the texture is another one.
    geometry.texCoords = {{0, 0}, {1, 0}, {1, 1}, {0, 0}, {0, 1}, {0, 1}};
    const Mesh textured = BuildPolygons(geometry, {0, 0, 0});
    EXPECT_EQ(textured.indices, (std::vector<std::uint32_t>{0, 1, 2, 0, 3, 4}));
    EXPECT_EQ(textured.vertices.size(), 25u);
}

TEST(MeshBuilder, UnitShapesFaceOutwards) {
    const UnitShape shapes[] = {
        {mav_class_box, 0, 0, false, 0, 0},    {mav_class_sphere, 25, 25, false, 0, 0},
        {mav_class_sphere, 3, 2, false, 0, 0}, {mav_class_cylinder, 25, 0, true, 1, 1},
        {mav_class_cone, 25, 0, true, 0, 1},   {mav_class_cone, 10, 0, true, 1, 0.5f}};
    for (const UnitShape& shape : shapes) {
        const Mesh mesh = BuildUnitShape(shape);
        double volume = 0;
        for (std::size_t i = 0; i < mesh.indices.size(); i += 3) {
            const auto vertex = [&](std::size_t k, std::size_t offset) {
                const float* v = &mesh.vertices[8 * mesh.indices[i + k] + offset];
                return MAV_vector{v[0], v[1], v[2]};
            };
            const MAV_vector a = vertex(0, 0), b = vertex(1, 0), c = vertex(2, 0);
            const MAV_vector across =
                mav_vectorCrossProduct(mav_vectorSub(b, a), mav_vectorSub(c, a));
            volume += mav_vectorDotProduct(a, across) / 6.0;
            for (std::size_t k = 0; k < 3; ++k)
                EXPECT_GT(mav_vectorDotProduct(across, vertex(k, 3)), 0);
        }
        // Closed: the volume is that of the shape but for its corners.
        const double r = shape.bottomRatio, t = shape.topRatio;
        const double round =
            shape.shape == mav_class_sphere ? 4.0 / 3 : (r * r + r * t + t * t) / 3;
        const double expected = shape.shape == mav_class_box ? 1 : std::numbers::pi * round;
        const double slack = shape.around == 3 ? 0.8 : shape.around == 10 ? 0.08 : 0.03;
        EXPECT_NEAR(volume, expected, slack * expected) << shape.shape;
    }
}

}  // namespace
