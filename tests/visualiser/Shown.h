#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>

#include "../frame/TemporaryFolder.h"
#include "Picture.h"
#include "kestrane.h"

/// A running library with a display, and short ways to fill it and to look at it.
class Shown : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(KST_OK, KST_Initialisation(true, false, false));
        ASSERT_EQ(KST_OK, KST_ResumeVisualisation()) << "there is no display";
        // The compass stands where scenes are looked at.
        EXPECT_EQ(KST_OK, KST_SetViewOptions(0, KST_COMPASS_OFF));
        EXPECT_EQ(KST_OK, KST_SetBackgroundColor(0, 0, 0, 0));
        ASSERT_EQ(KST_OK, KST_CreateGroup(&m_group, 0, true, nullptr, false));
    }
    void TearDown() override { EXPECT_EQ(KST_OK, KST_End()); }

    int Box(float x, float y, float z, float edge = 1) const {
        int id = -1;
        EXPECT_EQ(KST_OK, KST_CreateBox(m_group, edge, edge, edge, x, y, z, &id, nullptr));
        return id;
    }
    static void Colour(int object, float r, float g, float b, float a = 1) {
        EXPECT_EQ(KST_OK, KST_SetObjectColor(object, r, g, b, a, 0));
    }
    static void LookFrom(float x, float y, float z, int view = 0) {
        EXPECT_EQ(KST_OK, KST_SetViewParams(view, x, y, z, 0, 0, 0, 0, 1, 0));
    }
    Picture Capture(int view = 0) const {
        const std::string file = (m_folder / "picture.bmp").string();
        EXPECT_EQ(KST_OK, KST_ScreenCapture(view, file.c_str()));
        Picture picture(file);
        EXPECT_TRUE(picture.IsWhole());
        return picture;
    }

    const TemporaryFolder m_folder;
    int m_group = -1;
};
