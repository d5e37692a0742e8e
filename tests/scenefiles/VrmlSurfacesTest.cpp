// Colours and textures of VRML97 files, which only a display keeps.

#include "../model/Fakes.h"
#include "SceneFiles.h"
#include "model/PolygonGroup.h"

namespace {

class VrmlSurfaces : public SceneFiles {
  protected:
    void SetUp() override {
        SceneFiles::SetUp();
        g_visualiser = &m_display;
        m_group = Group();
    }
    void TearDown() override {
        EXPECT_EQ(KST_OK, KST_DestroyGroup(m_group));
        g_visualiser = nullptr;
        SceneFiles::TearDown();
    }
    int LoadWorld(const std::string& nodes) {
        return LoadFile(m_folder.Write("world.wrl", "#VRML V2.0 utf8\n" + nodes));
    }
    const CSurface& SurfaceOf(std::size_t object) const {
        return g_objects.at(Objects(m_group)[object])->Surface(0);
    }
    std::array<float, 4> ColorOf(std::size_t object) const {
        std::array<float, 4> color{};
        SurfaceOf(object).GetColor(&color[0], &color[1], &color[2], &color[3]);
        return color;
    }
    static std::string Painted(const std::string& appearance) {
        return "Shape { appearance Appearance { " + appearance + " } geometry Box { } }\n";
    }
    static std::string Textured(const std::string& url) {
        return "texture ImageTexture { url " + url + " }";
    }

    std::string m_log;
    FakeDisplay m_display{m_log};
};

using Color = std::array<float, 4>;

TEST_F(VrmlSurfaces, AShapeWithoutMaterialLooksLikeTheOneBeforeIt) {
    ASSERT_EQ(KST_OK, LoadWorld(Painted("material Material { diffuseColor 0.25 0.5 0.75 "
                                        "transparency 0.25 emissiveColor 1 1 1 }") +
                                Painted("")));
    ASSERT_EQ(KST_OK, LoadWorld("Shape { geometry Box { } }"));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ((Color{0.25F, 0.5F, 0.75F, 0.75F}), ColorOf(i)) << i;
    }
    // A colour that is none leaves that of the group.
    EXPECT_EQ(KST_ERROR_ARGUMENT, LoadWorld(Painted("material Material { diffuseColor 2 0 0 }")));
    EXPECT_EQ((Color{1, 0, 0, 1}), ColorOf(3));
    ASSERT_EQ(KST_OK, LoadWorld(Painted("material Material { }")));
    EXPECT_EQ((Color{0.8F, 0.8F, 0.8F, 1}), ColorOf(4));
}

TEST_F(VrmlSurfaces, TexturesTakeThePlaceOfTheColor) {
    const std::string mesh =
        "geometry IndexedFaceSet { coord Coordinate { point [ 0 0 0, 1 0 0, 0 1 0 ] }\n"
        "coordIndex [ 0 1 2 -1 ] texCoord TextureCoordinate { point [ 0.5 0, 1 0 ] }\n"
        "texCoordIndex [ 1 0 ] } }\n";
    ASSERT_EQ(KST_OK, LoadWorld("Shape { appearance DEF A Appearance { " + Textured("\"a.ppm\"") +
                                " } " + mesh + "Shape { appearance USE A " + mesh +
                                Painted(Textured("[ \"/b.ppm\", \"c.gif\" ]")) + Painted("") +
                                Painted("texture PixelTexture { }")));
    EXPECT_TRUE(SurfaceOf(0).IsTextured());
    EXPECT_TRUE(SurfaceOf(1).IsTextured());
    const int first = SurfaceOf(0).PaletteIndex();
    EXPECT_EQ(first, SurfaceOf(1).PaletteIndex());
    EXPECT_EQ(first + 1, SurfaceOf(2).PaletteIndex());
    EXPECT_FALSE(SurfaceOf(3).IsTextured());
    EXPECT_FALSE(SurfaceOf(4).IsTextured());
    const auto* const polygons =
        dynamic_cast<const CPolygonGroup*>(g_objects.at(Objects(m_group)[0]));
    ASSERT_NE(nullptr, polygons);
    const MAV_texCoord* const texture = polygons->Record().texCoords;
    ASSERT_NE(nullptr, texture);
    EXPECT_EQ(1.0F, texture[0].u);
    EXPECT_EQ(0.5F, texture[1].u);
    // An index that there is not counts as the first.
    EXPECT_EQ(0.5F, texture[2].u);

    // Counted on over loads; what is not there is none.
    ASSERT_EQ(KST_OK, LoadWorld(Painted(Textured("\"a.ppm\"")) + Painted(Textured("[ ]")) +
                                Painted(Textured("\"a\""))));
    EXPECT_EQ(first + 2, SurfaceOf(5).PaletteIndex());
    EXPECT_FALSE(SurfaceOf(6).IsTextured());
    EXPECT_FALSE(SurfaceOf(7).IsTextured());
}

TEST_F(VrmlSurfaces, OnlyPpmFilesAreTextures) {
    EXPECT_EQ(KST_ERROR_FILE, LoadWorld(Painted(Textured("\"a.PPM\""))));
    EXPECT_EQ("Texture has wrong file type :" + (m_folder / "a.PPM").string(), m_text);
    EXPECT_EQ(KST_ERROR_FILE, LoadWorld(Painted(Textured("\"c:\\\\x.jpg\""))));
    EXPECT_EQ(0, Info(m_group).objectCount);
    // Neither stays in the way of the next shape.
    ASSERT_EQ(KST_OK, LoadWorld(Painted("")));
    EXPECT_FALSE(SurfaceOf(0).IsTextured());
}

/// Where nothing shows them, their number has no end.
TEST_F(VrmlSurfaces, WithoutADisplayTexturesCostNothing) {
    g_visualiser = nullptr;
    const int group = Group();
    std::string nodes;
    for (int i = 0; i < 150; ++i) {
        nodes += Painted(Textured(std::string("\"").append(std::to_string(i)) + ".ppm\""));
    }
    m_folder.Write("many.wrl", "#VRML V2.0 utf8\n" + nodes);
    EXPECT_EQ(KST_OK, KST_LoadScene((m_folder / "many.wrl").c_str(), group, nullptr));
    EXPECT_EQ(150, Info(group).objectCount);
    EXPECT_EQ(KST_OK, KST_DestroyGroup(group));
    g_visualiser = &m_display;
}

}  // namespace
