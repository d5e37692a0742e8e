#include <atomic>
#include <cmath>

#include "Navigated.h"
#include "model/ModelLock.h"

namespace {

float Length(const MAV_vector& v) {
    return std::hypot(v.x, v.y, v.z);
}

TEST_F(Navigated, TheLeftButtonTurnsAboutTheCentre) {
    LookFrom(0, 0, 10);
    Enter(0, 140, 140);
    Press(Hand::kLeftButton);
    EXPECT_EQ(1, g_activeInteractions);
    // Marker and grid; and no movement with the first step.
    EXPECT_EQ(2U, Overlays());
    ExpectNear({0, 0, 10}, Eye());
    Move(40, 0);
    EXPECT_LT(Eye().x, -1);
    EXPECT_NEAR(0, Eye().y, 0.3F);
    for (int i = 0; i < 10; ++i) {
        Move(i % 3 == 0 ? -40 : 15, i % 2 == 0 ? 30 : -28);
        EXPECT_NEAR(10, Length(Eye()), 1e-4F);
    }
    // Another press during the drag is ignored.
    const MAV_vector before = Eye();
    Press(Hand::kRightButton);
    Move(20, 0);
    EXPECT_NEAR(10, Length(Eye()), 1e-4F);
    EXPECT_GT(Length(mav_vectorSub(Eye(), before)), 0.1F);
    Release(Hand::kRightButton);
    EXPECT_EQ(0U, Overlays());
    Release(Hand::kLeftButton);
    const MAV_vector after = Eye();
    Move(30, 10);
    ExpectNear(after, Eye(), 0);
    ExpectNear({0, 0, 0}, Centre(), 0);
}

TEST_F(Navigated, TheRightButtonSlidesAndWithControlRaises) {
    EXPECT_EQ(KST_OK, KST_SetViewParams(0, 0, 10, 10, 0, 0, 0, 0, 1, 0));
    Enter(0, 140, 140);
    Press(Hand::kRightButton);
    Move(30, 0);
    ExpectNear({-3, 10, 10}, Eye());
    ExpectNear({-3, 0, 0}, Centre());
    Move(0, 20);
    ExpectNear({-3, 10, 8}, Eye());
    ExpectNear({-3, 0, -2}, Centre());
    Release(Hand::kRightButton);
    Press("Control_L");
    Press(Hand::kRightButton);
    Move(0, 3);
    ExpectNear({-3, 13, 8}, Eye());
    EXPECT_NEAR(3, Centre().y, 1e-4F);
    Release(Hand::kRightButton);
    Release("Control_L");
}

TEST_F(Navigated, TheMiddleButtonAndTheWheelGoAlongTheView) {
    LookFrom(0, 0, 20);
    Enter(0, 140, 140);
    Press(Hand::kMiddleButton);
    Move(25, 10);
    ExpectNear({0, 0, 23}, Eye());
    Press("Control_L");
    Move(0, -5);
    ExpectNear({0, 0, 14}, Eye());
    // One jump does not pass the centre.
    Move(0, -100);
    ExpectNear({0, 0, 0.5F}, Eye());
    Release("Control_L");
    Release(Hand::kMiddleButton);

    LookFrom(0, 0, 20);
    m_hand.Wheel(1);
    Settle();
    ExpectNear({0, 0, 18}, Eye());
    m_hand.Wheel(-1);
    Settle();
    ExpectNear({0, 0, 20}, Eye());
    EXPECT_EQ(0U, Overlays());

    EXPECT_EQ(KST_OK, KST_SetViewOptions(0, KST_ORTHOGONAL));
    m_hand.Wheel(1);
    Settle();
    Press(Hand::kMiddleButton);
    Move(0, 10);
    Release(Hand::kMiddleButton);
    EXPECT_NEAR(101, Locked([] { return View(0).m_orthoSize; }), 1e-3F);
    ExpectNear({0, 0, 20}, Eye());
}

TEST_F(Navigated, KeysMoveWhileTheyAreHeld) {
    struct Expected {
        const char* key;
        MAV_vector way;
    };
    Enter(0, 140, 140);
    for (const auto& [key, way] : {Expected{"w", {0, 0, -1}},
                                   {"s", {0, 0, 1}},
                                   {"a", {-1, 0, 0}},
                                   {"d", {1, 0, 0}},
                                   {"r", {0, 1, 0}},
                                   {"f", {0, -1, 0}},
                                   {"Up", {0, 0, -1}}}) {
        LookFrom(0, 0, 100);
        Press(key);
        EXPECT_EQ(2U, Overlays()) << key;
        Release(key);
        EXPECT_EQ(0U, Overlays()) << key;
        const MAV_vector went = mav_vectorSub(Eye(), {0, 0, 100});
        EXPECT_GE(mav_vectorDotProduct(went, way), 0.19F) << key;
        EXPECT_NEAR(Length(went), mav_vectorDotProduct(went, way), 1e-3F) << key;
        // Whole steps of 0.2.
        EXPECT_NEAR(std::round(Length(went) * 5), Length(went) * 5, 1e-2F) << key;
    }
    LookFrom(0, 0, 1.3F);
    Press("w");
    for (int i = 0; i < 10; ++i) {
        Settle();
    }
    ExpectNear({0, 0, 0.5F}, Eye());
    Release("w");
}

TEST_F(Navigated, TabTwiceBringsTheCameraBack) {
    LookFrom(3, 4, 10);
    Enter(0, 140, 140);
    Press("Tab");
    Release("Tab");
    EXPECT_EQ(1, g_activeInteractions);
    Press("s");
    Release("s");
    EXPECT_GT(Length(mav_vectorSub(Eye(), {3, 4, 10})), 0.1F);
    // No drag begins meanwhile.
    const MAV_vector before = Eye();
    Press(Hand::kLeftButton);
    Move(20, 20);
    Release(Hand::kLeftButton);
    ExpectNear(before, Eye(), 0);
    Press("Tab");
    Release("Tab");
    ExpectNear({3, 4, 10}, Eye(), 0);
    ExpectNear({0, 0, 0}, Centre(), 10);
}

TEST_F(Navigated, LookingAroundFollowsTheMouseAndLeavesTheEye) {
    const auto direction = [] { return Locked([] { return View(0).m_viewParams.view; }); };
    LookFrom(0, 0, 10);
    Enter(0, 140, 140);
    Press("Tab");
    Release("Tab");
    // A window without the keyboard stands still; those in memory never have it.
    const float radians = Hand::OnScreen() ? 0.01F : 0;
    Move(30, 0);
    ExpectNear({std::sin(30 * radians), 0, -std::cos(30 * radians)}, direction());
    Move(-30, 0);
    Move(0, 20);
    ExpectNear({0, -std::sin(20 * radians), -std::cos(20 * radians)}, direction());
    if (Hand::OnScreen()) {
        // Also out of the window; and at the edge of the screen it goes on at the other side.
        const auto place = [] { return Locked([] { return mav_mouse_root_x; }); };
        int last = 0, height = 0;
        Locked([&] { return mav_gfxWindowResGet(View(0).m_window, &last, &height), 0; });
        --last;
        int turned = 0;
        for (const auto& [step, end] :
             {std::pair(last - place(), 0), {30, 30}, {-30, last}, {-40, last - 40}}) {
            Hand::MoveAcross(step);
            Settle();
            turned += step;
            EXPECT_EQ(end, place());
            const float yaw = static_cast<float>(turned) * radians, c = std::cos(20 * radians);
            ExpectNear({c * std::sin(yaw), -std::sin(20 * radians), -c * std::cos(yaw)},
                       direction());
        }
    }
    ExpectNear({0, 0, 10}, Eye(), 0);
    Press("Tab");
    Release("Tab");
    Move(30, 0);
    ExpectNear({0, 0, -1}, direction(), 0);
}

TEST_F(Navigated, WhatIsHeldEndsWithFocusAndWindow) {
    Enter(0, 140, 140);
    Press("w");
    Press(Hand::kLeftButton);
    EXPECT_EQ(2, g_activeInteractions);
    m_hand.LoseFocus();
    Settle();
    EXPECT_EQ(0, g_activeInteractions);
    EXPECT_EQ(0U, Overlays());
    // What comes late is nothing any more.
    Release("w");
    Release(Hand::kLeftButton);
    EXPECT_EQ(0, g_activeInteractions);

    ASSERT_EQ(KST_OK, KST_ShowView(1, nullptr));
    Settle();
    Enter(1, 100, 100);
    Press("Tab");
    Release("Tab");
    Press("d");
    Press(Hand::kRightButton);
    EXPECT_EQ(3, g_activeInteractions);
    EXPECT_EQ(KST_OK, KST_HideView(1));
    EXPECT_EQ(0, g_activeInteractions);
    m_hand.Release(Hand::kRightButton);
    m_hand.Release("d");
    Settle();
    EXPECT_EQ(0, g_activeInteractions);
    EXPECT_EQ(KST_OK, KST_ShowView(1, nullptr));
    const MAV_vector eye = Eye(1);
    Settle();
    ExpectNear(eye, Eye(1), 0);
}

std::atomic<int> picked{-1};
std::atomic<int> picks{0};
std::atomic<float> pickedX{0}, pickedY{0}, pickedZ{0};

void Picked(int object, float* point) {
    pickedX = point[0];
    pickedY = point[1];
    pickedZ = point[2];
    picked = object;
    ++picks;
}

TEST_F(Navigated, SpaceTellsOfTheObjectUnderTheMouse) {
    picked = -1;
    picks = 0;
    Box(2, 0, 0, 2);
    const int box = Box(-2, 0, 0, 2);
    LookFrom(0, 0, 10);
    EXPECT_EQ(KST_OK, KST_SetObjectSelectCallback(Picked));
    int count = 0;
    ASSERT_EQ(KST_OK, KST_CheckPointCollision(m_group, -2, 0, 0, true, &count));
    ASSERT_EQ(1, count);
    const Picture picture = Capture();
    const double pixels = picture.Height() / 2.0 / std::tan(22.5 * 3.14159265 / 180);
    // The middle of the box's front, 9 before the eye.
    const int x = static_cast<int>(picture.Width() / 2.0 - 2 * pixels / 9);
    const int y = picture.Height() / 2;
    Enter(0, x, y);
    Press("space");
    Release("space");
    EXPECT_EQ(1, picks);
    EXPECT_EQ(box, picked);
    EXPECT_NEAR(-2, pickedX, 0.1F);
    EXPECT_NEAR(0, pickedY, 0.1F);
    EXPECT_NEAR(1, pickedZ, 0.2F);
    // A tap that is over before a frame sees it counts too, and nothing else asks for that frame.
    m_hand.Press("space");
    m_hand.Release("space");
    for (int i = 0; i < 200 && picks < 2; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(2, picks);
    // The findings that the host has been told of are still there, and no more of them.
    KstCollisionResult findings[2] = {};
    EXPECT_EQ(KST_OK, KST_GetResults(findings));
    EXPECT_EQ(box, findings[0].id1);
    EXPECT_EQ(0, findings[1].id1);
    // Past the objects, with the group hidden, and without a callback: nothing.
    m_hand.MoveTo(x, 5);
    Press("space");
    Release("space");
    m_hand.MoveTo(x, y);
    EXPECT_EQ(KST_OK, KST_SetGroupVisibility(m_group, 0, false));
    Press("space");
    Release("space");
    EXPECT_EQ(KST_OK, KST_SetGroupVisibility(m_group, 0, true));
    EXPECT_EQ(KST_OK, KST_SetObjectSelectCallback(nullptr));
    Press("space");
    Release("space");
    EXPECT_EQ(2, picks);
}

TEST_F(Navigated, TheKeyZFliesTheViewOfItsWindow) {
    const int box = Box(0, 0, 0, 2);
    EXPECT_EQ(KST_OK, KST_SetGroupVisibility(m_group, 2, true));
    ASSERT_EQ(KST_OK, KST_ShowView(2, nullptr));
    LookFrom(0, 0, 100, 0);
    LookFrom(0, 0, 50, 2);
    const Picture picture = Capture(2);
    Settle();
    Enter(2, picture.Width() / 2, picture.Height() / 2);
    Press("z");
    Release("z");
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));
    Settle();
    ExpectNear({0, 0, 100}, Eye(0), 0);
    EXPECT_LT(Eye(2).z, 8);
    EXPECT_GT(Eye(2).z, 1);
    // A key stops a flight.
    LookFrom(0, 0, 50, 2);
    Press("z");
    Press("s");
    Release("s");
    Release("z");
    const MAV_vector stopped = Eye(2);
    EXPECT_GT(stopped.z, 8);
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));
    ExpectNear(stopped, Eye(2), 0);
    EXPECT_EQ(KST_OK, KST_DestroyObject(box));
}

TEST_F(Navigated, PicksWaitForTheModelButNotForAWindowThatGoes) {
    picks = 0;
    Box(0, 0, 0, 2);
    EXPECT_EQ(KST_OK, KST_SetGroupVisibility(m_group, 1, true));
    EXPECT_EQ(KST_OK, KST_SetObjectSelectCallback(Picked));
    ASSERT_EQ(KST_OK, KST_ShowView(1, nullptr));
    LookFrom(0, 0, 10, 1);
    const Picture picture = Capture(1);
    Enter(1, picture.Width() / 2, picture.Height() / 2);
    {
        const std::lock_guard busy(g_modelLock);
        for (int i = 0; i < 3; ++i) {
            Press("space");
            Release("space");
        }
        EXPECT_EQ(0, picks);
    }
    Settle();
    EXPECT_EQ(1, picks);
    {
        const std::lock_guard busy(g_modelLock);
        for (int i = 0; i < 3; ++i) {
            Press("space");
            Release("space");
        }
        EXPECT_EQ(KST_OK, KST_HideView(1));
    }
    Settle();
    EXPECT_EQ(1, picks);
}

}  // namespace
