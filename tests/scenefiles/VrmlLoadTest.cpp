// What becomes of the nodes of a VRML97 file, and what is refused with which code and text.

#include <zlib.h>

#include <cstring>
#include <utility>

#include "SceneFiles.h"
#include "model/Group.h"
#include "model/Registries.h"
#include "model/SceneObject.h"

namespace {

class VrmlLoad : public SceneFiles {
  protected:
    std::string World(const std::string& nodes) const {
        return m_folder.Write("world.wrl", "#VRML V2.0 utf8\n" + nodes);
    }
    int LoadWorld(const std::string& nodes) { return LoadFile(World(nodes)); }
    int LoadInto(int group, const std::string& nodes) {
        m_text = nullptr;
        return KST_LoadScene(World(nodes).c_str(), group, &m_text);
    }
    static std::vector<int> TypesIn(int group) {
        std::vector<int> types;
        for (const int object : Objects(group)) {
            int type = 0;
            EXPECT_EQ(KST_OK, KST_GetObjectType(object, &type));
            types.push_back(type);
        }
        return types;
    }
    /// The numbers of vertices and the vertices of a polygon group or polyline.
    static std::pair<std::vector<int>, std::vector<float>> Polygons(int object) {
        KstObjectInfo info = {};
        EXPECT_EQ(KST_OK, KST_GetObject(object, &info));
        const std::vector<int> counts(info.p2.ints, info.p2.ints + info.p1.i);
        std::size_t vertices = 0;
        for (const int count : counts) {
            vertices += static_cast<std::size_t>(count);
        }
        const std::vector<float> points(info.p3.floats, info.p3.floats + 3 * vertices);
        FreeArrays(object, info);
        return {counts, points};
    }
    static std::string FaceSet(const std::string& more) {
        return "Shape { geometry IndexedFaceSet { coord Coordinate { point [ 0 0 0, 1 0 0, 1 1 0, "
               "0 1 0 ] } " +
               more + " } }";
    }
};

constexpr const char* kBox = "Shape { geometry Box { } } ";
constexpr const char* kBad = "Shape { geometry Extrusion { } } ";

TEST_F(VrmlLoad, TransformsMakeGroupsAndShapesObjectsInThem) {
    ASSERT_EQ(KST_OK,
              LoadWorld("DEF Base Transform { translation 1 2 3 children [\n"
                        "  DEF Arm Transform { rotation 0 0 2 1.5707963 scale 2 2 1\n"
                        "    center 9 9 9 scaleOrientation 0 1 0 1 children [\n"
                        "    Shape { geometry Box { size 1 2 3 } }\n"
                        "    Group { children Shape { geometry Sphere { radius 4 } } } ] }\n"
                        "  DEF Arm Transform { } ] }\n"
                        "Shape { geometry Cylinder { radius 5 height 6 side FALSE } }\n"
                        "Shape { geometry Cone { bottomRadius 7 height 8 } }\n"
                        "Shape { geometry Text { string \"none\" } }\n"
                        "Shape { geometry PointSet { } } Shape { }"));
    EXPECT_EQ(nullptr, m_text);
    EXPECT_EQ((std::vector<int>{KST_CYLINDER, KST_CONE}), TypesIn(m_group));
    const int base = Child(m_group);
    EXPECT_EQ(base, IdOf("Base"));
    ASSERT_EQ(2, Info(base).childCount);
    const int arm = Child(base);
    EXPECT_EQ(arm, IdOf("Arm"));
    EXPECT_EQ(Child(base, 1), IdOf("Arm_1"));
    ASSERT_EQ((std::vector<int>{KST_BOX, KST_SPHERE}), TypesIn(arm));
    EXPECT_EQ((Vector{-1, 4, 3}), Place(Objects(arm)[0], 1, 1, 0));
    for (const int group : {base, arm}) {
        EXPECT_TRUE(Info(group).colCheck);
    }
    KstObjectInfo info = {};
    ASSERT_EQ(KST_OK, KST_GetObject(Objects(arm)[0], &info));
    EXPECT_EQ(3.0F, info.p3.f);
    ASSERT_EQ(KST_OK, KST_GetObject(Objects(m_group)[1], &info));
    EXPECT_EQ(7.0F, info.p1.f);
    EXPECT_EQ(8.0F, info.p2.f);

    const int incapable = Group(0, false);
    ASSERT_EQ(KST_OK, LoadInto(incapable, "Transform { }"));
    EXPECT_FALSE(Info(Child(incapable)).colCheck);
}

TEST_F(VrmlLoad, UsedNodesAreThereAgain) {
    ASSERT_EQ(KST_OK, LoadWorld("DEF Bolt Transform { children DEF Head Shape {\n"
                                "  geometry IndexedFaceSet { coord DEF C Coordinate { point [\n"
                                "  0 0 0, 1 0 0, 0 1 0 ] } coordIndex [ 0 1 2 -1 ] } } }\n"
                                "USE Bolt Group { children [ USE Head USE Head ] }\n"
                                "Shape { geometry IndexedLineSet { coord USE C\n"
                                "  coordIndex [ 0 2 -1 ] } }"));
    EXPECT_EQ((std::vector<int>{KST_POLYGON_GROUP, KST_POLYGON_GROUP, KST_POLYLINE}),
              TypesIn(m_group));
    ASSERT_EQ(2, Info(m_group).childCount);
    EXPECT_EQ("Bolt_1", g_groups.at(Child(m_group, 1))->Label());
    EXPECT_EQ((std::vector<int>{KST_POLYGON_GROUP}), TypesIn(Child(m_group, 1)));
    EXPECT_EQ((std::vector<float>{0, 0, 0, 0, 1, 0}), Polygons(Objects(m_group)[2]).second);
}

TEST_F(VrmlLoad, RootGroupTakesShapesOnlyBelowTransforms) {
    EXPECT_EQ(KST_ERROR_UNKNOWN_GROUP,
              LoadInto(0, std::string("DEF first Transform { children ") + kBox + "} Group { " +
                              "children " + kBox + "} DEF second Transform { }"));
    EXPECT_EQ(1, Info(IdOf("first")).objectCount);
    EXPECT_EQ(-1, IdOf("second"));
}

TEST_F(VrmlLoad, TheStatusPassesFromNodeToNode) {
    const std::string bad = kBad, box = kBox;
    // A Shape starts anew: what failed before it in a Transform leaves only the text.
    EXPECT_EQ(KST_OK, LoadWorld("Transform { children [ " + bad + box + "] }"));
    EXPECT_STREQ("Extrusion not (yet) supported!", (LoadWorld(bad), m_text));
    // Nodes that are passed over hand it on, and so do Transforms, Groups and Switches without
    // anything in them; the first node that fails at the top ends the load.
    for (const std::string& last :
         {std::string("WorldInfo { }"), std::string("Group { }"), std::string("Transform { }"),
          std::string("Switch { whichChoice 3 choice " + box + " }")}) {
        EXPECT_EQ(KST_ERROR_FILE, LoadWorld("Transform { children [ " + bad + last + " ] }\n" +
                                            "DEF Behind Transform { }"))
            << last;
        EXPECT_EQ(-1, IdOf("Behind"));
    }
    // A Viewpoint sets it as a Shape does, and the content of a Group is asked before its end.
    EXPECT_EQ(KST_OK, LoadWorld("Transform { children [ " + bad + "Viewpoint { } ] }"));
    EXPECT_EQ(KST_OK,
              LoadWorld("Transform { children [ " + bad + "Group { children " + box + "} ] }"));
    // In a Group the first failure is the last.
    ASSERT_EQ(KST_OK, KST_EmptyGroup(m_group));
    EXPECT_EQ(KST_ERROR_FILE, LoadWorld("Group { children [ " + bad + box + "] }"));
    EXPECT_EQ(0, Info(m_group).objectCount);
}

TEST_F(VrmlLoad, GroupsThatEndInAFailureReceiveWhatFollows) {
    const std::string bad = kBad, box = kBox;
    ASSERT_EQ(KST_OK,
              LoadWorld("DEF Outer Transform { children [ DEF Inner Transform { children " + bad +
                        "} " + box + "] } DEF Next Transform { children " + box + "}"));
    EXPECT_EQ(1, Info(IdOf("Inner")).objectCount);
    EXPECT_EQ(0, Info(IdOf("Outer")).objectCount);
    EXPECT_EQ(IdOf("Next"), Child(IdOf("Outer"), 1));
    EXPECT_EQ(1, Info(IdOf("Next")).objectCount);
    // Not in the next load.
    ASSERT_EQ(KST_OK, LoadWorld(box));
    EXPECT_EQ(1, Info(m_group).objectCount);
    // The groups above count what is in them, wherever it went.
    EXPECT_EQ(3, g_groups.at(m_group)->SubtreePrimitiveCount());
    EXPECT_EQ(2, g_groups.at(IdOf("Outer"))->SubtreePrimitiveCount());
    EXPECT_EQ(3, g_groups.at(0)->SubtreePrimitiveCount());
}

TEST_F(VrmlLoad, ANegativeScaleLeavesTheGroupWhereItIs) {
    ASSERT_EQ(KST_OK, LoadWorld(std::string("Transform { scale 1 -1 1 translation 5 5 5 rotation "
                                            "0 0 1 1 children ") +
                                kBox + "}"));
    EXPECT_EQ((Vector{1, 1, 0}), Place(Objects(Child(m_group))[0], 1, 1, 0));
}

TEST_F(VrmlLoad, SwitchesShowTheirChoiceAndOtherNodesNothing) {
    const std::string choices =
        "choice [ Shape { geometry Sphere { } } Shape { geometry Cone { } "
        "} ] }";
    for (const char* none : {"", "whichChoice -1 ", "whichChoice 2 ", "whichChoice -7 "}) {
        ASSERT_EQ(KST_OK, LoadWorld(std::string("Switch { ") + none + choices)) << none;
        EXPECT_EQ(0, Info(m_group).objectCount) << none;
    }
    ASSERT_EQ(KST_OK, LoadWorld("Switch { whichChoice 1 " + choices));
    EXPECT_EQ((std::vector<int>{KST_CONE}), TypesIn(m_group));
    for (const char* other :
         {"Anchor { children ", "Billboard { children ", "Collision { children ", "LOD { level "}) {
        ASSERT_EQ(KST_OK, LoadWorld(std::string(other) + kBox + "}")) << other;
    }
    ASSERT_EQ(KST_OK, LoadWorld("PointLight { } Viewpoint { position 1 2 3 } Viewpoint { }"));
    EXPECT_EQ(1, Info(m_group).objectCount);
    EXPECT_EQ(0, Info(m_group).childCount);
}

TEST_F(VrmlLoad, FacesAndLines) {
    ASSERT_EQ(KST_OK, LoadWorld(FaceSet("coordIndex [ 0 1 2 3 -1 3, 2, 0, -1, 0 1 2 ]") +
                                "Shape { geometry IndexedLineSet { coord Coordinate { point [ 1 2 "
                                "3, 4 5 6 ] } coordIndex [ 1 0 -1 -1 ] } }"));
    const std::vector<int> objects = Objects(m_group);
    ASSERT_EQ(2U, objects.size());
    EXPECT_EQ((std::vector<int>{4, 3}), Polygons(objects[0]).first);
    EXPECT_EQ((std::vector<float>{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 1, 0, 1, 1, 0, 0, 0, 0}),
              Polygons(objects[0]).second);
    EXPECT_EQ((std::vector<int>{2, 0}), Polygons(objects[1]).first);
    EXPECT_EQ((std::vector<float>{4, 5, 6, 1, 2, 3}), Polygons(objects[1]).second);

    // Without an end there is no face; without points no object.
    EXPECT_EQ(KST_ERROR_ARGUMENT, LoadWorld(FaceSet("coordIndex [ 0 1 2 ]")));
    EXPECT_EQ(KST_ERROR_ARGUMENT, LoadWorld(FaceSet("")));
    EXPECT_EQ(KST_OK, LoadWorld("Shape { geometry IndexedFaceSet { coordIndex [ 0 1 2 -1 ] } }"
                                "Shape { geometry IndexedLineSet { coordIndex [ 0 1 2 -1 ] } }"));
    EXPECT_EQ(2, Info(m_group).objectCount);
}

TEST_F(VrmlLoad, IndicesOutOfRangeAreRefused) {
    const auto textOf = [this](const std::string& nodes) {
        EXPECT_EQ(KST_ERROR_FILE, LoadWorld(nodes)) << nodes;
        return std::string(m_text != nullptr ? m_text : "no text");
    };
    EXPECT_EQ("IndexedFaceSet: coordIndex 4 is out of range",
              textOf(FaceSet("coordIndex [ 0 1 4 -1 ]")));
    EXPECT_EQ("IndexedFaceSet: coordIndex -2 is out of range",
              textOf(FaceSet("coordIndex [ 0 1 -2 -1 ]")));
    EXPECT_EQ("IndexedFaceSet: texCoordIndex 2 is out of range",
              textOf(FaceSet("coordIndex [ 0 1 2 -1 ] texCoord TextureCoordinate { point [ 0 0, 1 "
                             "1 ] } texCoordIndex [ 0 1 2 ]")));
    EXPECT_EQ("IndexedLineSet: coordIndex 2147483647 is out of range",
              textOf("Shape { geometry IndexedLineSet { coord Coordinate { } coordIndex [ "
                     "2147483647 -1 ] } }"));
    EXPECT_EQ(0, Info(m_group).objectCount);
    // What belongs to no face is not looked at, nor are texture points where there are none.
    EXPECT_EQ(KST_OK, LoadWorld(FaceSet("coordIndex [ 0 1 2 -1 99 ]")));
    EXPECT_EQ(KST_OK, LoadWorld(FaceSet("coordIndex [ 0 1 2 -1 ] texCoord TextureCoordinate { } "
                                        "texCoordIndex [ 7 ]")));
}

TEST_F(VrmlLoad, TextsOfRefusal) {
    EXPECT_EQ(KST_ERROR_FILE, LoadFile((m_folder / "none.wrl").string()));
    EXPECT_EQ(nullptr, m_text);
    EXPECT_EQ(KST_ERROR_FILE, LoadFile(m_folder.Write("folder.wrl/file", "")
                                           .substr(0, (m_folder / "folder.wrl").string().size())));
    EXPECT_EQ(KST_ERROR_FILE, LoadWorld("# nothing in it\n"));
    EXPECT_EQ(nullptr, m_text);
    EXPECT_EQ(KST_ERROR_FILE, LoadFile(m_folder.Write("other.wrl", "solid cube\nendsolid\n")));
    EXPECT_STREQ("not a VRML97 file", m_text);
    EXPECT_EQ(KST_ERROR_FILE, LoadFile(m_folder.Write("cut.wrl", "\x1F\x8B\x08 cut off")));
    EXPECT_STREQ("the compressed file cannot be unpacked", m_text);

    EXPECT_EQ(KST_ERROR_FILE, LoadWorld("Transform {\n  scale 1 1 x\n}\n"));
    ASSERT_NE(nullptr, m_text);
    EXPECT_NE(nullptr, std::strstr(m_text, " (line 3): x")) << m_text;
    EXPECT_EQ(0, Info(m_group).childCount);

    EXPECT_EQ(KST_ERROR_FILE, LoadWorld(FaceSet("convex FALSE coordIndex [ 0 1 2 -1 ]")));
    EXPECT_STREQ("Non-convex polygons not supported. Triangulate your scene!", m_text);
    // A failure without a text hands out the last one.
    const char* const refused = "Shape { geometry Sphere { radius -1 } }";
    EXPECT_EQ(KST_ERROR_ARGUMENT, LoadWorld(refused));
    EXPECT_STREQ("Non-convex polygons not supported. Triangulate your scene!", m_text);
    // Where nobody asks for the text of a file that cannot be read, it stays too.
    EXPECT_EQ(KST_ERROR_FILE, KST_LoadScene(World("Box {").c_str(), m_group, nullptr));
    EXPECT_EQ(KST_ERROR_ARGUMENT, LoadWorld(refused));
    EXPECT_STREQ("Non-convex polygons not supported. Triangulate your scene!", m_text);
    EXPECT_EQ(KST_ERROR_FILE, KST_LoadScene(World(kBad).c_str(), m_group, nullptr));
}

TEST_F(VrmlLoad, PackedFilesAndIncludesOfXmlScenes) {
    const std::string packed = (m_folder / "packed.WRL").string();
    gzFile file = gzopen(packed.c_str(), "wb");
    gzputs(file, "#VRML V2.0 utf8\nDEF In Transform { children Shape { geometry Box { } } }");
    gzclose(file);
    ASSERT_EQ(KST_OK, Load("<include fileName='packed.WRL'/><sphere radius='1'/>"));
    EXPECT_EQ(1, Info(IdOf("In")).objectCount);
    EXPECT_EQ(m_group, g_groups.at(IdOf("In"))->Parent()->Id());
    World(kBad);
    EXPECT_EQ(KST_ERROR_FILE, Load("<include fileName='world.wrl'/><sphere radius='1'/>"));
    EXPECT_STREQ("Extrusion not (yet) supported!", m_text);
    EXPECT_EQ(1, Info(m_group).objectCount);
}

/// Nothing here may go over the call stack, or up to the root for each node.
TEST_F(VrmlLoad, NodesNestDeep) {
    const auto nested = [](int depth, const std::string& open, const std::string& inside,
                           const std::string& close) {
        std::string text;
        for (int i = 0; i < depth; ++i) {
            text += open;
        }
        text += inside;
        for (int i = 0; i < depth; ++i) {
            text += close;
        }
        return text;
    };
    ASSERT_EQ(KST_OK,
              LoadWorld(nested(250000, "Group{children Switch{whichChoice 0 choice ", kBox, "}}")));
    EXPECT_EQ(1, Info(m_group).objectCount);
    ASSERT_EQ(KST_OK,
              LoadWorld(nested(50000, std::string("Transform{children[") + kBox, "", "]}")));
    EXPECT_EQ(50001, g_groups.at(m_group)->SubtreePrimitiveCount());
    EXPECT_EQ(50000, g_groups.at(Child(m_group))->SubtreePrimitiveCount());
    EXPECT_EQ(KST_OK, KST_DestroyGroup(m_group));
}

}  // namespace
