// The nodes that show one of their children: Switch by its number, LOD by the viewer's distance.

#include <cmath>
#include <cstddef>
#include <span>

#include "nodes/NodeTree.h"

namespace nodes {
namespace {

double distance(const SFVec3f::Value& a, const SFVec3f::Value& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double d = double{a[i]} - double{b[i]};
        sum += d * d;
    }
    return std::sqrt(sum);
}

/// A node's own point, as the world sees it.
SFVec3f::Value inWorld(const Node& node, SFVec3f::Value point) {
    SFMatrix world;
    node.worldMatrix(world);
    world.transform(point.data());
    return point;
}

}  // namespace

void ChoosingNode::initialise() {
    if (!initialised()) {
        for (Node* child = firstChild(); child; child = child->nextSibling()) {
            stage(*child);
        }
        setInitialised(true);
    }
}

void ChoosingNode::prepareSave() {
    if (initialised()) {
        giveBackStaged();
        setInitialised(false);
    }
}

void SwitchNode::eventReceived() {
    hideStaged();
    if (Node* chosen = stagedAt(whichChoice())) {
        showStaged(*chosen);
        chosen->initialise();
    }
}

void LODNode::eventReceived() {
    if (!scene()) {
        return;
    }
    hideStaged();
    const ViewpointNode& viewer = scene()->viewer();
    const double away =
        distance(inWorld(viewer, viewer.position().value()), inWorld(*this, center().value()));
    int level = 0;
    for (const float limit : range().values()) {
        if (limit > away) {
            break;
        }
        ++level;
    }
    Node* chosen = stagedAt(level);
    if (!chosen) {
        chosen = stagedAt(stagedCount() - 1);
    }
    if (chosen) {
        showStaged(*chosen);
        chosen->initialise();
    }
}

}  // namespace nodes
