// Worlds in the manner in which programs export them.

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "nodes/SceneGraph.h"
#include "nodes/reader/FileText.h"
#include "nodes/reader/VrmlReader.h"

namespace nodes {
namespace {

const std::string kWorlds = KESTRANE_WORLDS;

struct RealFiles : testing::Test {
    RealFiles() { reader.setErrorTarget(error); }

    bool read(const std::string& name) {
        return reader.read((kWorlds + "/" + name).c_str(), nullptr, nullptr);
    }
    /// Reads a file, and counts its nodes by type.
    void load(const std::string& name) {
        ASSERT_TRUE(read(name)) << name << ":" << error.line << ": " << error.message << " at "
                                << error.token;
        counts.clear();
        for (const Node* node = reader.tree().firstNode(); node; node = node->next()) {
            ++counts[node->typeName()];
        }
    }
    template <class Class>
    Class& named(const char* name) {
        Node* node = reader.tree().findNode(name);
        EXPECT_NE(nullptr, node) << name;
        static Class none;
        EXPECT_EQ(none.type(), node ? node->type() : kNoType) << name;
        return node && node->type() == none.type() ? static_cast<Class&>(*node) : none;
    }

    ReadError error;
    VrmlReader reader;
    std::map<std::string, int> counts;
};

TEST_F(RealFiles, CadAssembly) {
    load("cad_bracket.wrl");
    EXPECT_EQ(25, reader.tree().nodeCount());
    EXPECT_EQ(4, counts["DEF"]);
    EXPECT_EQ(2, counts["Viewpoint"]);
    EXPECT_EQ(8, named<CoordinateNode>("solid_1_pts").pointCount());
    EXPECT_EQ(12.5F, named<CoordinateNode>("solid_1_pts").pointAt(2)[1]);
    EXPECT_EQ(20, named<IndexedFaceSetNode>("solid_2_geo").coordIndexCount());
    EXPECT_EQ(0.65098F, named<MaterialNode>("MAT_STEEL").diffuseColor().z());
    EXPECT_EQ(32.0F, named<TransformNode>("solid_1").translation().z());
}

TEST_F(RealFiles, CircuitBoard) {
    load("pcb_module.wrl");
    EXPECT_EQ(36, reader.tree().nodeCount());
    EXPECT_EQ(5, counts["DEF"]);
    EXPECT_EQ(0.271F, named<MaterialNode>("PIN-01").ambientIntensity());
    EXPECT_EQ(0.1F, named<BoxNode>("pin_g").size().z());
    EXPECT_EQ(0.5F,
              static_cast<const IndexedFaceSetNode*>(named<ShapeNode>("board").geometryChild())
                  ->creaseAngle());
}

TEST_F(RealFiles, RobotCell) {
    load("robot_cell.wrl");
    EXPECT_EQ(3, counts["Transform"]);
    EXPECT_EQ(2, counts["Cylinder"]);
    EXPECT_EQ(4U, reader.tree().routes().size());
    const TransformNode& elbow = named<TransformNode>("Elbow");
    EXPECT_EQ(0.5F, elbow.translation().z());
    ASSERT_NE(nullptr, elbow.parent());
    EXPECT_EQ(&named<TransformNode>("Shoulder"), elbow.parent()->parent());
    const Node* box = elbow.firstChild()->geometryChild();
    EXPECT_EQ(0.08F, static_cast<const BoxNode*>(box)->size().x());
    EXPECT_EQ(reader.tree().findNode("Clock"),
              static_cast<SFNode*>(named<ScriptNode>("Logic").findField("clock"))->value());
}

TEST_F(RealFiles, Molecule) {
    load("molecule.wrl");
    EXPECT_EQ(3, counts["Sphere"]);
    EXPECT_EQ(2, counts["DEF"]);
    EXPECT_EQ(-0.4692F, named<TransformNode>("H3").translation().z());
    EXPECT_EQ(2, named<FontStyleNode>("LabelFont").justifyCount());
}

TEST_F(RealFiles, Terrain) {
    load("terrain.wrl");
    EXPECT_EQ(24, reader.tree().nodeCount());
    const auto& grid =
        static_cast<ElevationGridNode&>(*reader.tree().findNodeOfType(kElevationGrid));
    EXPECT_EQ(9, grid.heightCount());
    EXPECT_EQ(10.0F, grid.heightAt(4));
    const auto& texture =
        static_cast<PixelTextureNode&>(*reader.tree().findNodeOfType(kPixelTexture));
    EXPECT_EQ(7, texture.imageCount());
    EXPECT_EQ(0xFF0000, texture.imageAt(3));
    EXPECT_EQ("EXPONENTIAL", static_cast<FogNode&>(*reader.tree().findNodeOfType(kFog)).fogType());
}

TEST_F(RealFiles, ToolPathWithLineEndsOfTwoCharacters) {
    testing::internal::CaptureStdout();
    load("toolpath_crlf.wrl");
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ(6, named<CoordinateNode>("P").pointCount());
    EXPECT_EQ(2U, reader.tree().routes().size());
    // ON is 0.
    EXPECT_FALSE(named<TimeSensorNode>("T").loop());
    EXPECT_EQ("path\nover two lines",
              static_cast<WorldInfoNode&>(*reader.tree().findNodeOfType(kWorldInfo)).title());
}

TEST_F(RealFiles, NoBlankThatIsNotNeeded) {
    load("compact.wrl");
    EXPECT_EQ(16, reader.tree().nodeCount());
    EXPECT_EQ(0.5F, named<MaterialNode>("M").diffuseColor().y());
    EXPECT_EQ(-1, named<SwitchNode>("S").whichChoice());
}

TEST_F(RealFiles, WhatIsRefusedIsNamed) {
    const struct {
        const char* file;
        int line;
        const char* token;
        const char* lineText;
    } refusals[] = {
        {"refused_externproto.wrl", 3, "EXTERNPROTO",
         "EXTERNPROTO Part [ field SFFloat r ] \"parts.wrl#Part\""},
        {"refused_old_format.wrl", 3, "Separator", "Separator {"},
        {"refused_glued_type.wrl", 3, "{", "  DEF part1 Transform{ children [ ] }"},
        {"refused_comma.wrl", 5, ",", "      0, 0, 0,"},
        {"refused_cut_off.wrl", 4, "", ""},
    };
    for (const auto& refusal : refusals) {
        EXPECT_FALSE(read(refusal.file)) << refusal.file;
        EXPECT_EQ("syntax error", error.message) << refusal.file;
        EXPECT_EQ(refusal.line, error.line) << refusal.file;
        EXPECT_EQ(refusal.token, error.token) << refusal.file;
        EXPECT_EQ(refusal.lineText, error.lineText) << refusal.file;
    }
}

TEST_F(RealFiles, EachStartOfAFileIsAnswered) {
    for (const char* file : {"robot_cell.wrl", "terrain.wrl", "compact.wrl"}) {
        std::string text;
        ASSERT_EQ(FileStatus::kRead, readFileText((kWorlds + "/" + file).c_str(), text));
        int accepted = 0;
        // A quote without an end is echoed.
        testing::internal::CaptureStdout();
        for (std::size_t length = 0; length <= text.size(); ++length) {
            error = {};
            const bool isRead = reader.readText(text.substr(0, length), nullptr, nullptr);
            ASSERT_EQ(isRead, error.message.empty()) << file << " " << length;
            accepted += isRead;
        }
        testing::internal::GetCapturedStdout();
        EXPECT_GT(accepted, 0) << file;
        EXPECT_LT(accepted, static_cast<int>(text.size())) << file;
        EXPECT_TRUE(error.message.empty()) << file;
    }
}

TEST_F(RealFiles, AWorldLoadsWithInstancesOfWhatItUses) {
    SceneGraph world;
    ASSERT_TRUE(world.load((kWorlds + "/pcb_module.wrl").c_str(), true, nullptr, nullptr));
    int pins = 0;
    for (Node* node = world.firstNode(); node; node = node->next()) {
        EXPECT_FALSE(node->isPlaceholder());
        pins += node->isType(kTransform) && node->hasName();
    }
    EXPECT_EQ(3, pins);
}

}  // namespace
}  // namespace nodes
