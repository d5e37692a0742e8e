#include "nodes/nodes/NodeClasses.h"

namespace nodes {

void ScriptNode::prepareSave() {
    setInitialised(false);
}

}  // namespace nodes
