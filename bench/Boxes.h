#pragma once

/// Boxes at random in a cube: the scenes of W4, W5, W7 to W9.

#include <vector>

#include "tests/solid/accuracy/Random.h"

namespace bench {

/// Half the edge of the cube in which so many boxes stand: ten units of volume for each.
float RangeOf(int count);
oracle::Point RandomPoint(oracle::Random& random, float range);
/// Edges of 0.5 to 1.5, turned at random, its middle at the point.
oracle::Spec RandomBox(oracle::Random& random, const oracle::Point& middle);
std::vector<oracle::Spec> RandomBoxes(oracle::Random& random, int count);

}  // namespace bench
