/// Meshes of many polygons: what the walk down the tree finds is what asking about each polygon
/// alone finds.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Engine.h"
#include "Random.h"

namespace oracle {
namespace {

double Widened(float value) {
    return static_cast<double>(value);
}

float Narrowed(double value) {
    return static_cast<float>(value);
}

/// A closed surface with bumps, of quadrangles (bent ones: hulls) or of two triangles for each.
Spec Bumpy(int around, int along, bool quadrangles) {
    constexpr double kPi = 3.14159265358979323846;
    const auto at = [&](int i, int j) {
        const double theta = kPi * i / along;
        const double phi = 2 * kPi * (j % around) / around;
        const double r = 1 + 0.2 * std::sin(5 * phi) * std::sin(6 * theta) * std::sin(theta);
        return Point{Narrowed(r * std::sin(theta) * std::cos(phi)),
                     Narrowed(r * std::sin(theta) * std::sin(phi)), Narrowed(r * std::cos(theta))};
    };
    std::vector<Point> points;
    std::vector<int> counts;
    const auto add = [&](std::initializer_list<Point> polygon) {
        points.insert(points.end(), polygon);
        counts.push_back(static_cast<int>(polygon.size()));
    };
    for (int i = 0; i < along; ++i) {
        for (int j = 0; j < around; ++j) {
            if (quadrangles) {
                add({at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1)});
            } else {
                add({at(i, j), at(i + 1, j), at(i, j + 1)});
                add({at(i + 1, j), at(i + 1, j + 1), at(i, j + 1)});
            }
        }
    }
    return Mesh(std::move(points), std::move(counts));
}

/// Triangles here and there, with needles, points and copies among them.
Spec Soup(Random& random, int count) {
    std::vector<Point> points;
    for (int i = 0; i < count; ++i) {
        if (i % 10 == 9) {
            const std::vector<Point> last(points.end() - 3, points.end());
            points.insert(points.end(), last.begin(), last.end());
            continue;
        }
        const Point corner = {Narrowed(random.Uniform(-1, 1)), Narrowed(random.Uniform(-1, 1)),
                              Narrowed(random.Uniform(-1, 1))};
        for (int k = 0; k < 3; ++k) {
            Point p = corner;
            const double size = i % 7 == 0 ? (k == 2 ? 1e-9 : 0.3) : i % 13 == 0 ? 0 : 0.2;
            for (float& x : p) {
                x += Narrowed(random.Uniform(-size, size));
            }
            points.push_back(p);
        }
    }
    return Mesh(std::move(points), std::vector<int>(static_cast<std::size_t>(count), 3));
}

/// Each polygon of a mesh as a mesh of its own, or the shape itself.
std::vector<Spec> Split(const Spec& spec) {
    if (spec.kind != Kind::kMesh) {
        return {spec};
    }
    std::vector<Spec> parts;
    auto first = spec.points.begin();
    for (const int count : spec.counts) {
        Spec part = spec;
        part.points.assign(first, first + count);
        part.counts = {count};
        parts.push_back(std::move(part));
        first += count;
    }
    return parts;
}

double Span(const Point& p, const Point& q) {
    double squared = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        squared += (Widened(p[i]) - Widened(q[i])) * (Widened(p[i]) - Widened(q[i]));
    }
    return std::sqrt(squared);
}

/// What the polygons say together.
class OneByOne {
  public:
    OneByOne(const Spec& a, const Spec& b) {
        std::vector<std::unique_ptr<EngineObject>> partsB;
        for (const Spec& part : Split(b)) {
            partsB.push_back(std::make_unique<EngineObject>(part));
        }
        for (const Spec& part : Split(a)) {
            const EngineObject partA(part);
            for (const auto& partB : partsB) {
                Add(partA, *partB);
            }
        }
    }
    void Expect(const Answers& answers, const std::string& text) const {
        EXPECT_EQ(answers.contact, contact) << text;
        EXPECT_EQ(answers.hasDepth, contact) << text;
        EXPECT_NEAR(Widened(answers.distance), distance, 1e-6) << text;
        if (!contact) {
            EXPECT_NEAR(Span(answers.point1, answers.point2), distance, 2e-6) << text;
        } else {
            EXPECT_NEAR(Span(answers.depth1, answers.depth2), depth, 2e-5 * depth + 2e-6) << text;
        }
    }
    bool contact = false;

  private:
    void Add(const EngineObject& a, const EngineObject& b) {
        Point p, q;
        const float apart = DT_GetClosestPair(a.Handle(), b.Handle(), p.data(), q.data());
        distance = std::min(distance, Widened(apart));
        if (apart == 0) {
            contact = true;
            ASSERT_TRUE(DT_GetPenDepth(a.Handle(), b.Handle(), p.data(), q.data()));
            depth = std::max(depth, Span(p, q));
        }
    }

    double distance = std::numeric_limits<double>::infinity();
    double depth = 0;
};

Spec Placed(Random& random, Spec spec, Placement placement) {
    spec.matrix = RandomPlacement(random, placement);
    return spec;
}

/// Pairs that touch or nearly do.
void ExpectPolygonsAgree(Random& random, const Spec& mesh, const Spec& other, int pairs) {
    static const Placement kPlacements[] = {Placement::kRigid, Placement::kUniform,
                                            Placement::kAffine, Placement::kSingular};
    int touching = 0;
    for (int i = 0; i < pairs; ++i) {
        Spec a = Placed(random, mesh, kPlacements[i % 4]);
        Spec b = Placed(random, other, kPlacements[i / 2 % 4]);
        if (i % 5 == 0) {
            a.margin = 0.1F;
        }
        if (i % 7 == 0) {
            b.margin = 0.05F;
        }
        const Pair pair = BroughtNear(random, std::move(a), std::move(b));
        const OneByOne expected(pair.a, pair.b);
        const std::string text = "pair " + std::to_string(i) + " of " + Name(other.kind);
        expected.Expect(Ask(pair.a, pair.b), text);
        expected.Expect(Swapped(Ask(pair.b, pair.a)), text);
        touching += expected.contact ? 1 : 0;
    }
    EXPECT_GT(touching, pairs / 20);
    EXPECT_LT(touching, pairs);
}

TEST(LargeMesh, AConvexBodyMeetsThePolygonsThatItMeetsOneByOne) {
    Random random(50);
    const Spec triangles = Bumpy(24, 12, false);
    const Spec quadrangles = Bumpy(16, 8, true);
    const Spec soup = Soup(random, 300);
    for (int kind = 0; kind < kKindCount - 1; ++kind) {
        for (const Spec* mesh : {&triangles, &quadrangles, &soup}) {
            ExpectPolygonsAgree(random, *mesh, RandomShape(random, static_cast<Kind>(kind)), 40);
        }
    }
}

TEST(LargeMesh, MeshesMeetWhereTheirPolygonsMeetOneByOne) {
    Random random(51);
    const Spec triangles = Bumpy(12, 6, false);
    const Spec quadrangles = Bumpy(10, 5, true);
    const Spec soup = Soup(random, 80);
    for (const Spec* mesh : {&triangles, &quadrangles, &soup}) {
        ExpectPolygonsAgree(random, triangles, *mesh, 24);
        ExpectPolygonsAgree(random, *mesh, soup, 24);
    }
}

/// One box far smaller than the triangles, or the mesh far away: neither precision nor patience
/// runs out.
TEST(LargeMesh, SizesAndDistancesMayBeFarFromEachOther) {
    Random random(52);
    const Spec mesh = Bumpy(24, 12, false);
    for (const float size : {1e-6F, 1e-3F, 1e3F, 1e6F}) {
        for (const float away : {0.0F, 2.0F, 1e3F, 1e6F}) {
            Spec box = Placed(random, Box(size, size / 2, size / 3), Placement::kRigid);
            box.matrix[12] = mesh.points[100][0] + away;
            box.matrix[13] = mesh.points[100][1];
            box.matrix[14] = mesh.points[100][2];
            const OneByOne expected(mesh, box);
            const Answers answers = Ask(mesh, box);
            EXPECT_EQ(answers.contact, expected.contact) << size << ' ' << away;
            EXPECT_EQ(answers.hasDepth, expected.contact) << size << ' ' << away;
            EXPECT_EQ(answers.distance == 0, expected.contact) << size << ' ' << away;
        }
    }
}

/// All polygons at one place, or along one line: no split tells them apart.
TEST(LargeMesh, PolygonsInOnePlaceMakeATreeToo) {
    std::vector<Point> points;
    for (int i = 0; i < 5000; ++i) {
        points.insert(points.end(), {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    }
    const Spec same = Mesh(points, std::vector<int>(5000, 3));
    EXPECT_TRUE(Ask(same, At(Sphere(0.5F), 0.25F, 0.25F, 0.5F)).contact);
    EXPECT_NEAR(Widened(Ask(same, At(Box(1, 1, 1), 0.25F, 0.25F, 1.5F)).distance), 1, 1e-6);
    EXPECT_EQ(Ask(same, same).distance, 0);
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i] = {std::ldexp(1.0F, static_cast<int>(i % 150) - 140), 0, 0};
    }
    const Spec line = Mesh(points, std::vector<int>(5000, 3));
    EXPECT_TRUE(Ask(line, Box(2, 2, 2)).contact);
    EXPECT_NEAR(Widened(Ask(line, At(Box(2, 2, 2), 200, 3, 0)).distance), 2, 1e-6);
}

}  // namespace
}  // namespace oracle
