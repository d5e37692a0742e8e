#include <string>

#include "nodes/SceneGraph.h"
#include "nodes/nodes/ReadScope.h"

namespace nodes {

void InlineNode::initialise() {
    if (instanceOf() || initialised()) {
        return;
    }
    const ReadScope scope(nullptr);
    SceneGraph world;
    for (int i = 0; i < urlCount(); ++i) {
        const std::string path = urlAt(i);
        if (ReadScope::mayInline(path.c_str()) &&
            world.load(path.c_str(), true, nullptr, nullptr) &&
            ReadScope::addNodes(world.nodeCount())) {
            world.moveTo(*this);
        }
    }
    setInitialised(true);
}

/// What is saved is where the world comes from, not the world.
void InlineNode::prepareSave() {
    setInitialised(false);
    deleteChildren();
}

}  // namespace nodes
