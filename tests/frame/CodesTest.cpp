#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "Library.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kFullTurn = 6.2831855F;

struct Call {
    const char* what;
    std::function<int()> call;
};

/// Every function once, with arguments that are wrong in as many ways as they can be.
std::vector<Call> AllFunctionsButTheStart() {
    const auto nothing = [](int, float*) {};
    return {
        {"End", [] { return KST_End(); }},
        {"SuspendVisualisation", [] { return KST_SuspendVisualisation(); }},
        {"ResumeVisualisation", [] { return KST_ResumeVisualisation(); }},
        {"ShowView", [] { return KST_ShowView(9, nullptr); }},
        {"HideView", [] { return KST_HideView(9); }},
        {"SetViewOptions", [] { return KST_SetViewOptions(9, -1); }},
        {"SetViewParams", [] { return KST_SetViewParams(9, 0, 0, 0, 0, 0, 0, 0, 0, 0); }},
        {"GetViewParams",
         [] {
             return KST_GetViewParams(9, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      nullptr, nullptr, nullptr);
         }},
        {"AddViewKeyState", [] { return KST_AddViewKeyState(9, 0, nullptr, nullptr, nullptr); }},
        {"SetViewCyclic", [] { return KST_SetViewCyclic(9, true); }},
        {"ClearViewKeyStates", [] { return KST_ClearViewKeyStates(9); }},
        {"SetBackgroundColor", [] { return KST_SetBackgroundColor(9, 2, 2, 2); }},
        {"ScreenCapture", [] { return KST_ScreenCapture(9, nullptr); }},
        {"CreateGroup", [] { return KST_CreateGroup(nullptr, 9, true, nullptr, false); }},
        {"DestroyGroup", [] { return KST_DestroyGroup(9); }},
        {"EmptyGroup", [] { return KST_EmptyGroup(9); }},
        {"MoveGroup", [] { return KST_MoveGroup(9, 9); }},
        {"SetGroupPosition", [] { return KST_SetGroupPosition(9, 0, 0, 0); }},
        {"SetGroupOrientation", [] { return KST_SetGroupOrientation(9, 9, 9, 9); }},
        {"SetGroupScaling", [] { return KST_SetGroupScaling(9, -1, -1, -1); }},
        {"SetGroupQuaternion", [] { return KST_SetGroupQuaternion(9, 0, 0, 0, 1); }},
        {"SetGroupColor", [] { return KST_SetGroupColor(9, 2, 2, 2, 2, true, 9); }},
        {"SetGroupTexture", [] { return KST_SetGroupTexture(9, 900, 0, 0, true, 9); }},
        {"SetGroupActiveSurface", [] { return KST_SetGroupActiveSurface(9, true, 9); }},
        {"SetGroupCollisionCheckCapability",
         [] { return KST_SetGroupCollisionCheckCapability(9, true); }},
        {"SetGroupClearance", [] { return KST_SetGroupClearance(9, -1); }},
        {"SetGroupVisibility", [] { return KST_SetGroupVisibility(9, 9, true); }},
        {"AddGroupKeyState",
         [] { return KST_AddGroupKeyState(9, 0, nullptr, nullptr, nullptr, false); }},
        {"SetGroupCyclic", [] { return KST_SetGroupCyclic(9, true); }},
        {"ClearGroupKeyStates", [] { return KST_ClearGroupKeyStates(9); }},
        {"CloneGroup", [] { return KST_CloneGroup(nullptr, 9, 9, true, nullptr); }},
        {"CloneGroupRecursive",
         [] { return KST_CloneGroupRecursive(nullptr, 9, 9, -1, nullptr, nullptr); }},
        {"GetGroup", [] { return KST_GetGroup(9, nullptr); }},
        {"GetGroupChildID", [] { return KST_GetGroupChildID(9, -1, nullptr); }},
        {"GetGroupObjectID", [] { return KST_GetGroupObjectID(9, -1, nullptr); }},
        {"DestroyObject", [] { return KST_DestroyObject(9); }},
        {"MoveObject", [] { return KST_MoveObject(9, 9); }},
        {"SetObjectPosition", [] { return KST_SetObjectPosition(9, 0, 0, 0); }},
        {"SetObjectOrientation", [] { return KST_SetObjectOrientation(9, 9, 9, 9); }},
        {"SetObjectScaling", [] { return KST_SetObjectScaling(9, -1, -1, -1); }},
        {"SetObjectQuaternion", [] { return KST_SetObjectQuaternion(9, 0, 0, 0, 1); }},
        {"SetObjectColor", [] { return KST_SetObjectColor(9, 2, 2, 2, 2, 9); }},
        {"SetObjectTexture", [] { return KST_SetObjectTexture(9, 900, 0, 0, 9); }},
        {"SetObjectActiveSurface", [] { return KST_SetObjectActiveSurface(9, 9); }},
        {"SetObjectClearance", [] { return KST_SetObjectClearance(9, -1); }},
        {"AddObjectKeyState",
         [] { return KST_AddObjectKeyState(9, 0, nullptr, nullptr, nullptr, false); }},
        {"SetObjectCyclic", [] { return KST_SetObjectCyclic(9, true); }},
        {"ClearObjectKeyStates", [] { return KST_ClearObjectKeyStates(9); }},
        {"GetObjectType", [] { return KST_GetObjectType(9, nullptr); }},
        {"GetObject", [] { return KST_GetObject(9, nullptr); }},
        {"CreateBox", [] { return KST_CreateBox(9, -1, 0, 0, 0, 0, 0, nullptr, nullptr); }},
        {"CreateSphere", [] { return KST_CreateSphere(9, -1, 0, 0, 0, nullptr, nullptr); }},
        {"CreateCylinder", [] { return KST_CreateCylinder(9, -1, 0, 0, 0, 0, nullptr, nullptr); }},
        {"CreateCone", [] { return KST_CreateCone(9, -1, 0, 0, 0, 0, nullptr, nullptr); }},
        {"CreatePolygon", [] { return KST_CreatePolygon(9, -1, nullptr, nullptr, nullptr); }},
        {"CreateTriangles", [] { return KST_CreateTriangles(9, -1, nullptr, nullptr, nullptr); }},
        {"CreatePolygonGroup",
         [] { return KST_CreatePolygonGroup(9, -1, nullptr, nullptr, nullptr, nullptr); }},
        {"CreatePolyline",
         [] { return KST_CreatePolyline(9, -1, nullptr, nullptr, nullptr, nullptr); }},
        {"CreateTetrahedron", [] { return KST_CreateTetrahedron(9, nullptr, nullptr, nullptr); }},
        {"CheckPointCollision", [] { return KST_CheckPointCollision(9, 0, 0, 0, true, nullptr); }},
        {"CheckLineCollision",
         [] { return KST_CheckLineCollision(9, 0, 0, 0, 0, 0, 0, true, nullptr); }},
        {"CheckGroupCollision", [] { return KST_CheckGroupCollision(9, 9, true, nullptr); }},
        {"GetClosestPairs", [] { return KST_GetClosestPairs(9, 9, nullptr); }},
        {"GetPenetrationDepths", [] { return KST_GetPenetrationDepths(9, 9, nullptr); }},
        {"GetResults", [] { return KST_GetResults(nullptr); }},
        {"GetID", [] { return KST_GetID(nullptr, nullptr); }},
        {"LoadScene", [] { return KST_LoadScene(nullptr, 9, nullptr); }},
        {"LoadTexture", [] { return KST_LoadTexture(900, nullptr, 1); }},
        {"SetObjectSelectCallback", [=] { return KST_SetObjectSelectCallback(nothing); }},
        {"SetTime", [] { return KST_SetTime(-1); }},
    };
}

TEST(CodesAtRest, NothingWorksBeforeTheStartAndAfterTheEnd) {
    const std::vector<Call> calls = AllFunctionsButTheStart();
    ASSERT_EQ(70U, calls.size());
    for (int round = 0; round < 2; ++round) {
        for (const Call& c : calls) {
            EXPECT_EQ(KST_ERROR_NOT_INITIALISED, c.call()) << c.what;
        }
        ASSERT_EQ(KST_OK, KST_Initialisation(false, true, true));
        ASSERT_EQ(KST_OK, KST_End());
    }
}

/// A scene in which each kind of refusal can be had.
class Codes : public Library {
  protected:
    void SetUp() override {
        Library::SetUp();
        capable = Group(0, true, "capable");
        below = Group(capable, true, "below");
        incapable = Group(0, false, "incapable");
        animated = Group(0, true, "animated");
        box = Box(capable, 0, 0, 0, "box");
        animatedBox = Box(animated, 50, 0, 0, "animated box");
        ASSERT_EQ(KST_OK, KST_AddGroupKeyState(animated, 5, nullptr, nullptr, nullptr, false));
        ASSERT_EQ(KST_OK, KST_AddObjectKeyState(animatedBox, 5, nullptr, nullptr, nullptr, false));
    }

    int capable = -1, below = -1, incapable = -1, animated = -1, box = -1, animatedBox = -1;
    int id = -77;
    int count = -77;
    const float vertices[12] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
    const int counts[2] = {3, 1};
    const int negativeCounts[2] = {4, -1};
    const float goodAngles[3] = {0, kFullTurn, kNaN};
    const float badAngles[3] = {0, 0, 6.3F};
};

struct Row {
    int line;
    int code;
    std::function<int()> call;
};

#define ROW(code, expression)                               \
    Row {                                                   \
        __LINE__, code, [&]() -> int { return expression; } \
    }

void Check(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        EXPECT_EQ(row.code, row.call()) << "in line " << row.line;
    }
}

TEST_F(Codes, Start) {
    Check({
        ROW(KST_OK, KST_Initialisation(true, true, true)),
        ROW(KST_OK, KST_GetGroup(capable, std::array<KstGroupInfo, 1>().data())),
        ROW(KST_ERROR_NOT_RENDERING, KST_SuspendVisualisation()),
        ROW(KST_ERROR_NOT_RENDERING, KST_ResumeVisualisation()),
    });
}

TEST_F(Codes, Views) {
    float f = -77;
    Check({
        ROW(KST_ERROR_ARGUMENT, KST_ShowView(0, "t")),
        ROW(KST_ERROR_ARGUMENT, KST_ShowView(4, "t")),
        ROW(KST_ERROR_ARGUMENT, KST_ShowView(-1, "t")),
        ROW(KST_OK, KST_ShowView(1, "t")),
        ROW(KST_ERROR_ARGUMENT, KST_HideView(0)),
        ROW(KST_OK, KST_HideView(3)),
        ROW(KST_ERROR_ARGUMENT, KST_SetViewOptions(4, 1)),
        ROW(KST_OK, KST_SetViewOptions(0, -1)),
        ROW(KST_ERROR_ARGUMENT, KST_SetViewParams(-1, 0, 0, 0, 1, 0, 0, 0, 1, 0)),
        ROW(KST_OK, KST_SetViewParams(3, 0, 0, 0, 1, 0, 0, 0, 1, 0)),
        ROW(KST_ERROR_ARGUMENT, KST_GetViewParams(4, &f, &f, &f, &f, &f, &f, &f, &f, &f)),
        ROW(KST_ERROR_ARGUMENT, KST_GetViewParams(0, &f, &f, &f, &f, &f, nullptr, &f, &f, &f)),
        ROW(KST_OK, KST_GetViewParams(0, &f, &f, &f, &f, &f, &f, nullptr, nullptr, nullptr)),
        ROW(KST_OK, KST_AddViewKeyState(7, 0, nullptr, nullptr, nullptr)),
        ROW(KST_OK, KST_SetViewCyclic(7, true)),
        ROW(KST_ERROR_ARGUMENT, KST_ClearViewKeyStates(4)),
        ROW(KST_OK, KST_ClearViewKeyStates(0)),
        ROW(KST_ERROR_ARGUMENT, KST_SetBackgroundColor(0, 0, 0, 1.01F)),
        ROW(KST_ERROR_ARGUMENT, KST_SetBackgroundColor(4, 0, 0, 0)),
        ROW(KST_OK, KST_SetBackgroundColor(0, 1, kNaN, 0)),
        ROW(KST_OK, KST_ScreenCapture(7, nullptr)),
        ROW(KST_OK, KST_LoadTexture(700, nullptr, 1)),
        ROW(KST_OK, KST_SetObjectSelectCallback(nullptr)),
    });
    EXPECT_EQ(-77, f);
}

TEST_F(Codes, Groups) {
    KstGroupInfo info;
    Check({
        ROW(KST_ERROR_UNKNOWN_PARENT, KST_CreateGroup(&id, 999, true, "x", false)),
        ROW(KST_ERROR_UNKNOWN_PARENT, KST_CreateGroup(nullptr, 0, true, "x", false)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_DestroyGroup(0)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_DestroyGroup(-1)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_EmptyGroup(999)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_MoveGroup(0, capable)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_MoveGroup(capable, 999)),
        ROW(KST_ERROR_OVERLAP, KST_MoveGroup(capable, capable)),
        ROW(KST_ERROR_OVERLAP, KST_MoveGroup(capable, below)),
        ROW(KST_OK, KST_MoveGroup(capable, 0)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_SetGroupPosition(0, 1, 1, 1)),
        ROW(KST_ERROR_ANIMATED, KST_SetGroupPosition(animated, 1, 1, 1)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_SetGroupOrientation(0, 9, 9, 9)),
        ROW(KST_ERROR_ANIMATED, KST_SetGroupOrientation(animated, 9, 9, 9)),
        ROW(KST_ERROR_ARGUMENT, KST_SetGroupOrientation(below, 0, 0, 6.3F)),
        ROW(KST_ERROR_ARGUMENT, KST_SetGroupOrientation(below, -0.001F, 0, 0)),
        ROW(KST_OK, KST_SetGroupOrientation(below, kFullTurn, 0, 0)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_SetGroupScaling(0, -1, 1, 1)),
        ROW(KST_ERROR_ANIMATED, KST_SetGroupScaling(animated, -1, 1, 1)),
        ROW(KST_ERROR_ARGUMENT, KST_SetGroupScaling(below, 1, -1, 1)),
        ROW(KST_OK, KST_SetGroupScaling(below, 0, 1, 1)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_SetGroupQuaternion(0, 0, 0, 0, 1)),
        ROW(KST_ERROR_ANIMATED, KST_SetGroupQuaternion(animated, 0, 0, 0, 1)),
        ROW(KST_OK, KST_SetGroupQuaternion(below, 0, 0, 0, 0)),
        ROW(KST_OK, KST_SetGroupColor(999, 5, 5, 5, 5, true, 5)),
        ROW(KST_OK, KST_SetGroupTexture(999, 999, -1, -1, true, 5)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_SetGroupActiveSurface(0, true, 5)),
        ROW(KST_ERROR_ARGUMENT, KST_SetGroupActiveSurface(below, true, 2)),
        ROW(KST_OK, KST_SetGroupActiveSurface(below, true, 1)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_SetGroupCollisionCheckCapability(0, false)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_SetGroupClearance(0, -1)),
        ROW(KST_ERROR_ARGUMENT, KST_SetGroupClearance(incapable, -1)),
        ROW(KST_OK, KST_SetGroupClearance(incapable, 1)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_SetGroupVisibility(0, 9, true)),
        ROW(KST_ERROR_ARGUMENT, KST_SetGroupVisibility(below, 4, true)),
        ROW(KST_OK, KST_SetGroupVisibility(below, 3, true)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_GetGroup(999, &info)),
        ROW(KST_ERROR_ARGUMENT, KST_GetGroup(0, nullptr)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_GetGroupChildID(999, 0, &id)),
        ROW(KST_ERROR_ARGUMENT, KST_GetGroupChildID(below, 0, &id)),
        ROW(KST_ERROR_ARGUMENT, KST_GetGroupChildID(0, -1, &id)),
        ROW(KST_ERROR_ARGUMENT, KST_GetGroupChildID(0, 0, nullptr)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_GetGroupObjectID(999, 0, &id)),
        ROW(KST_ERROR_ARGUMENT, KST_GetGroupObjectID(capable, 1, &id)),
    });
    EXPECT_EQ(-77, id);
    EXPECT_EQ(KST_OK, KST_GetGroupChildID(0, 1, &id));
    EXPECT_EQ(incapable, id);
    EXPECT_EQ(KST_OK, KST_GetGroupObjectID(capable, 0, &id));
    EXPECT_EQ(box, id);
    ASSERT_EQ(KST_OK, KST_GetGroup(below, &info));
    // Headless, visibility does not change.
    EXPECT_FALSE(info.visibleInView[3]);
}

TEST_F(Codes, Motion) {
    Check({
        ROW(KST_ERROR_ARGUMENT, KST_AddGroupKeyState(999, 0, nullptr, badAngles, nullptr, false)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_AddGroupKeyState(0, 0, nullptr, badAngles, nullptr, true)),
        ROW(KST_ERROR_TIME_ORDER,
            KST_AddGroupKeyState(animated, 4.9F, nullptr, nullptr, nullptr, false)),
        ROW(KST_OK, KST_AddGroupKeyState(animated, 5, nullptr, goodAngles, nullptr, false)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_SetGroupCyclic(0, true)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_ClearGroupKeyStates(0)),
        ROW(KST_OK, KST_ClearGroupKeyStates(animated)),
        ROW(KST_OK, KST_SetGroupPosition(animated, 1, 1, 1)),
        ROW(KST_ERROR_ARGUMENT, KST_AddObjectKeyState(999, 0, nullptr, badAngles, nullptr, false)),
        ROW(KST_ERROR_UNKNOWN_OBJECT,
            KST_AddObjectKeyState(999, 0, nullptr, badAngles, nullptr, true)),
        ROW(KST_ERROR_TIME_ORDER,
            KST_AddObjectKeyState(animatedBox, 4.9F, nullptr, nullptr, nullptr, false)),
        ROW(KST_OK, KST_AddObjectKeyState(animatedBox, 5, nullptr, nullptr, nullptr, false)),
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_SetObjectCyclic(999, true)),
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_ClearObjectKeyStates(999)),
        ROW(KST_ERROR_ARGUMENT, KST_SetTime(-0.001F)),
        ROW(KST_OK, KST_SetTime(kNaN)),
        ROW(KST_OK, KST_SetTime(0)),
    });
}

TEST_F(Codes, Cloning) {
    int ids[1] = {capable};
    int newIds[1] = {-77};
    Check({
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_CloneGroup(&id, 999, 999, true, "c")),
        ROW(KST_ERROR_UNKNOWN_PARENT, KST_CloneGroup(&id, capable, 999, true, "c")),
        ROW(KST_ERROR_ARGUMENT, KST_CloneGroup(nullptr, capable, 0, true, "c")),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_CloneGroupRecursive(newIds, 999, 0, 1, ids, nullptr)),
        ROW(KST_ERROR_UNKNOWN_GROUP,
            KST_CloneGroupRecursive(newIds, capable, 999, 1, ids, nullptr)),
        ROW(KST_ERROR_CLONE_INTO_ITSELF,
            KST_CloneGroupRecursive(newIds, capable, below, -1, ids, nullptr)),
        ROW(KST_ERROR_ARGUMENT, KST_CloneGroupRecursive(newIds, capable, 0, -1, ids, nullptr)),
        ROW(KST_ERROR_ARGUMENT, KST_CloneGroupRecursive(nullptr, capable, 0, 1, ids, nullptr)),
        ROW(KST_ERROR_ARGUMENT, KST_CloneGroupRecursive(newIds, capable, 0, 1, nullptr, nullptr)),
    });
    EXPECT_EQ(-77, id);
    EXPECT_EQ(-77, newIds[0]);
    EXPECT_EQ(-1, IdOf("c"));
    Check({
        ROW(KST_OK, KST_CloneGroupRecursive(nullptr, capable, 0, 0, nullptr, nullptr)),
        ROW(KST_OK, KST_CloneGroupRecursive(newIds, capable, 0, 1, ids, nullptr)),
        ROW(KST_OK, KST_CloneGroup(&id, capable, below, true, nullptr)),
    });
    // The ids after those of the set-up: two copies of two groups, then one.
    EXPECT_EQ(animated + 3, newIds[0]);
    EXPECT_EQ(animated + 5, id);
}

TEST_F(Codes, Objects) {
    KstObjectInfo info;
    Check({
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_DestroyObject(999)),
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_MoveObject(999, 999)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_MoveObject(box, 999)),
        ROW(KST_ERROR_UNKNOWN_GROUP, KST_MoveObject(box, 0)),
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_SetObjectPosition(999, 1, 1, 1)),
        ROW(KST_ERROR_ANIMATED, KST_SetObjectPosition(animatedBox, 1, 1, 1)),
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_SetObjectOrientation(999, 9, 9, 9)),
        ROW(KST_ERROR_ANIMATED, KST_SetObjectOrientation(animatedBox, 9, 9, 9)),
        ROW(KST_ERROR_ARGUMENT, KST_SetObjectOrientation(box, 0, 6.3F, 0)),
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_SetObjectScaling(999, -1, 1, 1)),
        ROW(KST_ERROR_ANIMATED, KST_SetObjectScaling(animatedBox, -1, 1, 1)),
        ROW(KST_ERROR_ARGUMENT, KST_SetObjectScaling(box, 1, 1, -1)),
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_SetObjectQuaternion(999, 0, 0, 0, 1)),
        ROW(KST_ERROR_ANIMATED, KST_SetObjectQuaternion(animatedBox, 0, 0, 0, 1)),
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_SetObjectColor(999, 2, 0, 0, 1, 5)),
        ROW(KST_ERROR_ARGUMENT, KST_SetObjectColor(box, 0, 0, 0, 2, 0)),
        ROW(KST_ERROR_ARGUMENT, KST_SetObjectColor(box, 0, 0, 0, 1, 2)),
        ROW(KST_OK, KST_SetObjectColor(box, 0, 0, 0, 1, 1)),
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_SetObjectTexture(999, 0, 0, 0, 5)),
        ROW(KST_ERROR_ARGUMENT, KST_SetObjectTexture(box, 0, 0, 1, 0)),
        ROW(KST_ERROR_ARGUMENT, KST_SetObjectTexture(box, 0, 1, 1, -1)),
        ROW(KST_ERROR_ARGUMENT, KST_SetObjectTexture(box, 100, 1, 1, 0)),
        ROW(KST_OK, KST_SetObjectTexture(box, 99, 1, 1, 0)),
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_SetObjectActiveSurface(999, 5)),
        ROW(KST_ERROR_ARGUMENT, KST_SetObjectActiveSurface(box, 2)),
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_SetObjectClearance(999, -1)),
        ROW(KST_ERROR_ARGUMENT, KST_SetObjectClearance(box, -1)),
        ROW(KST_OK, KST_SetObjectClearance(box, 0)),
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_GetObjectType(999, &id)),
        ROW(KST_ERROR_ARGUMENT, KST_GetObjectType(box, nullptr)),
        ROW(KST_ERROR_UNKNOWN_OBJECT, KST_GetObject(999, &info)),
        ROW(KST_ERROR_ARGUMENT, KST_GetObject(box, nullptr)),
    });
    EXPECT_EQ(-77, id);
    EXPECT_EQ((std::array<float, 3>{0, 0, 0}), WorldPosition(box));
}

TEST_F(Codes, CreationTestsGeometryThenGroupThenLabel) {
    const auto all = [&](int group, float size, int n, const int* set, const char* label) {
        return std::vector<std::function<int()>>{
            [=, this] { return KST_CreateBox(group, 1, 1, size, 0, 0, 0, &id, label); },
            [=, this] { return KST_CreateSphere(group, size, 0, 0, 0, &id, label); },
            [=, this] { return KST_CreateCylinder(group, 1, size, 0, 0, 0, &id, label); },
            [=, this] { return KST_CreateCone(group, size, 1, 0, 0, 0, &id, label); },
            [=, this] { return KST_CreatePolygon(group, n + 2, vertices, &id, label); },
            [=, this] { return KST_CreateTriangles(group, n, vertices, &id, label); },
            [=, this] { return KST_CreatePolygonGroup(group, n, set, vertices, &id, label); },
            [=, this] { return KST_CreatePolyline(group, n, set, vertices, &id, label); },
            [=, this] {
                return KST_CreateTetrahedron(group, n > 0 ? vertices : nullptr, &id, label);
            },
        };
    };
    int type = 0;
    for (const auto& create : all(999, -1, 0, counts, "box")) {
        EXPECT_EQ(KST_ERROR_ARGUMENT, create()) << "shape " << type++;
    }
    for (const int group : {999, 0, -1}) {
        for (const auto& create : all(group, 1, 1, counts, "box")) {
            EXPECT_EQ(KST_ERROR_UNKNOWN_GROUP, create());
        }
    }
    for (const char* label : {"box", "capable"}) {
        for (const auto& create : all(capable, 1, 1, counts, label)) {
            EXPECT_EQ(KST_ERROR_LABEL_IN_USE, create());
        }
    }
    Check({
        ROW(KST_ERROR_ARGUMENT,
            KST_CreatePolygonGroup(capable, 2, negativeCounts, vertices, &id, "")),
        ROW(KST_ERROR_ARGUMENT, KST_CreatePolyline(capable, 2, negativeCounts, vertices, &id, "")),
        ROW(KST_ERROR_ARGUMENT, KST_CreatePolygonGroup(capable, 2, nullptr, vertices, &id, "")),
        ROW(KST_ERROR_ARGUMENT, KST_CreatePolyline(capable, 2, counts, nullptr, &id, "")),
        ROW(KST_ERROR_ARGUMENT, KST_CreatePolygon(capable, 3, nullptr, &id, "")),
        ROW(KST_ERROR_ARGUMENT, KST_CreateTriangles(capable, 1, nullptr, &id, "")),
    });
    EXPECT_EQ(-77, id);
    // Nothing refused has used up an id; sizes may be 0, and not numbers.
    int expected = animatedBox;
    for (const float size : {0.0F, 1.0F, kNaN}) {
        for (const auto& create : all(capable, size, 1, counts, nullptr)) {
            EXPECT_EQ(KST_OK, create());
            EXPECT_EQ(++expected, id);
        }
    }
    EXPECT_EQ(KST_OK, KST_CreateSphere(capable, 1, 0, 0, 0, nullptr, "no id wanted"));
    EXPECT_EQ(expected + 1, IdOf("no id wanted"));
}

TEST_F(Codes, Queries) {
    const auto point = [&](int group, int* n) {
        return KST_CheckPointCollision(group, 0, 0, 0, true, n);
    };
    const auto line = [&](int group, int* n) {
        return KST_CheckLineCollision(group, 0, 0, 0, 1, 0, 0, true, n);
    };
    for (const auto& query : {std::function<int(int, int*)>(point), {line}}) {
        EXPECT_EQ(KST_ERROR_UNKNOWN_GROUP, query(999, &count));
        EXPECT_EQ(KST_ERROR_UNKNOWN_GROUP, query(0, &count));
        EXPECT_EQ(KST_ERROR_NOT_CAPABLE, query(incapable, nullptr));
        EXPECT_EQ(KST_ERROR_ARGUMENT, query(capable, nullptr));
    }
    const auto touching = [](int g1, int g2, int* n) {
        return KST_CheckGroupCollision(g1, g2, true, n);
    };
    for (const auto& query : {std::function<int(int, int, int*)>(touching),
                              {KST_GetClosestPairs},
                              {KST_GetPenetrationDepths}}) {
        EXPECT_EQ(KST_ERROR_UNKNOWN_GROUP, query(incapable, 999, &count));
        EXPECT_EQ(KST_ERROR_UNKNOWN_GROUP, query(0, capable, &count));
        EXPECT_EQ(KST_ERROR_NOT_CAPABLE, query(capable, incapable, &count));
        EXPECT_EQ(KST_ERROR_NOT_CAPABLE, query(incapable, incapable, &count));
        EXPECT_EQ(KST_ERROR_ARGUMENT, query(capable, capable, nullptr));
        EXPECT_EQ(KST_ERROR_OVERLAP, query(capable, capable, &count));
    }
    EXPECT_EQ(KST_ERROR_NO_COLLISION, KST_GetPenetrationDepths(capable, animated, &count));
    EXPECT_EQ(KST_ERROR_ARGUMENT, KST_GetResults(nullptr));
    EXPECT_EQ(KST_ERROR_UNKNOWN_LABEL, KST_GetID(&id, "nobody"));
    EXPECT_EQ(KST_ERROR_UNKNOWN_LABEL, KST_GetID(&id, ""));
    EXPECT_EQ(KST_ERROR_UNKNOWN_LABEL, KST_GetID(nullptr, nullptr));
    EXPECT_EQ(KST_ERROR_ARGUMENT, KST_GetID(nullptr, "box"));
    EXPECT_EQ(-77, count);
    EXPECT_EQ(-77, id);
}

/// As a host calls that knows no bool: the function is called through another type on purpose.
__attribute__((no_sanitize("undefined"))) int CreateGroupWithInt(int* id, int capable) {
    const auto create = reinterpret_cast<int (*)(int*, int, int, const char*, int)>(
        reinterpret_cast<void (*)()>(&KST_CreateGroup));
    return create(id, 0, capable, nullptr, 0);
}

TEST_F(Codes, AnyByteButZeroIsTrue) {
    KstGroupInfo info = {};
    for (const int truth : {1, 2, 0x80, 0x1ff}) {
        ASSERT_EQ(KST_OK, CreateGroupWithInt(&id, truth));
        ASSERT_EQ(KST_OK, KST_GetGroup(id, &info));
        EXPECT_TRUE(info.colCheck) << truth;
    }
    ASSERT_EQ(KST_OK, CreateGroupWithInt(&id, 0x100));
    ASSERT_EQ(KST_OK, KST_GetGroup(id, &info));
    EXPECT_FALSE(info.colCheck);
}

}  // namespace
