#include "nodes/nodes/Bounds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "nodes/nodes/LocalMatrix.h"
#include "nodes/nodes/NodeClasses.h"

namespace nodes {

// The upper end starts above zero by the smallest float, so that a box of points that are all
// negative ends there.
BoundingBox::BoundingBox() {
    std::fill(std::begin(m_min), std::end(m_min), std::numeric_limits<float>::max());
    std::fill(std::begin(m_max), std::end(m_max), std::numeric_limits<float>::min());
}

void BoundingBox::add(const float point[3]) {
    for (int i = 0; i < 3; ++i) {
        m_min[i] = std::min(m_min[i], point[i]);
        m_max[i] = std::max(m_max[i], point[i]);
    }
    m_count += m_count < std::numeric_limits<std::int32_t>::max() ? 1 : 0;
}

namespace {

constexpr unsigned kCorners = 8;

std::array<float, 3> cornerOf(const float center[3], const float size[3], unsigned corner) {
    std::array<float, 3> point;
    for (unsigned i = 0; i < 3; ++i) {
        point[i] = (corner >> i & 1U) != 0 ? center[i] + size[i] : center[i] - size[i];
    }
    return point;
}

}  // namespace

void BoundingBox::addBox(const float center[3], const float size[3]) {
    for (unsigned corner = 0; corner < kCorners; ++corner) {
        add(cornerOf(center, size, corner).data());
    }
}

void BoundingBox::center(float out[3]) const {
    for (int i = 0; i < 3; ++i) {
        out[i] = m_count == 0 ? 0 : (m_min[i] + m_max[i]) / 2;
    }
}

void BoundingBox::size(float out[3]) const {
    for (int i = 0; i < 3; ++i) {
        out[i] = m_count == 0 ? -1 : std::abs((m_min[i] - m_max[i]) / 2);
    }
}

void BoundsInterface::setBBoxSize(float x, float y, float z) {
    bboxSizeField().set(x, y, z);
}

void BoundsInterface::setBBoxSize(const float in[3]) {
    bboxSizeField().set(in);
}

void BoundsInterface::getBBoxSize(float out[3]) {
    bboxSizeField().get(out);
}

void BoundsInterface::setBBoxCenter(float x, float y, float z) {
    bboxCenterField().set(x, y, z);
}

void BoundsInterface::setBBoxCenter(const float in[3]) {
    bboxCenterField().set(in);
}

void BoundsInterface::getBBoxCenter(float out[3]) {
    bboxCenterField().get(out);
}

void BoundsInterface::setBBox(const BoundingBox& box) {
    float value[3];
    box.center(value);
    setBBoxCenter(value);
    box.size(value);
    setBBoxSize(value);
}

void BoxedGeometryNode::setBBox(const BoundingBox& box) {
    float value[3];
    box.center(value);
    setBBoxCenter(value);
    box.size(value);
    setBBoxSize(value);
}

namespace {

/// Adds the corners of a geometry's box, placed by WORLD. A geometry without a box adds nothing.
void addGeometry(Node& node, const SFMatrix& world, BoundingBox& box) {
    node.computeBounds();
    auto* geometry = dynamic_cast<BoxedGeometryNode*>(&node);
    if (!geometry) {
        return;
    }
    float center[3];
    float size[3];
    geometry->getBBoxCenter(center);
    geometry->getBBoxSize(size);
    if (size[0] < 0 || size[1] < 0 || size[2] < 0) {
        return;
    }
    for (unsigned corner = 0; corner < kCorners; ++corner) {
        std::array<float, 3> point = cornerOf(center, size, corner);
        world.transform(point.data());
        box.add(point.data());
    }
}

/// The place of the children of a node, carried along on a walk down the tree.
class PlaceStack {
  public:
    explicit PlaceStack(const Node& top) : m_top(top) { top.worldMatrix(m_world); }

    const SFMatrix& world() const { return m_world; }

    void enter(const Node& node) {
        if (!hasLocalMatrix(node)) {
            return;
        }
        m_above.emplace_back().node = &node;
        m_world.toFloats(m_above.back().world.data());
        SFMatrix local;
        localMatrixBelow(node, m_world, local);
        m_world.multiply(local);
    }

    void leave(const Node& node) {
        if (!m_above.empty() && m_above.back().node == &node) {
            m_world.fromFloats(m_above.back().world.data());
            m_above.pop_back();
        }
    }

    /// The node behind NODE below the top; null at the end.
    Node* next(Node* node) {
        if (Node* child = node->firstChild()) {
            return child;
        }
        for (; node != &m_top; node = node->parent()) {
            leave(*node);
            if (Node* sibling = node->nextSibling()) {
                return sibling;
            }
        }
        return nullptr;
    }

  private:
    struct Above {
        const Node* node;
        std::array<float, 16> world;
    };

    const Node& m_top;
    SFMatrix m_world;
    std::vector<Above> m_above;
};

}  // namespace

void BoundedNode::computeBBox() {
    BoundingBox box;
    PlaceStack place(*this);
    for (Node* node = firstChild(); node; node = place.next(node)) {
        place.enter(*node);
        if (node->isGeometry()) {
            addGeometry(*node, place.world(), box);
        }
    }
    setBBox(box);
}

}  // namespace nodes
