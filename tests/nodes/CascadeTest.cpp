#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "TestTree.h"
#include "nodes/NodeTree.h"

namespace nodes {
namespace {

using ::testing::ElementsAre;

class Cascade : public ::testing::Test {
  protected:
    /// A node that writes its name down when an event comes, and then reacts.
    Probe& probe(const std::string& name, Probe::Reaction reaction = {}) {
        Probe& node = addProbe(tree, [this, name, reaction](Probe& self) {
            order.push_back(name);
            if (reaction) {
                reaction(self);
            }
        });
        return node;
    }

    void join(Probe& from, Probe& to) { tree.addRoute(from, *from.in, to, *to.in); }

    std::vector<std::string> order;
    NodeTree tree;
};

TEST_F(Cascade, GoesOneRouteToItsEndBeforeTheNext) {
    Probe& a = probe("a");
    Probe& b = probe("b");
    Probe& c = probe("c");
    Probe& d = probe("d");
    join(a, b);
    join(a, c);
    join(b, d);
    a.in->setValue(7);
    a.sendEvent(*a.in);
    EXPECT_THAT(order, ElementsAre("b", "d", "c"));
    EXPECT_EQ(7, d.in->value());
    EXPECT_EQ(7, c.in->value());
    Probe outside;
    outside.sendEvent(*outside.in);
    EXPECT_EQ(3U, order.size());
}

TEST_F(Cascade, EventsOfTheReceiverGoOutBeforeThoseOfItsField) {
    Probe& a = probe("a");
    Probe& b = probe("b", [](Probe& self) {
        self.out->setValue(self.in->value() + 1);
        self.sendEvent(*self.out);
    });
    Probe& inner = probe("inner");
    Probe& behind = probe("behind");
    join(a, b);
    join(b, behind);
    tree.addRoute(b, *b.out, inner, *inner.in);
    a.in->setValue(1);
    a.sendEvent(*a.in);
    EXPECT_THAT(order, ElementsAre("b", "inner", "behind"));
    EXPECT_EQ(2, inner.in->value());
    EXPECT_EQ(1, behind.in->value());
}

TEST_F(Cascade, ARingEndsWhereItBegan) {
    Probe& a = probe("a");
    Probe& b = probe("b", [](Probe& self) { self.sendEvent(*self.in); });
    join(a, b);
    join(b, a);
    for (int value = 1; value < 3; ++value) {
        order.clear();
        a.in->setValue(value);
        a.sendEvent(*a.in);
        // The receiver's own event goes round first; its field's event finds all routes again, but
        // the one that it came by.
        EXPECT_THAT(order, ElementsAre("b", "a", "a"));
        EXPECT_EQ(value, b.in->value());
    }
}

TEST_F(Cascade, AnEqualValueIsNotCopiedAgainAndGoesOnAllTheSame) {
    Probe& a = probe("a");
    Probe& b = probe("b");
    join(a, b);
    Route& route = *tree.firstRoute();
    EXPECT_FALSE(route.delivered());
    a.sendEvent(*a.in);
    EXPECT_TRUE(route.delivered());
    a.sendEvent(*a.in);
    EXPECT_EQ(2, b.events);
}

// As long as a stack of calls could never be.
TEST_F(Cascade, ChainsMayHaveAnyLength) {
    constexpr int kRoutes = 200000;
    Probe& a = probe("a");
    Probe& b = addProbe(tree);
    Probe* from = &a;
    Probe* to = &b;
    Field* field = a.in;
    for (int i = 0; i < kRoutes; ++i) {
        Field& next = to->addExposedField(std::make_unique<SFInt32>());
        ASSERT_TRUE(tree.addRoute(*from, *field, *to, next));
        field = &next;
        std::swap(from, to);
    }
    a.in->setValue(42);
    a.sendEvent(*a.in);
    EXPECT_EQ(42, static_cast<SFInt32*>(field)->value());
    EXPECT_EQ(kRoutes, a.events + b.events);
}

TEST_F(Cascade, ReceiversThatSendInsideEachOtherAreBounded) {
    constexpr int kNodes = 3 * NodeTree::kNestedCascades;
    std::vector<Probe*> probes;
    for (int i = 0; i < kNodes; ++i) {
        probes.push_back(&addProbe(tree, [](Probe& self) { self.sendEvent(*self.out); }));
        if (i > 0) {
            tree.addRoute(*probes[i - 1], *probes[i - 1]->out, *probes[i], *probes[i]->in);
        }
    }
    for (int turn = 1; turn < 3; ++turn) {
        probes[0]->sendEvent(*probes[0]->out);
        EXPECT_EQ(turn, probes[NodeTree::kNestedCascades]->events);
        EXPECT_EQ(0, probes[NodeTree::kNestedCascades + 1]->events);
    }
}

// Every node sends to every other: the ways that go along no route twice have no end that anybody
// would see.
TEST_F(Cascade, RoutesThatMultiplyAnEventAreBounded) {
    constexpr int kNodes = 24;
    std::vector<Probe*> probes;
    for (int i = 0; i < kNodes; ++i) {
        probes.push_back(&addProbe(tree));
    }
    for (Probe* from : probes) {
        for (Probe* to : probes) {
            join(*from, *to);
        }
    }
    for (int turn = 0; turn < 2; ++turn) {
        int events = 0;
        probes[0]->sendEvent(*probes[0]->in);
        for (Probe* probe : probes) {
            EXPECT_GT(probe->events, 0);
            events += std::exchange(probe->events, 0);
        }
        EXPECT_GT(events, kNodes * kNodes);
        EXPECT_LE(events, 200000);
    }
}

TEST_F(Cascade, ReceiversMayRemoveAndAddNodesAndRoutes) {
    Probe& a = probe("a");
    Probe* doomed = nullptr;
    Probe* late = nullptr;
    Probe& b = probe("b", [&](Probe& self) {
        if (doomed != nullptr) {
            doomed->detach().reset();
            doomed = nullptr;
            late = &probe("late");
            join(a, *late);
            join(self, *late);
        }
    });
    doomed = &probe("doomed");
    Probe& c = probe("c", [&](Probe& self) { self.detach().release(); });
    Probe& d = probe("d");
    join(a, b);
    join(a, *doomed);
    join(b, *doomed);
    join(a, c);
    join(c, d);
    a.sendEvent(*a.in);
    EXPECT_THAT(order, ElementsAre("b", "late", "c", "late"));
    const std::unique_ptr<Probe> left(&c);
    order.clear();
    a.sendEvent(*a.in);
    EXPECT_THAT(order, ElementsAre("b", "late", "late"));
    EXPECT_EQ(nullptr, left->scene());
}

TEST_F(Cascade, ReceiversMayClearTheTree) {
    Probe& a = probe("a");
    auto b = std::make_unique<Probe>([this](Probe& self) {
        self.detach().release();
        tree.clear();
    });
    Probe& owned = *b;
    tree.addNode(std::move(b), false);
    join(a, owned);
    a.sendEvent(*a.in);
    const std::unique_ptr<Probe> left(&owned);
    EXPECT_EQ(1, left->events);
    EXPECT_EQ(nullptr, tree.firstNode());
}

// Nodes go one by one, each with its routes from one field that all of them share.
TEST_F(Cascade, RoutesOfAHubAreRemovedInTimeForThemselves) {
    constexpr int kTargets = 100000;
    Probe& hub = addProbe(tree);
    std::vector<Probe*> targets;
    for (int i = 0; i < kTargets; ++i) {
        targets.push_back(&addProbe(tree));
        join(hub, *targets.back());
    }
    for (int i = 0; i + 1 < kTargets; ++i) {
        targets[i]->detach().reset();
    }
    EXPECT_EQ(1U, tree.routes().size());
    hub.sendEvent(*hub.in);
    EXPECT_EQ(1, targets.back()->events);
}

TEST(Route, CarriesValuesOfOneTypeAlone) {
    NodeTree tree;
    auto& from = addTo<TransformNode>(tree);
    auto& to = addTo<TransformNode>(tree);
    auto& material = addTo<MaterialNode>(tree);
    from.setTranslation(0.5F, 0.25F, 0.125F);
    from.setRotation(0.0F, 1.0F, 0.0F, 2.0F);
    tree.addRoute(from, from.translationField(), to, to.scaleField());
    tree.addRoute(from, from.rotationField(), to, to.rotationField());
    tree.addRoute(from, from.translationField(), material, material.diffuseColorField());
    for (const Route& route : tree.routes()) {
        const_cast<Route&>(route).deliver();
    }
    EXPECT_THAT(to.scale().value(), ElementsAre(0.5F, 0.25F, 0.125F));
    EXPECT_THAT(to.rotation().value(), ElementsAre(0, 1, 0, 2));
    EXPECT_THAT(material.diffuseColor().value(), ElementsAre(0.8F, 0.8F, 0.8F));

    auto& audio = addTo<AudioClipNode>(tree);
    auto& fog = addTo<FogNode>(tree);
    audio.setDescription(std::string("a \"b\""));
    tree.addRoute(audio, audio.descriptionField(), fog, fog.fogTypeField())->deliver();
    EXPECT_EQ("a \"b\"", fog.fogType());
}

TEST(Route, ListsAreCopiedOnEveryDelivery) {
    NodeTree tree;
    auto& from = addTo<CoordinateNode>(tree);
    auto& to = addTo<NormalNode>(tree);
    from.addPoint(1.0F, 2.0F, 3.0F);
    Route& route = *tree.addRoute(from, from.point(), to, to.vector());
    route.deliver();
    to.addVector(9.0F, 9.0F, 9.0F);
    route.deliver();
    ASSERT_EQ(1, to.vectorCount());
    static_cast<SFVec3f*>(to.vector().item(0))->setX(5);
    EXPECT_EQ(1, from.pointAt(0)[0]);

    // A node and its instance have one list between them.
    auto& instance = static_cast<CoordinateNode&>(tree.addNode(from.instantiate(), false));
    tree.addRoute(from, from.point(), instance, instance.point())->deliver();
    EXPECT_EQ(1, from.pointCount());
}

TEST(Route, ToSetBindBindsTheNode) {
    SceneGraph scene;
    auto& touch = addTo<TouchSensorNode>(scene);
    auto& view = addTo<ViewpointNode>(scene, "view");
    auto& other = addTo<ViewpointNode>(scene, "other");
    auto& heard = addProbe(scene);
    scene.addRoute(touch, touch.isOverField(), view, view.bindRequestField());
    scene.addRoute(touch, touch.isOverField(), other, other.isBoundField());
    scene.addRoute(view, view.isBoundField(), heard, *heard.in);
    touch.setIsOver(true);
    touch.sendEvent(touch.isOverField());
    EXPECT_THAT(scene.viewpoints(), ElementsAre(&view));
    EXPECT_EQ(1, heard.events);
    touch.setIsOver(false);
    touch.sendEvent(touch.isOverField());
    EXPECT_TRUE(scene.viewpoints().empty());
    EXPECT_EQ(2, heard.events);
}

}  // namespace
}  // namespace nodes
