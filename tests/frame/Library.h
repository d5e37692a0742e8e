#pragma once

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "kestrane.h"

/// A running library, headless, and short ways to fill it.
class Library : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(KST_OK, KST_Initialisation(false, false, false)); }
    void TearDown() override { EXPECT_EQ(KST_OK, KST_End()); }

    static int Group(int parent = 0, bool capable = true, const char* label = nullptr) {
        int id = -1;
        EXPECT_EQ(KST_OK, KST_CreateGroup(&id, parent, capable, label, false));
        return id;
    }
    /// A box of edge 1.
    static int Box(int group, float x = 0, float y = 0, float z = 0, const char* label = nullptr) {
        int id = -1;
        EXPECT_EQ(KST_OK, KST_CreateBox(group, 1, 1, 1, x, y, z, &id, label));
        return id;
    }
    static std::vector<KstCollisionResult> Results(int count) {
        // One more than asked for, to notice if more are written.
        std::vector<KstCollisionResult> results(static_cast<std::size_t>(count) + 1);
        results.back().id1 = -7;
        EXPECT_EQ(KST_OK, KST_GetResults(results.data()));
        EXPECT_EQ(-7, results.back().id1);
        results.pop_back();
        return results;
    }
    static std::array<float, 3> WorldPosition(int object) {
        KstObjectInfo info = {};
        EXPECT_EQ(KST_OK, KST_GetObject(object, &info));
        return {info.matrix[3], info.matrix[7], info.matrix[11]};
    }
    static int IdOf(const char* label) {
        int id = -1;
        return KST_GetID(&id, label) == KST_OK ? id : -1;
    }
};
