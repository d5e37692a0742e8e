#include "Depth.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include "Distance.h"

namespace oracle {

double Overlap(const Convex& a, const Convex& b, const Vec3& n) {
    return Dot(b.centre - a.centre, n) + a.Extent(-n) + b.Extent(n);
}

namespace {

struct Features {
    std::vector<Vec3> normals;  ///< of the facets; either sign will do
    std::vector<Vec3> edges;
};

/// The facets and edges of a hull by brute force: each three vertices that have all others on one
/// side of their plane. With four or more vertices in one plane, their diagonals come along, which
/// adds directions to look at and takes none away.
Features FeaturesOfHull(const std::vector<Vec3>& v) {
    Features f;
    const std::size_t count = v.size();
    if (count == 2) {
        f.edges.push_back(v[1] - v[0]);
    }
    std::vector<char> known(count * count, 0);
    const auto addEdge = [&](std::size_t i, std::size_t k) {
        if (known[i * count + k] == 0) {
            known[i * count + k] = 1;
            f.edges.push_back(v[k] - v[i]);
        }
    };
    for (std::size_t i = 0; i + 2 < count; ++i) {
        for (std::size_t k = i + 1; k + 1 < count; ++k) {
            for (std::size_t l = k + 1; l < count; ++l) {
                const Vec3 n = Cross(v[k] - v[i], v[l] - v[i]);
                const double size = solid::MaxNorm(n);
                if (size <= 1e-12 * solid::MaxNorm(v[k] - v[i]) * solid::MaxNorm(v[l] - v[i])) {
                    addEdge(i, k), addEdge(k, l), addEdge(i, l);  // in one line
                    continue;
                }
                bool above = false;
                bool below = false;
                for (std::size_t m = 0; m < count && !(above && below); ++m) {
                    const double height = Dot(n, v[m] - v[i]);
                    const double noise = 1e-12 * size * solid::MaxNorm(v[m] - v[i]);
                    above = above || height > noise;
                    below = below || height < -noise;
                }
                if (!(above && below)) {
                    f.normals.push_back(n);
                    addEdge(i, k), addEdge(k, l), addEdge(i, l);
                }
            }
        }
    }
    return f;
}

Features FeaturesOf(const Convex& convex) {
    if (convex.set == Convex::Set::kHull) {
        return FeaturesOfHull(convex.vertices);
    }
    const auto& a = convex.axis;
    return {{Cross(a[1], a[2]), Cross(a[2], a[0]), Cross(a[0], a[1])}, {a[0], a[1], a[2]}};
}

class Search {
  public:
    Search(const Convex& a, const Convex& b) : m_a(a), m_b(b) {
        m_best.value = std::numeric_limits<double>::infinity();
    }
    /// Any length; a direction of no length, as of two parallel edges, is passed over.
    double Look(const Vec3& n) {
        const double length = Length(n);
        if (!(length > 0)) {
            return std::numeric_limits<double>::infinity();
        }
        const Vec3 unit = n * (1 / length);
        const double overlap = Overlap(m_a, m_b, unit);
        if (overlap < m_best.value) {
            m_best = {overlap, unit};
        }
        return overlap;
    }
    const Depth& Best() const { return m_best; }

    /// Downhill simplex (J. A. Nelder, R. Mead, "A simplex method for function minimization", 1965)
    /// in the plane that touches the sphere of directions at `start`.
    void Refine(const Vec3& start, double width, int steps) {
        const Vec3 n = start * (1 / Length(start));
        Vec3 u = std::fabs(n.x) < 0.6 ? Cross(n, Vec3{1, 0, 0}) : Cross(n, Vec3{0, 1, 0});
        u *= 1 / Length(u);
        const Vec3 w = Cross(n, u);
        struct Corner {
            double x, y, value;
        };
        const auto at = [&](double x, double y) { return Corner{x, y, Look(n + u * x + w * y)}; };
        Corner c[3] = {at(0, 0), at(width, 0), at(-width / 2, width * 0.8)};
        for (int i = 0; i < steps; ++i) {
            std::sort(c, c + 3, [](const Corner& p, const Corner& q) { return p.value < q.value; });
            const double x = (c[0].x + c[1].x) / 2;
            const double y = (c[0].y + c[1].y) / 2;
            const auto along = [&](double t) {
                return at(x + t * (c[2].x - x), y + t * (c[2].y - y));
            };
            const Corner mirrored = along(-1);
            if (mirrored.value < c[0].value) {
                const Corner further = along(-2);
                c[2] = further.value < mirrored.value ? further : mirrored;
            } else if (mirrored.value < c[1].value) {
                c[2] = mirrored;
            } else {
                const Corner nearer = along(mirrored.value < c[2].value ? -0.5 : 0.5);
                if (nearer.value < std::min(mirrored.value, c[2].value)) {
                    c[2] = nearer;
                } else {
                    c[1] = at((c[0].x + c[1].x) / 2, (c[0].y + c[1].y) / 2);
                    c[2] = at((c[0].x + c[2].x) / 2, (c[0].y + c[2].y) / 2);
                }
            }
        }
    }

  private:
    const Convex& m_a;
    const Convex& m_b;
    Depth m_best;
};

/// Directions spread evenly over the sphere, on a golden spiral.
std::vector<Vec3> Spread(int count) {
    std::vector<Vec3> directions;
    const double turn = std::acos(-1.0) * (3 - std::sqrt(5.0));
    for (int i = 0; i < count; ++i) {
        const double z = 1 - (2 * i + 1) / static_cast<double>(count);
        const double r = std::sqrt(1 - z * z);
        directions.push_back({r * std::cos(turn * i), r * std::sin(turn * i), z});
    }
    return directions;
}

/// Outward normals of the image of a ball at evenly spread points of it: dense where the image is
/// flat and a least is narrow.
void AddNormals(const Convex& convex, const std::vector<Vec3>& spread, std::vector<Vec3>& out) {
    const auto& a = convex.axis;
    const Vec3 x = Cross(a[1], a[2]);
    const Vec3 y = Cross(a[2], a[0]);
    const Vec3 z = Cross(a[0], a[1]);
    for (const Vec3& u : spread) {
        out.push_back(x * u.x + y * u.y + z * u.z);
    }
}

}  // namespace

Depth SearchedDepthOf(const Convex& a, const Convex& b, const Vec3& guess) {
    static const std::vector<Vec3> kEven = Spread(2000);
    static const std::vector<Vec3> kBent = Spread(600);
    std::vector<Vec3> directions = kEven;
    for (const Convex* convex : {&a, &b}) {
        if (convex->set != Convex::Set::kHull) {
            AddNormals(*convex, kBent, directions);
        }
    }
    if (!a.IsPolyhedral() || !b.IsPolyhedral()) {
        // Flat sides can be parted from only in one direction: no search needs to find those.
        for (const Convex* convex : {&a, &b}) {
            if (convex->set != Convex::Set::kBall) {
                for (const Vec3& n : FeaturesOf(*convex).normals) {
                    directions.push_back(n);
                    directions.push_back(-n);
                }
            }
        }
    }
    Search search(a, b);
    std::vector<std::pair<double, std::size_t>> found;
    for (std::size_t i = 0; i < directions.size(); ++i) {
        const double length = Length(directions[i]);
        if (length > 0) {
            directions[i] *= 1 / length;
            found.emplace_back(search.Look(directions[i]), i);
        }
    }
    std::sort(found.begin(), found.end());
    // Start from the best directions that are not in each other's neighbourhood.
    std::vector<Vec3> starts;
    for (const auto& [value, i] : found) {
        const Vec3& n = directions[i];
        const bool near = std::any_of(starts.begin(), starts.end(), [&](const Vec3& start) {
            return LengthSquared(start - n) < 0.12 * 0.12;
        });
        if (!near) {
            starts.push_back(n);
            search.Refine(n, 0.03, 40);
        }
        if (starts.size() == 10) {
            break;
        }
    }
    if (LengthSquared(guess) > 0) {
        search.Refine(guess, 1e-2, 60);
    }
    search.Refine(search.Best().direction, 1e-3, 60);
    search.Refine(search.Best().direction, 1e-5, 40);
    return search.Best();
}

Depth DepthOf(const Convex& a, const Convex& b, const Vec3& guess) {
    const double margins = a.margin + b.margin;
    if (margins > 0) {
        Convex core1 = a;
        Convex core2 = b;
        core1.margin = core2.margin = 0;
        core1.centre = {};  // points far from the origin have few digits for a difference
        core2.centre = b.centre - a.centre;
        const Distance apart = DistanceOf(core1, core2);
        const Vec3 difference = apart.point1 - apart.point2;
        // Nearer to touching, the difference is no direction.
        if (apart.inside < 0 && apart.upper > 1e-6 * margins) {
            return {margins - apart.upper, difference * (1 / Length(difference))};
        }
        Depth depth = DepthOf(core1, core2, guess);
        depth.value += margins;
        return depth;
    }
    if (!a.IsPolyhedral() || !b.IsPolyhedral()) {
        return SearchedDepthOf(a, b, guess);
    }
    // The least is at a facet of the difference of the two sets: a facet of one of them, or the
    // parallelogram of two edges.
    const Features f = FeaturesOf(a);
    const Features g = FeaturesOf(b);
    Search search(a, b);
    const auto lookBothWays = [&](const Vec3& n) {
        search.Look(n);
        search.Look(-n);
    };
    std::for_each(f.normals.begin(), f.normals.end(), lookBothWays);
    std::for_each(g.normals.begin(), g.normals.end(), lookBothWays);
    for (const Vec3& p : f.edges) {
        for (const Vec3& q : g.edges) {
            const Vec3 n = Cross(p, q);
            // Parallel but for rounding: the true direction is that of a facet or has no facet.
            if (LengthSquared(n) > 1e-26 * LengthSquared(p) * LengthSquared(q)) {
                lookBothWays(n);
            }
        }
    }
    if (std::isinf(search.Best().value)) {
        // The difference is a point or a line: flat across any direction at right angles to it.
        Vec3 line;
        for (const Features* features : {&f, &g}) {
            for (const Vec3& edge : features->edges) {
                line = LengthSquared(edge) > LengthSquared(line) ? edge : line;
            }
        }
        const Vec3 x = Cross(line, Vec3{1, 0, 0});
        const Vec3 y = Cross(line, Vec3{0, 1, 0});
        const Vec3 across = LengthSquared(x) > LengthSquared(y) ? x : y;
        lookBothWays(LengthSquared(across) > 0 ? across : Vec3{1, 0, 0});
    }
    return search.Best();
}

}  // namespace oracle
