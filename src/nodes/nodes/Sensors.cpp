#include <cstddef>

#include "nodes/NodeTree.h"
#include "nodes/nodes/Clock.h"

namespace nodes {
namespace {

/// Whether POINT stands in the box, its sides included.
bool holds(const SFVec3f::Value& center, const SFVec3f::Value& size, const SFVec3f::Value& point) {
    for (std::size_t i = 0; i < 3; ++i) {
        if (!(center[i] - size[i] / 2 <= point[i] && point[i] <= center[i] + size[i] / 2)) {
            return false;
        }
    }
    return true;
}

}  // namespace

void DragSensorNode::initialise() {
    setIsActive(false);
}

void ProximitySensorNode::initialise() {
    setInRegion(false);
}

void ProximitySensorNode::eventReceived() {
    if (!enabled() || !scene()) {
        return;
    }
    const bool inside =
        holds(center().value(), size().value(), scene()->viewer().position().value());
    if (inside == inRegion()) {
        return;
    }
    setInRegion(inside);
    SFTime& time = inside ? enterTimeField() : exitTimeField();
    time.setValue(currentTime());
    sendEvent(time);
    setIsActive(inside);
    sendEvent(isActiveField());
}

}  // namespace nodes
