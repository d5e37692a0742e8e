#pragma once

#include <chrono>
#include <thread>

#include "Hand.h"
#include "Shown.h"
#include "model/neighbours.h"
#include "visualiser/RenderThread.h"
#include "visualiser/VisView.h"

/// A display that a hand navigates in.
class Navigated : public Shown {
  protected:
    void TearDown() override {
        EXPECT_EQ(0, g_activeInteractions) << "something counts as held for ever";
        Shown::TearDown();
    }

    /// What the hand did before is seen, and two frames are drawn with it.
    static void Settle() {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        EXPECT_EQ(KST_OK, KST_ScreenCapture(0, "/dev/null"));
        EXPECT_EQ(KST_OK, KST_ScreenCapture(0, "/dev/null"));
    }
    void Enter(int view, int x, int y) {
        m_hand.Enter(view, x, y);
        Settle();
    }
    template <class What>
    void Press(What what) {
        m_hand.Press(what);
        Settle();
    }
    template <class What>
    void Release(What what) {
        m_hand.Release(what);
        Settle();
    }
    void Move(int dx, int dy) {
        m_hand.Move(dx, dy);
        Settle();
    }

    static MAV_vector Eye(int view = 0) {
        MAV_vector eye{}, point{};
        EXPECT_EQ(KST_OK, KST_GetViewParams(view, &eye.x, &eye.y, &eye.z, &point.x, &point.y,
                                            &point.z, nullptr, nullptr, nullptr));
        return eye;
    }
    static MAV_vector Centre(int view = 0) {
        MAV_vector eye{}, point{};
        EXPECT_EQ(KST_OK, KST_GetViewParams(view, &eye.x, &eye.y, &eye.z, &point.x, &point.y,
                                            &point.z, nullptr, nullptr, nullptr));
        return point;
    }
    static void ExpectNear(const MAV_vector& expected, const MAV_vector& found,
                           float tolerance = 1e-4F) {
        EXPECT_NEAR(expected.x, found.x, tolerance);
        EXPECT_NEAR(expected.y, found.y, tolerance);
        EXPECT_NEAR(expected.z, found.z, tolerance);
    }
    static CVisView& View(int view) { return *g_views[static_cast<std::size_t>(view)]; }
    /// With the frame lock held, as the body wants it.
    template <class Body>
    static auto Locked(Body&& body) {
        g_visualiser->LockFrame();
        const auto result = body();
        g_visualiser->UnlockFrame();
        return result;
    }
    static std::size_t Overlays(int view = 0) {
        return Locked([view] { return View(view).m_overlaySms->objects.size(); });
    }

    Hand m_hand;
};
