#include <array>
#include <cstddef>
#include <vector>

#include "nodes/nodes/LocalMatrix.h"
#include "nodes/nodes/NodeClasses.h"

namespace nodes {
namespace {

/// ANY's product with what stands above it: the last of MATRICES is the topmost.
void multiplyUpwards(const std::vector<std::array<float, 16>>& matrices, SFMatrix& out) {
    for (const std::array<float, 16>& matrix : matrices) {
        SFMatrix product;
        product.fromFloats(matrix.data());
        product.multiply(out);
        out.assign(product);
    }
}

}  // namespace

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

// A Billboard needs the matrix of all that is above it, so that the matrices are made from the top
// down, each once, and multiplied from here up, as the product is defined.
void Node::worldMatrix(SFMatrix& out) const {
    std::vector<const Node*> path;
    for (const Node* node = this; node != nullptr; node = node->parent()) {
        if (hasLocalMatrix(*node)) {
            path.push_back(node);
        }
    }
    std::vector<std::array<float, 16>> matrices(path.size());
    SFMatrix above;
    SFMatrix local;
    for (std::size_t i = path.size(); i-- > 0;) {
        localMatrixBelow(*path[i], above, local);
        local.toFloats(matrices[i].data());
        above.multiply(local);
    }
    out.identity();
    multiplyUpwards(matrices, out);
}

}  // namespace nodes
