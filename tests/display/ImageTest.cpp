#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/maverik/Palette.h"

namespace {

class ImageTest : public testing::Test {
  protected:
    void SetUp() override {
        m_file = testing::TempDir() + "kestrane_image_" +
                 testing::UnitTest::GetInstance()->current_test_info()->name() + ".ppm";
    }
    void TearDown() override { std::filesystem::remove(m_file); }

    std::shared_ptr<const MAV_image> Read(const std::string& bytes) const {
        std::ofstream(m_file, std::ios::binary) << bytes;
        return mav_imageRead(m_file);
    }

    std::string m_file;
};

using Bytes = std::vector<std::uint8_t>;

TEST_F(ImageTest, FormsThatAreRead) {
    const std::string raw = {char(1), char(2), char(3), char(250), '\n', ' '};
    struct Form {
        std::string bytes;
        Bytes rgb;
    };
    const Form forms[] = {
        {"P6\n2 1\n255\n" + raw, {1, 2, 3, 250, '\n', ' '}},
        {"P6 2\t1\r\n255 " + raw, {1, 2, 3, 250, '\n', ' '}},
        {"P6#a\n#b\n  2 # c 9\n1#\n255#d\n" + raw, {1, 2, 3, 250, '\n', ' '}},
        {"P6\n2 1\n255\n" + raw + "more", {1, 2, 3, 250, '\n', ' '}},
        {"P3 2 1 255 0 127 255\n#x\n1 2#y\n3", {0, 127, 255, 1, 2, 3}},
        {"P3 1 1 1 0 1 1 ", {0, 255, 255}},
        {"P3 1 1 65535 0 32768 65535", {0, 128, 255}},
        {std::string("P6 1 1 256 \x01\x00\x00\x80\x00\x00", 17), {255, 128, 0}},
    };
    for (const Form& form : forms) {
        const auto image = Read(form.bytes);
        ASSERT_TRUE(image) << form.bytes;
        EXPECT_EQ(image->rgb, form.rgb) << form.bytes;
        EXPECT_EQ(static_cast<std::size_t>(image->width * image->height * 3), form.rgb.size());
    }
}

TEST_F(ImageTest, WhatIsRefused) {
    const char* const refused[] = {
        "",
        "P",
        "P6",
        "P5 1 1 255 abc",
        "P62 1 255 abcabc",
        "P6 1 1 255",
        "P6 1 1 255\nab",
        "P6 0 1 255\n",
        "P6 1 -1 255\nabc",
        "P6 1 1 0\nabc",
        "P6 1 1 65536\nabcabc",
        "P6 1 1 300\nabcde",
        "P6 1 1 255xabc",
        "P6 1 1 20\nab\xff",
        "P6 4294967297 1 255\nabc",
        "P6 99999999999999999999 1 255\nabc",
        "P6 16385 16385 255\nabc",
        "P6 16384 16384 255\nabc",
        "P3 1 1 255 1 2",
        "P3 1 1 255 1 2 256",
        "P3 1 1 255 1 2 x",
        "P3 1 1 255 1 2 -3",
        "P3 1 1 255 1 2 # 3",
    };
    for (const char* const bytes : refused) {
        EXPECT_FALSE(Read(bytes)) << bytes;
    }
    EXPECT_FALSE(mav_imageRead(m_file + ".none"));
    EXPECT_FALSE(mav_imageRead(testing::TempDir()));
}

TEST_F(ImageTest, SlotKeepsItsImageWhenAFileIsRefused) {
    MAV_palette palette(10, 1);
    ASSERT_TRUE(Read("P3 1 1 255 1 2 3"));
    palette.textures[99].alpha = 0.5f;
    EXPECT_TRUE(mav_paletteTextureSet(palette, 99, mav_imageRead(m_file)));
    EXPECT_EQ(palette.textures[99].alpha, 1);
    EXPECT_FALSE(mav_paletteTextureSet(palette, 99, mav_imageRead(m_file + ".none")));
    ASSERT_TRUE(palette.textures[99].image);
    EXPECT_EQ(palette.textures[99].image->rgb, (Bytes{1, 2, 3}));
    EXPECT_FALSE(mav_paletteTextureSet(palette, 100, mav_imageRead(m_file)));
    EXPECT_FALSE(mav_paletteTextureSet(palette, -1, mav_imageRead(m_file)));
}

}  // namespace
