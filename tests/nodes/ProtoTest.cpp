#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "nodes/nodes/NodeClasses.h"
#include "nodes/reader/ProtoDefinition.h"
#include "nodes/reader/VrmlReader.h"

namespace nodes {
namespace {

struct ProtoTest : testing::Test {
    ProtoTest() { reader.setErrorTarget(error); }

    bool read(const std::string& text) {
        return reader.readText("#VRML V2.0 utf8\n" + text, nullptr, nullptr);
    }
    template <class Class>
    const Class& found(int type) {
        Node* node = reader.tree().findNodeOfType(type);
        EXPECT_NE(nullptr, node) << nodeTypeName(type);
        static const Class none;
        return node ? static_cast<const Class&>(*node) : none;
    }

    ReadError error;
    VrmlReader reader;
};

std::string expansion(const std::string& interfaceText, const std::string& body,
                      const std::string& values) {
    ProtoDefinition proto("P", body, interfaceText);
    proto.setInstanceValues(values);
    std::string out;
    proto.expand(out);
    return out;
}

TEST_F(ProtoTest, ValuesStandInPlaceOfEachIs) {
    const std::string fields =
        "field SFVec3f at 1 2 3 exposedField SFColor c 1, 0.5, 0 field SFBool on TRUE "
        "field SFInt32 n 7 field SFString s \"x\" field SFTime t 1.5 field SFRotation r 0 0 2 1 "
        "field SFVec2f v 1 2 field MFString u [\"a\" \"b\"] field SFFloat f 0.123456789";
    EXPECT_EQ("at 1 2 3\nc 1 0.5 0\non TRUE\nn 7\ns \"x\"\n",
              expansion(fields, "at IS at c IS c on IS on n IS n s IS s", ""));
    EXPECT_EQ("t 1.500000\nr 0 0 1 1\nv 1 2\nu [ \"a\" \"b\" ] \nf 0.123457\n",
              expansion(fields, "t IS t r IS r v IS v u IS u f IS f", ""));
    EXPECT_EQ("at 4 5 6\nu [ ] \nu2 [ ] \nn 7\n",
              expansion(fields, "at IS at u IS u u2 IS u n IS n", "u[] at 4 5 6 unknown 1"));
    EXPECT_EQ("u \"x\" \nat 0 0 1\n", expansion(fields, "u IS u at IS at", "u \"x\" at 0 0 1"));
}

TEST_F(ProtoTest, WordsAreJoinedWithOneBlank) {
    EXPECT_EQ("Group { children [ Box { } ] \n \"a b{}[IS]\" } ",
              expansion("", "Group{children[Box{}]\n\"a   b{}[IS]\"}", ""));
    EXPECT_EQ(std::string(511, 'x') + " ", expansion("", std::string(600, 'x'), ""));
    EXPECT_EQ(std::string("\"").append(510, 'x') + "\" 1 ",
              expansion("", std::string("\"").append(600, 'x') + "\" 1", ""));
}

TEST_F(ProtoTest, AnIsWithoutAValueTakesTheFieldBeforeItAlong) {
    const std::string fields =
        "eventIn SFVec3f set_at eventOut SFBool active field SFFloat r 2 eventIn MFFloat many";
    EXPECT_EQ("Sphere { radius 2\n} ",
              expansion(fields, "Sphere { set_x IS set_at isActive IS active radius IS r }", ""));
    EXPECT_EQ("Script { eventIn SFVec3f set_at field SFFloat r 2\n} ",
              expansion(fields,
                        "Script { eventIn SFVec3f set_at IS set_at field SFBool b IS nothing "
                        "field SFFloat r IS r }",
                        ""));
    // Given a value, an event is a field like any other.
    EXPECT_EQ("x 1 2 3\n", expansion("eventIn SFVec3f x 1 2 3", "x IS x", ""));
}

TEST_F(ProtoTest, NodesAndTextsAmongTheValuesKeepTheRestInStep) {
    EXPECT_EQ("g NULL\nr 3\n",
              expansion("field SFNode g DEF a Box { field 1 r 9 } field SFFloat r 3",
                        "g IS g r IS r", ""));
    EXPECT_EQ("r 4\n",
              expansion("field SFNode g NULL field SFFloat r 3", "r IS r", "g Box { r 9 } r 4"));
    EXPECT_EQ("s \"one\"\nr 3\n", expansion("field SFString s \"one two field\" field SFFloat r 3",
                                            "s IS s r IS r", ""));
    EXPECT_EQ("c [ Shape { r [ 1 ] } ] \nr 5\n",
              expansion("field MFNode c [] field SFFloat r 3", "c IS c r IS r",
                        "c [ Shape { r [ 1 ] } ] r 5"));
}

TEST_F(ProtoTest, InstancesAreReadAsTheirBody) {
    ASSERT_TRUE(
        read("PROTO Bolt [ # the length [mm]\n"
             "  field SFFloat length 10 # and ] field SFFloat length 99\n"
             "  exposedField SFColor paint 1 0 0\n"
             "  eventIn SFVec3f set_place\n"
             "] { # one { node\n"
             "  Transform { # { braces } \"in comments\n"
             "    set_translation IS set_place\n"
             "    children Shape {\n"
             "      appearance Appearance { material Material{diffuseColor IS paint} }\n"
             "      geometry Cylinder { height IS length }\n"
             "    }\n"
             "  }\n"
             "}\n"
             "Group { children [ Bolt { } DEF named Bolt { length 2.5 paint 0 0 1 } ] }"))
        << error.message << " " << error.line << " " << error.token;
    const Node* first = found<GroupNode>(kGroup).firstChild();
    ASSERT_NE(nullptr, first);
    const Node* second = first->nextSibling();
    ASSERT_NE(nullptr, second);
    EXPECT_STREQ("named", second->name());
    EXPECT_EQ(10, found<CylinderNode>(kCylinder).height());
    const Node* cylinder = second->firstChild()->geometryChild();
    ASSERT_NE(nullptr, cylinder);
    EXPECT_EQ(2.5F, static_cast<const CylinderNode*>(cylinder)->height());
    const Node* appearance = second->firstChild()->childOfType(kAppearance);
    EXPECT_EQ(SFColor(0, 0, 1).value(),
              static_cast<const MaterialNode*>(appearance->firstChild())->diffuseColor().value());
}

TEST_F(ProtoTest, OnlyTheFirstNodeOfABodyCounts) {
    ASSERT_TRUE(read("PROTO P [] { Group { } Sphere { } P {}"));
    EXPECT_EQ(1, reader.tree().nodeCount());
    // What stands behind the first brace of a second node is a part of the file.
    EXPECT_FALSE(read("PROTO P [] { Group { } Shape { geometry Box { } } }"));
    EXPECT_EQ("}", error.token);
}

TEST_F(ProtoTest, OneMayHoldAnotherButNotItself) {
    ASSERT_TRUE(
        read("PROTO In [ field SFFloat r 1 ] { Shape { geometry Sphere { radius IS r } } }"
             "PROTO Out [ field SFFloat size 2 ] { Group { children [ In { r IS size } "
             "In { } ] } }\nOut { size 3 } Out { }"));
    EXPECT_EQ(10, reader.tree().nodeCount());
    EXPECT_EQ(3, found<SphereNode>(kSphere).radius());

    ASSERT_TRUE(
        read("PROTO A [] { Group { children [ A { } B { } ] } }"
             "PROTO B [] { Group { children [ A { } ] } }\nA { } A { }"));
    EXPECT_EQ(4, reader.tree().nodeCount());
}

TEST_F(ProtoTest, InstancesNestAsValuesOfEachOther) {
    const std::string protos =
        "PROTO Frame [ field MFNode parts [] ] { DEF Link Transform { children IS parts } }"
        "PROTO Link [ field MFNode children [] ] { Frame { parts IS children } }\n";
    std::string chain;
    for (int i = 0; i < 50; ++i) {
        chain += "Link { children [ ";
    }
    for (int i = 0; i < 50; ++i) {
        chain += "] }";
    }
    ASSERT_TRUE(read(protos + chain)) << error.message << " " << error.token;
    EXPECT_EQ(50, reader.tree().nodeCount());
    // One that holds itself by default does not end by itself.
    ASSERT_TRUE(read("PROTO P [ field MFNode c [ P { } ] ] { Group { children IS c } }\nP { }"));
    EXPECT_EQ(1, reader.tree().nodeCount());
}

TEST_F(ProtoTest, GrowthWithoutEndIsStopped) {
    std::string text = "PROTO P0 [] { Group { } }\n";
    for (int i = 1; i < 40; ++i) {
        const std::string inner = std::string("P").append(std::to_string(i - 1)) + " { } ";
        text +=
            "PROTO P" + std::to_string(i) + " [] { Group { children [ " + inner + inner + "] } }\n";
    }
    testing::internal::CaptureStderr();
    EXPECT_FALSE(read(text + "P39 { }"));
    EXPECT_EQ("flex scanner push-back overflow\n", testing::internal::GetCapturedStderr());
    EXPECT_EQ("flex scanner push-back overflow", error.message);
    EXPECT_EQ(nullptr, reader.tree().firstNode());
    EXPECT_TRUE(read("Group { }"));

    std::string chain = "PROTO P [ field MFNode c [] ] { Group { children IS c } }\n";
    for (std::size_t i = 0; i <= TextRules::kExpansionDepth; ++i) {
        chain += "P{c[";
    }
    testing::internal::CaptureStderr();
    EXPECT_FALSE(read(chain));
    EXPECT_EQ("flex scanner push-back overflow\n", testing::internal::GetCapturedStderr());
}

TEST_F(ProtoTest, AnExpansionThatOutgrowsWhatIsReadMovesTheInput) {
    // A body that is longer than all that stands before its instances.
    std::string text =
        "PROTO P [field MFString s []] { WorldInfo { info IS s } } Group { children "
        "[ ";
    for (int i = 0; i < 2000; ++i) {
        text += std::string("P { s [\"").append(50, 'a') + "\" \"b\"] } ";
    }
    ASSERT_TRUE(read(text + "] }"));
    EXPECT_EQ(2001, reader.tree().nodeCount());
    EXPECT_EQ(2, found<WorldInfoNode>(kWorldInfo).infoCount());
}

TEST_F(ProtoTest, EndsOfFilesAndOddTextsAreAnswered) {
    for (const char* text :
         {"PROTO", "PROTO P", "PROTO P [", "PROTO P [ field", "PROTO P [ field SFVec3f x 1",
          "PROTO P []", "PROTO P [] {", "PROTO P [] { Box {", "PROTO P [] { Box { } } P",
          "PROTO P [] { Group { } } P {", "PROTO P [] { Group { } } P { # "}) {
        read(text);
    }
    EXPECT_FALSE(read("PROTO P [] { Group { } } P { } foo"));
    EXPECT_EQ("foo", error.token);
    EXPECT_FALSE(read("PROTO P [] { Shape { geometry } }\nP { }"));
    EXPECT_EQ("}", error.token);
}

}  // namespace
}  // namespace nodes
