// The file as a whole: what is refused with which text, includes, textures, views.

#include <climits>

#include "SceneFiles.h"

namespace {

using LoadTest = SceneFiles;

constexpr const char* kSphere = "<sphere radius='1'/>";

TEST_F(LoadTest, TextsOfRefusal) {
    EXPECT_EQ(KST_ERROR_FILE, LoadFile((m_folder / "none.xml").string()));
    EXPECT_STREQ("File does not exist.", m_text);

    const std::string file = m_folder.Write("a.xml", "<scene>\n<group>\n</scene>");
    EXPECT_EQ(KST_ERROR_FILE, LoadFile(file));
    EXPECT_EQ(0u, std::string(m_text).find("Failed to load " + file + ": "));
    EXPECT_NE(std::string::npos, std::string(m_text).find(" Line number: 3"));

    EXPECT_EQ(KST_ERROR_FILE, LoadFile(m_folder.Write("a.xml", "<scene/>")));
    EXPECT_STREQ("No/wrong DTD file.", m_text);
    m_folder.Write("Kestrane.dtd", "<!ELEMENT scene ANY>");
    EXPECT_EQ(KST_ERROR_FILE,
              LoadFile(m_folder.Write("a.xml", "<!DOCTYPE scene SYSTEM 'Kestrane.dtd'><scene/>")));
    EXPECT_STREQ("No/wrong DTD file.", m_text);
    EXPECT_EQ(KST_ERROR_FILE, LoadFile(m_folder.Write("a.xml", "<!DOCTYPE scene><scene/>")));
    EXPECT_STREQ("No/wrong DTD file.", m_text);

    // A failure without a text leaves the last one.
    EXPECT_EQ(KST_ERROR_ARGUMENT, Load("<sphere radius='-1'/>"));
    EXPECT_STREQ("No/wrong DTD file.", m_text);
    EXPECT_EQ(KST_OK, Load(kSphere));
    EXPECT_STREQ("No/wrong DTD file.", m_text);
    EXPECT_EQ(KST_ERROR_FILE, KST_LoadScene(file.c_str(), m_group, nullptr));
}

TEST_F(LoadTest, LastStatusOfTheListIsTheResult) {
    const std::string twice = "<sphere label='s' radius='1'/><sphere label='s' radius='1'/>";
    EXPECT_EQ(KST_OK, Load(twice + kSphere));
    EXPECT_EQ(2u, Objects(m_group).size());
    EXPECT_EQ(KST_ERROR_LABEL_IN_USE, Load("<sphere label='s' radius='1'/>"));
    EXPECT_EQ(KST_ERROR_LABEL_IN_USE, Load("<sphere label='s' radius='1'/><!-- c -->"));
    EXPECT_EQ(KST_OK, Load("<sphere label='s' radius='1'/><group/>"));
    EXPECT_EQ(KST_OK, Load("<sphere label='s' radius='1'/><viewParams viewID='0'/>"));
    // A failure that ends the list of a group ends the load.
    EXPECT_EQ(KST_ERROR_ARGUMENT,
              Load(std::string("<group><sphere radius='-1'/></group>") + kSphere));
    EXPECT_EQ(2u, Objects(m_group).size());
    EXPECT_EQ(KST_OK,
              Load(std::string("<group><sphere radius='-1'/>") + kSphere + "</group>" + kSphere));
    EXPECT_EQ(3u, Objects(m_group).size());
}

TEST_F(LoadTest, RootGroupTakesGroupsButNoObjects) {
    const std::string file = m_folder.Write(
        "a.xml", Scene(std::string(kSphere) + "<group label='in'>" + kSphere + "</group>"));
    EXPECT_EQ(KST_OK, KST_LoadScene(file.c_str(), 0, nullptr));
    EXPECT_EQ(1, Info(IdOf("in")).objectCount);
    EXPECT_EQ(0, Info(0).objectCount);
    EXPECT_EQ(KST_ERROR_UNKNOWN_GROUP,
              KST_LoadScene(m_folder.Write("a.xml", Scene(kSphere)).c_str(), 0, nullptr));
}

TEST_F(LoadTest, IncludesComeFromTheFolderOfTheFileOrFromTheNameAsItStands) {
    const std::string part = m_folder.Write(
        "sub/part.xml", Scene("<include fileName='screw.XML'/>" + std::string(kSphere)));
    m_folder.Write("sub/screw.XML", Scene(kSphere));
    std::filesystem::copy_file(KESTRANE_DTD, m_folder / "sub/kestrane.dtd");
    EXPECT_EQ(KST_OK, Load("<include fileName='" + part + "'/><group><include fileName='" + part +
                           "'/></group>"));
    EXPECT_EQ(2u, Objects(m_group).size());
    EXPECT_EQ(2u, Objects(Child(m_group)).size());
    // From the working directory, where there is no such file.
    EXPECT_EQ(KST_ERROR_FILE, Load("<include fileName='sub/part.xml'/>"));
    EXPECT_STREQ("File does not exist.", m_text);
    EXPECT_EQ(KST_ERROR_FILE, Load("<include fileName='sub\\part.xml'/>"));
    EXPECT_EQ(KST_OK, Load("<include fileName='none.txt'/>"));

    m_folder.Write("bad.xml", "<scene/>");
    EXPECT_EQ(KST_ERROR_FILE, Load(std::string("<include fileName='bad.xml'/>") + kSphere));
    EXPECT_STREQ("No/wrong DTD file.", m_text);
    EXPECT_EQ(2u, Objects(m_group).size());
    EXPECT_EQ(KST_ERROR_FILE, Load("<include fileName='scene.xml'/>"));
    EXPECT_NE(std::string::npos, std::string(m_text).find("includes itself"));
}

TEST_F(LoadTest, TexturesViewsAndBackgroundWithoutDisplay) {
    EXPECT_EQ(KST_OK, Load("<defineTexture fileName='a.ppm' ID='200'/>"));
    EXPECT_EQ(KST_ERROR_FILE,
              Load(std::string("<defineTexture fileName='a.PPM' ID='0'/>") + kSphere));
    EXPECT_STREQ("Texture has wrong file type.", m_text);
    EXPECT_TRUE(Objects(m_group).empty());
    EXPECT_EQ(KST_ERROR_FILE, Load("<defineTexture fileName='ppm' ID='0'/>"));
    EXPECT_EQ(KST_ERROR_FILE, Load("<defineTexture fileName='' ID='0'/>"));

    EXPECT_EQ(KST_OK, Load("<viewParams viewID='3'><eye x='1' y='2' z='3'/></viewParams>"));
    EXPECT_EQ(KST_ERROR_ARGUMENT, Load(std::string("<viewParams viewID='4'/>") + kSphere));
    // The animation's status takes the place of the other.
    EXPECT_EQ(KST_OK, Load("<viewParams viewID='4'><viewMotion/></viewParams>"));
    EXPECT_EQ(KST_OK, Load("<bgcolor red='1' green='0' blue='1'/>"));
    EXPECT_EQ(KST_ERROR_ARGUMENT,
              Load(std::string("<bgcolor red='2' green='0' blue='0'/>") + kSphere));
    EXPECT_TRUE(Objects(m_group).empty());
}

TEST_F(LoadTest, DtdOfSomebodysOwnThatLetsMuchBeMissing) {
    std::string dtd;
    for (const char* name :
         {"scene",       "group",      "box",          "sphere",       "cylinder", "cone",
          "triangles",   "triangle",   "polygon",      "polygonGroup", "polyline", "line",
          "tetrahedron", "point",      "pos",          "or",           "quat",     "scale",
          "motion",      "keyState",   "color",        "texture",      "include",  "defineTexture",
          "viewParams",  "viewMotion", "viewKeyState", "eye",          "bgcolor"}) {
        dtd += "<!ELEMENT " + std::string(name) + " ANY><!ATTLIST " + name;
        for (const char* attribute : {"x", "y", "z", "w", "radius", "height", "width", "depth",
                                      "time", "colCheck", "viewID", "cyclic", "fileName"}) {
            dtd += std::string(" ") + attribute + " CDATA #IMPLIED";
        }
        dtd += ">";
    }
    m_folder.Write("kestrane.dtd", dtd);
    const std::string p = "<point x='0' y='1' z='2'/>";
    const std::string sphere = "<sphere radius='1'>";
    for (const std::string& content :
         {std::string("<box width='1' height='1'/>"),
          std::string("<sphere/>"),
          std::string("<cylinder radius='1'/>"),
          std::string("<cone height='1'/>"),
          sphere + "<pos x='1' y='1'/></sphere>",
          sphere + "<motion/></sphere>",
          sphere + "<motion cyclic='true'><pos x='1' y='1' z='1'/></motion></sphere>",
          sphere + "<motion><keyState/></motion></sphere>",
          sphere + "<texture/></sphere>",
          std::string("<triangles/>"),
          "<triangles><triangle>" + p + p + "</triangle></triangles>",
          "<triangles><triangle>" + p + p + p + p + "</triangle><triangle/></triangles>",
          std::string("<polygon/>"),
          "<polygon>" + p + p + "<point x='1' y='2'/></polygon>",
          std::string("<polygonGroup/>"),
          std::string("<polyline/>"),
          std::string("<polyline><line><point/></line></polyline>"),
          "<tetrahedron>" + p + p + p + "</tetrahedron>",
          std::string("<include/>"),
          std::string("<viewParams/>"),
          std::string("<viewParams viewID='0'><eye/></viewParams>"),
          std::string("<bgcolor/>"),
          std::string("<group/>"),
          std::string("<group colCheck='true'><quat x='1' y='0' z='0'/></group>")}) {
        EXPECT_EQ(KST_ERROR_ARGUMENT, Load(content)) << content;
    }
    EXPECT_EQ(KST_ERROR_FILE, Load("<defineTexture/>"));
    EXPECT_EQ(KST_OK, Load("<polygonGroup><polygon>" + p + p + p + "</polygon></polygonGroup>"));
}

TEST_F(LoadTest, HostileFiles) {
    EXPECT_EQ(KST_ERROR_FILE, Load("<group label='&e;'/>", "[<!ENTITY e SYSTEM '/etc/passwd'>]"));
    EXPECT_NE(std::string::npos, std::string(m_text).find("Entity 'e' is external."));
    std::string deep;
    for (int i = 0; i < 100'000; ++i) {
        deep += "<group>";
    }
    EXPECT_EQ(KST_ERROR_FILE, Load(deep));
    EXPECT_NE(std::string::npos, std::string(m_text).find("256 deep"));
    EXPECT_EQ(0, Info(m_group).childCount);
}

}  // namespace
