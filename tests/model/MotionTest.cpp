#include <cmath>
#include <limits>

#include "Fakes.h"
#include "model/ViewMotion.h"

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

void AddKey(CMotion& motion, float time, float x) {
    const float pos[3] = {x, 0, 0};
    motion.AddKeyState(time, pos, nullptr, nullptr, false, MAV_ID_MATRIX, MAV_ID_MATRIX);
}

float XAt(const CMotion& motion, float time) {
    MAV_matrix pose = MAV_ID_MATRIX, scale = MAV_ID_MATRIX;
    motion.Evaluate(time, pose, scale);
    return pose[3];
}

TEST(Motion, HoldsOutsideItsRangeAndBlendsInside) {
    CMotion one;
    AddKey(one, 5, 3);
    for (const bool cyclic : {false, true}) {
        one.SetCyclic(cyclic);
        for (const float t : {0.0f, 5.0f, 100.0f})
            EXPECT_EQ(XAt(one, t), 3);
    }
    CMotion two;
    AddKey(two, 1, 0);
    AddKey(two, 3, 10);
    EXPECT_EQ(XAt(two, 2), 5);
    EXPECT_EQ(XAt(two, 0), 0);
    EXPECT_EQ(XAt(two, 4), 10);
    EXPECT_EQ(two.Duration(), 2);
    two.SetCyclic(true);
    EXPECT_EQ(XAt(two, 4), 5);
    EXPECT_EQ(XAt(two, 3), 0);
    EXPECT_EQ(XAt(two, 0), 5);
}

TEST(Motion, RepeatedTimesAreASharpStep) {
    CMotion motion;
    AddKey(motion, 0, 0);
    AddKey(motion, 1, 10);
    AddKey(motion, 1, 20);
    AddKey(motion, 1, 30);
    AddKey(motion, 2, 40);
    EXPECT_NEAR(XAt(motion, std::nextafter(1.0f, 0.0f)), 10, 1e-4);
    EXPECT_EQ(XAt(motion, 1), 30);
    EXPECT_EQ(XAt(motion, 1.5f), 35);

    CMotion still;
    AddKey(still, 2, 1);
    AddKey(still, 2, 7);
    still.SetCyclic(true);
    for (const float t : {0.0f, 2.0f, 3.0f})
        EXPECT_EQ(XAt(still, t), 7);
}

TEST(Motion, FindsTheLastKeyAtOrBelowATime) {
    CMotion motion;
    for (int i = 0; i < 1000; ++i)
        AddKey(motion, static_cast<float>(i / 3), static_cast<float>(i));
    for (int t = 0; t < 333; ++t) {
        EXPECT_EQ(motion.FindInterval(static_cast<float>(t), 0, 1000), 3 * t + 2);
        EXPECT_EQ(motion.FindInterval(static_cast<float>(t) + 0.5f, 0, 1000), 3 * t + 2);
    }
}

TEST(Motion, TimesThatAreNoNumbersEndInNoHarm) {
    const float times[] = {kNaN, kInf, -kInf, 0, 1, 3e38f, -3e38f};
    for (const float first : times) {
        for (const float second : times) {
            for (const float third : times) {
                CMotion motion;
                AddKey(motion, first, 1);
                AddKey(motion, second, 2);
                AddKey(motion, third, 3);
                for (const bool cyclic : {false, true}) {
                    motion.SetCyclic(cyclic);
                    for (const float t : times)
                        XAt(motion, t);
                }
            }
        }
    }
}

TEST_F(HeadlessScene, KeysTakeWhatIsNotGivenFromTheLastKeyOrTheMatrices) {
    CGroup* const group = NewGroup(root.get());
    group->SetPosition(1, 1, 1);
    group->SetScaling(2, 3, 4);
    group->SetOrientation(0, 1.5707964f, 0);
    const MAV_matrix world = group->WorldMatrix();
    group->AddKeyState(0, nullptr, nullptr, nullptr, false);
    EXPECT_TRUE(group->IsAnimated());
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_NEAR(group->WorldMatrix()[i], world[i], 1e-6f);

    const float pos[3] = {9, 0, 0}, quat[4] = {0, 0, 0, 2}, scale[3] = {5, 6, 7};
    group->AddKeyState(10, pos, quat, scale, true);
    group->AddKeyState(20, nullptr, nullptr, nullptr, false);
    const CKeyState& last = group->Motion()->Keys().back();
    EXPECT_EQ(last.pos, (MAV_vector{9, 0, 0}));
    EXPECT_EQ(last.quat, (MAV_quaternion{2, 0, 0, 0}));
    EXPECT_EQ(last.scale, (MAV_vector{5, 6, 7}));
    EXPECT_EQ(group->Motion()->Keys().front().scale, (MAV_vector{2, 3, 4}));
    group->ApplyTime(20);
    EXPECT_EQ(group->PoseMatrix(), mav_matrixXYZSet(MAV_ID_MATRIX, {9, 0, 0}));
}

TEST_F(HeadlessScene, AKeyMovesItsOwnerAtOnceAndClearingLeavesItThere) {
    CGroup* const group = NewGroup(root.get());
    CSceneObject* const box = NewBox(group);
    const float pos[3] = {7, 0, 0};
    group->AddKeyState(10, pos, nullptr, nullptr, false);
    box->AddKeyState(10, pos, nullptr, nullptr, false);
    EXPECT_EQ(collision.members.at(box->Id()).matrix[3], 14);
    EXPECT_EQ(g_animatedGroups.size() + g_animatedObjects.size(), 2u);
    group->ClearKeyStates();
    box->ClearKeyStates();
    EXPECT_EQ(group->Motion(), nullptr);
    EXPECT_FALSE(group->IsAnimated() || box->IsAnimated());
    EXPECT_TRUE(g_animatedGroups.empty() && g_animatedObjects.empty());
    EXPECT_EQ(collision.members.at(box->Id()).matrix[3], 14);
}

TEST_F(HeadlessScene, ACyclicFlagWithoutKeysOutlivesClearingOnGroupsAlone) {
    CGroup* const group = NewGroup(root.get());
    CSceneObject* const box = NewBox(group);
    group->SetCyclic(true);
    box->SetCyclic(true);
    EXPECT_FALSE(group->IsAnimated());
    group->ClearKeyStates();
    box->ClearKeyStates();
    ASSERT_NE(group->Motion(), nullptr);
    EXPECT_TRUE(group->Motion()->IsCyclic());
    EXPECT_EQ(box->Motion(), nullptr);
}

TEST_F(HeadlessScene, TheSceneAtATimeIsTheSameAsOneOwnerAfterTheOther) {
    std::vector<CGroup*> groups{root.get()};
    std::vector<CSceneObject*> boxes;
    for (int i = 1; i < 60; ++i) {
        CGroup* const group = NewGroup(groups[static_cast<std::size_t>(i / 2)]);
        groups.push_back(group);
        boxes.push_back(NewBox(group));
        const float pos[3] = {static_cast<float>(i), 1, 2}, angles[3] = {0.1f, 0.2f, 0.3f};
        boxes.back()->SetPosition(1, static_cast<float>(i), 0);
        if (i % 3 != 0) {
            group->AddKeyState(0, nullptr, nullptr, nullptr, false);
            group->AddKeyState(10, pos, angles, nullptr, false);
        }
        if (i % 4 == 0) {
            boxes.back()->AddKeyState(0, nullptr, angles, nullptr, false);
            boxes.back()->AddKeyState(5, pos, nullptr, nullptr, false);
        }
    }
    // Children that are older than their parents.
    groups[12]->MoveTo(groups[40]);

    ApplyTimeToScene(3);
    const auto atOnce = collision.members;
    ApplyTimeToScene(8);
    for (CSceneObject* object : g_animatedObjects)
        object->ApplyTime(3);
    for (CGroup* group : g_animatedGroups)
        group->ApplyTime(3);
    for (const auto& [id, member] : atOnce)
        EXPECT_EQ(member.matrix, collision.members.at(id).matrix) << id;
}

TEST(ViewMotion, KeysHoldADirectionAndCompleteTheirFrame) {
    const MAV_viewParams current{{1, 2, 3}, {0, 0, -1}, {0, 1, 0}, {0, 0, 1}, {1, 0, 0}, nullptr};
    CViewMotion motion;
    motion.AddKeyState(1, nullptr, nullptr, nullptr, current);
    const float eye[3] = {11, 2, 3}, point[3] = {21, 2, 3}, up[3] = {5, 5, 0};
    motion.AddKeyState(3, eye, nullptr, nullptr, current);
    EXPECT_EQ(motion.Keys()[0].params.eye, current.eye);
    EXPECT_EQ(motion.Keys()[1].params.view, current.view);
    motion.AddKeyState(5, nullptr, point, up, current);
    EXPECT_EQ(motion.Keys()[2].params.view, (MAV_vector{1, 0, 0}));
    EXPECT_EQ(motion.Keys()[2].params.up, (MAV_vector{0, 1, 0}));
    EXPECT_EQ(motion.Keys()[2].params.right, (MAV_vector{0, 0, 1}));
    EXPECT_EQ(motion.Keys()[2].params.fixed_up, (MAV_vector{0, 1, 0}));

    MAV_viewParams params;
    motion.Evaluate(2, params);
    EXPECT_EQ(params.eye, (MAV_vector{6, 2, 3}));
    motion.SetCyclic(true);
    motion.Evaluate(6, params);
    EXPECT_EQ(params.eye, (MAV_vector{6, 2, 3}));
}

}  // namespace
