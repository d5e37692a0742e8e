#pragma once

/// Random shapes and placements, the same on every machine.

#include <cstdint>

#include "Spec.h"

namespace oracle {

/// G. L. Steele, D. Lea, C. H. Flood, "Fast splittable pseudorandom number generators", 2014.
class Random {
  public:
    explicit Random(std::uint64_t seed) : m_state(seed) {}
    std::uint64_t Next();
    /// In [low, high).
    double Uniform(double low, double high);
    bool Chance(double probability) { return Uniform(0, 1) < probability; }
    int Below(int count) { return static_cast<int>(Next() % static_cast<std::uint64_t>(count)); }

  private:
    std::uint64_t m_state;
};

/// What placements may be drawn.
enum class Placement {
    kRigid,
    kUniform,   ///< rigid and one scale
    kAffine,    ///< any rotation, scales and shear
    kSingular,  ///< affine with a zero scale in one axis
};

/// Sizes of the order of 1, placed about the origin.
Spec RandomShape(Random& random, Kind kind);
Matrix RandomPlacement(Random& random, Placement placement);

/// The mix that the tests of random pairs use: most placements affine, some rigid, some singular,
/// every fifth object with a margin.
Spec RandomObject(Random& random, Kind kind);

struct Pair {
    Spec a, b;
};
/// Two objects brought so near each other that about half of such pairs touch.
Pair RandomPair(Random& random, Kind kind1, Kind kind2);
/// The same of two given objects.
Pair BroughtNear(Random& random, Spec a, Spec b);

}  // namespace oracle
