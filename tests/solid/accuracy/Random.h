#pragma once

/// Random shapes, placements and pairs, the same on every machine: no function is used here whose
/// last digit differs between builds.

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

/// The proportions of a shape's extents, which come in any order.
enum class Aspect {
    kBrick,   ///< any, from 0.3 to 2
    kCube,    ///< 1 : 1 : 1
    kLath,    ///< 1 : 0.1 : 0.01
    kSlab,    ///< 1 : 1 : 0.01
    kNeedle,  ///< 1 : 0.01 : 0.01
    kSheet,   ///< 1 : 1 : 0
};
inline constexpr int kAspectCount = 6;

/// What placements may be drawn.
enum class Placement {
    kRigid,
    kAligned,   ///< quarter turns, and mirrors
    kUniform,   ///< rigid and one scale
    kAffine,    ///< any rotation, scales and shear
    kSingular,  ///< affine with a zero scale in one axis
};

/// Sizes of the order of 1, placed about the origin. Round shapes are stretched to their aspect by
/// their matrix where sizes alone do not give it.
Spec RandomShape(Random& random, Kind kind, Aspect aspect = Aspect::kBrick);
Matrix RandomPlacement(Random& random, Placement placement);

/// A shape in any placement, most of them affine, every fifth with a margin.
Spec RandomObject(Random& random, Kind kind, Aspect aspect = Aspect::kBrick);

struct Pair {
    Spec a, b;
};
/// Two bricks brought so near each other that about half of such pairs touch.
Pair RandomPair(Random& random, Kind kind1, Kind kind2);
/// The same of two given objects.
Pair BroughtNear(Random& random, Spec a, Spec b);

/// Moves the second straight towards the first's nearest point, from where the two are apart, until
/// `gap` is left; below 0 they overlap. The place is exact to the last digits of a double.
Pair BroughtTo(Random& random, Spec a, Spec b, double gap);

/// Any two aspects; near, concentric, in equal poses, far apart, on a coarse grid, or (one in
/// three, with `gaps`) at a gap of 0 or 1e-7, 1e-5, 1e-3 of the size either way; one in five with
/// sizes of 1 : 1000, one in five each near 0.001 and 1000 in scale, some of them 1e4 or 1e6 from
/// the origin.
Pair PairOfAnySort(Random& random, Kind kind1, Kind kind2, bool gaps = true);

}  // namespace oracle
