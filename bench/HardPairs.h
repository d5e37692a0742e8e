#pragma once

/// Sets of pairs in which collision libraries are known to go wrong.

#include <vector>

#include "tests/solid/accuracy/Random.h"

namespace bench {

struct HardSet {
    const char* name;
    std::vector<oracle::Pair> pairs;
};

std::vector<HardSet> HardSets();

}  // namespace bench
