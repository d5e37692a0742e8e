#include "HardPairs.h"

#include <cstddef>
#include <utility>

#include "Pairs.h"

namespace bench {

using oracle::Pair;
using oracle::Random;
using oracle::Spec;

namespace {

constexpr int kPairsOfSet = 500;

/// Two turned shapes with one middle.
Pair Concentric(Random& random) {
    return {RandomObject(random), RandomObject(random)};
}

/// One side, or two, a thousandth of the third.
Pair Thin(Random& random) {
    const auto thin = [&] {
        const bool needle = random.Chance(0.5);
        return Resized(RandomObject(random), needle ? 0.001f : 1, needle ? 1 : 0.001f,
                       needle ? 0.001f : 1);
    };
    Spec first = thin();
    return BroughtNear(random, std::move(first), thin());
}

/// Boxes that are not turned, of equal height and depth, one beside the other: what they have in
/// common is a whole cross-section. Every fourth pair is two equal boxes in one place.
Pair AlignedBoxes(Random& random) {
    const auto size = [&] { return static_cast<float>(1 + random.Below(8)) / 4; };
    const float width = size(), height = size(), depth = size();
    if (random.Chance(0.25)) {
        return {oracle::Box(width, height, depth), oracle::Box(width, height, depth)};
    }
    const float width2 = size();
    const float apart = (width + width2) / 2 * static_cast<float>(random.Below(10)) / 8;
    return {oracle::Box(width, height, depth),
            MovedBy(oracle::Box(width2, height, depth), apart, 0, 0)};
}

Pair ThousandTimes(Random& random) {
    Spec small = RandomObject(random);
    return BroughtNear(random, std::move(small), Resized(RandomObject(random), 1000, 1000, 1000));
}

}  // namespace

std::vector<HardSet> HardSets() {
    struct Recipe {
        const char* name;
        Pair (*draw)(Random& random);
    };
    static constexpr Recipe kRecipes[] = {{"concentric", Concentric},
                                          {"thin", Thin},
                                          {"aligned boxes", AlignedBoxes},
                                          {"sizes 1:1000", ThousandTimes}};
    std::vector<HardSet> sets;
    for (const Recipe& recipe : kRecipes) {
        HardSet set{recipe.name, {}};
        Random random(11);
        for (int i = 0; i < kPairsOfSet; ++i) {
            set.pairs.push_back(recipe.draw(random));
        }
        sets.push_back(std::move(set));
    }
    return sets;
}

}  // namespace bench
