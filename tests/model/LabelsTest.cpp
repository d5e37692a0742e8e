#include <gtest/gtest.h>

#include <random>
#include <set>

#include "model/Labels.h"

namespace {

/// The rule as it is told: the first free of label, label_1, label_2, ...
std::string FirstFree(const std::set<std::string>& used, const std::string& label) {
    std::string candidate = label;
    for (int n = 1; used.count(candidate); ++n)
        candidate = label + "_" + std::to_string(n);
    return candidate;
}

TEST(Labels, UniqueLabelsFollowTheRuleThroughAnyHistory) {
    std::mt19937 random(3);
    CLabels labels;
    std::set<std::string> used;
    // Bases that look like numbered forms of each other, and numbers that are none.
    const std::vector<std::string> bases = {"a", "a_1", "a_1_2", "_", "a_", "a_01", "a_0", "b"};
    for (int step = 0; step < 20000; ++step) {
        if (random() % 5 < 3 || used.empty()) {
            const std::string& base = bases[random() % bases.size()];
            const std::string unique = labels.MakeUnique(base);
            ASSERT_EQ(unique, FirstFree(used, base));
            EXPECT_TRUE(labels.Add(unique, step));
            used.insert(unique);
        } else {
            auto it = used.begin();
            std::advance(it, random() % used.size());
            labels.Remove(*it);
            used.erase(it);
        }
        if (step % 3000 == 2999) {
            while (used.size() > 5) {
                labels.Remove(*used.rbegin());
                used.erase(std::prev(used.end()));
            }
        }
    }
    EXPECT_EQ(labels.Size(), used.size());
}

TEST(Labels, NumbersBeyondTheMachinesAreJustText) {
    CLabels labels;
    labels.Add("a", 0);
    labels.Add("a_99999999999999999999999999", 1);
    EXPECT_EQ(labels.MakeUnique("a"), "a_1");
    labels.Remove("a_99999999999999999999999999");
    EXPECT_EQ(labels.MakeUnique("a"), "a_1");
}

}  // namespace
