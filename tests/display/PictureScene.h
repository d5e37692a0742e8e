#pragma once

#include <gtest/gtest.h>

#include "Stage.h"

using Rgb = std::array<int, 3>;
inline constexpr Rgb kWhite = {255, 255, 255};
inline constexpr Rgb kBlack = {0, 0, 0};
inline constexpr Rgb kRed = {255, 0, 0};
inline constexpr Rgb kGreen = {0, 255, 0};
inline constexpr Rgb kBlue = {0, 0, 255};

/// Colours 0 to 4 are black, red, green, blue, and half transparent blue; so are the materials,
/// which are matt. One light, with the eye, which stands at z = 10.
class PictureScene : public testing::Test {
  protected:
    PictureScene() : stage(200, 160) {
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
    static MAV_box Box(float size, const MAV_surfaceParams& surface, const MAV_matrix& matrix) {
        return {size, size, size, 1, 1, &surface, matrix};
    }
    static void ExpectNear(const Rgb& found, const Rgb& expected, int slack = 2) {
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(found[i], expected[i], slack) << "channel " << i;
    }

    Stage stage;
    MAV_surfaceParams colour[5], material[5];
};
