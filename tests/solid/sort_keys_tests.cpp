#include "platform/solid/SortKeys.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <tuple>

using namespace solid;

namespace {

TEST(SortKeys, AgreesWithAStableSort) {
    std::mt19937_64 random(1);
    std::vector<SortKey> spare;
    for (std::size_t count : {0u, 1u, 2u, 23u, 24u, 25u, 200u, 5000u}) {
        for (const std::uint64_t range :
             {std::uint64_t{1}, std::uint64_t{3}, std::uint64_t{127}, std::uint64_t{128},
              std::uint64_t{1} << 20, std::uint64_t{1} << 40, ~std::uint64_t{0}}) {
            std::vector<SortKey> keys;
            const std::uint64_t base = ~std::uint64_t{0} - range;  // up to the last number
            for (std::size_t i = 0; i < count; ++i) {
                keys.push_back({base + random() % range, base + random() % range, i});
            }
            std::vector<SortKey> expected = keys;
            std::stable_sort(expected.begin(), expected.end(),
                             [](const SortKey& a, const SortKey& b) {
                                 return std::tie(a.first, a.second) < std::tie(b.first, b.second);
                             });
            SortByKey(keys, spare);
            ASSERT_EQ(keys.size(), expected.size());
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_EQ(keys[i].index, expected[i].index) << count << " of " << range;
            }
        }
    }
}

}  // namespace
