#include <cmath>
#include <numbers>

#include "PictureScene.h"

namespace {

using LightTest = PictureScene;

/// Triangles of an ellipsoid, facing outwards.
std::vector<MAV_vector> Ellipsoid(const MAV_vector& half, int steps) {
    const auto point = [&](int i, int j) {
        const double around = 2 * std::numbers::pi * i / (2 * steps);
        const double up = std::numbers::pi * j / steps;
        return MAV_vector{static_cast<float>(half.x * std::sin(up) * std::cos(around)),
                          static_cast<float>(half.y * std::sin(up) * std::sin(around)),
                          static_cast<float>(half.z * std::cos(up))};
    };
    std::vector<MAV_vector> triangles;
    for (int i = 0; i < 2 * steps; ++i) {
        for (int j = 0; j < steps; ++j) {
            const MAV_vector a = point(i, j), b = point(i, j + 1), c = point(i + 1, j + 1),
                             d = point(i + 1, j);
            triangles.insert(triangles.end(), {a, b, c, a, c, d});
        }
    }
    return triangles;
}

TEST_F(LightTest, StretchedSpheresAreLitAsWhatTheyHaveBecome) {
    // From the right and above, so that a wrong normal shows.
    mav_paletteLightSet(stage.palette, 0, {}, {}, {});
    mav_paletteLightSet(stage.palette, 3, {}, {1, 1, 1, 1}, {1, 1, 1, 1});
    mav_paletteLightPos(stage.palette, 3, {20, 15, 10});
    mav_paletteLightPositioning(stage.palette, 3, 1);
    mav_paletteMaterialSet(stage.palette, 1,
                           {{}, {0.6f, 0.1f, 0.1f, 1}, {0.3f, 0.3f, 0.3f, 1}, {}, 10});
    const MAV_vector half = {4, 1.5f, 0.5f};
    const std::vector<MAV_vector> triangles = Ellipsoid(half, 120);
    const MAV_matrix tilt = mav_matrixRPYSet(MAV_ID_MATRIX, 20, 30, 25);
    MAV_polygonGrp group = {static_cast<int>(triangles.size() / 3),
                            nullptr,
                            nullptr,
                            nullptr,
                            triangles.data(),
                            &material[1],
                            tilt};
    MAV_object* const mesh = stage.Add(mav_class_polygonGrp, &group);
    const MAV_image expected = stage.Draw();
    EXPECT_GT(stage.Covered(), 1500);
    stage.Remove(mesh);
    for (const float side : {1.0f, -1.0f}) {
        const MAV_sphere sphere = {
            1, 256, 256, 1, 1, &material[1], Scaled(tilt, side * half.x, half.y, half.z)};
        MAV_object* const object = stage.Add(mav_class_sphere, &sphere);
        const MAV_image& found = stage.Draw();
        int different = 0;
        for (std::size_t i = 0; i < found.rgb.size(); ++i)
            different += std::abs(found.rgb[i] - expected.rgb[i]) > 12 ? 1 : 0;
        EXPECT_LT(different, 150) << side;
        stage.Remove(object);
    }
}

TEST_F(LightTest, TermsAddUpAndAreClamped) {
    mav_paletteLightSet(stage.palette, 0, {0.5f, 0.5f, 0.5f, 1}, {0.5f, 0.5f, 0.5f, 1},
                        {1, 1, 1, 1});
    mav_paletteLightSet(stage.palette, 1, {0.25f, 0.25f, 0.25f, 1}, {}, {});
    mav_paletteMaterialSet(
        stage.palette, 1,
        {{0.4f, 0, 0, 1}, {0.2f, 1, 0, 1}, {0, 0, 0.4f, 1}, {0.1f, 0.2f, 0.2f, 1}, 8});
    const MAV_box box = Box(1, material[1], MAV_ID_MATRIX);
    stage.Add(mav_class_box, &box);
    stage.Draw();
    // ambient 0.4 x 0.75, diffuse x 0.5, specular x 1, emission
    ExpectNear(stage.PixelAt({0.02f, 0.02f, 0.5f}), {128, 179, 153});
    mav_paletteLightSet(stage.palette, 0, {}, {9, 9, 9, 1}, {});
    stage.Draw();
    ExpectNear(stage.PixelAt({0.02f, 0.02f, 0.5f}), {255, 255, 51});
    // Seen from beside: the headlight comes with the eye.
    mav_paletteLightSet(stage.palette, 0, {}, {0.5f, 0.5f, 0.5f, 1}, {});
    stage.view.view = mav_matrixMult(At(0, 0, -10), mav_matrixRPYSet(MAV_ID_MATRIX, 0, 0, -90));
    stage.Draw();
    ExpectNear(stage.PixelAt({0.5f, 0.02f, 0.02f}), {77, 179, 51}, 4);
}

TEST_F(LightTest, LightsOfTheWorldStayWhereTheyAre) {
    mav_paletteLightSet(stage.palette, 0, {}, {}, {});
    mav_paletteLightSet(stage.palette, 13, {}, {1, 1, 1, 1}, {});
    mav_paletteLightPos(stage.palette, 13, {0, 0, 2});
    mav_paletteLightPositioning(stage.palette, 13, 1);
    // Those behind the wall take nothing away, of one colour or of several.
    for (const int behind : {5, 6}) {
        mav_paletteLightSet(stage.palette, behind, {}, {1, 1, 1, 1}, {});
        mav_paletteLightPos(stage.palette, behind, {0, 0, -5});
        mav_paletteLightPositioning(stage.palette, behind, 1);
    }
    const MAV_vector corners[] = {{-4, -4, 0}, {4, -4, 0}, {4, 4, 0}, {-4, 4, 0}};
    const MAV_polygon wall = {4, {0, 0, 1}, nullptr, corners, &material[1], MAV_ID_MATRIX};
    stage.Add(mav_class_polygon, &wall);
    for (const MAV_vector& eye : {MAV_vector{0, 0, 10}, {1, 1, 8}}) {
        stage.LookFrom(eye);
        for (const bool orthogonal : {false, true}) {
            if (orthogonal)
                stage.Orthogonal(0.1f, 100, 10);
            else
                stage.Perspective(0.1f, 100, 60);
            mav_paletteLightSet(stage.palette, 5, {}, {1, orthogonal ? 0.0f : 1.0f, 1, 1}, {});
            stage.Draw();
            for (const float x : {0.0f, 1.0f, 2.0f, 3.0f}) {
                const double expected = 255 * 2 / std::hypot(2, x);
                EXPECT_NEAR(stage.PixelAt({x, 0.05f, 0})[0], expected, 5) << x;
            }
        }
    }
}

TEST_F(LightTest, TransparentThingsLetThroughWhatIsBehind) {
    const MAV_box red = Box(2, colour[1], At(0, 0, -2));
    const MAV_vector corners[] = {{-2, -2, 0}, {2, -2, 0}, {2, 2, 0}, {-2, 2, 0}};
    const MAV_polygon pane = {4, {0, 0, 1}, nullptr, corners, &colour[4], MAV_ID_MATRIX};
    const MAV_polygon behind = {4, {0, 0, 1}, nullptr, corners, &colour[4], At(0, 0, -5)};
    stage.Add(mav_class_polygon, &pane);
    stage.Add(mav_class_polygon, &behind);
    stage.Add(mav_class_box, &red);
    stage.Draw();
    ExpectNear(stage.PixelAt({0, 0, 0}), {128, 0, 128});
    ExpectNear(stage.PixelAt({1.8f, 1.8f, 0}), {128, 128, 255});
    stage.transparency = false;
    stage.Draw();
    EXPECT_EQ(stage.PixelAt({0, 0, 0}), kBlue);
}

TEST_F(LightTest, TransparentThingsAreDrawnFromFarToNear) {
    mav_paletteColourSet(stage.palette, 3, 1, 0, 0, 0.5f);
    const MAV_box blue = Box(1, colour[4], At(0, 0, 3)), red = Box(1, colour[3], At(0, 0, -3));
    stage.Add(mav_class_box, &blue);
    stage.Add(mav_class_box, &red);
    stage.Draw();
    // Each box has two sides: white, red, red, blue, blue.
    const double rest = 255 / 4.0;
    ExpectNear(stage.PixelAt({0, 0, 0}),
               {64, static_cast<int>(rest / 4), static_cast<int>(rest / 4 + 0.75 * 255)});
    stage.Remove(stage.list->objects.front());
    stage.Draw();
    ExpectNear(stage.PixelAt({0, 0, -3}), {255, 64, 64});
}

TEST_F(LightTest, TransparentThingsHideNothing) {
    // The middle of the small box is nearer than that of the large one, whose front is nearest.
    const MAV_box large = Box(6, colour[4], At(0, 0, 0)), small = Box(1, colour[1], At(0, 0, 2));
    mav_paletteColourSet(stage.palette, 1, 1, 0, 0, 0.5f);
    stage.Add(mav_class_box, &small);
    stage.Add(mav_class_box, &large);
    stage.Draw();
    EXPECT_GT(stage.PixelAt({0, 0, 2.5f})[0], stage.PixelAt({1.5f, 1.5f, 2.5f})[0] + 60);
}

TEST_F(LightTest, FogGrowsFromStartToEnd) {
    stage.view.fog = true;
    stage.view.fogStart = 5;
    stage.view.fogEnd = 15;
    stage.view.fogColour = {0, 1, 0, 1};
    mav_paletteMaterialSet(stage.palette, 1, {{}, {}, {}, {1, 0, 0, 1}, 0});
    const MAV_box near = Box(1, material[1], At(0, 0, 5.5f));
    MAV_box middle = Box(2, material[1], At(0, 0, -1)), far = Box(6, material[1], At(0, 0, -20));
    for (const MAV_box* const box : std::initializer_list<const MAV_box*>{&near, &middle, &far})
        stage.Add(mav_class_box, box);
    const auto centre = [&] { return stage.PixelAt({0.02f, 0.02f, 0}); };
    stage.Draw();
    EXPECT_EQ(centre(), kRed);
    stage.Remove(stage.list->objects[0]);
    stage.Draw();
    ExpectNear(centre(), {128, 128, 0});
    middle.matrix = At(0, 0, -100);
    stage.Draw();
    EXPECT_EQ(centre(), kGreen);
    stage.view.fogEnd = 5;
    middle.matrix = At(0, 0, 0);
    stage.Draw();
    EXPECT_EQ(centre(), kGreen);
}

TEST_F(LightTest, TexturesTileAndStandUpright) {
    // Red and blue above, green and black below.
    auto image = std::make_shared<MAV_image>();
    *image = {2, 2, {255, 0, 0, 0, 0, 255, 0, 255, 0, 0, 0, 0}};
    stage.palette.textures[7].image = image;
    const MAV_surfaceParams textured = mav_surfaceParamsNew(MAV_TEXTURE, 0, 0, 7);
    const MAV_surfaceParams empty = mav_surfaceParamsNew(MAV_TEXTURE, 0, 0, 8);
    stage.view.background = {0.5f, 0.5f, 0.5f, 1};
    stage.Orthogonal(0.1f, 100, 10);
    MAV_box box = {4, 4, 4, 1, 1, &textured, MAV_ID_MATRIX};
    const MAV_box blank = Box(2, empty, At(4, 0, 0));
    stage.Add(mav_class_box, &box);
    stage.Add(mav_class_box, &blank);
    const auto expect = [&](float x, float y, const Rgb& rgb) {
        ExpectNear(stage.PixelAt({x, y, 2}), rgb, 60);
    };
    stage.Draw();
    expect(-1, 1, kRed);
    expect(1, 1, kBlue);
    expect(-1, -1, kGreen);
    expect(1, -1, kBlack);
    ExpectNear(stage.PixelAt({4, 0, 1}), {233, 233, 233}, 4);  // plain white, seen from aside
    box.xTile = 2;
    stage.Draw();
    for (const float x : {-1.5f, 0.5f})
        expect(x, 1, kRed);
    for (const float x : {-0.5f, 1.5f})
        expect(x, 1, kBlue);

    stage.palette.textures[7].alpha = 0.5f;
    box.xTile = 1;
    stage.Draw();
    // Half of the front and a quarter of the back, which is turned, over half grey.
    ExpectNear(stage.PixelAt({-1, 1, 2}), {128 + 32, 32, 64 + 32}, 40);
}

TEST_F(LightTest, PolygonsTakeTheCoordinatesOfTheirRecord) {
    auto image = std::make_shared<MAV_image>();
    *image = {2, 2, {255, 0, 0, 0, 0, 255, 0, 255, 0, 0, 0, 0}};
    stage.palette.textures[0].image = image;
    const MAV_surfaceParams textured = mav_surfaceParamsNew(MAV_TEXTURE, 0, 0, 0);
    stage.Orthogonal(0.1f, 100, 10);
    const MAV_vector corners[] = {{-2, -2, 0}, {2, -2, 0}, {2, 2, 0}, {-2, 2, 0}};
    // Turned by half a turn.
    const MAV_texCoord coordinates[] = {{1, 1}, {0, 1}, {0, 0}, {1, 0}};
    const int counts[] = {4};
    const MAV_vector normals[] = {{0, 0, 1}};
    MAV_polygonGrp group = {1, counts, normals, coordinates, corners, &textured, MAV_ID_MATRIX};
    stage.Add(mav_class_polygonGrp, &group);
    stage.Draw();
    ExpectNear(stage.PixelAt({1, -1, 0}), kRed, 60);
    ExpectNear(stage.PixelAt({-1, -1, 0}), kBlue, 60);
    ExpectNear(stage.PixelAt({1, 1, 0}), kGreen, 60);
    group.texCoords = nullptr;
    stage.Draw();
    // One texel, wherever.
    EXPECT_EQ(stage.PixelAt({1, 1, 0}), stage.PixelAt({-1, 1, 0}));
}

}  // namespace
