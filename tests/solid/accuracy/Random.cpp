#include "Random.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include "Convex.h"
#include "Distance.h"

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

void MoveTo(Spec& spec, const Vec3& place) {
    const Point p = Rounded(place);
    std::copy(p.begin(), p.end(), spec.matrix.begin() + 12);
}

void Scale(Spec& spec, float factor) {
    for (std::size_t i = 0; i < 15; ++i) {
        spec.matrix[i] *= factor;
    }
    spec.margin *= factor;
}

template <class T>
void Shuffle(Random& random, T& three) {
    std::swap(three[0], three[static_cast<std::size_t>(random.Below(3))]);
    std::swap(three[1], three[static_cast<std::size_t>(1 + random.Below(2))]);
}

Vec3 Extents(Random& random, Aspect aspect) {
    if (aspect == Aspect::kBrick) {
        return {random.Uniform(0.3, 2), random.Uniform(0.3, 2), random.Uniform(0.3, 2)};
    }
    static const double kExtents[kAspectCount][3] = {{},           {1, 1, 1},       {1, 0.1, 0.01},
                                                     {1, 1, 0.01}, {1, 0.01, 0.01}, {1, 1, 0}};
    const double* e = kExtents[static_cast<int>(aspect)];
    std::array<double, 3> extents{e[0], e[1], e[2]};
    Shuffle(random, extents);
    return {extents[0], extents[1], extents[2]};
}

/// A round body of these extents: of sizes, and of a stretch where they do not do.
Spec Round(Spec (*make)(float, float), const Vec3& extents, bool stretched) {
    const Vec3 e = extents.x > 0 ? extents : Vec3{extents.y, extents.x, extents.z};
    Spec spec = make(static_cast<float>(e.x / 2), static_cast<float>(e.y));
    return stretched ? Scaled(std::move(spec), 1, 1, static_cast<float>(e.z / e.x)) : spec;
}

Spec Ball(float radius, float height) {
    return Scaled(Sphere(radius), 1, height / (2 * radius), 1);
}

std::vector<Point> RandomPoints(Random& random, int count, const Vec3& extents) {
    std::vector<Point> points;
    for (int i = 0; i < count; ++i) {
        const Vec3 p = InBall(random);
        points.push_back(Rounded({p.x * extents.x, p.y * extents.y, p.z * extents.z}));
    }
    return points;
}

/// A bent sheet of convex polygons in planes.
Spec RandomMesh(Random& random, const Vec3& extents) {
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
        for (int k = 0; k < corners; ++k) {
            // Once round a square on its tip, then out to the circle.
            const double turn = 4 * (k + random.Uniform(0, 0.6)) / corners;
            const double x = std::fabs(turn - 2) - 1;
            const double y = turn < 2 ? 1 - std::fabs(x) : std::fabs(x) - 1;
            const Vec3 p = middle + (u * x + w * y) * (1 / std::sqrt(x * x + y * y));
            points.push_back(Rounded({p.x * extents.x, p.y * extents.y, p.z * extents.z}));
        }
        counts.push_back(corners);
    }
    return Mesh(std::move(points), std::move(counts));
}

double Extent(const std::vector<Convex>& pieces, const Vec3& direction) {
    double most = -1e300;
    for (const Convex& piece : pieces) {
        most = std::max(most, Dot(piece.centre, direction) + piece.Extent(direction));
    }
    return most;
}

/// Puts the second where planes square to a direction at random bound both, `part` of the way out.
Vec3 PlaceBeside(Random& random, const Spec& a, const Spec& b, double part) {
    const Vec3 n = Direction(random);
    return n * (part * (Extent(Pieces(a), n) + Extent(Pieces(b), -n)));
}

/// Sizes, points and places to quarters, quarter turns: features coincide.
void SnapToGrid(Random& random, Spec& spec) {
    const auto snap = [](float& value) { value = std::round(value * 4) / 4; };
    for (float& size : spec.size) {
        size = std::max(0.25F, size);
        snap(size);
    }
    for (Point& point : spec.points) {
        std::for_each(point.begin(), point.end(), snap);
    }
    const Matrix m = spec.matrix;
    spec.matrix = RandomPlacement(random, Placement::kAligned);
    std::copy(m.begin() + 12, m.end(), spec.matrix.begin() + 12);
    std::for_each(spec.matrix.begin() + 12, spec.matrix.begin() + 15, snap);
    snap(spec.margin);
}

}  // namespace

Spec RandomShape(Random& random, Kind kind, Aspect aspect) {
    const Vec3 e = Extents(random, aspect);
    const Vec3 size = e * 0.5;
    const bool stretched = aspect != Aspect::kBrick;
    switch (kind) {
        case Kind::kBox:
            return Box(static_cast<float>(e.x), static_cast<float>(e.y), static_cast<float>(e.z));
        case Kind::kSphere:
            return stretched ? Round(Ball, e, true) : Sphere(static_cast<float>(size.x));
        case Kind::kCylinder:
            return Round(Cylinder, e, stretched);
        case Kind::kCone:
            return Round(Cone, e, stretched);
        case Kind::kSegment: {
            const Point source = Rounded(InBall(random) * e.x);
            return Segment(source, Rounded(InBall(random) * e.x));
        }
        case Kind::kPolytope: {
            const int count = random.Chance(0.5) ? 4 : 5 + random.Below(16);
            const bool flat = aspect == Aspect::kSheet;
            return Polytope(RandomPoints(random, flat ? 3 + count % 4 : count, e));
        }
        case Kind::kMesh:
            break;
    }
    return RandomMesh(random, aspect == Aspect::kBrick ? Vec3{1, 1, 1} : e);
}

Matrix RandomPlacement(Random& random, Placement placement) {
    const Vec3 x = Direction(random);
    Vec3 y = Cross(x, Direction(random));
    while (Length(y) < 0.1) {
        y = Cross(x, Direction(random));
    }
    y *= 1 / Length(y);
    std::array<Vec3, 3> axis{x, y, Cross(x, y)};
    if (placement == Placement::kAligned) {
        axis = {Vec3{1, 0, 0}, Vec3{0, 1, 0}, Vec3{0, 0, 1}};
        Shuffle(random, axis);
        for (Vec3& a : axis) {
            a *= random.Chance(0.5) ? -1 : 1;
        }
    }
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
            const double scale = random.Uniform(0.45, 1);
            a *= random.Chance(0.5) ? scale : 1 / scale;
            a *= random.Chance(0.2) ? -1 : 1;
        }
    }
    if (placement == Placement::kSingular) {
        axis[static_cast<std::size_t>(random.Below(3))] = {};
    }
    Matrix m = kIdentity;
    for (std::size_t column = 0; column < 3; ++column) {
        const Point rounded = Rounded(axis[column]);
        std::copy(rounded.begin(), rounded.end(),
                  m.begin() + static_cast<std::ptrdiff_t>(4 * column));
    }
    return m;
}

Spec RandomObject(Random& random, Kind kind, Aspect aspect) {
    Spec spec = RandomShape(random, kind, aspect);
    const int draw = random.Below(20);
    const Matrix stretch = spec.matrix;
    spec.matrix = RandomPlacement(random, draw < 6    ? Placement::kRigid
                                          : draw < 8  ? Placement::kAligned
                                          : draw < 11 ? Placement::kUniform
                                          : draw < 19 ? Placement::kAffine
                                                      : Placement::kSingular);
    spec = Scaled(std::move(spec), stretch[0], stretch[5], stretch[10]);
    if (random.Chance(0.2)) {
        spec.margin = static_cast<float>(random.Uniform(0.01, 0.3));
    }
    return spec;
}

Pair BroughtNear(Random& random, Spec a, Spec b) {
    // How much of the way out to where two bounds just touch most of the shapes reach.
    static const double kFullness[kKindCount] = {1, 1.15, 1.05, 0.95, 0.55, 0.9, 0.85};
    const double reach =
        1.3 * kFullness[static_cast<int>(a.kind)] * kFullness[static_cast<int>(b.kind)];
    MoveTo(a, {});
    MoveTo(b, {});
    const Vec3 apart = PlaceBeside(random, a, b, std::sqrt(random.Uniform(0, reach)));
    const Vec3 place = InBall(random) * 3;
    MoveTo(a, place);
    MoveTo(b, place + apart);
    return {std::move(a), std::move(b)};
}

Pair BroughtTo(Random& random, Spec a, Spec b, double gap) {
    MoveTo(a, {});
    MoveTo(b, {});
    const Vec3 start = PlaceBeside(random, a, b, random.Uniform(1, 1.5));
    MoveTo(b, start);
    const Distance d = DistanceOf(Pieces(a), Pieces(b));
    const Vec3 there = Widened(&b.matrix[12]);
    const Vec3 way = d.point1 - d.point2;
    const double length = Length(way);
    const Vec3 place = length > 0 ? there + way * ((d.upper - gap) / length) : there;
    MoveTo(b, place);
    // What the floats of the one place lack goes to the other, which is next to 0.
    MoveTo(a, Widened(&b.matrix[12]) - place);
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

Pair PairOfAnySort(Random& random, Kind kind1, Kind kind2, bool gaps) {
    Spec a = RandomObject(random, kind1, static_cast<Aspect>(random.Below(kAspectCount)));
    Spec b = RandomObject(random, kind2, static_cast<Aspect>(random.Below(kAspectCount)));
    if (kind1 == Kind::kSegment && kind2 == Kind::kSegment && random.Chance(0.9)) {
        a.margin = static_cast<float>(random.Uniform(0.1, 0.9));
    }
    if (random.Chance(0.2)) {
        Scale(random.Chance(0.5) ? a : b, 0x1p-10F);
    }
    const int sort = gaps ? random.Below(12) : 4 + random.Below(8);
    Pair pair;
    if (sort < 4) {
        static const double kGaps[] = {0, 1e-7, -1e-7, 1e-5, -1e-5, 1e-3, -1e-3};
        const double size = Radius(Pieces(a)) + Radius(Pieces(b));
        pair = BroughtTo(random, std::move(a), std::move(b), size * kGaps[random.Below(7)]);
    } else {
        pair = BroughtNear(random, std::move(a), std::move(b));
    }
    switch (sort) {
        case 4:  // concentric
            std::copy_n(pair.a.matrix.begin() + 12, 3, pair.b.matrix.begin() + 12);
            break;
        case 5:  // in equal poses, some of them equal altogether
            pair.b.matrix = pair.a.matrix;
            if (random.Chance(0.5)) {
                pair.b = pair.a;
            }
            break;
        case 6:  // far
            for (std::size_t i = 12; i < 15; ++i) {
                pair.b.matrix[i] *= static_cast<float>(random.Uniform(1, 1000));
            }
            break;
        case 7:
            SnapToGrid(random, pair.a);
            SnapToGrid(random, pair.b);
            break;
        default:
            break;
    }
    static const float kScales[] = {1, 1, 1, 0x1p-10F, 0x1p10F};
    static const double kDistances[] = {0, 0, 0, 0, 1e4, 1e6};
    const float scale = kScales[random.Below(5)];
    const double distance = kDistances[random.Below(6)];
    const Vec3 shift = Direction(random) * distance;
    for (Spec* spec : {&pair.a, &pair.b}) {
        Scale(*spec, scale);
        if (shift.x != 0) {
            MoveTo(*spec, shift + Widened(&spec->matrix[12]));
        }
    }
    return pair;
}

}  // namespace oracle
