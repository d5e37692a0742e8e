#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "Stage.h"

namespace {

using Rgb = std::array<int, 3>;
constexpr Rgb kWhite = {255, 255, 255};
constexpr Rgb kRed = {255, 0, 0};
constexpr Rgb kGreen = {0, 255, 0};
constexpr Rgb kBlue = {0, 0, 255};

/// Colours 1, 2, 3 are red, green, blue; materials 1 to 3 the same with a matt surface, 4 blue of
/// alpha 0.5. One light, with the eye.
class PicturesTest : public testing::Test {
  protected:
    PicturesTest() : stage(200, 160) {
        const MAV_colour colours[] = {
            {0, 0, 0, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}, {0, 0, 1, 0.5f}};
        for (int i = 0; i < 5; ++i) {
            const MAV_colour& c = colours[i];
            mav_paletteColourSet(stage.palette, i, c.r, c.g, c.b, c.a);
            mav_paletteMaterialSet(stage.palette, i,
                                   {{0, 0, 0, c.a}, c, {0, 0, 0, c.a}, {0, 0, 0, c.a}, 15});
            colour[i] = mav_surfaceParamsNew(MAV_COLOUR, i, 0, 0);
            material[i] = mav_surfaceParamsNew(MAV_MATERIAL, 0, i, 0);
        }
        mav_paletteLightSet(stage.palette, 0, {0, 0, 0, 1}, {1, 1, 1, 1}, {1, 1, 1, 1});
        mav_paletteLightPositioning(stage.palette, 0, 0);
        for (int i = 1; i < 14; ++i)
            mav_paletteLightSet(stage.palette, i, {}, {}, {});
        stage.LookFrom({0, 0, 10});
    }

    static MAV_matrix At(float x, float y, float z) {
        return mav_matrixXYZSet(MAV_ID_MATRIX, {x, y, z});
    }
    static MAV_matrix Scaled(const MAV_matrix& m, float x, float y, float z) {
        MAV_matrix scale = MAV_ID_MATRIX;
        scale[0] = x;
        scale[5] = y;
        scale[10] = z;
        return mav_matrixMult(m, scale);
    }
    MAV_box Box(float size, const MAV_surfaceParams& surface, const MAV_matrix& matrix) const {
        return {size, size, size, 1, 1, &surface, matrix};
    }

    Stage stage;
    MAV_surfaceParams colour[5], material[5];
};

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
        EXPECT_EQ(stage.PixelAt({3, -2, 1}), (Rgb{0, 0, 0}));
        EXPECT_EQ(stage.PixelAt({0, 0, 0}), kWhite);
    }
}

}  // namespace
