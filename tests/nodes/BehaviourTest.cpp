#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "TestTree.h"
#include "nodes/nodes/Clock.h"

namespace nodes {
namespace {

using ::testing::ElementsAre;
using ::testing::Pointwise;
using Vector = std::array<float, 3>;

MATCHER(IsNear, "") {
    return std::abs(std::get<0>(arg) - std::get<1>(arg)) < 1e-5F;
}

/// Writes down every event of the event-outs of one node, on a clock of its own.
class Behaviour : public ::testing::Test {
  protected:
    Behaviour() {
        setClockSource([] { return g_time; });
        setLatestEvaluation(0);
    }
    ~Behaviour() override { setClockSource(nullptr); }

    void listen(Node& node) {
        for (int i = 0; i < node.eventOutCount(); ++i) {
            Field& out = *node.eventOutAt(i);
            auto heard = std::make_unique<Probe>([this, &out](Probe&) {
                events.push_back(std::string(out.name()) + " " + out.asText());
            });
            Probe& probe = *heard;
            scene.addNode(std::move(heard), false);
            scene.addRoute(node, out, probe, *probe.in);
        }
    }

    std::vector<std::string> eventsOf(Node& node, double time) {
        events.clear();
        g_time = time;
        node.eventReceived();
        return events;
    }

    ViewpointNode& viewAt(float x, float y, float z) {
        auto& view = addTo<ViewpointNode>(scene);
        view.setPosition(x, y, z);
        scene.setBound(view, true);
        return view;
    }

    static double g_time;
    SceneGraph scene;
    std::vector<std::string> events;
};

double Behaviour::g_time = 0;

TEST_F(Behaviour, ATimerWithoutLoopAndTimesStopsAtOnce) {
    auto& timer = addTo<TimeSensorNode>(scene);
    listen(timer);
    EXPECT_THAT(eventsOf(timer, 1000),
                ElementsAre("isActive TRUE", "cycleTime 1000.000000", "isActive FALSE"));
    timer.setEnabled(false);
    EXPECT_THAT(eventsOf(timer, 1001), ElementsAre());
}

TEST_F(Behaviour, ATimerRunsThroughItsCycles) {
    auto& timer = addTo<TimeSensorNode>(scene);
    listen(timer);
    timer.setLoop(true);
    timer.setStartTime(100.0);
    timer.setCycleInterval(4.0);
    EXPECT_THAT(eventsOf(timer, 99), ElementsAre());
    // It starts by the time of the evaluation before.
    EXPECT_THAT(eventsOf(timer, 101), ElementsAre());
    EXPECT_THAT(eventsOf(timer, 102), ElementsAre("isActive TRUE", "cycleTime 101.000000",
                                                  "fraction 0.5", "time 102.000000"));
    // Whole cycles end with 1, and each that has passed is told.
    EXPECT_THAT(eventsOf(timer, 112), ElementsAre("fraction 1", "cycleTime 112.000000",
                                                  "cycleTime 112.000000", "time 112.000000"));
    timer.setStopTime(113.0);
    EXPECT_THAT(eventsOf(timer, 113), ElementsAre("fraction 0.25", "time 113.000000"));
    EXPECT_THAT(eventsOf(timer, 114), ElementsAre("isActive FALSE"));
    EXPECT_THAT(eventsOf(timer, 115), ElementsAre());
    timer.initialise();
    EXPECT_EQ(-1, timer.cycleTime());
}

TEST_F(Behaviour, ATimerThatIsDisabledStops) {
    auto& timer = addTo<TimeSensorNode>(scene);
    listen(timer);
    timer.setLoop(true);
    EXPECT_EQ("isActive TRUE", eventsOf(timer, 10).front());
    timer.setEnabled(false);
    EXPECT_THAT(eventsOf(timer, 11), ElementsAre("isActive FALSE"));
}

TEST_F(Behaviour, ATimerWithoutACycleStaysInactive) {
    constexpr double kNoCycles[] = {0, -1, std::numeric_limits<double>::infinity(),
                                    std::numeric_limits<double>::quiet_NaN()};
    for (const double interval : kNoCycles) {
        auto& timer = addTo<TimeSensorNode>(scene);
        listen(timer);
        timer.setLoop(true);
        timer.setCycleInterval(interval);
        EXPECT_THAT(eventsOf(timer, 10), ElementsAre());
        timer.setCycleInterval(1.0);
        EXPECT_EQ("isActive TRUE", eventsOf(timer, 11).front());
        timer.setCycleInterval(interval);
        EXPECT_THAT(eventsOf(timer, 12), ElementsAre("isActive FALSE"));
    }
}

TEST_F(Behaviour, ATimerThatSleptForAgesDoesNotTellThemAll) {
    auto& timer = addTo<TimeSensorNode>(scene);
    listen(timer);
    timer.setLoop(true);
    timer.setCycleInterval(1e-9);
    eventsOf(timer, 1000);
    const std::vector<std::string> told = eventsOf(timer, 1e9);
    EXPECT_GT(told.size(), 100U);
    EXPECT_LT(told.size(), 10000U);
    EXPECT_EQ("cycleTime 1000000000.000000", told[told.size() - 2]);
    EXPECT_EQ("time 1000000000.000000", told.back());
    EXPECT_EQ(1e9, timer.cycleTime());
    timer.setCycleInterval(std::numeric_limits<double>::denorm_min());
    eventsOf(timer, 2e9);
    EXPECT_TRUE(std::isfinite(timer.fraction()));
}

TEST_F(Behaviour, ATimerMovesATransform) {
    auto& timer = addTo<TimeSensorNode>(scene, "timer");
    auto& mover = addTo<PositionInterpolatorNode>(scene, "mover");
    auto& arm = addTo<TransformNode>(scene, "arm");
    timer.setLoop(true);
    mover.addKey(0.0F);
    mover.addKey(1.0F);
    mover.addKeyValue(0.0F, 0.0F, 0.0F);
    mover.addKeyValue(2.0F, 4.0F, 8.0F);
    ASSERT_TRUE(scene.addRoute("timer", "fraction_changed", "mover", "set_fraction"));
    ASSERT_TRUE(scene.addRoute("mover", "value_changed", "arm", "set_translation"));
    eventsOf(timer, 10.25);
    EXPECT_THAT(arm.translation().value(), ElementsAre(0.5F, 1, 2));
}

TEST_F(Behaviour, InterpolatorsStayBetweenTheirKeys) {
    auto& scalar = addTo<ScalarInterpolatorNode>(scene);
    listen(scalar);
    const auto at = [&](float fraction) {
        scalar.setFraction(fraction);
        return eventsOf(scalar, 0);
    };
    scalar.addKey(0.0F);
    scalar.addKeyValue(10.0F);
    EXPECT_THAT(at(0), ElementsAre());
    for (const float key : {0.5F, 0.5F, 1.0F}) {
        scalar.addKey(key);
    }
    scalar.addKeyValue(20.0F);
    scalar.addKeyValue(30.0F);
    EXPECT_THAT(at(0.25F), ElementsAre("value 15"));
    // The first of two segments counts at their common end, equal keys or not.
    EXPECT_THAT(at(0.5F), ElementsAre("value 20"));
    EXPECT_THAT(at(1.5F), ElementsAre());
    EXPECT_THAT(at(-0.5F), ElementsAre());
    EXPECT_THAT(at(std::numeric_limits<float>::quiet_NaN()), ElementsAre());
    // The last key has no value.
    EXPECT_THAT(at(0.75F), ElementsAre());
    EXPECT_EQ(20, scalar.value());
    // A step: the later of two equal keys.
    scalar.key().clear();
    scalar.addKey(0.5F);
    scalar.addKey(0.5F);
    EXPECT_THAT(at(0.5F), ElementsAre("value 20"));
}

TEST_F(Behaviour, RotationsAreInterpolatedAsFourNumbers) {
    auto& turner = addTo<OrientationInterpolatorNode>(scene);
    turner.addKey(0.0F);
    turner.addKey(1.0F);
    turner.addKeyValue(0.0F, 0.0F, 1.0F, 0.0F);
    turner.addKeyValue(0.0F, 1.0F, 0.0F, 3.0F);
    turner.setFraction(0.5F);
    turner.eventReceived();
    EXPECT_THAT(turner.value().value(),
                Pointwise(IsNear(), std::array<float, 4>{0, 0.70710678F, 0.70710678F, 1.5F}));
}

TEST_F(Behaviour, AProximitySensorKnowsWhetherTheViewerIsInside) {
    auto& sensor = addTo<ProximitySensorNode>(scene);
    listen(sensor);
    auto& view = viewAt(1, 2, 3);
    sensor.setCenter(1.0F, 2.0F, 3.0F);
    EXPECT_THAT(eventsOf(sensor, 5), ElementsAre("enterTime 5.000000", "isActive TRUE"));
    EXPECT_THAT(eventsOf(sensor, 6), ElementsAre());
    view.setPosition(1.0F, 2.0F, 4.0F);
    EXPECT_THAT(eventsOf(sensor, 7), ElementsAre("exitTime 7.000000", "isActive FALSE"));
    sensor.setSize(0.0F, 0.0F, 2.0F);
    EXPECT_EQ("enterTime 8.000000", eventsOf(sensor, 8).front());
    sensor.setEnabled(false);
    view.setPosition(9.0F, 9.0F, 9.0F);
    EXPECT_THAT(eventsOf(sensor, 9), ElementsAre());
    sensor.initialise();
    EXPECT_FALSE(sensor.inRegion());
    // Where no viewpoint is bound, the viewer stands at the origin.
    auto& other = addTo<ProximitySensorNode>(scene);
    scene.setBound(view, false);
    other.eventReceived();
    EXPECT_TRUE(other.inRegion());
}

TEST_F(Behaviour, AudioClipsTellTheirStart) {
    auto& clip = addTo<AudioClipNode>(scene);
    listen(clip);
    clip.setStartTime(10.0);
    clip.setStopTime(20.0);
    EXPECT_THAT(eventsOf(clip, 9), ElementsAre("isActive TRUE"));
    EXPECT_FALSE(clip.isActive());
    EXPECT_THAT(eventsOf(clip, 11), ElementsAre("isActive TRUE"));
    EXPECT_THAT(eventsOf(clip, 12), ElementsAre());
    clip.setStopTime(0.0);
    clip.initialise();
    EXPECT_THAT(eventsOf(clip, 9), ElementsAre());
    clip.setLoop(true);
    EXPECT_THAT(eventsOf(clip, 10), ElementsAre("isActive TRUE"));
}

std::vector<std::string> namesOf(const Node& node) {
    std::vector<std::string> names;
    for (const Node* child = node.firstChild(); child; child = child->nextSibling()) {
        names.push_back(child->nameText());
    }
    return names;
}

TEST_F(Behaviour, ASwitchShowsOneOfItsChildren) {
    auto& choice = addTo<SwitchNode>(scene);
    for (const char* name : {"a", "b", "c"}) {
        addTo<TransformNode>(choice, name);
    }
    scene.initialise(nullptr, nullptr);
    choice.initialise();
    EXPECT_EQ(3, choice.stagedCount());
    EXPECT_THAT(namesOf(choice), ElementsAre("a", "b", "c"));
    const std::pair<int, std::vector<std::string>> cases[] = {{1, {"b"}}, {2, {"c"}}, {-1, {}},
                                                              {3, {}},    {0, {"a"}}, {1, {"b"}}};
    for (const auto& [which, shown] : cases) {
        choice.setWhichChoice(which);
        choice.eventReceived();
        EXPECT_EQ(shown, namesOf(choice)) << which;
        EXPECT_EQ(3, choice.stagedCount());
    }
    choice.prepareSave();
    EXPECT_THAT(namesOf(choice), ElementsAre("a", "b", "c"));
    EXPECT_EQ(0, choice.stagedCount());
}

TEST_F(Behaviour, StagedChildrenMayLeaveAndDie) {
    auto& choice = addTo<SwitchNode>(scene);
    std::vector<TransformNode*> children;
    for (const char* name : {"a", "b", "c", "d"}) {
        children.push_back(&addTo<TransformNode>(choice, name));
    }
    auto& elsewhere = addTo<GroupNode>(scene, "elsewhere");
    auto& timer = addTo<TouchSensorNode>(scene);
    scene.addRoute(timer, timer.hitPointField(), *children[2], children[2]->translationField());
    choice.initialise();
    choice.eventReceived();
    children[0]->detach().reset();
    elsewhere.addChild(*children[1], false);
    EXPECT_EQ(2, choice.stagedCount());
    choice.setWhichChoice(0);
    choice.eventReceived();
    EXPECT_THAT(namesOf(choice), ElementsAre("c"));
    EXPECT_THAT(namesOf(elsewhere), ElementsAre("b"));
    // What has been hidden and shown again still has its routes.
    EXPECT_EQ(1U, scene.routes().size());
    choice.setWhichChoice(-1);
    choice.eventReceived();
    choice.detach().reset();
    EXPECT_TRUE(scene.routes().empty());
}

// A USE stands behind its siblings once it is an instance; the choice counts as the file does.
TEST_F(Behaviour, ASwitchCountsItsReferencesWhereTheyWere) {
    auto& shared = addTo<TransformNode>(scene, "shared");
    auto& choice = addTo<SwitchNode>(scene);
    choice.addChild(shared.makeReference(), false);
    addTo<TransformNode>(choice, "own");
    for (int pass = 0; pass < 2; ++pass) {
        scene.initialise(nullptr, nullptr);
        for (const int which : {0, 1}) {
            choice.setWhichChoice(which);
            choice.eventReceived();
            EXPECT_THAT(namesOf(choice), ElementsAre(which == 0 ? "shared" : "own"));
        }
        choice.prepareSave();
        EXPECT_THAT(namesOf(choice), ElementsAre("shared", "own"));
    }
}

TEST_F(Behaviour, AnLodChoosesByDistance) {
    auto& place = addTo<TransformNode>(scene);
    place.setTranslation(0.0F, 0.0F, 100.0F);
    auto& lod = addTo<LODNode>(place);
    lod.addRange(10.0F);
    addTo<GroupNode>(lod, "near");
    addTo<GroupNode>(lod, "far");
    lod.initialise();
    auto& view = viewAt(0, 0, 105);
    const auto shownFrom = [&](float x, float y, float z) {
        view.setPosition(x, y, z);
        lod.eventReceived();
        return namesOf(lod);
    };
    EXPECT_THAT(shownFrom(0, 0, 105), ElementsAre("near"));
    EXPECT_THAT(shownFrom(6, 8, 100), ElementsAre("far"));
    EXPECT_THAT(shownFrom(0, 0, 0), ElementsAre("far"));
    lod.addRange(20.0F);
    EXPECT_THAT(shownFrom(0, 0, 0), ElementsAre("far"));
    LODNode outside;
    addTo<GroupNode>(outside);
    outside.initialise();
    outside.eventReceived();
    EXPECT_EQ(1, outside.childCount());
}

Vector forwardOf(const BillboardNode& billboard) {
    SFMatrix matrix;
    billboard.localMatrix(matrix);
    return moved(matrix, {0, 0, 1});
}

TEST_F(Behaviour, ABillboardTurnsAboutItsAxis) {
    auto& billboard = addTo<BillboardNode>(scene);
    auto& view = viewAt(-5, 3, 0);
    EXPECT_THAT(forwardOf(billboard), Pointwise(IsNear(), Vector{-1, 0, 0}));
    view.setPosition(0.0F, 0.0F, 5.0F);
    EXPECT_THAT(forwardOf(billboard), Pointwise(IsNear(), Vector{0, 0, 1}));
    // From above there is nothing to turn to.
    view.setPosition(0.0F, 5.0F, 0.0F);
    EXPECT_THAT(forwardOf(billboard), Pointwise(IsNear(), Vector{0, 0, 1}));
    // What stands above it moves it.
    auto& place = addTo<TransformNode>(scene);
    place.setTranslation(5.0F, 0.0F, 0.0F);
    auto& inner = addTo<BillboardNode>(place);
    view.setPosition(0.0F, 0.0F, 0.0F);
    EXPECT_THAT(forwardOf(inner), Pointwise(IsNear(), Vector{-1, 0, 0}));
    SFMatrix world;
    addTo<ShapeNode>(inner).worldMatrix(world);
    EXPECT_THAT(moved(world, {0, 0, 1}), Pointwise(IsNear(), Vector{4, 0, 0}));
}

TEST_F(Behaviour, ABillboardWithoutAnAxisFacesAViewerThatLooksAtIt) {
    auto& billboard = addTo<BillboardNode>(scene);
    billboard.setAxisOfRotation(0.0F, 0.0F, 0.0F);
    auto& view = viewAt(0, 0, 0);
    const Vector forward = {0, 0, 1};
    const Vector places[] = {{0, 0, 5}, {0, 0, -5}, {5, 0, 0}, {0, 5, 0}, {1, 2, 2}, {-3, 1, -4}};
    for (const Vector& place : places) {
        view.setPosition(place.data());
        Vector direction = place;
        normalize3(direction.data());
        Vector axis = {-place[1], place[0], 0};
        if (length3(axis.data()) == 0) {
            axis = {0, 1, 0};
        }
        view.setOrientation(axis.data(), angleBetween(forward.data(), place.data()));
        EXPECT_THAT(forwardOf(billboard), Pointwise(IsNear(), direction));
    }
    // Its top is where the viewer's is.
    view.setPosition(0.0F, 0.0F, 5.0F);
    for (const float roll : {0.5F, -0.5F, 3.0F}) {
        view.setOrientation(0.0F, 0.0F, 1.0F, roll);
        SFMatrix matrix;
        billboard.localMatrix(matrix);
        EXPECT_THAT(moved(matrix, {0, 1, 0}),
                    Pointwise(IsNear(), Vector{-std::sin(roll), std::cos(roll), 0}));
    }
}

TEST_F(Behaviour, ABillboardIsNeverPlacedByNothing) {
    auto& billboard = addTo<BillboardNode>(scene);
    auto& view = viewAt(0, 0, 0);
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const Vector axes[] = {{0, 1, 0}, {0, 0, 0}, {0, 0, 1}, {1e30F, 1e30F, 0}, {kInfinity, 0, 0}};
    const Vector places[] = {
        {0, 0, 0}, {0, 3, 0}, {0, 0, -1}, {kInfinity, 0, 0}, {1e38F, 1e38F, 0}};
    for (const Vector& axis : axes) {
        billboard.setAxisOfRotation(axis.data());
        for (const Vector& place : places) {
            view.setPosition(place.data());
            for (const float value : forwardOf(billboard)) {
                EXPECT_TRUE(std::isfinite(value));
            }
        }
    }
}

}  // namespace
}  // namespace nodes
