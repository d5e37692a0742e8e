#include <sys/stat.h>
#include <array>
#include <filesystem>
#include <tuple>
#include <utility>

#include "Shown.h"
#include "visualiser/VisView.h"

namespace {

using Three = std::array<float, 3>;

struct CameraPlace {
    Three eye{}, point{}, up{};
};

CameraPlace CameraOf(int view) {
    CameraPlace c;
    EXPECT_EQ(KST_OK, KST_GetViewParams(view, &c.eye[0], &c.eye[1], &c.eye[2], &c.point[0],
                                        &c.point[1], &c.point[2], &c.up[0], &c.up[1], &c.up[2]));
    return c;
}

TEST_F(Shown, ViewsOpenAndCloseAndRefuseWhatTheyCannotDo) {
    float f[6];
    for (const int view : {0, -1, 4}) {
        EXPECT_EQ(KST_ERROR_ARGUMENT, KST_ShowView(view, "no"));
        EXPECT_EQ(KST_ERROR_ARGUMENT, KST_HideView(view));
    }
    EXPECT_EQ(KST_ERROR_VIEW_NOT_OPEN, KST_SetViewParams(2, 1, 2, 3, 0, 0, 0, 0, 1, 0));
    EXPECT_EQ(KST_ERROR_VIEW_NOT_OPEN, KST_GetViewParams(2, f, f + 1, f + 2, f + 3, f + 4, f + 5,
                                                         nullptr, nullptr, nullptr));
    EXPECT_EQ(KST_ERROR_VIEW_NOT_OPEN, KST_ScreenCapture(2, "no.bmp"));
    EXPECT_EQ(KST_OK, KST_HideView(2));

    EXPECT_EQ(KST_OK, KST_ShowView(2, "second"));
    EXPECT_EQ(KST_OK, KST_ShowView(2, "again"));
    EXPECT_EQ(KST_OK, KST_SetViewParams(2, 1, 2, 3, 0, 0, 0, 0, 1, 0));
    EXPECT_TRUE(Capture(2).IsWhole());
    EXPECT_EQ(KST_OK, KST_HideView(2));
    EXPECT_EQ(KST_ERROR_VIEW_NOT_OPEN, KST_ScreenCapture(2, "no.bmp"));
    // The camera comes back with the window.
    EXPECT_EQ(KST_OK, KST_ShowView(2, nullptr));
    EXPECT_EQ((Three{1, 2, 3}), CameraOf(2).eye);

    EXPECT_EQ(KST_ERROR_ARGUMENT, KST_SetBackgroundColor(0, 0, 1.5F, 0));
    EXPECT_EQ(KST_ERROR_ARGUMENT, KST_SetViewOptions(4, 1));
    EXPECT_EQ(KST_ERROR_ARGUMENT, KST_AddViewKeyState(4, 0, nullptr, nullptr, nullptr));
    EXPECT_EQ(KST_ERROR_ARGUMENT, KST_SetViewCyclic(-1, true));
    EXPECT_EQ(KST_ERROR_ARGUMENT, KST_LoadTexture(100, "no.ppm", 1));
    EXPECT_EQ(KST_ERROR_FILE, KST_LoadTexture(99, "no such file.ppm", 1));
}

TEST_F(Shown, TheCentreKeepsItsDistanceFromTheEye) {
    EXPECT_EQ((Three{20, 10, 20}), CameraOf(0).eye);
    EXPECT_EQ(KST_OK, KST_SetViewParams(0, 0, 0, 5, 0, 0, 4.9F, 0, 3, 0));
    const CameraPlace place = CameraOf(0);
    EXPECT_EQ((Three{0, 0, 5}), place.eye);
    EXPECT_EQ((Three{0, 0, 4.5F}), place.point);
    EXPECT_EQ((Three{0, 1, 0}), place.up);
    // A camera that is to look at its own place looks where it did.
    EXPECT_EQ(KST_OK, KST_SetViewParams(0, 1, 2, 3, 1, 2, 3, 0, 1, 0));
    EXPECT_EQ((Three{1, 2, 2.5F}), CameraOf(0).point);
    // One that looks along its own up direction has another one.
    EXPECT_EQ(KST_OK, KST_SetViewParams(0, 0, 9, 0, 0, 0, 0, 0, 1, 0));
    EXPECT_EQ(0, CameraOf(0).up[1]);
}

TEST_F(Shown, AnObjectIsSeenWhereItIsAndOnlyWhereItsGroupIs) {
    const int box = Box(0, 0, 0);
    Colour(box, 0, 1, 0);
    LookFrom(0, 0, 5);
    const Picture front = Capture();
    EXPECT_TRUE(front.Middle().IsGreen()) << front.Middle();
    EXPECT_EQ((::Colour{0, 0, 0}), front.At(3, 3));
    // 45 degrees over the height: the edge of 1 at a distance of 4.5.
    const double half = 0.5 / (4.5 * std::tan(22.5 * 3.14159265 / 180)) * front.Height() / 2;
    const int inside = static_cast<int>(half) - 2;
    const int outside = static_cast<int>(half) + 3;
    const int x = front.Width() / 2;
    const int y = front.Height() / 2;
    EXPECT_GT(front.At(x + inside, y).g, 100);
    EXPECT_EQ(0, front.At(x + outside, y).g);
    EXPECT_GT(front.At(x, y - inside).g, 100);
    EXPECT_EQ(0, front.At(x, y - outside).g);

    EXPECT_EQ(KST_OK, KST_SetObjectPosition(box, 0, 1, 0));
    EXPECT_EQ(0, Capture().Middle().g);
    EXPECT_EQ(KST_OK, KST_SetObjectPosition(box, 0, 0, 0));
    EXPECT_EQ(KST_OK, KST_SetGroupVisibility(m_group, 0, false));
    EXPECT_EQ(0, Capture().Middle().g);
    EXPECT_EQ(KST_OK, KST_SetGroupVisibility(m_group, 1, true));
    EXPECT_EQ(KST_OK, KST_SetViewOptions(1, KST_COMPASS_OFF));
    EXPECT_EQ(KST_OK, KST_ShowView(1, nullptr));
    LookFrom(0, 0, 5, 1);
    EXPECT_GT(Capture(1).Middle().g, 100);
    EXPECT_EQ(KST_OK, KST_DestroyObject(box));
    EXPECT_EQ((::Colour{255, 255, 255}), Capture(1).Middle());
}

TEST_F(Shown, EveryShapeIsSeenUprightAndLit) {
    const float triangle[] = {-1, -1, 0, 1, -1, 0, 0, 1, 0};
    const float square[] = {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0};
    const float corners[] = {-1, -1, 0, 1, -1, 0, 0, 1, 0, 0, 0, 1};
    const float line[] = {-1, 0, 0, 1, 0, 0};
    const int four = 4;
    const int two = 2;
    const auto expectSeen = [this](int created, int id, const char* what) {
        EXPECT_EQ(KST_OK, created) << what;
        LookFrom(0, 0, 6);
        EXPECT_GT(Capture().Middle().Brightness(), 0) << what;
        EXPECT_EQ(KST_OK, KST_DestroyObject(id)) << what;
        EXPECT_EQ(0, Capture().Middle().Brightness()) << what;
    };
    int id = -1;
    const auto make = [&](int status, const char* what) { expectSeen(status, id, what); };
    make(KST_CreateBox(m_group, 1, 1, 1, 0, 0, 0, &id, nullptr), "box");
    make(KST_CreateSphere(m_group, 1, 0, 0, 0, &id, nullptr), "sphere");
    make(KST_CreateCylinder(m_group, 1, 2, 0, 0, 0, &id, nullptr), "cylinder");
    make(KST_CreateCone(m_group, 1, 2, 0, 0, 0, &id, nullptr), "cone");
    make(KST_CreateTriangles(m_group, 1, triangle, &id, nullptr), "triangles");
    make(KST_CreatePolygon(m_group, 4, square, &id, nullptr), "polygon");
    make(KST_CreatePolygonGroup(m_group, 1, &four, square, &id, nullptr), "polygon group");
    make(KST_CreateTetrahedron(m_group, corners, &id, nullptr), "tetrahedron");
    // A line of one pixel may pass between two rows; it is black, and so is the background.
    EXPECT_EQ(KST_OK, KST_SetBackgroundColor(0, 1, 1, 1));
    ASSERT_EQ(KST_OK, KST_CreatePolyline(m_group, 1, &two, line, &id, nullptr));
    EXPECT_GT(Capture().Count([](const ::Colour& c) { return c.Brightness() < 500; }), 20);

    // Cylinders and cones stand along y, tips up: wide below, narrow above.
    EXPECT_EQ(KST_OK, KST_SetBackgroundColor(0, 0, 0, 0));
    ASSERT_EQ(KST_OK, KST_CreateCone(m_group, 1, 2, 0, 0, 0, &id, nullptr));
    const Picture cone = Capture();
    const auto width = [&cone](int y) {
        int count = 0;
        for (int x = 0; x < cone.Width(); ++x) {
            count += cone.At(x, y).r > 20 ? 1 : 0;
        }
        return count;
    };
    EXPECT_GT(width(cone.Height() / 2 + 30), width(cone.Height() / 2 - 30) + 10);
}

TEST_F(Shown, SurfacesOfTwoLooksAndTheirReach) {
    int child = -1;
    ASSERT_EQ(KST_OK, KST_CreateGroup(&child, m_group, true, nullptr, false));
    Box(0, 0, 0);
    int below = -1;
    ASSERT_EQ(KST_OK, KST_CreateBox(child, 1, 1, 1, 1.5F, 0, 0, &below, nullptr));
    LookFrom(0, 0, 5);
    const auto colours = [this] {
        const Picture p = Capture();
        return std::pair(p.Middle(), p.At(p.Width() / 2 + p.Height() * 36 / 100, p.Height() / 2));
    };
    auto [middle, right] = colours();
    EXPECT_TRUE(middle.IsRed()) << middle;
    EXPECT_TRUE(right.IsRed()) << right;
    EXPECT_EQ(KST_OK, KST_SetGroupColor(m_group, 0, 1, 0, 1, false, 0));
    std::tie(middle, right) = colours();
    EXPECT_TRUE(middle.IsGreen()) << middle;
    EXPECT_TRUE(right.IsRed()) << right;
    EXPECT_EQ(KST_OK, KST_SetGroupColor(m_group, 0, 0, 1, 1, true, 1));
    std::tie(middle, right) = colours();
    EXPECT_TRUE(middle.IsGreen() && right.IsRed());
    EXPECT_EQ(KST_OK, KST_SetGroupActiveSurface(m_group, false, 1));
    std::tie(middle, right) = colours();
    EXPECT_TRUE(middle.IsBlue() && right.IsBlue()) << middle << right;
}

TEST_F(Shown, NearThingsHideFarOnesAndTransparentOnesDoNot) {
    const int near = Box(0, 0, 2);
    const int far = Box(0, 0, -1);
    Colour(near, 0, 1, 0);
    Colour(far, 0, 0, 1);
    LookFrom(0, 0, 8);
    EXPECT_TRUE(Capture().Middle().IsGreen());
    Colour(near, 0, 1, 0, 0.5F);
    const ::Colour through = Capture().Middle();
    EXPECT_GT(through.b, through.r + 20) << through;
    EXPECT_GT(through.g, through.r + 20) << through;
    LookFrom(0, 0, -8);
    EXPECT_TRUE(Capture().Middle().IsBlue());
}

TEST_F(Shown, LightsComeFromAllSidesAndFogHidesWhatIsFar) {
    // A sphere is brightest where it faces the eye, and dark nowhere.
    int sphere = -1;
    ASSERT_EQ(KST_OK, KST_CreateSphere(m_group, 1, 0, 0, 0, &sphere, nullptr));
    Colour(sphere, 0.3F, 0.3F, 0.3F);
    LookFrom(0, 0, 4);
    const Picture lit = Capture();
    const int rim = static_cast<int>(lit.Height() * 0.28);
    EXPECT_GT(lit.Middle().Brightness(),
              lit.At(lit.Width() / 2 + rim, lit.Height() / 2).Brightness());
    EXPECT_GT(lit.At(lit.Width() / 2 + rim, lit.Height() / 2).Brightness(), 30);

    EXPECT_EQ(KST_OK, KST_SetObjectPosition(sphere, 0, 0, -450));
    EXPECT_EQ(KST_OK, KST_SetObjectScaling(sphere, 50, 50, 50));
    EXPECT_EQ(KST_OK, KST_SetBackgroundColor(0, 0, 0, 1));
    EXPECT_EQ(KST_OK, KST_SetViewParams(0, 0, 0, 0, 0, 0, -1, 0, 1, 0));
    const ::Colour begun = Capture().Middle();
    EXPECT_EQ(KST_OK, KST_SetObjectPosition(sphere, 0, 0, -520));
    const ::Colour deep = Capture().Middle();
    EXPECT_GT(begun.r, deep.r + 20);
    EXPECT_EQ(KST_OK, KST_SetObjectPosition(sphere, 0, 0, -2000));
    EXPECT_EQ((::Colour{0, 0, 255}), Capture().Middle());
}

TEST_F(Shown, TexturesAreReadAndBrokenFilesLeaveTheSlot) {
    const std::string halves =
        m_folder.Write("halves.ppm", "P3 # left red, right blue\n2 1\n255\n255 0 0  0 0 255\n");
    const std::string broken = m_folder.Write("broken.ppm", "P6\n5 5\n255\nxx");
    const int box = Box(0, 0, 0, 2);
    ASSERT_EQ(KST_OK, KST_LoadTexture(3, halves.c_str(), 1));
    EXPECT_EQ(KST_OK, KST_SetObjectTexture(box, 3, 1, 1, 0));
    LookFrom(0, 0, 5);
    const auto sides = [this](double share) {
        const Picture p = Capture();
        // Half the edge of the face that is 4 away, in pixels.
        const double half = p.Height() / 2.0 / (4 * std::tan(22.5 * 3.14159265 / 180));
        return p.At(static_cast<int>(p.Width() / 2.0 + share * half), p.Height() / 2);
    };
    EXPECT_TRUE(sides(-0.5).IsRed()) << sides(-0.5);
    EXPECT_TRUE(sides(0.5).IsBlue()) << sides(0.5);
    const ::Colour opaque = sides(-0.5);
    EXPECT_EQ(KST_OK, KST_LoadTexture(3, broken.c_str(), 0.3F));
    EXPECT_EQ(opaque, sides(-0.5));
    EXPECT_EQ(KST_OK, KST_LoadTexture(3, halves.c_str(), 0.3F));
    EXPECT_LT(sides(-0.5).r, opaque.r / 2);
    // Opacity is the picture's, not the place's.
    EXPECT_EQ(KST_OK, KST_LoadTexture(3, halves.c_str(), 1));
    EXPECT_EQ(opaque, sides(-0.5));
}

TEST_F(Shown, WhatCannotBeWrittenOrDrawnLeavesNothingBehind) {
    const std::string pipe = (m_folder / "pipe").string();
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    EXPECT_EQ(KST_OK, KST_ScreenCapture(0, pipe.c_str()));
    EXPECT_EQ(KST_OK, KST_ScreenCapture(0, (m_folder / "none/picture.bmp").string().c_str()));
    // The running program can be replaced, but not written.
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(KST_OK, KST_ScreenCapture(0, self.c_str()));
    EXPECT_TRUE(std::filesystem::exists(self));
    EXPECT_EQ(KST_OK, KST_SuspendVisualisation());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(KST_ERROR_NOT_RENDERING, KST_ScreenCapture(0, "/dev/null"));
        EXPECT_EQ(KST_OK, KST_SetBackgroundColor(0, 0, 0, static_cast<float>(i) / 2));
    }
    EXPECT_EQ(KST_ERROR_NOT_RENDERING, KST_ShowView(1, "refused"));
    EXPECT_NE("refused", g_views[1]->m_name);
    EXPECT_EQ(KST_OK, KST_ResumeVisualisation());
    EXPECT_EQ(255, Capture().At(0, 0).b);
}

TEST_F(Shown, OrthogonalViewsShowSizesWhateverTheDistance) {
    Colour(Box(0, 0, 0, 20), 0, 1, 0);
    const auto green = [this] {
        return Capture().Count([](const ::Colour& c) { return c.g > 50; });
    };
    EXPECT_EQ(KST_OK, KST_SetViewOptions(0, KST_COMPASS_ON | KST_ORTHOGONAL));
    LookFrom(0, 0, 30);
    const int near = green();
    LookFrom(0, 0, 300);
    EXPECT_NEAR(near, green(), near / 100);
    const Picture p = Capture();
    EXPECT_NEAR(0.2 * p.Height() * 0.2 * p.Height(), near, 0.03 * near);
    // The compass has gone, and does not come back with perspective.
    EXPECT_EQ((::Colour{0, 0, 0}), p.At(p.Width() / 10 + 5, p.Height() * 9 / 10));
    EXPECT_EQ(KST_OK, KST_SetViewOptions(0, KST_PERSPECTIVE));
    LookFrom(0, 0, 30);
    EXPECT_NE(near, green());
    EXPECT_EQ(0, Capture().Count([](const ::Colour& c) { return c.b > 100 && c.g < 50; }));
}

TEST_F(Shown, OverlaysAreSeenWhenTheyAreOn) {
    LookFrom(0, 0, 30);
    EXPECT_EQ(0, Capture().Count([](const ::Colour& c) { return c.Brightness() > 0; }));
    EXPECT_EQ(KST_OK, KST_SetViewOptions(0, KST_COMPASS_ON));
    EXPECT_GT(Capture().Count([](const ::Colour& c) { return c.IsRed(); }), 3);
    EXPECT_EQ(KST_OK, KST_SetViewOptions(0, KST_COMPASS_OFF | KST_STATUS_ON));
    EXPECT_EQ(KST_OK, KST_SetBackgroundColor(0, 1, 1, 1));
    const Picture status = Capture();
    int dark = 0;
    for (int y = status.Height() * 8 / 10; y < status.Height(); ++y) {
        for (int x = status.Width() / 2; x < status.Width(); ++x) {
            dark += status.At(x, y).Brightness() < 200 ? 1 : 0;
        }
    }
    EXPECT_GT(dark, 30);
    EXPECT_EQ(KST_OK, KST_SetViewOptions(0, KST_STATUS_OFF));
    EXPECT_EQ(0, Capture().Count([](const ::Colour& c) { return c.Brightness() < 765; }));
}

TEST_F(Shown, CamerasFollowTheirKeyStates) {
    const Three eye1 = {0, 0, 10};
    const Three eye3 = {20, 0, 10};
    const Three point1 = {0, 0, 0};
    EXPECT_EQ(KST_OK, KST_AddViewKeyState(0, 1, eye1.data(), point1.data(), nullptr));
    EXPECT_EQ(KST_OK, KST_AddViewKeyState(0, 3, eye3.data(), nullptr, nullptr));
    EXPECT_EQ((Three{20, 10, 20}), CameraOf(0).eye);
    EXPECT_EQ(KST_OK, KST_SetTime(2));
    EXPECT_EQ((Three{10, 0, 10}), CameraOf(0).eye);
    EXPECT_EQ(KST_OK, KST_SetViewCyclic(0, true));
    EXPECT_EQ(KST_OK, KST_SetTime(4));
    EXPECT_EQ((Three{10, 0, 10}), CameraOf(0).eye);
    EXPECT_EQ(KST_OK, KST_ClearViewKeyStates(0));
    EXPECT_EQ(KST_OK, KST_SetTime(1));
    EXPECT_EQ((Three{10, 0, 10}), CameraOf(0).eye);
    // A closed view stands where it stood.
    EXPECT_EQ(KST_OK, KST_AddViewKeyState(2, 1, eye3.data(), point1.data(), nullptr));
    EXPECT_EQ(KST_OK, KST_SetTime(1));
    EXPECT_EQ(KST_OK, KST_ShowView(2, nullptr));
    EXPECT_EQ((Three{20, 10, 20}), CameraOf(2).eye);
    EXPECT_EQ(KST_OK, KST_SetTime(1));
    EXPECT_EQ(eye3, CameraOf(2).eye);
    EXPECT_EQ(KST_OK, KST_SetTime(0));
}

TEST_F(Shown, BackfacesAreSeenUnlessCulled) {
    const float square[] = {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0};
    int id = -1;
    ASSERT_EQ(KST_OK, KST_CreatePolygon(m_group, 4, square, &id, nullptr));
    LookFrom(0, 0, -5);
    EXPECT_GT(Capture().Middle().r, 100);
    EXPECT_EQ(KST_OK, KST_SetViewOptions(0, KST_BACKFACE_CULLING_ON));
    EXPECT_EQ(0, Capture().Middle().r);
    LookFrom(0, 0, 5);
    EXPECT_GT(Capture().Middle().r, 100);
}

}  // namespace
