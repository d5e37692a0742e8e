/// Random pairs of each two kinds of shape, in all proportions and at all gaps: the engine's
/// answers against the oracle's, and against its own of the same two moved.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

#include "Check.h"
#include "Random.h"

namespace oracle {
namespace {

/// KESTRANE_ACCURACY_PAIRS sets the number of pairs, for longer or shorter runs.
int Pairs() {
    const char* text = std::getenv("KESTRANE_ACCURACY_PAIRS");
    return text == nullptr ? 10000 : std::atoi(text);
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

class PairsOfAnySort : public testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(PairsOfAnySort, AnswerAsTheOracleDoes) {
    const auto [first, second] = GetParam();
    const int count = Pairs();
    Random random(static_cast<std::uint64_t>(100 + 10 * first + second));
    const bool hasMesh = static_cast<Kind>(second) == Kind::kMesh;  // whose depths take long
    Tally tally;
    for (int i = 0; i < count; ++i) {
        const Pair pair =
            PairOfAnySort(random, static_cast<Kind>(first), static_cast<Kind>(second));
        const Answers answers = Check(pair, !hasMesh || i % 4 == 0, tally);
        CheckMoved(random, pair, answers, tally);
    }
    EXPECT_FALSE(tally.HasFaults()) << tally.Text();
    // The pairs must be worth asking about.
    EXPECT_GT(tally.touching, count / 5);
    EXPECT_LT(tally.touching, count * 4 / 5);
    EXPECT_LT(tally.unsure, count / 4);
}

INSTANTIATE_TEST_SUITE_P(Kinds, PairsOfAnySort, testing::ValuesIn(KindPairs()),
                         [](const testing::TestParamInfo<std::tuple<int, int>>& kinds) {
                             return std::string(Name(static_cast<Kind>(std::get<0>(kinds.param)))) +
                                    Name(static_cast<Kind>(std::get<1>(kinds.param)));
                         });

}  // namespace
}  // namespace oracle
