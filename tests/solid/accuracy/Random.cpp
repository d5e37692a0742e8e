#include "Random.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "Convex.h"

namespace oracle {

std::uint64_t Random::Next() {
    std::uint64_t z = m_state += 0x9e3779b97f4a7c15U;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
    return z ^ (z >> 31);
}

double Random::Uniform(double low, double high) {
    return low + (high - low) * (static_cast<double>(Next() >> 11) * 0x1p-53);
}

namespace {

float Size(Random& random) {
    return static_cast<float>(random.Uniform(0.3, 2));
}

Vec3 InBall(Random& random) {
    for (;;) {
        const Vec3 p{random.Uniform(-1, 1), random.Uniform(-1, 1), random.Uniform(-1, 1)};
        const double square = LengthSquared(p);
        if (square <= 1 && square > 0.01) {
            return p;
        }
    }
}

Vec3 Direction(Random& random) {
    const Vec3 p = InBall(random);
    return p * (1 / Length(p));
}

Point Rounded(const Vec3& p) {
    return {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)};
}

/// A bent sheet of convex polygons: quadrilaterals in planes, triangles elsewhere.
Spec RandomMesh(Random& random) {
    std::vector<Point> points;
    std::vector<int> counts;
    const int polygons = 2 + random.Below(4);
    const Vec3 along = Direction(random);
    for (int i = 0; i < polygons; ++i) {
        const int corners = 3 + random.Below(3);
        const Vec3 middle = along * (0.5 * (i - 0.5 * polygons)) + InBall(random) * 0.3;
        const Vec3 u = Direction(random);
        Vec3 w = Cross(u, Direction(random));
        w *= 1 / std::max(Length(w), 0.1);
        const double turn = random.Uniform(0, 6.3);
        for (int k = 0; k < corners; ++k) {
            const double angle = turn + 6.2831853 * (k + random.Uniform(0, 0.6)) / corners;
            points.push_back(Rounded(middle + u * std::cos(angle) + w * std::sin(angle)));
        }
        counts.push_back(corners);
    }
    return Mesh(std::move(points), std::move(counts));
}

}  // namespace

Spec RandomShape(Random& random, Kind kind) {
    switch (kind) {
        case Kind::kBox: {
            const float width = Size(random);
            const float height = Size(random);
            return Box(width, height, Size(random));
        }
        case Kind::kSphere:
            return Sphere(Size(random) / 2);
        case Kind::kCylinder: {
            const float radius = Size(random) / 2;
            return Cylinder(radius, Size(random));
        }
        case Kind::kCone: {
            const float radius = Size(random) / 2;
            return Cone(radius, Size(random));
        }
        case Kind::kSegment: {
            const Point source = Rounded(InBall(random));
            return Segment(source, Rounded(InBall(random)));
        }
        case Kind::kPolytope: {
            const int count = random.Chance(0.5) ? 4 : 5 + random.Below(16);
            std::vector<Point> points;
            for (int i = 0; i < count; ++i) {
                points.push_back(Rounded(InBall(random)));
            }
            return Polytope(std::move(points));
        }
        case Kind::kMesh:
            break;
    }
    return RandomMesh(random);
}

Matrix RandomPlacement(Random& random, Placement placement) {
    const Vec3 x = Direction(random);
    Vec3 y = Cross(x, Direction(random));
    while (Length(y) < 0.1) {
        y = Cross(x, Direction(random));
    }
    y *= 1 / Length(y);
    Vec3 axis[3] = {x, y, Cross(x, y)};
    if (placement == Placement::kUniform) {
        const double scale = random.Uniform(0.3, 3);
        for (Vec3& a : axis) {
            a *= scale;
        }
    }
    if (placement == Placement::kAffine || placement == Placement::kSingular) {
        axis[1] += axis[0] * random.Uniform(-0.5, 0.5);
        axis[2] += axis[1] * random.Uniform(-0.5, 0.5);
        for (Vec3& a : axis) {
            a *= std::exp(random.Uniform(-0.8, 0.8)) * (random.Chance(0.2) ? -1 : 1);
        }
    }
    if (placement == Placement::kSingular) {
        axis[random.Below(3)] = {};
    }
    Matrix m = kIdentity;
    for (std::size_t column = 0; column < 3; ++column) {
        const Point rounded = Rounded(axis[column]);
        std::copy(rounded.begin(), rounded.end(),
                  m.begin() + static_cast<std::ptrdiff_t>(4 * column));
    }
    return m;
}

Spec RandomObject(Random& random, Kind kind) {
    Spec spec = RandomShape(random, kind);
    const int draw = random.Below(20);
    spec.matrix = RandomPlacement(random, draw < 6    ? Placement::kRigid
                                          : draw < 10 ? Placement::kUniform
                                          : draw < 19 ? Placement::kAffine
                                                      : Placement::kSingular);
    if (random.Chance(0.2)) {
        spec.margin = static_cast<float>(random.Uniform(0.01, 0.3));
    }
    return spec;
}

Pair BroughtNear(Random& random, Spec a, Spec b) {
    const std::vector<Convex> piecesA = Pieces(a);
    const std::vector<Convex> piecesB = Pieces(b);
    const Vec3 n = Direction(random);
    const auto extent = [](const std::vector<Convex>& pieces, const Vec3& direction) {
        double most = -1e300;
        for (const Convex& piece : pieces) {
            most = std::max(most, Dot(piece.centre, direction) + piece.Extent(direction));
        }
        return most;
    };
    const double touching = extent(piecesA, n) + extent(piecesB, -n);
    // How much of the way out to where two bounds just touch most of the shapes reach.
    static const double kFullness[kKindCount] = {1, 1.15, 1.05, 0.95, 0.55, 0.9, 0.85};
    const double reach =
        1.3 * kFullness[static_cast<int>(a.kind)] * kFullness[static_cast<int>(b.kind)];
    const double apart = touching * std::sqrt(random.Uniform(0, reach));
    const Vec3 place = InBall(random) * 3;
    const Point first = Rounded(place);
    const Point second = Rounded(place + n * apart);
    for (std::size_t i = 0; i < 3; ++i) {
        a.matrix[12 + i] = first[i];
        b.matrix[12 + i] = second[i];
    }
    return {std::move(a), std::move(b)};
}

Pair RandomPair(Random& random, Kind kind1, Kind kind2) {
    Spec a = RandomObject(random, kind1);
    Spec b = RandomObject(random, kind2);
    if (kind1 == Kind::kSegment && kind2 == Kind::kSegment && random.Chance(0.9)) {
        a.margin = static_cast<float>(random.Uniform(0.1, 0.9));  // bare, they never touch
    }
    return BroughtNear(random, std::move(a), std::move(b));
}

}  // namespace oracle
