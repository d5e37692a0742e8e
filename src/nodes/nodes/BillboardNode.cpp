#include <algorithm>
#include <array>
#include <cmath>

#include "nodes/NodeTree.h"
#include "nodes/nodes/LocalMatrix.h"

namespace nodes {
namespace {

using Vector = std::array<float, 3>;

constexpr Vector kForward = {0, 0, 1};
constexpr Vector kUp = {0, 1, 0};
/// 2 pi as a float.
constexpr float kFullTurn = 6.2831855F;

Vector cross(const Vector& a, const Vector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

bool isZero(const Vector& v) {
    return v[0] == 0 && v[1] == 0 && v[2] == 0;
}

/// Turns about AXIS until the forward direction is square to both the axis and the line of sight.
/// There is nothing to turn to when the line of sight is along the axis.
void turnAbout(const Vector& axis, const Vector& sight, SFMatrix& out) {
    Vector side = cross(axis, sight);
    if (isZero(side)) {
        out.identity();
        return;
    }
    normalize3(side.data());
    Vector front = cross(axis, side);
    normalize3(front.data());
    SFRotation(axis[0], axis[1], axis[2], -angleBetween(kForward.data(), front.data()))
        .toMatrix(out);
}

/// Turns the forward direction to the viewer and the upward one to the viewer's.
void turnToViewer(const ViewpointNode& viewer, const Vector& sight, SFMatrix& out) {
    const Vector toViewer = {-sight[0], -sight[1], -sight[2]};
    Vector axis = cross(kForward, toViewer);
    if (isZero(axis)) {
        axis = kUp;  // exactly in front, or exactly behind: any axis square to the line will do
    }
    const SFRotation facing(axis[0], axis[1], axis[2],
                            angleBetween(kForward.data(), toViewer.data()));
    Vector up = kUp;
    facing.rotate(up.data());
    Vector viewerForward = kForward;
    viewer.orientation().rotate(viewerForward.data());
    Vector viewerUp = kUp;
    viewer.orientation().rotate(viewerUp.data());
    float angle = angleBetween(viewerUp.data(), up.data());
    if (viewerUp[0] > 0) {
        angle = kFullTurn - angle;
    }
    SFRotation(viewerForward[0], viewerForward[1], viewerForward[2], angle).toMatrix(out);
    SFMatrix facingMatrix;
    facing.toMatrix(facingMatrix);
    out.multiply(facingMatrix);
}

bool isFinite(const SFMatrix& matrix) {
    float values[16];
    matrix.toFloats(values);
    return std::all_of(std::begin(values), std::end(values),
                       [](float value) { return std::isfinite(value); });
}

void billboardMatrix(const BillboardNode& node, const SFMatrix& parentWorld, SFMatrix& out) {
    out.identity();
    if (!node.scene()) {
        return;
    }
    const ViewpointNode& viewer = node.scene()->viewer();
    Vector sight = {0, 0, 0};
    parentWorld.transform(sight.data());
    for (std::size_t i = 0; i < 3; ++i) {
        sight[i] -= viewer.position().value()[i];
    }
    normalize3(sight.data());
    const Vector& axis = node.axisOfRotation().value();
    if (length3(axis.data()) > 0) {
        turnAbout(axis, sight, out);
    } else {
        turnToViewer(viewer, sight, out);
    }
    if (!isFinite(out)) {
        out.identity();
    }
}

}  // namespace

void BillboardNode::localMatrix(SFMatrix& out) const {
    SFMatrix above;
    if (parent()) {
        parent()->worldMatrix(above);
    }
    billboardMatrix(*this, above, out);
}

bool hasLocalMatrix(const Node& node) {
    return node.isType(kTransform) || node.isType(kBillboard);
}

void localMatrixBelow(const Node& node, const SFMatrix& parentWorld, SFMatrix& out) {
    if (node.isType(kBillboard)) {
        billboardMatrix(static_cast<const BillboardNode&>(node), parentWorld, out);
    } else {
        static_cast<const TransformNode&>(node).localMatrix(out);
    }
}

}  // namespace nodes
