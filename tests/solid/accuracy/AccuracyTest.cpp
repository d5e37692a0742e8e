/// Random pairs of each two kinds of shape: the engine's answers against the oracle's.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <tuple>
#include <vector>

#include "Check.h"
#include "Random.h"

namespace oracle {
namespace {

constexpr int kPairs = 20000;

/// KESTRANE_ACCURACY_PAIRS sets the number of pairs, for longer runs; depths are then checked of
/// all.
int AskedPairs() {
    const char* text = std::getenv("KESTRANE_ACCURACY_PAIRS");
    return text == nullptr ? 0 : std::atoi(text);
}

std::vector<std::tuple<int, int>> KindPairs() {
    std::vector<std::tuple<int, int>> pairs;
    for (int first = 0; first < kKindCount; ++first) {
        for (int second = first; second < kKindCount; ++second) {
            pairs.emplace_back(first, second);
        }
    }
    return pairs;
}

class RandomPairs : public testing::TestWithParam<std::tuple<int, int>> {
  protected:
    Kind First() const { return static_cast<Kind>(std::get<0>(GetParam())); }
    Kind Second() const { return static_cast<Kind>(std::get<1>(GetParam())); }
    bool Has(Kind kind) const { return First() == kind || Second() == kind; }
    /// Depths of round shapes take a search each.
    int DepthEvery() const {
        return Has(Kind::kSphere) || Has(Kind::kCylinder) || Has(Kind::kCone) ? 10 : 2;
    }
};

TEST_P(RandomPairs, AnswersAreThoseOfTheOracle) {
    const int asked = AskedPairs();
    const int count = asked > 0 ? asked : Has(Kind::kMesh) ? kPairs / 4 : kPairs;
    Random random(
        static_cast<std::uint64_t>(100 + 10 * std::get<0>(GetParam()) + std::get<1>(GetParam())));
    Tally tally;
    for (int i = 0; i < count; ++i) {
        const Pair pair = RandomPair(random, First(), Second());
        What what;
        what.depth = asked > 0 || i % DepthEvery() == 0;
        Check(pair, Ask(pair.a, pair.b), what, tally);
    }
    EXPECT_FALSE(tally.HasFaults()) << tally.Text();
    if (asked > 0) {
        std::cout << tally.Text();
    }
    // The pairs must be worth asking about.
    EXPECT_GT(tally.touching, count * 3 / 10);
    EXPECT_LT(tally.touching, count * 7 / 10);
    EXPECT_LT(tally.unsure, count / 500 + 2);
    EXPECT_GT(tally.depths, 0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, RandomPairs, testing::ValuesIn(KindPairs()),
                         [](const testing::TestParamInfo<std::tuple<int, int>>& kinds) {
                             return std::string(Name(static_cast<Kind>(std::get<0>(kinds.param)))) +
                                    Name(static_cast<Kind>(std::get<1>(kinds.param)));
                         });

}  // namespace
}  // namespace oracle
