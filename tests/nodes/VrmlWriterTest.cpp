// The layout of the VRML97 form, to the character.

#include <gtest/gtest.h>

#include <string>

#include "TemporaryFolder.h"
#include "WrittenText.h"
#include "nodes/SceneGraph.h"
#include "nodes/writer/FieldLines.h"
#include "nodes/writer/GzFile.h"
#include "nodes/writer/GzStream.h"

namespace nodes {
namespace {

TEST(VrmlWriter, NodesInsideEachOther) {
    ShapeNode shape;
    addNew<BoxNode>(shape).setSize(1.0F, 2.0F, 3.0F);
    EXPECT_EQ(vrmlOf(shape),
              "Shape {\n"
              "\tgeometry Box {\n"
              "\t\tsize 1 2 3\n"
              "\t}\n"
              "}\n");

    GroupNode group;
    group.setName("a");
    addNew<ShapeNode>(group);
    EXPECT_EQ(vrmlOf(group, 1),
              "\tDEF a Group {\n"
              "\t\tchildren [\n"
              "\t\t\tShape {\n"
              "\t\t\t}\n"
              "\t\t]\n"
              "\t}\n");
    EXPECT_EQ(vrmlOf(GroupNode()), "Group {\n}\n");
}

TEST(VrmlWriter, ChosenFieldsAndNoOthers) {
    EXPECT_EQ(vrmlOf(MaterialNode()),
              "Material {\n"
              "\tdiffuseColor 0.8 0.8 0.8\n"
              "\tambientIntensity 0.2\n"
              "\tspecularColor 0 0 0\n"
              "\temissiveColor 0 0 0\n"
              "\tshininess 0.2\n"
              "\ttransparency 0\n"
              "}\n");
    AnchorNode anchor;
    anchor.setDescription("a \"quoted\" text");
    anchor.addUrl("one");
    anchor.addUrl("");
    anchor.setBBoxSize(1, 1, 1);
    EXPECT_EQ(vrmlOf(anchor),
              "Anchor {\n"
              "\tdescription \"a \"quoted\" text\"\n"
              "\turl [\n"
              "\t\t\"one\",\n"
              "\t\t\"\"\n"
              "\t]\n"
              "}\n");
    MovieTextureNode movie;
    movie.setSpeedTime(0.5F);
    movie.setStartTime(1234567.0);
    EXPECT_EQ(vrmlOf(movie),
              "MovieTexture {\n"
              "\tloop FALSE\n"
              "\tspeed 0.5\n"
              "\tstartTime 1.23457e+06\n"
              "\tstopTime 0\n"
              "\trepeatS TRUE\n"
              "\trepeatT TRUE\n"
              "}\n");
}

TEST(VrmlWriter, EveryKindOfLine) {
    SceneGraph world;
    auto& shape = addNew<ShapeNode>(world, "part");
    auto& appearance = addNew<AppearanceNode>(shape);
    addNew<MaterialNode>(appearance, "red").setDiffuseColor(1.0F, 0.0F, 0.25F);
    auto& texture = addNew<PixelTextureNode>(appearance, "dots");
    for (const int value : {31, 1, 1}) {
        texture.addImage(value);
    }
    for (int i = 0; i < 31; ++i) {
        texture.addImage(i);
    }
    auto& faces = addNew<IndexedFaceSetNode>(shape, "faces");
    auto& points = addNew<CoordinateNode>(faces);
    points.addPoint(0.0F, 0.0F, 0.0F);
    points.addPoint(1.5F, -1e-7F, 1e10F);
    for (const int index : {0, 1, -1}) {
        faces.addCoordIndex(index);
    }
    auto& again = addNew<ShapeNode>(world);
    auto& look = addNew<AppearanceNode>(again);
    look.addChild(world.findNode("red")->makeReference(), false);
    look.addChild(texture.makeReference(), false);
    again.addChild(faces.makeReference(), false);
    auto& lod = addNew<LODNode>(world);
    lod.addRange(10.0F);
    lod.addChild(shape.makeReference(), false);
    auto& choice = addNew<SwitchNode>(world);
    addNew<TransformNode>(choice).setRotation(0.0F, 0.0F, 2.0F, 0.5F);
    std::string text;
    for (const Node* node = world.firstNode(); node; node = node->nextSibling()) {
        text += vrmlOf(*node);
    }
    EXPECT_EQ(
        text,
        "DEF part Shape {\n"
        "\tappearance Appearance {\n"
        "\t\tmaterial DEF red Material {\n"
        "\t\t\tdiffuseColor 1 0 0.25\n"
        "\t\t\tambientIntensity 0.2\n"
        "\t\t\tspecularColor 0 0 0\n"
        "\t\t\temissiveColor 0 0 0\n"
        "\t\t\tshininess 0.2\n"
        "\t\t\ttransparency 0\n"
        "\t\t}\n"
        "\t\ttexture DEF dots PixelTexture {\n"
        "\t\t\timage \n"
        "\t\t\t\t31 1 1 0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 26"
        " 27 28 29 \n"
        "\t\t\t\t30 \n"
        "\t\t\t\n"
        "\t\t\trepeatS TRUE\n"
        "\t\t\trepeatT TRUE\n"
        "\t\t}\n"
        "\t}\n"
        "\tgeometry DEF faces IndexedFaceSet {\n"
        "\t\tccw TRUE\n"
        "\t\tcolorPerVertex TRUE\n"
        "\t\tnormalPerVertex TRUE\n"
        "\t\tconvex TRUE\n"
        "\t\tcreaseAngle 0\n"
        "\t\tsolid TRUE\n"
        "\t\tcoord Coordinate {\n"
        "\t\t\tpoint [\n"
        "\t\t\t\t0 0 0,\n"
        "\t\t\t\t1.5 -1e-07 1e+10\n"
        "\t\t\t]\n"
        "\t\t}\n"
        "\t\tcoordIndex [\n"
        "\t\t\t0,\n"
        "\t\t\t1,\n"
        "\t\t\t-1\n"
        "\t\t]\n"
        "\t}\n"
        "}\n"
        "Shape {\n"
        "\tappearance Appearance {\n"
        "\t\tmaterial USE red\n"
        "\t\ttexture USE dots\n"
        "\t}\n"
        "\tgeometry USE faces\n"
        "}\n"
        "LOD {\n"
        "\tcenter 0 0 0\n"
        "\trange [\n"
        "\t\t10\n"
        "\t]\n"
        "\tlevel [\n"
        "\t\tUSE part\n"
        "\t]\n"
        "}\n"
        "Switch {\n"
        "\twhichChoice -1\n"
        "\tchoice [\n"
        "\t\tTransform {\n"
        "\t\t\ttranslation 0 0 0\n"
        "\t\t\trotation 0 0 1 0.5\n"
        "\t\t\tscale 1 1 1\n"
        "\t\t\tscaleOrientation 0 0 1 0\n"
        "\t\t\tcenter 0 0 0\n"
        "\t\t}\n"
        "\t]\n"
        "}\n");
}

TEST(VrmlWriter, ScriptWithItsInterface) {
    SceneGraph world;
    auto& group = addNew<GroupNode>(world, "target");
    auto& script = addNew<ScriptNode>(world);
    script.setMustEvaluate(true);
    script.addUrl("run.js");
    script.addEventIn("go", std::make_unique<SFBool>());
    script.addEventIn(std::make_unique<MFVec3f>());
    script.addField("count", std::make_unique<SFInt32>(-3));
    script.addField("label", std::make_unique<SFString>("a b"));
    script.addField("nothing", std::make_unique<SFNode>());
    script.addField("unnamed", std::make_unique<SFNode>(&addNew<GroupNode>(world)));
    script.addField("node", std::make_unique<SFNode>(&group));
    script.addEventOut("done", std::make_unique<SFTime>());
    EXPECT_EQ(vrmlOf(script),
              "Script {\n"
              "\tdirectOutput FALSE\n"
              "\tmustEvaluate TRUE\n"
              "\turl [\n"
              "\t\t\"run.js\"\n"
              "\t]\n"
              "\teventIn SFBool go\n"
              "\teventIn MFVec3f NONE\n"
              "\tfield SFInt32 count -3\n"
              "\tfield SFString label \"a b\"\n"
              "\tfield SFNode nothing NULL\n"
              "\tfield SFNode unnamed NULL\n"
              "\tfield SFNode node USE target\n"
              "\teventOut SFTime done\n"
              "}\n");
}

TEST(VrmlWriter, EveryClassPrintsItsOwnLines) {
    for (std::int32_t type = 0; type < kNodeClassCount; ++type) {
        const auto node = makeNode(type);
        for (const FieldLine& line : nodeForm(type).lines) {
            if (line.field) {
                const Field& field = line.field(*node);
                const bool isList = dynamic_cast<const MField*>(&field) != nullptr;
                EXPECT_EQ(isList, line.form != LineForm::kSingle) << node->typeName();
                EXPECT_EQ(field.type() == kSFImage, line.form == LineForm::kImage);
                if (type != kMovieTexture || std::string(line.keyword) != "speed") {
                    EXPECT_STREQ(field.name(), line.keyword);
                }
            }
        }
    }
    // A node shown by an instance prints its own values.
    SceneGraph world;
    auto& ball = addNew<SphereNode>(world, "ball");
    ball.setRadius(3.0F);
    const auto instance = ball.instantiate();
    std::string text;
    StringStream stream(text);
    instance->writeFields(stream, "");
    stream.finish();
    EXPECT_EQ(text, "\tradius 3\n");
}

TEST(VrmlWriter, RoutesAndFilesOfTheWholeWorld) {
    const TemporaryFolder folder;
    SceneGraph world;
    addNew<TimeSensorNode>(world, "clock");
    addNew<PositionInterpolatorNode>(world, "path");
    addNew<TransformNode>(world, "arm");
    ASSERT_TRUE(world.addRoute("clock", "fraction_changed", "path", "set_fraction"));
    ASSERT_TRUE(world.addRoute("path", "value_changed", "arm", "set_translation"));
    const std::string path = (folder / "world.wrl").string();
    EXPECT_TRUE(world.saveVrml(path.c_str(), nullptr, nullptr));
    EXPECT_TRUE(world.savedWhole());
    GzFile file;
    std::string text;
    ASSERT_TRUE(file.open(path.c_str(), GzFile::kRead) && file.readText(text));
    EXPECT_TRUE(text.starts_with("#VRML V2.0 utf8\nDEF clock TimeSensor {\n\tcycleInterval 1\n"));
    EXPECT_TRUE(
        text.ends_with("}\n"
                       "ROUTE clock.fraction TO path.fraction\n"
                       "ROUTE path.value TO arm.translation\n"));

    EXPECT_TRUE(world.saveVrml((folder / "missing/world.wrl").c_str(), nullptr, nullptr));
    EXPECT_FALSE(world.savedWhole());
    EXPECT_TRUE(world.saveVrml(nullptr, nullptr, nullptr));
    EXPECT_FALSE(world.savedWhole());
    EXPECT_TRUE(world.saveVrml(path.c_str(), nullptr, nullptr));
    EXPECT_TRUE(world.savedWhole());
}

/// The bytes of a file to which TEXT is written in pieces through a stream with room for MOST.
std::string streamed(const std::string& text, std::size_t most, bool& cut) {
    const TemporaryFolder folder;
    GzFile file;
    EXPECT_TRUE(file.open((folder / "a.gz").c_str(), GzFile::kWrite));
    EXPECT_TRUE(file.writeText("#VRML V2.0 utf8\n"));
    GzStream stream(file, most);
    std::size_t length = 1;
    for (std::size_t at = 0; at < text.size(); at += length, length = length * 7 % 1009) {
        stream.put(std::string_view(text).substr(at, length));
    }
    stream.finish();
    cut = stream.cut();
    EXPECT_FALSE(stream.failed());
    EXPECT_TRUE(file.close());
    return folder.Read("a.gz");
}

std::string writtenAtOnce(const std::string& text) {
    const TemporaryFolder folder;
    GzFile file;
    EXPECT_TRUE(file.open((folder / "a.gz").c_str(), GzFile::kWrite));
    EXPECT_TRUE(file.writeText("#VRML V2.0 utf8\n") && file.writeText(text) && file.close());
    return folder.Read("a.gz");
}

TEST(GzStream, HasTheBytesOfATextThatIsWrittenAtOnce) {
    std::string text;
    unsigned state = 7;
    while (text.size() < 6'000'000) {
        state = state * 1664525U + 1013904223U;
        // Numbers, and long and short repetitions.
        text += state % 50 == 0 ? std::string(state >> 20, '\t') : std::to_string(state >> 8);
        text += state % 7 == 0 ? text.substr(text.size() - text.size() % 3000) : " ";
    }
    bool cut = true;
    const std::string whole = streamed(text, GzStream::kMostCharacters, cut);
    EXPECT_FALSE(cut);
    EXPECT_TRUE(whole == writtenAtOnce(text));
    EXPECT_TRUE(streamed(text, text.size(), cut) == whole);
    EXPECT_FALSE(cut);
    for (const std::size_t most : {std::size_t{0}, std::size_t{1}, text.size() - 1}) {
        const std::string bytes = streamed(text, most, cut);
        EXPECT_TRUE(cut);
        EXPECT_TRUE(bytes == writtenAtOnce(text.substr(0, most))) << most;
    }
}

TEST(VrmlWriter, DepthIsBoundedByTheTextAlone) {
    const TemporaryFolder folder;
    SceneGraph world;
    constexpr int kDepth = 500'000;
    Node* node = &addNew<GroupNode>(world);
    for (int i = 1; i < kDepth; ++i) {
        node = &addNew<GroupNode>(*node);
    }
    // Two tabs for each step down: what 100,000,000 characters hold is written.
    EXPECT_EQ(world.writeVrml((folder / "a.wrl").c_str()), SaveFault::kCut);
    GzFile file;
    std::string text;
    ASSERT_TRUE(file.open((folder / "a.wrl").c_str(), GzFile::kRead) && file.readText(text));
    EXPECT_EQ(text.size(), GzStream::kMostCharacters + 16);
}

}  // namespace
}  // namespace nodes
