#include "model/IdTable.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace {

TEST(IdTable, HoldsWhatAMapHolds) {
    std::mt19937 random(1);
    static int things[100];
    CIdTable<int> table;
    std::map<int, int*> map;
    const auto expectSame = [&] {
        ASSERT_EQ(map.size(), table.size());
        ASSERT_EQ(map.empty(), table.empty());
        auto it = map.begin();
        for (const auto& [id, thing] : table) {
            ASSERT_EQ(it->first, id);
            ASSERT_EQ(it->second, thing);
            ++it;
        }
        ASSERT_TRUE(it == map.end());
    };
    for (int round = 0; round < 3; ++round) {
        int next = 0;
        for (int step = 0; step < 300; ++step) {
            // Many come, then most go, at both ends and between.
            for (int i = step < 150 ? 20 : 1; i > 0; --i) {
                int* const thing = &things[random() % 100];
                table.emplace(next, thing);
                map.emplace(next++, thing);
            }
            for (int i = step < 150 ? 5 : 30; i > 0; --i) {
                const int id =
                    static_cast<int>(random() % 3 == 0 ? random()
                                                       : random() % static_cast<unsigned>(next)) &
                    0x7fffffff;
                table.erase(id);
                map.erase(id);
            }
            const int id = static_cast<int>(random() % static_cast<unsigned>(next + 600)) - 300;
            const auto found = table.find(id);
            if (map.count(id) != 0) {
                EXPECT_EQ(map[id], table.at(id));
                EXPECT_EQ(map[id], found->second);
                EXPECT_EQ(id, found->first);
            } else {
                EXPECT_EQ(nullptr, table.Find(id));
                EXPECT_TRUE(found == table.end());
                EXPECT_THROW(table.at(id), std::out_of_range);
            }
            if (step % 10 == 0) {
                expectSame();
            }
        }
        while (!map.empty()) {
            table.erase(map.begin()->first);
            map.erase(map.begin());
        }
        expectSame();
    }
}

}  // namespace
