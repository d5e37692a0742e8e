#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "TestTree.h"
#include "nodes/nodes/ReadScope.h"

namespace nodes {
namespace {

namespace fs = std::filesystem;

class Inline : public ::testing::Test {
  protected:
    Inline() : m_folder(fs::temp_directory_path() / ("inline" + std::to_string(::getpid()))) {
        fs::create_directories(m_folder);
    }
    ~Inline() override { fs::remove_all(m_folder); }

    std::string path(const std::string& name) const { return (m_folder / name).string(); }

    void write(const std::string& name, const std::string& text) const {
        std::ofstream(path(name)) << "#VRML V2.0 utf8\n" << text;
    }

    std::string inlineOf(const std::string& name) const {
        return "Inline { url [ \"" + path(name) + "\" ] }\n";
    }

    bool read(const std::string& name) {
        return scene.load(path(name).c_str(), true, nullptr, nullptr);
    }

    int count(std::int32_t type) const {
        int found = 0;
        for (const Node* node = scene.firstNode(); node; node = node->next()) {
            found += node->isType(type) ? 1 : 0;
        }
        return found;
    }

    SceneGraph scene;

  private:
    fs::path m_folder;
};

TEST_F(Inline, BringsAllItsFilesWithTheirRoutes) {
    write("part.wrl",
          "DEF timer TimeSensor { }\n"
          "DEF mover PositionInterpolator { key [ 0 ] }\n"
          "Viewpoint { position 1 2 3 }\n"
          "ROUTE timer.fraction_changed TO mover.set_fraction\n");
    write("other.wrl", "WorldInfo { }\n");
    write("main.wrl", "DEF timer Transform { }\nInline { url [ \"" + path("part.wrl") + "\" \"" +
                          path("missing.wrl") + "\" \"" + path("other.wrl") + "\" ] }\n");
    ASSERT_TRUE(read("main.wrl"));
    Node* node = scene.findNodeOfType(kInline);
    ASSERT_TRUE(node);
    ASSERT_EQ(4, node->childCount());
    EXPECT_EQ(kWorldInfo, node->childAt(3)->type());
    // Between the nodes of its own file, whatever else bears their names.
    ASSERT_EQ(1U, scene.routes().size());
    EXPECT_EQ(node->childAt(0), scene.firstRoute()->fromNode());
    EXPECT_EQ(node->childAt(2), SceneGraph::boundNode(scene.viewpoints()));
    EXPECT_TRUE(static_cast<ViewpointNode*>(node->childAt(2))->isBound());

    node->prepareSave();
    EXPECT_EQ(0, node->childCount());
    EXPECT_TRUE(scene.routes().empty());
    EXPECT_TRUE(scene.viewpoints().empty());
    node->initialise();
    node->initialise();
    EXPECT_EQ(4, node->childCount());
    EXPECT_EQ(1U, scene.routes().size());
}

TEST_F(Inline, OutsideATreeItHasNoRoutes) {
    write("part.wrl",
          "DEF timer TimeSensor { }\nDEF mover PositionInterpolator { key [ 0 ] }\n"
          "ROUTE timer.fraction_changed TO mover.set_fraction\n");
    auto node = std::make_unique<InlineNode>();
    node->addUrl(path("part.wrl"));
    node->initialise();
    EXPECT_EQ(2, node->childCount());
    scene.addNode(std::move(node), true);
    EXPECT_TRUE(scene.routes().empty());
    EXPECT_EQ(3, scene.nodeCount());
}

TEST_F(Inline, RingsAddNothing) {
    write("a.wrl", "WorldInfo { }\n" + inlineOf("b.wrl"));
    write("b.wrl",
          "Group { }\n" + inlineOf("./b.wrl") +
              inlineOf("../" + fs::path(path("")).parent_path().filename().string() + "/a.wrl"));
    ASSERT_TRUE(read("a.wrl"));
    EXPECT_EQ(1, count(kWorldInfo));
    EXPECT_EQ(1, count(kGroup));
    EXPECT_EQ(3, count(kInline));
}

TEST_F(Inline, FilesThatAreNoFilesAddNothing) {
    fs::create_directory(path("folder.wrl"));
    fs::create_symlink(path("loop.wrl"), path("loop.wrl"));
    ASSERT_EQ(0, ::mkfifo(path("pipe.wrl").c_str(), 0600));
    std::ofstream(path("short.wrl")) << "#VR";
    write("broken.wrl", "Group { Sphere }");
    write("main.wrl", inlineOf("folder.wrl") + inlineOf("loop.wrl") + inlineOf("pipe.wrl") +
                          inlineOf("short.wrl") + inlineOf("broken.wrl") +
                          "Inline { url [ \"\" \"/dev/zero\" ] }\n");
    ASSERT_TRUE(read("main.wrl"));
    EXPECT_EQ(6, scene.nodeCount());
}

TEST_F(Inline, DepthIsBounded) {
    constexpr int kFiles = 2 * static_cast<int>(kInlineDepth);
    for (int i = 0; i < kFiles; ++i) {
        write(std::to_string(i) + ".wrl", inlineOf(std::to_string(i + 1) + ".wrl"));
    }
    ASSERT_TRUE(read("0.wrl"));
    EXPECT_EQ(static_cast<int>(kInlineDepth), scene.nodeCount());
}

// Each file asks for the next one twice.
TEST_F(Inline, FilesThatMultiplyAreBounded) {
    for (int i = 0; i < 40; ++i) {
        const std::string next = inlineOf(std::to_string(i + 1) + ".wrl");
        write(std::to_string(i) + ".wrl", next + next);
    }
    for (int turn = 0; turn < 2; ++turn) {
        ASSERT_TRUE(read("0.wrl"));
        EXPECT_GT(scene.nodeCount(), 4000);
        EXPECT_LE(scene.nodeCount(), 2 * (static_cast<int>(kInlineFiles) + 1));
    }
}

// Each file shows the world of the next one a hundred times.
TEST_F(Inline, InstancesOfInlinedWorldsAreBoundedTogether) {
    constexpr int kFiles = 8;
    for (int i = 0; i < kFiles; ++i) {
        std::string text =
            "DEF D Group { children [ " + inlineOf(std::to_string(i + 1) + ".wrl") + " ] }\n";
        for (int use = 0; use < 100; ++use) {
            text += "Group { children [ USE D ] }\n";
        }
        write(std::to_string(i) + ".wrl", text);
    }
    read("0.wrl");
    EXPECT_LT(scene.nodeCount(), 1500000);
}

}  // namespace
}  // namespace nodes
