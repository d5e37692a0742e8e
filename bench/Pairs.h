#pragma once

/// Pools of random pairs of convex shapes, the same on every machine.

#include <vector>

#include "tests/solid/accuracy/Random.h"

namespace bench {

enum class PairCase { kBoxBox, kSphereBox, kCylinderCone, kTetraTetra, kMixed };
inline constexpr PairCase kPairCases[] = {PairCase::kBoxBox, PairCase::kSphereBox,
                                          PairCase::kCylinderCone, PairCase::kTetraTetra,
                                          PairCase::kMixed};
const char* Name(PairCase pairCase);

/// Which pairs of a case a pool holds.
enum class Touching { kNever, kAlways, kEverySecond };

inline constexpr int kPoolSize = 1000;

/// Shapes with sizes of the order of 1, turned at random, so near each other that the spheres about
/// them overlap. Each pair has a place of its own in a lattice, so that all of a pool can stand in
/// one scene.
std::vector<oracle::Pair> MakePool(PairCase pairCase, Touching touching);

/// A shape of any of the kinds that a pool mixes, turned at random, about the origin.
oracle::Spec RandomObject(oracle::Random& random);
/// A rigid placement, turned at random, about the origin.
oracle::Matrix RandomTurn(oracle::Random& random);
/// All sizes of a shape, and with them its corners, times a factor along each axis.
oracle::Spec Resized(oracle::Spec spec, float x, float y, float z);
oracle::Spec MovedBy(oracle::Spec spec, float x, float y, float z);

}  // namespace bench
