#include <cstring>
#include <string>

#include "Library.h"
#include "TemporaryFolder.h"

namespace {

class Scenes : public Library {
  protected:
    Scenes() { std::filesystem::copy_file(KESTRANE_DTD, folder / "kestrane.dtd"); }

    /// A scene with the given elements.
    std::string Scene(const std::string& name, const std::string& elements) const {
        return folder.Write(name,
                            "<?xml version=\"1.0\"?>\n<!DOCTYPE scene SYSTEM \"kestrane.dtd\">\n"
                            "<scene>" +
                                elements + "</scene>\n");
    }
    static std::string Include(const std::string& name) {
        return "<include fileName=\"" + name + "\"/>";
    }
    static std::string Named(const std::string& label) {
        return "<group label=\"" + label + "\"></group>";
    }
    int Load(const std::string& file, int group = 0) {
        text = nullptr;
        return KST_LoadScene(file.c_str(), group, &text);
    }
    bool TextHas(const char* part) const {
        return text != nullptr && std::strstr(text, part) != nullptr;
    }

    const TemporaryFolder folder;
    char* text = nullptr;
};

TEST_F(Scenes, TheSuffixPicksTheReader) {
    EXPECT_EQ(KST_ERROR_ARGUMENT, KST_LoadScene(nullptr, 999, nullptr));
    EXPECT_EQ(KST_ERROR_UNKNOWN_GROUP, Load("scene.txt", 999));
    EXPECT_EQ(KST_ERROR_UNKNOWN_GROUP, Load("scene.wrl", 999));
    for (const char* other : {"", "xml", "scene.xml2", "scene.txt", "scene", "/"}) {
        EXPECT_EQ(KST_OK, Load(other)) << other;
        EXPECT_EQ(nullptr, text);
    }
    for (const char* vrml : {"scene.wrl", "missing/scene.WRL", ".wRl"}) {
        EXPECT_EQ(KST_ERROR_FILE, Load(vrml));
        EXPECT_EQ(nullptr, text);
    }
    EXPECT_EQ(KST_OK, Load(folder.Write("scene.wRl", "#VRML V2.0 utf8\nDEF vrml Transform { }")));
    EXPECT_NE(-1, IdOf("vrml"));
    EXPECT_EQ(KST_ERROR_FILE, Load((folder / "missing.XML").string()));
    ASSERT_NE(nullptr, text);
    EXPECT_STREQ("File does not exist.", text);
}

TEST_F(Scenes, ReadsIntoTheGroupGiven) {
    const int group = Group();
    const std::string file = Scene("a.xml", Named("first") + Include("b.XML"));
    EXPECT_EQ(KST_ERROR_FILE, Load(file, group));
    EXPECT_TRUE(TextHas("File does not exist.")) << text;
    // What came before the failure stays.
    EXPECT_EQ(group + 1, IdOf("first"));
    Scene("b.XML", Named("second"));
    ASSERT_EQ(KST_OK, Load(file, group)) << text;
    EXPECT_EQ(group + 3, IdOf("second"));
    KstGroupInfo info;
    ASSERT_EQ(KST_OK, KST_GetGroup(group, &info));
    EXPECT_EQ(3, info.childCount);
}

TEST_F(Scenes, RingsOfIncludesAreRefused) {
    EXPECT_EQ(KST_ERROR_FILE, Load(Scene("self.xml", Include("self.xml"))));
    EXPECT_TRUE(TextHas("includes itself")) << text;
    EXPECT_TRUE(TextHas("self.xml"));
    Scene("b.xml", Include("c.xml"));
    Scene("c.xml", Include(std::string("./a.xml")));
    EXPECT_EQ(KST_ERROR_FILE, Load(Scene("a.xml", Named("a") + Include("b.xml"))));
    // By another name the same file: through a link, and with dots.
    std::filesystem::create_symlink(folder / "ring.xml", folder / "link.xml");
    EXPECT_EQ(KST_ERROR_FILE, Load(Scene("ring.xml", Include("link.xml"))));
    EXPECT_TRUE(TextHas("includes itself")) << text;
    // What failed once is not in the way of the next load.
    Scene("self.xml", Named("now sound"));
    EXPECT_EQ(KST_OK, Load((folder / "self.xml").string()));
    EXPECT_NE(-1, IdOf("now sound"));
}

TEST_F(Scenes, IncludesNestSixtyFourDeepAndNoDeeper) {
    for (int i = 0; i < 66; ++i) {
        const std::string next = std::to_string(i + 1) + ".xml";
        Scene(std::to_string(i) + ".xml",
              Named(std::string("g").append(std::to_string(i))) + Include(next));
    }
    Scene("66.xml", Named("bottom"));
    EXPECT_EQ(KST_ERROR_FILE, Load((folder / "0.xml").string()));
    EXPECT_TRUE(TextHas("64 deep")) << text;
    EXPECT_NE(-1, IdOf("g64"));
    EXPECT_EQ(-1, IdOf("g65"));
    ASSERT_EQ(KST_OK, KST_EmptyGroup(0));
    EXPECT_EQ(KST_OK, Load((folder / "2.xml").string())) << text;
    EXPECT_NE(-1, IdOf("bottom"));
}

TEST_F(Scenes, FilesThatMultiplyEachOtherEnd) {
    for (int i = 0; i < 30; ++i) {
        const std::string next = Include(std::to_string(i + 1) + ".xml");
        Scene(std::to_string(i) + ".xml", next + next);
    }
    Scene("30.xml", "");
    EXPECT_EQ(KST_ERROR_FILE, Load((folder / "0.xml").string()));
    EXPECT_TRUE(TextHas("4096 files")) << text;
    EXPECT_EQ(KST_OK, Load((folder / "29.xml").string())) << text;
}

TEST_F(Scenes, LongTextsAreCut) {
    const std::string name = std::string(240, 'x') + ".xml";
    EXPECT_EQ(KST_ERROR_FILE, Load(Scene(name, Include(name))));
    ASSERT_NE(nullptr, text);
    EXPECT_EQ(255U, std::strlen(text));
}

}  // namespace
