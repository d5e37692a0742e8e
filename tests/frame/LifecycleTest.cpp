#include <cstdlib>

#include "Library.h"
#include "model/Registries.h"

namespace {

TEST(Lifecycle, EachStartGivesAFreshScene) {
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(KST_OK, KST_Initialisation(round == 1, true, true));
        int id = -1;
        EXPECT_EQ(KST_OK, KST_GetID(&id, "Root group"));
        EXPECT_EQ(0, id);
        EXPECT_EQ(KST_OK, KST_CreateGroup(&id, 0, true, "arm", false));
        EXPECT_EQ(1, id);
        EXPECT_EQ(KST_OK, KST_CreateBox(1, 1, 1, 1, 0, 0, 0, &id, "box"));
        EXPECT_EQ(0, id);
        int count = 0;
        EXPECT_EQ(KST_OK, KST_CheckPointCollision(1, 0, 0, 0, true, &count));
        EXPECT_EQ(1, count);
        EXPECT_EQ(KST_OK, KST_End());
        EXPECT_EQ(KST_ERROR_NOT_INITIALISED, KST_End());
    }
}

TEST_F(Library, ASecondStartLeavesTheSceneAlone) {
    const int group = Group();
    EXPECT_EQ(KST_OK, KST_Initialisation(false, false, false));
    EXPECT_EQ(group + 1, Group());
}

TEST_F(Library, ResultsOfAFormerRunAreGone) {
    const int group = Group();
    Box(group);
    int count = 0;
    ASSERT_EQ(KST_OK, KST_CheckPointCollision(group, 0, 0, 0, true, &count));
    ASSERT_EQ(1, count);
    ASSERT_EQ(KST_OK, KST_End());
    ASSERT_EQ(KST_OK, KST_Initialisation(false, false, false));
    EXPECT_TRUE(Results(0).empty());
}

TEST_F(Library, EmptyingTheRootKeepsIdsCounting) {
    const int group = Group(0, true, "arm");
    const int box = Box(group, 0, 0, 0, "box");
    EXPECT_EQ(KST_OK, KST_EmptyGroup(0));
    KstGroupInfo info = {-1, -1, {}, false};
    EXPECT_EQ(KST_OK, KST_GetGroup(0, &info));
    EXPECT_EQ(0, info.childCount);
    EXPECT_EQ(0, info.objectCount);
    EXPECT_TRUE(info.visibleInView[0]);
    EXPECT_TRUE(info.colCheck);
    EXPECT_EQ(-1, IdOf("arm"));
    EXPECT_EQ(-1, IdOf("box"));
    EXPECT_EQ(0, IdOf("Root group"));
    EXPECT_EQ(group + 1, Group(0, true, "arm"));
    EXPECT_EQ(box + 1, Box(group + 1, 0, 0, 0, "box"));
}

TEST_F(Library, TheTimeScaleReachesToTheLastKeyState) {
    const int group = Group();
    const int object = Box(group, 0, 0, 0);
    const auto clear = [&] {
        EXPECT_EQ(KST_OK, KST_ClearObjectKeyStates(object));
        EXPECT_EQ(KST_OK, KST_ClearGroupKeyStates(group));
    };
    clear();
    const auto groupKey = [&](float time) {
        return KST_AddGroupKeyState(group, time, nullptr, nullptr, nullptr, false);
    };
    const auto objectKey = [&](float time) {
        return KST_AddObjectKeyState(object, time, nullptr, nullptr, nullptr, false);
    };
    EXPECT_EQ(KST_OK, groupKey(5));
    EXPECT_EQ(KST_OK, objectKey(9));
    EXPECT_EQ(KST_ERROR_TIME_ORDER, objectKey(8));
    EXPECT_EQ(9.0F, g_timeScaleMax);
    EXPECT_EQ(KST_OK, KST_ClearObjectKeyStates(object));
    EXPECT_EQ(5.0F, g_timeScaleMax);
    EXPECT_EQ(KST_OK, KST_ClearGroupKeyStates(group));
    EXPECT_EQ(0.0F, g_timeScaleMax);
    // Times below 0 are times like others.
    EXPECT_EQ(KST_OK, groupKey(-5));
    EXPECT_EQ(KST_OK, objectKey(-9));
    EXPECT_EQ(KST_OK, KST_ClearObjectKeyStates(object));
    EXPECT_EQ(-5.0F, g_timeScaleMax);
    clear();
}

TEST_F(Library, MovesWhatStandsInAGroupAndTurnsInTheDocumentedOrder) {
    const int group = Group();
    const int box = Box(group, 1, 0, 0);
    ASSERT_EQ(KST_OK, KST_SetGroupPosition(group, 10, 0, 0));
    ASSERT_EQ(KST_OK, KST_SetGroupScaling(group, 2, 2, 2));
    EXPECT_EQ((std::array<float, 3>{12, 0, 0}), WorldPosition(box));
    constexpr float kQuarter = 1.5707964F;
    ASSERT_EQ(KST_OK, KST_SetGroupScaling(group, 1, 1, 1));
    // About z x goes to y, about x y goes to z, about y z goes to x.
    const struct {
        std::array<float, 3> angles, position;
    } turns[] = {{{0, 0, kQuarter}, {10, 1, 0}},
                 {{kQuarter, 0, kQuarter}, {10, 0, 1}},
                 {{kQuarter, kQuarter, kQuarter}, {11, 0, 0}}};
    for (const auto& turn : turns) {
        const auto [x, y, z] = turn.angles;
        ASSERT_EQ(KST_OK, KST_SetGroupOrientation(group, x, y, z));
        const std::array<float, 3> position = WorldPosition(box);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(turn.position[i], position[i], 1e-6F);
        }
    }
}

TEST_F(Library, TimeMovesWhatHasKeyStates) {
    const int group = Group();
    const int box = Box(group, 0, 1, 0);
    const float from[3] = {0, 0, 0};
    const float to[3] = {10, 0, 0};
    ASSERT_EQ(KST_OK, KST_AddGroupKeyState(group, 1, from, nullptr, nullptr, false));
    ASSERT_EQ(KST_OK, KST_AddGroupKeyState(group, 3, to, nullptr, nullptr, false));
    ASSERT_EQ(KST_OK, KST_SetTime(2));
    EXPECT_EQ((std::array<float, 3>{5, 1, 0}), WorldPosition(box));
    ASSERT_EQ(KST_OK, KST_ClearGroupKeyStates(group));
    ASSERT_EQ(KST_OK, KST_SetTime(3));
    EXPECT_EQ((std::array<float, 3>{5, 1, 0}), WorldPosition(box));
    // The time that was set stays, so a first key state acts at once.
    ASSERT_EQ(KST_OK, KST_AddObjectKeyState(box, 9, to, nullptr, nullptr, false));
    EXPECT_EQ((std::array<float, 3>{15, 0, 0}), WorldPosition(box));
    ASSERT_EQ(KST_OK, KST_SetTime(0));
}

TEST_F(Library, ObjectsTellTheirShape) {
    const int group = Group();
    const float points[21] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 2, 0, 0, 0, 2, 0, 0, 0, 2};
    const int counts[2] = {3, 4};
    int id = -1;
    int type = 0;
    KstObjectInfo info;
    ASSERT_EQ(KST_OK, KST_CreatePolyline(group, 2, counts, points, &id, nullptr));
    ASSERT_EQ(KST_OK, KST_GetObjectType(id, &type));
    EXPECT_EQ(KST_POLYLINE, type);
    ASSERT_EQ(KST_OK, KST_GetObject(id, &info));
    EXPECT_EQ(group, info.groupId);
    EXPECT_EQ(2, info.p1.i);
    EXPECT_TRUE(std::equal(counts, counts + 2, info.p2.ints));
    EXPECT_TRUE(std::equal(points, points + 21, info.p3.floats));
    std::free(info.p2.ints);
    std::free(info.p3.floats);
    ASSERT_EQ(KST_OK, KST_CreateCone(group, 2, 3, 0, 0, 0, &id, nullptr));
    ASSERT_EQ(KST_OK, KST_GetObject(id, &info));
    EXPECT_EQ(2, info.p1.f);
    EXPECT_EQ(3, info.p2.f);
}

}  // namespace
