#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "nodes/nodes/NodeClasses.h"
#include "nodes/reader/VrmlReader.h"

namespace nodes {
namespace {

struct ReaderTest : testing::Test {
    ReaderTest() { reader.setErrorTarget(error); }

    bool read(const std::string& text) {
        error = {};
        return reader.readText(text, nullptr, nullptr);
    }
    void accepted(const std::string& text) {
        EXPECT_TRUE(read(text)) << text << ": " << error.token;
    }
    void refused(const std::string& text, const std::string& token) {
        EXPECT_FALSE(read(text)) << text;
        EXPECT_EQ("syntax error", error.message) << text;
        EXPECT_EQ(token, error.token) << text;
        EXPECT_EQ(nullptr, reader.tree().firstNode());
    }
    template <class Class>
    Class& first() {
        Node* node = reader.tree().findNodeOfType(Class().type());
        EXPECT_NE(nullptr, node);
        static Class none;
        return node ? static_cast<Class&>(*node) : none;
    }
    /// Types and names of a subtree, as "Group(Shape a(Box))".
    static std::string outline(const Node* node) {
        std::string text;
        for (; node; node = node->nextSibling()) {
            text += text.empty() ? "" : " ";
            text += node->typeName();
            text += node->hasName() ? std::string(" ") + node->name() : "";
            if (node->firstChild()) {
                text.append("(").append(outline(node->firstChild())).append(")");
            }
        }
        return text;
    }
    std::string outline() { return outline(reader.tree().firstNode()); }

    ReadError error;
    VrmlReader reader;
};

TEST_F(ReaderTest, FilesWithoutNodesAreRead) {
    for (const char* text : {"", "#VRML V2.0 utf8", "# one\n# two", " \n\t\n", "USE nothing",
                             "ROUTE a.b TO c.d", "PROTO P [] { Box { } }"}) {
        accepted(text);
        EXPECT_EQ(0, reader.tree().nodeCount()) << text;
    }
}

TEST_F(ReaderTest, OnlyChildrenStandAtTheTopAndInGroups) {
    refused("Box { size 1 2 3 }", "Box");
    refused("Group { children [ Box { } ] }", "Box");
    refused("ImageTexture { }", "ImageTexture");
    accepted("Shape { geometry Box { size 1 2 3 } }");
    EXPECT_EQ("Shape(Box)", outline());
    accepted("Material { } FontStyle { } Transform { children Shape { } }");
    refused("Shape { appearance Material { } }", "Material");
    refused("Shape { geometry Group { } }", "Group");
    accepted("Shape { geometry NULL appearance USE none }");
    refused("Group { children NULL }", "NULL");
    accepted("Collision { proxy NULL proxy Shape { } proxy USE a children [] }");
    refused("Collision { proxy [ Shape { } ] }", "[");
    accepted("Switch { choice Shape { } whichChoice 0 choice [ Group { } Fog { } ] }");
    EXPECT_EQ("Switch(Shape Group Fog)", outline());
    accepted("LOD { level [ Group { } ] level Shape { } range [ 1, 2 ] }");
    EXPECT_EQ("LOD(Group Shape)", outline());
}

TEST_F(ReaderTest, OneCommaMayStandBehindANode) {
    accepted("Shape { geometry Box { }, }, Group { children [ Shape { }, Shape { }, ] }");
    EXPECT_EQ("Shape(Box) Group(Shape Shape)", outline());
    refused("Shape { geometry Box { },, }", ",");
    refused("Group { children [ Shape { } ], }", ",");
    refused("Group { children [ DEF a Shape { } USE a, ] }", ",");
    refused(", Group { }", ",");
    refused("Material { transparency 1, }", ",");
}

TEST_F(ReaderTest, FieldsAreThoseOfTheTable) {
    refused("Group { translation 1 2 3 }", "translation");
    refused("TimeSensor { pauseTime 1 }", "pauseTime");
    refused("Transform { set_translation 1 2 3 }", "set_translation");
    refused("Transform { IS a }", "IS");
    refused("EXTERNPROTO P [] \"x\"", "EXTERNPROTO");
    refused("Shape { bboxSize 1 1 1 }", "bboxSize");
    refused("Switch { whichChild 0 }", "whichChild");
    refused("Coordinate { point [] point [] }", "point");
    accepted("Color { color [] color [ 1 1 1 ] }");
    accepted(
        "ScalarInterpolator { value_changed 1 2 } OrientationInterpolator { value_changed 1 "
        "2 3 4 } PositionInterpolator { value_changed 1 2 3 }");
    refused("ScalarInterpolator { value_changed 1 }", "}");
    refused("ColorInterpolator { value_changed 1 1 1 }", "value_changed");
}

TEST_F(ReaderTest, ValuesComeInTheirFormsAlone) {
    accepted("Coordinate { point [ 0 0 0, 1 1 1,, 2 2 2 ] }");
    EXPECT_EQ(3, first<CoordinateNode>().pointCount());
    accepted("Coordinate { point 1 2 3 }");
    EXPECT_EQ(1, first<CoordinateNode>().pointCount());
    refused("Coordinate { point [ 0 0, 0 ] }", ",");
    refused("Material { diffuseColor 1 0 }", "}");
    refused("Material { transparency 1 2 }", "2");
    refused("Material { transparency \"1\" }", "\"1\"");
    refused("IndexedFaceSet { }", "IndexedFaceSet");
    refused("Shape { geometry IndexedFaceSet { coordIndex [ 0 1.0 ] } }", "1.0");
    refused("Anchor { url [ \"a\" b ] }", "b");
    refused("Anchor { description [ \"a\" ] }", "[");
    accepted("TimeSensor { loop 5 startTime 1.1 } Collision { collide ON }");
    EXPECT_TRUE(first<TimeSensorNode>().loop());
    EXPECT_EQ(static_cast<double>(1.1F), first<TimeSensorNode>().startTime());
    EXPECT_FALSE(first<CollisionNode>().collide());
    accepted("Transform { rotation 0 0 2 1 bboxSize 1 2 3 } Viewpoint { fieldOfView 3000000000 }");
    EXPECT_EQ(SFRotation(0, 0, 1, 1).value(), first<TransformNode>().rotation().value());
    EXPECT_EQ(SFVec3f(1, 2, 3).value(), first<TransformNode>().bboxSize().value());
    EXPECT_EQ(3e9F, first<ViewpointNode>().fieldOfView());
    accepted("WorldInfo { title \"a\nb\" info [ \"one\", \"two\" ] info \"three\" }");
    EXPECT_EQ("a\nb", first<WorldInfoNode>().title());
    EXPECT_EQ(3, first<WorldInfoNode>().infoCount());
}

TEST_F(ReaderTest, ImagesStandWithBracketsOrWithTheirOwnCount) {
    const std::string head = "Shape { appearance Appearance { texture PixelTexture { image ";
    accepted(head + "[ 1 2 1 0xFF 7 9 ] } } }");
    EXPECT_EQ(6, first<PixelTextureNode>().imageCount());
    accepted(head + "1 2 4 0xFFFFFFFF 7 repeatS FALSE } } }");
    EXPECT_EQ(5, first<PixelTextureNode>().imageCount());
    EXPECT_EQ(-1, first<PixelTextureNode>().imageAt(3));
    EXPECT_FALSE(first<PixelTextureNode>().repeatS());
    accepted(head + "0 0 0 } } }");
    EXPECT_EQ(3, first<PixelTextureNode>().imageCount());
    accepted(head + "-5 2000000000 1 } } }");
    refused(head + "2 2 1 0 0 0 } } }", "}");
    refused(head + "2 2 } } }", "}");
    refused(head + "[ 1, 1 ] } } }", ",");
    refused(head + "2000000000 2000000000 1 0 } } }", "}");
}

TEST_F(ReaderTest, EveryItemOfEveryNodeIsRead) {
    struct Sample {
        ValueForm form;
        const char* text;
        const char* held;
    };
    const Sample samples[] = {
        {ValueForm::kBool, "FALSE", "FALSE"},
        {ValueForm::kInt, "-7", "-7"},
        {ValueForm::kFloat, "0.25", "0.25"},
        {ValueForm::kTime, "2", "2.000000"},
        {ValueForm::kString, "\"a\"", "a"},
        {ValueForm::kVec2, "1 2", "1 2"},
        {ValueForm::kVec3, "1 2 3.5", "1 2 3.5"},
        {ValueForm::kColor, "1 0.5 0", "1 0.5 0"},
        {ValueForm::kRotation, "0 1 0 2", "0 1 0 2"},
        {ValueForm::kInts, "[ 1, -1 ]", "1, -1"},
        {ValueForm::kFloats, "[ 1 2.5 ]", "1, 2.5"},
        {ValueForm::kStrings, "[ \"a\" \"b\" ]", "a, b"},
        {ValueForm::kVec2s, "[ 1 2, 3 4 ]", "1 2, 3 4"},
        {ValueForm::kVec3s, "[ 1 2 3 4 5 6 ]", "1 2 3, 4 5 6"},
        {ValueForm::kColors, "1 0 0", "1 0 0"},
        {ValueForm::kRotations, "[ 1 0 0 1 ]", "1 0 0 1"},
        {ValueForm::kImage, "1 1 1 5", "1, 1, 1, 5"},
    };
    // Where a type that is no child may stand.
    const std::vector<std::string> places = {"", "Shape { geometry ", "Appearance { texture ",
                                             "Appearance { textureTransform "};
    int items = 0;
    for (std::int32_t type = 0; type < kNodeClassCount; ++type) {
        for (std::size_t keyword = 0; keyword < kFieldKeywordCount; ++keyword) {
            const GrammarRow* row = findGrammarRow(type, static_cast<FieldKeyword>(keyword));
            if (!row || !row->target) {
                continue;
            }
            static const char* const words[] = {
#define FIELD(name) #name,
#define SCRIPT_FIELD(name) #name,
#define BOTH(name) #name,
#define TYPE(name)
#include "nodes/reader/Keywords.def"
            };
            for (const Sample& sample : samples) {
                if (sample.form != row->form) {
                    continue;
                }
                bool isRead = false;
                for (const std::string& place : places) {
                    isRead = isRead || read(place + nodeTypeName(type) + "{" + words[keyword] +
                                            " " + sample.text + "}" + (place.empty() ? "" : "}"));
                }
                ASSERT_TRUE(isRead) << nodeTypeName(type) << " " << words[keyword];
                std::string text;
                row->target(*reader.tree().findNodeOfType(type)).toText(text);
                EXPECT_EQ(sample.held, text) << nodeTypeName(type) << " " << words[keyword];
                ++items;
            }
        }
    }
    EXPECT_EQ(212, items);
}

TEST_F(ReaderTest, AUseStandsWhereItIsWritten) {
    accepted("Group { children [ DEF a Shape { } USE a ] }");
    EXPECT_EQ("Group(Shape a DEF a)", outline());
    const Node* shape = first<GroupNode>().firstChild();
    EXPECT_EQ(shape, shape->nextSibling()->instanceOf());
    accepted("DEF a Shape { } Transform { children USE a } USE a");
    EXPECT_EQ("Shape a Transform(DEF a) DEF a", outline());
    accepted(
        "DEF m Material { } Shape { appearance Appearance { material USE m } geometry DEF g "
        "Box { } } Shape { geometry USE g }");
    EXPECT_EQ("Material m Shape(Appearance(DEF m) Box g) Shape(DEF g)", outline());
    // The last node of a name counts, and a use of it is none of its own.
    accepted("DEF a Group { } DEF a Fog { } USE a DEF b Group { } USE a");
    EXPECT_EQ("Group a Fog a DEF a Group b DEF a", outline());
    const Node* last = reader.tree().findLastNode("b")->nextSibling();
    EXPECT_TRUE(last->instanceOf()->isType(kFog));
    accepted("DEF \xC3\xA4 Group { } Group { children [ USE unknown ] } USE __");
    EXPECT_EQ("Group __ Group DEF __", outline());
}

TEST_F(ReaderTest, RoutesJoinNodesThatStandBeforeThem) {
    const std::string nodes = "DEF \xC3 TimeSensor { } DEF b ScalarInterpolator { }\n";
    accepted("ROUTE \xC3.fraction_changed TO b.set_fraction\n" + nodes);
    EXPECT_EQ(nullptr, reader.tree().firstRoute());
    accepted(nodes +
             "ROUTE \xC3.fraction_changed TO b.set_fraction\n"
             "ROUTE \xC3.fraction_changed TO b.set_fraction\nROUTE b.x TO b.set_fraction");
    ASSERT_EQ(1U, reader.tree().routes().size());
    const Route& route = reader.tree().routes().front();
    EXPECT_EQ(&first<TimeSensorNode>(), route.fromNode());
    EXPECT_EQ(&first<ScalarInterpolatorNode>().fractionField(), route.toField());
}

TEST_F(ReaderTest, ScriptsDeclareTheirFields) {
    accepted(
        "DEF g Group { }\n"
        "Script { url [ \"a\" ] directOutput TRUE field SFFloat f 2.5 mustEvaluate TRUE\n"
        "eventIn SFBool set eventOut MFVec3f points field SFRotation r 0 0 2 1\n"
        "field SFNode n USE g field SFNode m NULL field SFNode o USE unknown\n"
        "field SFString s \"x\" field SFInt32 center 3 }");
    ScriptNode& script = first<ScriptNode>();
    EXPECT_TRUE(script.directOutput());
    EXPECT_TRUE(script.mustEvaluate());
    EXPECT_EQ(1, script.urlCount());
    EXPECT_EQ(kSFBool, script.findEventIn("set")->type());
    EXPECT_EQ(kMFVec3f, script.findEventOut("points")->type());
    EXPECT_EQ(2.5F, static_cast<SFFloat*>(script.findField("f"))->value());
    EXPECT_EQ(SFRotation(0, 0, 1, 1).value(),
              static_cast<SFRotation*>(script.findField("r"))->value());
    EXPECT_EQ(reader.tree().firstNode(), static_cast<SFNode*>(script.findField("n"))->value());
    EXPECT_EQ(nullptr, static_cast<SFNode*>(script.findField("m"))->value());
    EXPECT_EQ(nullptr, static_cast<SFNode*>(script.findField("o"))->value());
    EXPECT_EQ(3, static_cast<SFInt32*>(script.findField("center"))->value());

    refused("Script { exposedField SFBool a TRUE }", "exposedField");
    refused("Script { field MFFloat a 1 }", "MFFloat");
    refused("Script { field SFImage a 1 }", "SFImage");
    refused("Script { field SFBool a }", "}");
    refused("Script { field SFBool url TRUE }", "url");
    refused("Script { eventIn SFNode a }", "SFNode");
    refused("Script { field SFNode a Group { } }", "Group");
    refused("Script { } field SFBool a TRUE", "field");
    refused("Group { field SFBool a TRUE }", "field");
}

TEST_F(ReaderTest, NestingIsBoundedByMemoryAlone) {
    struct Style {
        const char* open;
        const char* close;
    };
    constexpr std::size_t kDepth = 500'000;
    for (const Style& style : {Style{"Group{children[", "]}"}, Style{"Group{children ", "}"},
                               Style{"Switch{choice ", "}"}, Style{"LOD{level[", "]}"},
                               Style{"Collision{proxy ", "}"}, Style{"Anchor{children[", "]}"}}) {
        std::string text;
        for (std::size_t i = 0; i < kDepth; ++i) {
            text += style.open;
        }
        text += "Group{}";
        const std::string unfinished = text;
        for (std::size_t i = 0; i < kDepth; ++i) {
            text += style.close;
        }
        accepted(text);
        EXPECT_EQ(static_cast<int>(kDepth) + 1, reader.tree().nodeCount());
        refused(unfinished, "");
    }
}

TEST_F(ReaderTest, TooDeepNestingIsRefused) {
    VrmlReader shallow(4);
    shallow.setErrorTarget(error);
    EXPECT_TRUE(shallow.readText("Group{children[Group{children Group{}}]}", nullptr, nullptr));
    EXPECT_FALSE(shallow.readText("Group{children[Group{children[Group{}]}]}", nullptr, nullptr));
    EXPECT_EQ("parser stack overflow", error.message);
}

TEST_F(ReaderTest, ErrorsTellLineTokenAndText) {
    refused("#VRML V2.0 utf8\n\nGroup {\n}\nShape {\n  appearance NULL\n  foo 1\n}\n", "foo");
    EXPECT_EQ(7, error.line);
    EXPECT_EQ("  foo 1", error.lineText);
    refused("Group {\r\n children [\r\n\tBox { }\r\n]}", "Box");
    EXPECT_EQ(3, error.line);
    EXPECT_EQ("\tBox { }", error.lineText);
    refused("Group { children [ Shape { }", "");
    refused("}", "}");
    refused("Group Group", "Group");
    // A reader that failed reads the next text.
    accepted("DEF a Group { }");
    refused("DEF a Group { } DEF b 1", "1");
    accepted("USE a");
    EXPECT_EQ(0, reader.tree().nodeCount());
}

TEST_F(ReaderTest, OnlyWholeFilesAreRead) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("reader_test_" + std::to_string(getpid()));
    std::filesystem::create_directory(folder);
    const std::string file = (folder / "world.wrl").string();
    std::ofstream(file) << "#VRML V2.0 utf8\nGroup { }\n";
    int lines = 0;
    EXPECT_TRUE(reader.read(
        file.c_str(), [](int, void* count) { ++*static_cast<int*>(count); }, &lines));
    EXPECT_EQ(2, lines);
    EXPECT_EQ("Group", outline());

    const std::string pipe = (folder / "pipe").string();
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    for (const std::string& path : {pipe, folder.string(), std::string("/dev/zero")}) {
        testing::internal::CaptureStderr();
        EXPECT_FALSE(reader.read(path.c_str(), nullptr, nullptr));
        EXPECT_EQ("input in flex scanner failed\n", testing::internal::GetCapturedStderr());
        EXPECT_EQ("input in flex scanner failed", error.message);
    }
    error = {};
    testing::internal::CaptureStderr();
    EXPECT_FALSE(reader.read("/no/such/file", nullptr, nullptr));
    EXPECT_EQ("Cannot open data file /no/such/file\n", testing::internal::GetCapturedStderr());
    EXPECT_EQ("", error.message);
    EXPECT_EQ(nullptr, reader.tree().firstNode());
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace nodes
