#include "Pairs.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "tests/solid/accuracy/Convex.h"
#include "tests/solid/accuracy/Distance.h"

namespace bench {

using oracle::Kind;
using oracle::Pair;
using oracle::Random;
using oracle::Spec;

namespace {

constexpr float kLattice = 8;

Kind RandomKind(Random& random) {
    static constexpr Kind kKinds[] = {Kind::kBox, Kind::kSphere, Kind::kCylinder, Kind::kCone,
                                      Kind::kPolytope};
    return kKinds[random.Below(5)];
}

float Size(Random& random) {
    return static_cast<float>(random.Uniform(0.5, 1.5));
}

/// Corners in a cube, one in each of four of its octants, so that none is a sliver.
Spec RandomTetrahedron(Random& random) {
    std::vector<oracle::Point> points;
    static constexpr float kCorners[4][3] = {{1, 1, 1}, {1, -1, -1}, {-1, 1, -1}, {-1, -1, 1}};
    for (const auto& corner : kCorners) {
        points.push_back({corner[0] * Size(random) / 1.5f, corner[1] * Size(random) / 1.5f,
                          corner[2] * Size(random) / 1.5f});
    }
    return oracle::Polytope(std::move(points));
}

Spec ShapeOf(Random& random, Kind kind) {
    switch (kind) {
        case Kind::kBox: {
            const float width = Size(random);
            const float height = Size(random);
            return oracle::Box(width, height, Size(random));
        }
        case Kind::kSphere:
            return oracle::Sphere(Size(random) / 2);
        case Kind::kCylinder: {
            const float radius = Size(random) / 2;
            return oracle::Cylinder(radius, Size(random));
        }
        case Kind::kCone: {
            const float radius = Size(random) / 2;
            return oracle::Cone(radius, Size(random));
        }
        default:
            return RandomTetrahedron(random);
    }
}

std::pair<Kind, Kind> KindsOf(PairCase pairCase, Random& random) {
    switch (pairCase) {
        case PairCase::kBoxBox:
            return {Kind::kBox, Kind::kBox};
        case PairCase::kSphereBox:
            return {Kind::kSphere, Kind::kBox};
        case PairCase::kCylinderCone:
            return {Kind::kCylinder, Kind::kCone};
        case PairCase::kTetraTetra:
            return {Kind::kPolytope, Kind::kPolytope};
        case PairCase::kMixed:
            break;
    }
    const Kind first = RandomKind(random);
    return {first, RandomKind(random)};
}

Pair Candidate(PairCase pairCase, Random& random) {
    const auto [kind1, kind2] = KindsOf(pairCase, random);
    Pair pair{ShapeOf(random, kind1), ShapeOf(random, kind2)};
    pair.a.matrix = RandomTurn(random);
    pair.b.matrix = RandomTurn(random);
    const double reach = Radius(Pieces(pair.a)) + Radius(Pieces(pair.b));
    for (;;) {
        const solid::Vec3 p{random.Uniform(-reach, reach), random.Uniform(-reach, reach),
                            random.Uniform(-reach, reach)};
        if (LengthSquared(p) < reach * reach) {
            pair.b = MovedBy(std::move(pair.b), static_cast<float>(p.x), static_cast<float>(p.y),
                             static_cast<float>(p.z));
            return pair;
        }
    }
}

bool Touch(const Pair& pair) {
    return DistanceOf(Pieces(pair.a), Pieces(pair.b)).inside >= 0;
}

}  // namespace

const char* Name(PairCase pairCase) {
    static constexpr const char* kNames[] = {"box-box", "sphere-box", "cylinder-cone",
                                             "tetra-tetra", "mixed"};
    return kNames[static_cast<int>(pairCase)];
}

Spec RandomObject(Random& random) {
    Spec spec = ShapeOf(random, RandomKind(random));
    spec.matrix = RandomTurn(random);
    return spec;
}

oracle::Matrix RandomTurn(Random& random) {
    return RandomPlacement(random, oracle::Placement::kRigid);
}

Spec Resized(Spec spec, float x, float y, float z) {
    if (spec.kind == Kind::kCylinder || spec.kind == Kind::kCone) {
        spec.size = {spec.size[0] * x, spec.size[1] * y, 0};
    } else {
        spec.size = {spec.size[0] * x, spec.size[1] * y, spec.size[2] * z};
    }
    for (oracle::Point& p : spec.points) {
        p = {p[0] * x, p[1] * y, p[2] * z};
    }
    return spec;
}

Spec MovedBy(Spec spec, float x, float y, float z) {
    spec.matrix[12] += x;
    spec.matrix[13] += y;
    spec.matrix[14] += z;
    return spec;
}

std::vector<Pair> MakePool(PairCase pairCase, Touching touching) {
    std::vector<Pair> pool;
    for (int i = 0; i < kPoolSize; ++i) {
        // A seed for each pair: no pair depends on the choice of another.
        Random random(static_cast<std::uint64_t>(pairCase) * 1000003 +
                      static_cast<std::uint64_t>(i));
        const bool wanted =
            touching == Touching::kAlways || (touching == Touching::kEverySecond && i % 2 == 0);
        Pair pair = Candidate(pairCase, random);
        while (Touch(pair) != wanted) {
            pair = Candidate(pairCase, random);
        }
        const float x = kLattice * static_cast<float>(i % 10);
        const float y = kLattice * static_cast<float>(i / 10 % 10);
        const float z = kLattice * static_cast<float>(i / 100);
        pool.push_back({MovedBy(std::move(pair.a), x, y, z), MovedBy(std::move(pair.b), x, y, z)});
    }
    return pool;
}

}  // namespace bench
