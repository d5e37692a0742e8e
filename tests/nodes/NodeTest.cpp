#include "nodes/nodes/Node.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "nodes/NodeTree.h"
#include "nodes/SceneGraph.h"

namespace nodes {
namespace {

using ::testing::ElementsAre;

template <class Class>
Class& addTo(Node& parent, const char* name = nullptr) {
    auto node = std::make_unique<Class>();
    node->setName(name);
    return static_cast<Class&>(parent.addChild(std::move(node), false));
}

template <class Class>
Class& addTo(NodeTree& tree, const char* name = nullptr) {
    auto node = std::make_unique<Class>();
    node->setName(name);
    return static_cast<Class&>(tree.addNode(std::move(node), false));
}

std::vector<std::string> namesOf(const Node& node) {
    std::vector<std::string> names;
    for (const Node* child = node.firstChild(); child; child = child->nextSibling()) {
        names.push_back(child->nameText());
    }
    return names;
}

std::vector<std::string> namesOf(const Node& node, FieldKind kind) {
    std::vector<std::string> names;
    for (int i = 0; i < node.fieldCountOf(kind); ++i) {
        names.emplace_back(node.fieldOf(kind, i)->name());
    }
    return names;
}

TEST(Node, EveryClassIsMadeByItsNumberWithNamedFields) {
    for (int type = 0; type < kNodeClassCount; ++type) {
        const std::unique_ptr<Node> node = makeNode(type);
        ASSERT_TRUE(node);
        EXPECT_EQ(type, node->type());
        for (int kind = 0; kind < kFieldKinds; ++kind) {
            for (const std::string& name : namesOf(*node, static_cast<FieldKind>(kind))) {
                EXPECT_FALSE(name.empty()) << node->typeName();
            }
        }
    }
    EXPECT_FALSE(makeNode(kNodeClassCount));
    EXPECT_FALSE(makeNode(-1));
}

TEST(Node, FieldsOfTheBasesStandFirst) {
    const IndexedFaceSetNode faces;
    EXPECT_THAT(namesOf(faces, kHiddenField), ElementsAre("bboxCenter", "bboxSize"));
    EXPECT_THAT(namesOf(faces, kExposedField), ElementsAre("color", "coord", "normal", "texCoord"));
    EXPECT_THAT(
        namesOf(faces, kPlainField),
        ElementsAre("ccw", "colorPerVertex", "normalPerVertex", "solid", "convex", "creaseAngle",
                    "coordIndex", "texCoordIndex", "colorIndex", "normalIndex"));
    EXPECT_THAT(namesOf(faces, kEventIn),
                ElementsAre("coordIndex", "texCoordIndex", "colorIndex", "normalIndex"));
    EXPECT_EQ(nullptr, faces.fieldAt(-1));
    EXPECT_EQ(nullptr, faces.fieldAt(10));
}

TEST(Node, DefaultsThatReadersMightExpectOtherwise) {
    EXPECT_FALSE(NavigationInfoNode().headlight());
    EXPECT_EQ(0, NavigationInfoNode().navigationTypeCount());
    EXPECT_EQ(10, SoundNode().intensity());
    EXPECT_EQ(0, ViewpointNode().position().z());
    EXPECT_EQ(0.2F, MaterialNode().ambientIntensity());
    EXPECT_EQ(1, TextNode().maxExtent());
    EXPECT_TRUE(FogNode().isBound());
    EXPECT_EQ(1, FogNode().bindTime());
    EXPECT_EQ("LINEAR", FogNode().fogType());
    EXPECT_EQ(-1, SwitchNode().whichChoice());
    EXPECT_EQ(0, ElevationGridNode().xSpacing());
}

TEST(Node, NamesKeepToCharactersThatAFileCanHold) {
    GroupNode group;
    EXPECT_FALSE(group.hasName());
    group.setName("a b\tc\xC3\xA4.d");
    EXPECT_STREQ("a_b_c__.d", group.name());
    group.setName(nullptr);
    EXPECT_FALSE(group.hasName());
}

TEST(Node, EventNamesFindTheirField) {
    const TransformNode transform;
    const Field* translation = transform.findExposedField("translation");
    ASSERT_TRUE(translation);
    EXPECT_EQ(translation, transform.findExposedField("set_translation"));
    EXPECT_EQ(translation, transform.findExposedField("translation_changed"));
    EXPECT_EQ(nullptr, transform.findExposedField("set_translation_changed"));
    EXPECT_EQ(nullptr, transform.findField("set_bboxSize"));
    const PositionInterpolatorNode interpolator;
    EXPECT_STREQ("fraction", interpolator.findEventIn("set_fraction")->name());
    EXPECT_EQ(nullptr, interpolator.findEventIn("fraction_changed"));
    EXPECT_STREQ("value", interpolator.findEventOut("value_changed")->name());
    EXPECT_EQ(nullptr, interpolator.findEventOut(nullptr));
    const FogNode fog;
    EXPECT_STREQ("set_bind", fog.findEventIn("set_bind")->name());
}

TEST(Node, FieldsAreAddedBehindThoseOfTheClass) {
    ScriptNode script;
    Field& go = script.addEventIn("go", std::make_unique<SFBool>());
    EXPECT_EQ(&go, script.findEventIn("go"));
    EXPECT_EQ(&go, script.eventInAt(0));
    script.addField("speed", std::make_unique<SFFloat>(2.0F));
    EXPECT_THAT(namesOf(script, kPlainField), ElementsAre("directOutput", "mustEvaluate", "speed"));
}

TEST(Node, ChildrenMoveBetweenParentsButNeverIntoThemselves) {
    NodeTree tree;
    auto& a = addTo<GroupNode>(tree, "a");
    auto& b = addTo<GroupNode>(a, "b");
    auto& c = addTo<GroupNode>(b, "c");
    auto& d = addTo<GroupNode>(b, "d");
    EXPECT_EQ(nullptr, a.parent());
    EXPECT_EQ(&tree, c.scene());
    a.addChild(c, false);
    EXPECT_THAT(namesOf(a), ElementsAre("b", "c"));
    EXPECT_THAT(namesOf(b), ElementsAre("d"));
    c.addChild(a, false);
    a.addChild(a, false);
    EXPECT_EQ(nullptr, a.parent());
    EXPECT_EQ(&d, b.next());
    EXPECT_EQ(&c, d.next());
    EXPECT_EQ(nullptr, c.next());
    EXPECT_EQ(&c, a.nextNamed("c"));
    EXPECT_EQ(4, tree.nodeCount());
    EXPECT_EQ(nullptr, a.childAt(-1));
    EXPECT_EQ(&c, a.childAt(1));
    EXPECT_EQ(nullptr, a.childAt(2));
}

TEST(Node, AnInstanceShowsTheValuesOfItsNode) {
    NodeTree tree;
    auto& transform = addTo<TransformNode>(tree, "arm");
    auto& shape = addTo<ShapeNode>(transform);
    addTo<BoxNode>(shape, "link").setSize(1.0F, 2.0F, 3.0F);
    std::unique_ptr<Node> made = transform.instantiate(&tree);
    ASSERT_TRUE(made);
    auto& copy = static_cast<TransformNode&>(tree.addNode(std::move(made), false));
    EXPECT_EQ(&transform, copy.instanceOf());
    EXPECT_STREQ("arm", copy.name());
    auto& copiedBox = static_cast<BoxNode&>(*copy.firstChild()->firstChild());
    EXPECT_EQ(2, copiedBox.size().y());

    copy.setTranslation(7.0F, 8.0F, 9.0F);
    EXPECT_EQ(8, transform.translation().y());
    transform.setTranslation(1.0F, 1.0F, 1.0F);
    EXPECT_EQ(1, copy.translation().y());
    EXPECT_EQ(transform.findExposedField("scale"), copy.findExposedField("scale"));
    // A copy of a copy shows the same node.
    EXPECT_EQ(&transform, copy.instantiate()->instanceOf());
    EXPECT_EQ(&transform, copy.makeReference()->instanceOf());
    EXPECT_EQ(kDef, copy.makeReference()->type());
    EXPECT_FALSE(RootNode().instantiate());
    EXPECT_EQ(&shape, transform.childOfType(kShape));
}

TEST(Node, AReferenceCountsAsTheTypeThatItShows) {
    NodeTree tree;
    auto& material = addTo<MaterialNode>(tree, "red");
    auto& appearance = addTo<AppearanceNode>(tree);
    appearance.addChild(material.makeReference(), false);
    ASSERT_TRUE(appearance.childOfType(kMaterial));
    EXPECT_EQ(kDef, appearance.childOfType(kMaterial)->type());
}

TEST(Node, WhatIsDeletedTakesItsInstancesAndRoutesAlong) {
    NodeTree tree;
    auto& timer = addTo<TimeSensorNode>(tree, "timer");
    auto& group = addTo<GroupNode>(tree, "group");
    auto& mover = addTo<PositionInterpolatorNode>(group, "mover");
    auto& script = addTo<ScriptNode>(tree, "script");
    script.addField("who", std::make_unique<SFNode>(&mover));
    tree.addNode(group.instantiate(&tree), false);
    tree.addNode(group.makeReference(), false);
    ASSERT_TRUE(tree.addRoute("timer", "fraction_changed", "mover", "set_fraction"));
    EXPECT_EQ(7, tree.nodeCount());

    std::unique_ptr<Node> taken = group.detach();
    EXPECT_EQ(&group, taken.get());
    EXPECT_EQ(2, tree.nodeCount());
    EXPECT_EQ(nullptr, tree.firstRoute());
    EXPECT_EQ(nullptr, static_cast<SFNode*>(script.findField("who"))->value());
    EXPECT_EQ(nullptr, mover.scene());
    // An instance outside any tree is left, without anything to show.
    auto outside = timer.instantiate();
    auto& sensor = static_cast<TimeSensorNode&>(*outside);
    timer.setCycleInterval(5.0);
    timer.detach().reset();
    EXPECT_EQ(nullptr, outside->instanceOf());
    EXPECT_EQ(1, sensor.cycleInterval());
}

TEST(Node, AScriptNamesNoNodeThatIsGone) {
    NodeTree other;
    NodeTree tree;
    auto& script = addTo<ScriptNode>(tree, "script");
    auto& named = addTo<GroupNode>(tree, "named");
    auto& field = static_cast<SFNode&>(script.addField("who", std::make_unique<SFNode>(&named)));
    auto& second = static_cast<SFNode&>(script.addField("too", std::make_unique<SFNode>(&named)));
    other.addNode(script, false);
    EXPECT_EQ(&named, field.value());
    tree.clear();
    EXPECT_EQ(nullptr, field.value());
    EXPECT_EQ(nullptr, second.value());
    // One that goes before what it names leaves nothing behind.
    auto& last = addTo<GroupNode>(tree);
    field.setValue(&last);
    second.setValue(&last);
    other.clear();
    tree.clear();
}

TEST(Node, RoutesGoWithTheFieldsThatTheyJoin) {
    NodeTree tree;
    auto& sharing = addTo<TimeSensorNode>(tree, "sharing");
    auto& source = addTo<TimeSensorNode>(tree, "source");
    addTo<PositionInterpolatorNode>(tree, "mover");
    sharing.shareFieldsOf(&source);
    sharing.setName("both");
    ASSERT_TRUE(
        tree.addRoute(sharing, "fraction_changed", *tree.findNode("mover"), "set_fraction"));
    source.detach().reset();
    EXPECT_TRUE(tree.routes().empty());
    EXPECT_EQ(nullptr, sharing.instanceOf());
}

TEST(Node, AnInstanceInsideWhatItShowsGoesWithIt) {
    NodeTree tree;
    auto& outer = addTo<GroupNode>(tree, "outer");
    auto& inner = addTo<GroupNode>(outer, "inner");
    inner.addChild(outer.instantiate(&tree), false);
    outer.addChild(inner.instantiate(&tree), false);
    outer.detach().reset();
    EXPECT_EQ(0, tree.nodeCount());
}

TEST(Node, DepthIsBoundedByMemoryAlone) {
    constexpr int kDepth = 500000;
    SceneGraph scene;
    Node* node = &addTo<GroupNode>(scene, "top");
    for (int i = 1; i < kDepth; ++i) {
        node = &addTo<GroupNode>(*node);
    }
    EXPECT_EQ(kDepth, scene.nodeCount());
    auto& other = addTo<GroupNode>(scene);
    other.addChild(scene.firstNode()->makeReference(), false);
    scene.initialise(nullptr, nullptr);
    EXPECT_EQ(2 * kDepth + 1, scene.nodeCount());
    // What goes takes along what shows it, here an instance above it.
    other.firstChild()->firstChild()->addChild(*scene.firstNode(), false);
    EXPECT_EQ(2 * kDepth + 1, scene.nodeCount());
    other.firstChild()->firstChild()->detach();
    EXPECT_EQ(1, scene.nodeCount());
}

}  // namespace
}  // namespace nodes
