// The layout of the XML form, to the character.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "TemporaryFolder.h"
#include "WrittenText.h"
#include "nodes/SceneGraph.h"
#include "nodes/writer/XmlField.h"

namespace nodes {
namespace {

/// No class has this type.
class ForeignElement final : public Node {
  public:
    ForeignElement() : Node(kXmlElement) {}
};

TEST(XmlWriter, ElementsWithoutListsStandOnOneLine) {
    BoxNode box;
    box.setSize(1.0F, 2.0F, 3.0F);
    EXPECT_EQ(xmlOf(box), "<Box size=\"1 2 3\"/>\n");
    TransformNode transform;
    transform.setName("arm");
    transform.setBBoxSize(1, 1, 1);
    EXPECT_EQ(xmlOf(transform, 1),
              "\t<Transform DEF=\"arm\" bboxCenter=\"0 0 0\" bboxSize=\"1 1 1\""
              " translation=\"0 0 0\" scale=\"1 1 1\" center=\"0 0 0\" rotation=\"0 0 1 0\""
              " scaleOrientation=\"0 0 1 0\"/>\n");
    FogNode fog;
    fog.setFogType("a <b> & \"c\"");
    EXPECT_EQ(xmlOf(fog),
              "<Fog color=\"1 1 1\" fogType=\"a <b> & \"c\"\" visibilityRange=\"0\""
              " set_bind=\"TRUE\" bindTime=\"1.000000\" isBound=\"TRUE\"/>\n");
}

TEST(XmlWriter, ElementsWithListsHaveALineForEachField) {
    IndexedLineSetNode lines;
    EXPECT_EQ(xmlOf(lines),
              "<IndexedLineSet\n"
              "\tcolorPerVertex=\"TRUE\"\n"
              "\tlineWidth=\"1\"/>\n");
    AnchorNode anchor;
    anchor.addUrl("only one");
    anchor.addParameter("first");
    anchor.addParameter("");
    anchor.addParameter("third");
    EXPECT_EQ(xmlOf(anchor, 1),
              "\t<Anchor\n"
              "\t\tbboxCenter=\"0 0 0\"\n"
              "\t\tbboxSize=\"-1 -1 -1\"\n"
              "\t\tdescription=\"\"\n"
              "\t\tparameter=\"\t\t           first\n"
              "\t\t           \n"
              "\t\t           third\"\n"
              "\t\turl=\"only one\"\n"
              "\t\tcenter=\"0 0 0\"\n"
              "\t\tenabled=\"TRUE\"/>\n");
    PixelTextureNode texture;
    for (const int value : {1, 1, 1, 7}) {
        texture.addImage(value);
    }
    // An image is one value.
    EXPECT_EQ(xmlOf(texture),
              "<PixelTexture repeatS=\"TRUE\" repeatT=\"TRUE\" image=\"1, 1, 1, 7\"/>\n");
}

TEST(XmlWriter, ChildrenInstancesAndForeignElements) {
    SceneGraph world;
    auto& group = addNew<GroupNode>(world, "top");
    auto& shape = addNew<ShapeNode>(group);
    auto& box = addNew<BoxNode>(shape, "box");
    addNew<ForeignElement>(group, "Head").addField("x", std::make_unique<SFFloat>(0.5F));
    group.addChild(box.makeReference(), false);
    group.addChild(box.instantiate(), false);
    const std::string box3 = " bboxCenter=\"0 0 0\" bboxSize=\"-1 -1 -1\"";
    EXPECT_EQ(xmlOf(group), "<Group DEF=\"top\"" + box3 +
                                ">\n"
                                "\t<Shape" +
                                box3 +
                                ">\n"
                                "\t\t<Box DEF=\"box\" size=\"2 2 2\"/>\n"
                                "\t</Shape>\n"
                                "\t<Head x=\"0.5\"/>\n"
                                "\t<Box USE=\"box\"/>\n"
                                "\t<Box USE=\"box\"/>\n"
                                "</Group>\n");
    EXPECT_EQ(vrmlOf(ForeignElement()), "");
    EXPECT_FALSE(box.hasListFields());
    EXPECT_TRUE(TimeSensorNode().addHiddenField(std::make_unique<MFTime>()).type() == kMFTime);
    box.addHiddenField("times", std::make_unique<MFTime>());
    EXPECT_TRUE(box.hasListFields());
}

TEST(XmlWriter, OneField) {
    MFVec3f list;
    list.setName("pt");
    std::string text;
    StringStream stream(text);
    writeXmlField(stream, list, 0, false);
    list.add(1.0F, 2.0F, 0.5F);
    writeXmlField(stream, list, 0, false);
    list.add(0.0F, 0.0F, -1e-8F);
    writeXmlField(stream, list, 1, false);
    SFTime time(0.5);
    time.setName("t");
    writeXmlField(stream, time, 1, false);
    writeXmlField(stream, time, 1, true);
    writeXmlField(stream, SFNode(), 1, true);
    stream.finish();
    EXPECT_EQ(text,
              "\n\tpt=\"1 2 0.5\""
              "\n\t\tpt=\"\t\t    1 2 0.5\n\t\t    0 0 -1e-08\""
              "\n\t\tt=\"0.500000\" t=\"0.500000\"");
}

TEST(XmlWriter, FilesOfTheWholeWorld) {
    const TemporaryFolder folder;
    SceneGraph world;
    addNew<TimeSensorNode>(world, "clock");
    addNew<ScalarInterpolatorNode>(world, "path");
    ASSERT_TRUE(world.addRoute("clock", "fraction", "path", "set_fraction"));
    std::vector<int> counts;
    const std::string path = (folder / "world.xml").string();
    const auto note = [](int count, void* data) {
        static_cast<std::vector<int>*>(data)->push_back(count);
    };
    EXPECT_TRUE(world.saveXml(path.c_str(), note, &counts));
    EXPECT_TRUE(world.savedWhole());
    EXPECT_EQ(counts, (std::vector<int>{1, 2}));
    EXPECT_EQ(folder.Read("world.xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<TimeSensor DEF=\"clock\" enabled=\"TRUE\" loop=\"FALSE\" cycleInterval=\"1.000000\""
              " startTime=\"0.000000\" stopTime=\"0.000000\" pauseTime=\"0.000000\""
              " resumeTime=\"0.000000\" numLoops=\"1\" isActive=\"FALSE\" cycleTime=\"-1.000000\""
              " time=\"-1.000000\" fraction=\"0\" isPaused=\"FALSE\" elapsedTime=\"0.000000\"/>\n"
              "<ScalarInterpolator DEF=\"path\"\n"
              "\tfraction=\"0\"\n"
              "\tvalue=\"0\"/>\n"
              "<ROUTE fromNode=\"clock\" fromField=\"fraction\" toNode=\"path\""
              " toField=\"fraction\"/>\n");
    counts.clear();
    EXPECT_FALSE(world.saveXml((folder / "missing/world.xml").c_str(), note, &counts));
    EXPECT_FALSE(world.saveXml(nullptr, note, &counts));
    EXPECT_TRUE(counts.empty());
    EXPECT_FALSE(world.savedWhole());
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_TRUE(world.saveXml("/dev/full", nullptr, nullptr));
        EXPECT_FALSE(world.savedWhole());
    }
}

TEST(XmlWriter, TextGrowsWithTheDepthAndNotWithItsSquare) {
    GroupNode top;
    constexpr std::size_t kDepth = 20'000;
    Node* node = &top;
    for (std::size_t i = 1; i < kDepth; ++i) {
        node = &addNew<GroupNode>(*node);
    }
    const std::string text = xmlOf(top);
    EXPECT_EQ(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')), 2 * kDepth - 1);
    EXPECT_LT(text.size(), kDepth * 2100);
    EXPECT_TRUE(text.ends_with("\n\t</Group>\n</Group>\n"));
}

}  // namespace
}  // namespace nodes
