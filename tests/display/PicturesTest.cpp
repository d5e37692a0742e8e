#include <atomic>
#include <cmath>
#include <limits>
#include <mutex>
#include <numbers>
#include <thread>

#include "PictureScene.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

using PicturesTest = PictureScene;

TEST_F(PicturesTest, ShapesStandWhereTheyProject) {
    const MAV_box box = Box(2, colour[1], At(-3, 2, 0));
    const MAV_sphere sphere = {1, 25, 25, 1, 1, &colour[2], At(3, 2, 0)};
    const MAV_cylinder cylinder = {1, 2, 25, 1, 1, 1, &colour[3], At(-3, -2, 0)};
    const MAV_cone cone = {0, 1, 2, 25, 1, 1, 1, &colour[0], At(3, -2, 0)};
    stage.Add(mav_class_box, &box);
    stage.Add(mav_class_sphere, &sphere);
    stage.Add(mav_class_cylinder, &cylinder);
    stage.Add(mav_class_cone, &cone);
    for (const bool orthogonal : {false, true}) {
        if (orthogonal)
            stage.Orthogonal(0.1f, 100, 10);
        stage.Draw();
        EXPECT_EQ(stage.PixelAt({-3, 2, 0}), kRed);
        EXPECT_EQ(stage.PixelAt({-2.05f, 2.95f, 1}), kRed);
        EXPECT_EQ(stage.PixelAt({-1.9f, 3.1f, 1}), kWhite);
        EXPECT_EQ(stage.PixelAt({3, 2.9f, 0}), kGreen);
        EXPECT_EQ(stage.PixelAt({3.85f, 2.85f, 0}), kWhite);
        EXPECT_EQ(stage.PixelAt({-3.9f, -2, 0}), kBlue);
        EXPECT_EQ(stage.PixelAt({3, -2, 1}), kBlack);
        EXPECT_EQ(stage.PixelAt({0, 0, 0}), kWhite);
    }
}

TEST_F(PicturesTest, ConesAndCylindersHaveTheirProfile) {
    // Standing upright: z of the shape is y of the world.
    const MAV_matrix up = mav_matrixRPYSet(MAV_ID_MATRIX, 0, -90, 0);
    stage.Orthogonal(0.1f, 100, 10);
    const MAV_cone cone = {0.5f, 2, 4, 64, 1, 1, 1, &colour[1], mav_matrixXYZSet(up, {-3, 0, 0})};
    const MAV_cylinder tube = {2, 4, 64, 0, 1, 1, &colour[2], At(3, 0, 0)};
    stage.Add(mav_class_cone, &cone);
    stage.Add(mav_class_cylinder, &tube);
    stage.Draw();
    for (const float y : {-1.8f, 0.0f, 1.8f}) {
        const float radius = 1.25f - y * 1.5f / 4;
        for (const float side : {-1.0f, 1.0f}) {
            EXPECT_EQ(stage.PixelAt({-3 + side * (radius - 0.1f), y, 0}), kRed);
            EXPECT_EQ(stage.PixelAt({-3 + side * (radius + 0.1f), y, 0}), kWhite);
        }
    }
    // One looks through a tube without caps.
    EXPECT_EQ(stage.PixelAt({3, 0, 0}), kWhite);
    EXPECT_EQ(stage.PixelAt({6, 0, 0}), kWhite);
}

TEST_F(PicturesTest, SmallSpheresAreAsRoundAsLargeOnes) {
    MAV_sphere sphere = {1, 25, 25, 1, 1, &colour[1], MAV_ID_MATRIX};
    stage.Add(mav_class_sphere, &sphere);
    stage.Orthogonal(0.1f, 100, 160);  // a unit is a pixel
    for (const float radius : {3.0f, 6.0f, 12.0f, 25.0f, 70.0f}) {
        sphere.radius = radius;
        sphere.matrix = At(0.3f, 0.2f, -80);
        stage.Draw();
        const float area = std::numbers::pi_v<float> * radius * radius;
        // The picture may lack 0.3 pixels at the rim, and what a polygon of 25 corners lacks.
        EXPECT_NEAR(static_cast<float>(stage.Covered()), area,
                    0.012f * area + 0.35f * 6.3f * radius + 2)
            << radius;
    }
}

TEST_F(PicturesTest, BothSidesAreLitUnlessBacksAreHidden) {
    const MAV_vector corners[] = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    const MAV_matrix left = At(-2, 0, 0), right = At(2, 0, 0);
    const MAV_matrix turned =
        mav_matrixXYZSet(mav_matrixRPYSet(MAV_ID_MATRIX, 0, 0, 180), {2, 0, 0});
    const MAV_polygon front = {4, {0, 0, 1}, nullptr, corners, &material[1], left};
    const MAV_polygon back = {4, {0, 0, 1}, nullptr, corners, &material[2], turned};
    const MAV_polygon mirrored = {4,       {0, 0, 1},    nullptr,
                                  corners, &material[3], Scaled(At(0, 3, 0), -1, 1, 1)};
    const MAV_box box = Box(1, material[3], Scaled(At(0, 0, 0), 1, -1, 1));
    const MAV_cylinder tube = {1, 2, 25,           0,
                               1, 1, &material[1], mav_matrixXYZSet(right, {0, -3, 0})};
    stage.Add(mav_class_polygon, &front);
    stage.Add(mav_class_polygon, &back);
    stage.Add(mav_class_polygon, &mirrored);
    stage.Add(mav_class_box, &box);
    stage.Add(mav_class_cylinder, &tube);
    for (const bool culled : {false, true}) {
        stage.view.cullBackfaces = culled;
        stage.Draw();
        ExpectNear(stage.PixelAt({-2, 0, 0}), kRed, 8);
        ExpectNear(stage.PixelAt({2, 0, 0}), culled ? kWhite : kGreen, 8);
        ExpectNear(stage.PixelAt({0, 3, 0}), kBlue, 16);
        ExpectNear(stage.PixelAt({0, 0, 0.5f}), kBlue, 8);
        EXPECT_EQ(stage.PixelAt({0, -3, 0}), kWhite);
        const Rgb inside = stage.PixelAt({0, -4, -0.5f});
        if (culled)
            EXPECT_EQ(inside, kWhite);
        else
            EXPECT_GT(inside[0], inside[1] + 40);
    }
}

TEST_F(PicturesTest, ConcavePolygonsAndTheirHoles) {
    // A U, then a triangle, in one group.
    MAV_vector vertices[] = {{-3, 3, 0},  {-3, -3, 0}, {3, -3, 0}, {3, 3, 0}, {2, 3, 0}, {2, -2, 0},
                             {-2, -2, 0}, {-2, 3, 0},  {-1, 0, 0}, {1, 0, 0}, {0, 2, 0}};
    const int counts[] = {8, 3};
    const MAV_vector normals[] = {{0, 0, 1}, {0, 0, 1}};
    MAV_polygonGrp group = {2, counts, normals, nullptr, vertices, &colour[1], MAV_ID_MATRIX};
    MAV_object* const object = stage.Add(mav_class_polygonGrp, &group);
    stage.Draw();
    for (const MAV_vector& on : {MAV_vector{-2.5f, 2, 0}, {2.5f, 2, 0}, {0, -2.5f, 0}, {0, 1, 0}})
        EXPECT_EQ(stage.PixelAt(on), kRed);
    for (const MAV_vector& off : {MAV_vector{-1.5f, 2, 0}, {0, -1, 0}, {0, 2.8f, 0}})
        EXPECT_EQ(stage.PixelAt(off), kWhite);

    vertices[10].y = -1;
    stage.Draw();
    EXPECT_EQ(stage.PixelAt({0, 1, 0}), kRed);
    mav_objectChanged(object);
    stage.Draw();
    EXPECT_EQ(stage.PixelAt({0, 1, 0}), kWhite);
    EXPECT_EQ(stage.PixelAt({0, -0.5f, 0}), kRed);
    group.polygonCount = 1;
    stage.Draw();
    EXPECT_EQ(stage.PixelAt({0, -0.5f, 0}), kWhite);
    EXPECT_EQ(stage.PixelAt({0, -2.5f, 0}), kRed);
}

TEST_F(PicturesTest, LinesHaveColoursOfTheirOwn) {
    const MAV_vector vertices[] = {{-3, 1, 0},   {3, 1, 0},  {3, 2, 0},  {-3, -1, 0},
                                   {kNan, 0, 0}, {3, -1, 0}, {0, -2, 0}, {3, -2, 0}};
    const int counts[] = {3, 3, 2};
    const MAV_surfaceParams* const surfaces[] = {&colour[1], &colour[2], &colour[3]};
    MAV_polyline lines = {3, counts, vertices, &colour[2], MAV_ID_MATRIX, surfaces};
    stage.Add(mav_class_polyline, &lines);
    const auto onLine = [&](const MAV_vector& p) {
        // The pixel of a line or one beside it.
        const auto [x, y] = stage.Project(p);
        for (const int d : {0, -1, 1}) {
            for (const int e : {0, -1, 1}) {
                const Rgb rgb = stage.Pixel(static_cast<int>(x) + e, static_cast<int>(y) + d);
                if (rgb != kWhite)
                    return rgb;
            }
        }
        return kWhite;
    };
    stage.Draw();
    EXPECT_EQ(onLine({0, 1, 0}), kRed);
    EXPECT_EQ(onLine({3, 1.5f, 0}), kRed);
    EXPECT_EQ(onLine({0, -1, 0}), kWhite);
    EXPECT_EQ(onLine({1, -2, 0}), kBlue);
    EXPECT_EQ(onLine({-1, -2, 0}), kWhite);
    lines.lineSurfaces = nullptr;
    stage.Draw();
    EXPECT_EQ(onLine({0, 1, 0}), kGreen);
    EXPECT_EQ(onLine({1, -2, 0}), kGreen);
}

TEST_F(PicturesTest, TextEndsWhereItIsToEnd) {
    stage.texts.push_back({"100.00, \xe4 gy", {0.5f, 0}});
    for (const float scale : {1.0f, 2.0f}) {
        stage.view.textScale = scale;
        stage.Draw();
        int left = 200, right = -1, top = 160, inked = 0;
        for (int y = 0; y < 160; ++y) {
            for (int x = 0; x < 200; ++x) {
                if (stage.Pixel(x, y) != kWhite) {
                    EXPECT_EQ(stage.Pixel(x, y), kBlack);
                    left = std::min(left, x);
                    right = std::max(right, x);
                    top = std::min(top, y);
                    ++inked;
                }
            }
        }
        EXPECT_NEAR(static_cast<float>(right), 150, 3 * scale);
        EXPECT_LT(static_cast<float>(left), 150 - 50 * scale);
        EXPECT_NEAR(static_cast<float>(top), 80 - 7 * scale, 2 * scale);
        EXPECT_GT(static_cast<float>(inked), 100 * scale * scale);
    }
}

TEST_F(PicturesTest, MatricesWithoutSense) {
    MAV_box sane = Box(1, material[1], At(0, 0, 0));
    stage.Add(mav_class_box, &sane);
    stage.Draw();
    const int covered = stage.Covered();
    const float bad[] = {kNan, std::numeric_limits<float>::infinity(),
                         std::numeric_limits<float>::max()};
    MAV_box box = Box(1, material[2], At(-3, 0, 0));
    MAV_sphere sphere = {1, 25, 25, 1, 1, &material[2], At(3, 0, 0)};
    const MAV_vector corners[] = {{-1, -1, 0}, {1, -1, 0}, {0, 1, 0}};
    MAV_polygon polygon = {3, {0, 0, 1}, nullptr, corners, &material[2], At(0, 3, 0)};
    stage.Add(mav_class_box, &box);
    stage.Add(mav_class_sphere, &sphere);
    stage.Add(mav_class_polygon, &polygon);
    for (const float value : bad) {
        for (const std::size_t element : {0u, 3u, 6u}) {
            box.matrix = At(-3, 0, 0);
            sphere.matrix = At(3, 0, 0);
            polygon.matrix = At(0, 3, 0);
            box.matrix[element] = sphere.matrix[element] = polygon.matrix[element] = value;
            stage.Draw();
            EXPECT_EQ(stage.Covered(), covered) << value << ' ' << element;
        }
    }
    box.matrix = sphere.matrix = polygon.matrix = At(0, 3, 0);
    box.width = kNan;
    sphere.radius = kNan;
    polygon.vertexCount = 2;
    stage.Draw();
    EXPECT_EQ(stage.Covered(), covered);

    // Flat, and lit as what it has become.
    box = Box(2, material[2], Scaled(At(-3, 0, 0), 1, 1, 0));
    sphere = {1, 25, 25, 1, 1, &material[2], Scaled(At(3, 0, 0), 1, 1, 0)};
    polygon.vertexCount = 3;
    polygon.matrix = Scaled(At(0, 3, 0), 0, 1, 1);
    stage.Draw();
    for (const float x : {-3.0f, -2.5f, 2.6f, 3.0f, 3.4f})
        ExpectNear(stage.PixelAt({x, 0.2f, 0}), {0, 244, 0}, 11);
    // To lines and points nothing is asked but that they do no harm.
    box.matrix = Scaled(At(-3, 0, 0), 1, 0, 0);
    sphere.matrix = Scaled(At(3, 0, 0), 0, 0, 0);
    polygon.matrix = Scaled(At(0, 3, 0), 1e-30f, 1e30f, 1);
    stage.Draw();
    ExpectNear(stage.PixelAt({0, 0, 0.5f}), kRed, 3);
}

TEST_F(PicturesTest, ObjectsMayGoBeforeAndAfterTheRenderer) {
    const MAV_vector corners[] = {{-1, -1, 0}, {1, -1, 0}, {0, 1, 0}};
    const MAV_polygon polygon = {3, {0, 0, 1}, nullptr, corners, &colour[1], MAV_ID_MATRIX};
    MAV_object* const first = stage.Add(mav_class_polygon, &polygon);
    MAV_object* const second = stage.Add(mav_class_polygon, &polygon);
    stage.Draw();
    EXPECT_EQ(stage.PixelAt({0, 0, 0}), kRed);
    stage.Remove(first);
    stage.Draw();
    EXPECT_EQ(stage.PixelAt({0, 0, 0}), kRed);
    // Another renderer has to make the mesh anew.
    const std::shared_ptr<MAV_drawing> former = second->drawing;
    stage.renderer.reset();
    stage.renderer = std::make_unique<Renderer>();
    stage.Draw();
    EXPECT_NE(second->drawing, former);
    EXPECT_EQ(stage.PixelAt({0, 0, 0}), kRed);
    stage.renderer.reset();
    stage.Remove(second);
}

TEST_F(PicturesTest, ObjectsChangeWhileAFrameIsDrawn) {
    const MAV_vector corners[] = {{-1, -1, 0}, {1, -1, 0}, {0, 1, 0}};
    MAV_polygon polygon = {3, {0, 0, 1}, nullptr, corners, &colour[1], MAV_ID_MATRIX};
    const MAV_polygon second = polygon;
    std::mutex frameLock;
    std::atomic<bool> drawn = false;
    MAV_object* object = stage.Add(mav_class_polygon, &polygon);
    MAV_object* const other = stage.Add(mav_class_polygon, &second);
    std::thread host([&] {
        for (int i = 0; !drawn; ++i) {
            const std::lock_guard lock(frameLock);
            polygon.matrix[3] = static_cast<float>(i % 3 - 1);
            mav_objectChanged(other);
            if (i % 2 == 0) {
                stage.Remove(object);
                object = stage.Add(mav_class_polygon, &polygon);
            }
        }
    });
    for (int i = 0; i < 100; ++i) {
        {
            const std::lock_guard lock(frameLock);
            stage.contents.Begin(stage.view, stage.palette);
            stage.contents.Collect(*stage.list, stage.palette, true);
        }
        stage.target->Resize(200, 160, 1);
        stage.renderer->Draw(stage.contents, *stage.target);
        stage.renderer->CollectGarbage();
    }
    drawn = true;
    host.join();
    stage.Draw();
    EXPECT_EQ(stage.PixelAt({0, 0, 0}), kRed);
}

TEST_F(PicturesTest, MoreSamplesMakeSmoothEdges) {
    const MAV_box box = Box(2, colour[0], mav_matrixRPYSet(MAV_ID_MATRIX, 10, 0, 0));
    stage.Add(mav_class_box, &box);
    const auto greys = [&] {
        stage.Draw();
        int count = 0;
        for (int y = 0; y < 160; ++y) {
            for (int x = 0; x < 200; ++x)
                count += stage.Pixel(x, y) != kWhite && stage.Pixel(x, y) != kBlack ? 1 : 0;
        }
        return count;
    };
    EXPECT_EQ(greys(), 0);
    stage.samples = 4;
    EXPECT_GT(greys(), 40);
    EXPECT_EQ(stage.PixelAt({0, 0, 1}), kBlack);
    stage.samples = 100000;
    stage.Draw();
    EXPECT_EQ(stage.PixelAt({0, 0, 1}), kBlack);
}

}  // namespace
