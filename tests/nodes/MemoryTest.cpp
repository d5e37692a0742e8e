// Memory that runs out while a world is read, and what a world holds when it is gone.

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "../model/AllocationProbe.h"
#include "nodes/SceneGraph.h"
#include "nodes/reader/VrmlReader.h"

namespace nodes {
namespace {

constexpr char kWorld[] = R"(#VRML V2.0 utf8
PROTO Bolt [ field SFVec3f place 0 0 0 ]
{ Transform { translation IS place children Shape { geometry Sphere { radius .1 } } } }
DEF Arm Transform {
  children [
    Shape {
      appearance Appearance { material DEF Red Material { diffuseColor 1 0 0 } }
      geometry IndexedFaceSet {
        coord DEF Points Coordinate { point [ 0 0 0, 1 0 0, 0 1 0 ] }
        coordIndex [ 0 1 2 -1 ]
      }
    }
    Bolt { place 1 2 3 }
    Switch { whichChoice 0 choice [ DEF Low Group { } DEF High Group { } ] }
  ]
}
Group { children [ USE Arm USE Arm Shape { geometry PointSet { coord USE Points } } ] }
DEF Timer TimeSensor { loop TRUE }
DEF Mover PositionInterpolator { key [ 0 1 ] keyValue [ 0 0 0, 1 1 1 ] }
Viewpoint { description "a view with a description that no string keeps inside" }
Script { url "x.js" field SFNode who USE Arm eventIn SFBool go }
ROUTE Timer.fraction_changed TO Mover.set_fraction
ROUTE Mover.value_changed TO Arm.set_translation
)";

/// Reads the world into a tree, with instances; false if memory ran out on the way.
bool readWorld() {
    try {
        VrmlReader reader;
        const bool isRead = reader.readText(kWorld, nullptr, nullptr);
        NodeTree& tree = reader.tree();
        if (isRead && tree.firstNode()->instantiate(&tree)) {
            tree.findNode("Low")->detach();
        }
        return isRead;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

TEST(Memory, ReadsThatRunOutOfItEndWithoutLoss) {
    ASSERT_TRUE(readWorld());
    const std::size_t before = allocation::LiveBytes();
    for (const bool allFail : {false, true}) {
        for (long n = 1;; ++n) {
            allFail ? allocation::FailFrom(n) : allocation::FailAt(n);
            const bool isRead = readWorld();
            const bool isDone = allocation::CallOff();
            ASSERT_EQ(isDone, isRead) << "allocation " << n;
            ASSERT_EQ(before, allocation::LiveBytes()) << "allocation " << n;
            if (isDone) {
                break;
            }
        }
    }
}

TEST(Memory, ListsHoldNumbersSideBySide) {
    constexpr std::size_t kPoints = 100000;
    MFVec3f points;
    const std::size_t before = allocation::LiveBytes();
    points.reserve(kPoints);
    for (std::size_t i = 0; i < kPoints; ++i) {
        points.add(1.0F, 2.0F, 3.0F);
    }
    EXPECT_LT(allocation::LiveBytes() - before, 13 * kPoints);
}

}  // namespace
}  // namespace nodes
