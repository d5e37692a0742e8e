#include <cstddef>
#include <vector>

#include "nodes/nodes/LocalMatrix.h"
#include "nodes/nodes/NodeClasses.h"

namespace nodes {

void TransformNode::localMatrix(SFMatrix& out) const {
    const SFVec3f& middle = center();
    const SFRotation::Value& turn = rotation().value();
    const SFRotation::Value& stretch = scaleOrientation().value();
    SFMatrix step;
    out.setTranslation(translation().value().data());
    step.setTranslation(middle.x(), middle.y(), middle.z());
    out.multiply(step);
    step.setRotation(turn.data());
    out.multiply(step);
    step.setRotation(stretch.data());
    out.multiply(step);
    step.setScale(scale().value().data());
    out.multiply(step);
    step.setRotation(stretch[0], stretch[1], stretch[2], -stretch[3]);
    out.multiply(step);
    step.setTranslation(-middle.x(), -middle.y(), -middle.z());
    out.multiply(step);
}

// From the top down, so that a Billboard, which needs the place of its parent, finds it made.
void Node::worldMatrix(SFMatrix& out) const {
    std::vector<const Node*> path;
    for (const Node* node = this; node; node = node->parent()) {
        if (hasLocalMatrix(*node)) {
            path.push_back(node);
        }
    }
    out.identity();
    SFMatrix local;
    for (std::size_t i = path.size(); i-- > 0;) {
        localMatrixBelow(*path[i], out, local);
        out.multiply(local);
    }
}

}  // namespace nodes
