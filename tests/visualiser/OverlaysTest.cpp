#include <algorithm>
#include <cmath>

#include "Navigated.h"

namespace {

/// Puts the record's settings there, and the window in line with them.
template <class Change>
void Set(CVisView& view, Change&& change) {
    g_visualiser->LockFrame();
    change(view);
    g_visualiser->UnlockFrame();
    // Two changes that undo each other, so that the window takes all settings over.
    EXPECT_EQ(KST_OK, KST_SetViewOptions(view.m_index, KST_BACKFACE_CULLING_ON));
    EXPECT_EQ(KST_OK, KST_SetViewOptions(view.m_index, KST_BACKFACE_CULLING_OFF));
}

TEST_F(Navigated, TheGridSuitsTheSpeed) {
    Set(View(0), [](CVisView& view) { view.m_navigationSpeed = 2; });
    EXPECT_EQ(KST_OK, KST_SetViewParams(0, 0, 20, 20, 0, 7, 0, 0, 1, 0));
    Enter(0, 140, 140);
    Press("a");
    const auto hasGrid = [] {
        const auto& objects = View(0).m_overlaySms->objects;
        const auto grid = std::find_if(objects.begin(), objects.end(), [](const MAV_object* o) {
            return static_cast<const MAV_polyline*>(o->record)->lineCount == 202;
        });
        if (grid == objects.end()) {
            return false;
        }
        const auto& lines = *static_cast<const MAV_polyline*>((*grid)->record);
        const auto at = [&lines](int line) { return lines.vertices[2 * line]; };
        ExpectNear({-500, 0, -500}, at(0));
        ExpectNear({-490, 0, -500}, at(1));
        ExpectNear({500, 0, -500}, at(100));
        ExpectNear({-500, 0, -500}, at(101));
        ExpectNear({-500, 0, 500}, at(201));
        ExpectNear({500, 0, 500}, lines.vertices[403]);
        EXPECT_FLOAT_EQ(7, lines.matrix[7]);
        EXPECT_NE(lines.lineSurfaces[0]->colour, lines.lineSurfaces[1]->colour);
        EXPECT_EQ(lines.lineSurfaces[0]->colour, lines.lineSurfaces[106]->colour);
        return true;
    };
    EXPECT_TRUE(Locked(hasGrid));
    Release("a");
    EXPECT_EQ(KST_OK, KST_SetViewOptions(0, KST_GRID_OFF));
    Press("a");
    EXPECT_EQ(1U, Overlays());
    Release("a");
    Set(View(0), [](CVisView& view) { view.m_navigationSpeed = 1; });
}

struct Spot {
    double x = 0, y = 0;
    int pixels = 0;
};

/// Where the green arrow is, and how large.
Spot Arrow(const Picture& picture) {
    Spot spot;
    for (int y = 0; y < picture.Height(); ++y) {
        for (int x = 0; x < picture.Width(); ++x) {
            if (picture.At(x, y).IsGreen()) {
                spot.x += x;
                spot.y += y;
                ++spot.pixels;
            }
        }
    }
    spot.x /= std::max(spot.pixels, 1);
    spot.y /= std::max(spot.pixels, 1);
    return spot;
}

TEST_F(Navigated, TheCompassStandsInItsCornerWhateverClippingIs) {
    struct Depths {
        float near, far;
    };
    EXPECT_EQ(KST_OK, KST_SetViewOptions(0, KST_COMPASS_ON));
    EXPECT_EQ(KST_OK, KST_SetViewParams(0, 0, 0, 20, 0, 0, 0, 0, 1, 0));
    const Picture picture = Capture();
    const Spot usual = Arrow(picture);
    EXPECT_GT(usual.pixels, 8);
    // Its foot is at a tenth of width and height.
    EXPECT_NEAR(0.1 * picture.Width(), usual.x, 4);
    EXPECT_GT(0.9 * picture.Height(), usual.y);
    for (const auto& [near, far] : {Depths{0.1F, 5}, {20, 500}, {1, 1.3F}, {100, 5000}}) {
        Set(View(0), [n = near, f = far](CVisView& view) {
            view.m_nearClip = n;
            view.m_farClip = f;
            view.m_fogStart = 2 * f;
        });
        const Spot spot = Arrow(Capture());
        EXPECT_NEAR(usual.x, spot.x, 1) << near << " to " << far;
        EXPECT_NEAR(usual.y, spot.y, 1) << near << " to " << far;
        EXPECT_NEAR(usual.pixels, spot.pixels, 5) << near << " to " << far;
    }
    Set(View(0), [](CVisView& view) {
        view.m_nearClip = 0.1F;
        view.m_farClip = 500;
        view.m_fogStart = 400;
    });
}

}  // namespace
