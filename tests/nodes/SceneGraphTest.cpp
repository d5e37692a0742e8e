#include "nodes/SceneGraph.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace nodes {
namespace {

using ::testing::ElementsAre;

template <class Class>
Class& addTo(NodeTree& tree, const char* name = nullptr) {
    auto node = std::make_unique<Class>();
    node->setName(name);
    return static_cast<Class&>(tree.addNode(std::move(node), false));
}

TEST(SceneGraph, NamesAreFoundFirstAndLast) {
    SceneGraph scene;
    auto& first = addTo<GroupNode>(scene, "twice");
    auto& last = addTo<ShapeNode>(scene, "twice");
    scene.addNode(first.makeReference(), false);
    EXPECT_EQ(&first, scene.findNode("twice"));
    EXPECT_EQ(&first, scene.findLastNode("twice"));
    EXPECT_EQ(&last, scene.findNodeOfType(kShape));
    EXPECT_EQ(nullptr, scene.findNode(""));
    EXPECT_EQ(nullptr, scene.findNode(nullptr));
    EXPECT_EQ(nullptr, scene.findLastNode("never"));
}

TEST(SceneGraph, RoutesJoinFieldsOnce) {
    SceneGraph scene;
    auto& timer = addTo<TimeSensorNode>(scene, "timer");
    auto& mover = addTo<PositionInterpolatorNode>(scene, "mover");
    addTo<TransformNode>(scene, "arm");
    Route* route = scene.addRoute("timer", "fraction_changed", "mover", "set_fraction");
    ASSERT_TRUE(route);
    EXPECT_EQ(route, scene.addRoute("timer", "fraction", "mover", "fraction"));
    EXPECT_EQ(1U, scene.routes().size());
    EXPECT_EQ(&timer.fractionField(), route->fromField());
    EXPECT_EQ(&mover.fractionField(), route->toField());
    EXPECT_EQ(route,
              scene.findRoute(&timer, &timer.fractionField(), &mover, &mover.fractionField()));
    EXPECT_TRUE(scene.addRoute("mover", "value_changed", "arm", "set_translation"));
    EXPECT_FALSE(scene.addRoute("mover", "value_changed", "mover", "set_fraction"));
    EXPECT_FALSE(scene.addRoute("nobody", "value", "arm", "translation"));
    EXPECT_FALSE(scene.addRoute("mover", "no_such", "arm", "translation"));
    EXPECT_FALSE(scene.addRoute("mover", nullptr, nullptr, "translation"));
    scene.clear();
    EXPECT_TRUE(scene.routes().empty());
    EXPECT_EQ(0, scene.nodeCount());
}

TEST(SceneGraph, BoundNodesStandInStacks) {
    SceneGraph scene;
    auto& front = addTo<ViewpointNode>(scene, "front");
    auto& side = addTo<ViewpointNode>(scene, "side");
    EXPECT_EQ(&scene.defaultViewpoint(), &scene.viewer());
    scene.setBound(front, true);
    scene.setBound(side, true);
    EXPECT_EQ(&side, &scene.viewer());
    EXPECT_FALSE(front.isBound());
    scene.setBound(front, true);
    EXPECT_THAT(scene.viewpoints(), ElementsAre(&side, &front));
    scene.setBound(side, false);
    EXPECT_THAT(scene.viewpoints(), ElementsAre(&front));
    scene.setBound(side, true);
    side.detach().reset();
    EXPECT_TRUE(front.isBound());
    EXPECT_EQ(&front, SceneGraph::boundNode(scene.viewpoints()));
    EXPECT_EQ(nullptr, SceneGraph::boundNode(scene.fogs()));
}

TEST(SceneGraph, ReferencesBecomeInstancesBehindTheOtherChildren) {
    SceneGraph scene;
    auto& wheel = addTo<TransformNode>(scene, "wheel");
    wheel.addChild(std::make_unique<ShapeNode>(), false);
    auto& car = addTo<GroupNode>(scene, "car");
    car.addChild(wheel.makeReference(), false);
    car.addChild(std::make_unique<ShapeNode>(), false).setName("body");
    auto unknown = std::make_unique<DefNode>();
    unknown->setName("unknown");
    car.addChild(std::move(unknown), false);

    for (int pass = 0; pass < 2; ++pass) {
        scene.initialise(nullptr, nullptr);
        ASSERT_EQ(3, car.childCount());
        EXPECT_STREQ("body", car.childAt(0)->name());
        EXPECT_EQ(kDef, car.childAt(1)->type());
        EXPECT_EQ(&wheel, car.childAt(2)->instanceOf());
        EXPECT_EQ(kTransform, car.childAt(2)->type());
        EXPECT_EQ(1, car.childAt(2)->childCount());
    }
}

TEST(SceneGraph, NodesThatShowEachOtherStayWithinMemory) {
    SceneGraph scene;
    Node* last = nullptr;
    for (int i = 0; i < 64; ++i) {
        auto& group = addTo<GroupNode>(scene, ("level" + std::to_string(i)).c_str());
        for (int twice = 0; last && twice < 2; ++twice) {
            group.addChild(last->makeReference(), false);
        }
        last = &group;
    }
    scene.initialise(nullptr, nullptr);
    EXPECT_LT(scene.nodeCount(), 1200000);
}

}  // namespace
}  // namespace nodes
