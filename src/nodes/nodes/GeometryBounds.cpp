// The boxes of geometries and the numbers of their polygons.

#include <algorithm>
#include <cstdint>
#include <limits>

#include "nodes/nodes/NodeClasses.h"
#include "nodes/nodes/ReadScope.h"

namespace nodes {
namespace {

/// Counts that no 32 bits hold end at the largest.
std::int32_t polygons(double count) {
    return static_cast<std::int32_t>(
        std::min<double>(count, std::numeric_limits<std::int32_t>::max()));
}

/// The Coordinate child of a geometry, or the node that stands behind a reference to one.
const CoordinateNode* coordinates(const Node& geometry) {
    const Node* child = geometry.childOfType(kCoordinate);
    if (child != nullptr && child->instanceOf() != nullptr) {
        child = child->instanceOf();
    }
    return child != nullptr && child->isType(kCoordinate)
               ? static_cast<const CoordinateNode*>(child)
               : nullptr;
}

/// The box of the points, which many geometries may share: found once in each pass.
const BoundingBox& boundsOf(const CoordinateNode& node) {
    const std::uint64_t pass = ReadScope::pass();
    if (pass == 0 || node.bounds.pass != pass) {
        node.bounds = {pass, {}};
        for (const SFVec3f::Value& point : node.point().values()) {
            node.bounds.box.add(point.data());
        }
    }
    return node.bounds.box;
}

void takePointBounds(BoxedGeometryNode& geometry) {
    const CoordinateNode* node = coordinates(geometry);
    geometry.setBBox(node ? boundsOf(*node) : BoundingBox());
}

void takeRoundBounds(BoxedGeometryNode& geometry, float radius, float halfHeight) {
    geometry.setBBoxCenter(0, 0, 0);
    geometry.setBBoxSize(radius, halfHeight, radius);
}

}  // namespace

void BoxNode::initialise() {
    computeBounds();
}

void BoxNode::computeBounds() {
    const SFVec3f& whole = size();
    setBBoxCenter(0, 0, 0);
    setBBoxSize(whole.x() / 2, whole.y() / 2, whole.z() / 2);
}

std::int32_t BoxNode::polygonCount() const {
    return 6;
}

void ConeNode::initialise() {
    computeBounds();
}

void ConeNode::computeBounds() {
    takeRoundBounds(*this, bottomRadius(), height() / 2);
}

std::int32_t ConeNode::polygonCount() const {
    return (side() ? segments : 0) + (bottom() ? segments : 0);
}

void CylinderNode::initialise() {
    computeBounds();
}

void CylinderNode::computeBounds() {
    takeRoundBounds(*this, radius(), height() / 2);
}

std::int32_t CylinderNode::polygonCount() const {
    return (top() ? segments : 0) + (side() ? segments : 0) + (bottom() ? segments : 0);
}

void SphereNode::initialise() {
    computeBounds();
}

void SphereNode::computeBounds() {
    takeRoundBounds(*this, radius(), radius());
}

std::int32_t SphereNode::polygonCount() const {
    return segments * segments;
}

void TextNode::initialise() {
    computeBounds();
}

void TextNode::computeBounds() {
    const auto strings = string().values();
    const float length = strings.empty() ? 0 : static_cast<float>(strings[0].size());
    if (length == 0) {
        setBBox(BoundingBox());
        return;
    }
    setBBoxCenter(-0.25F * length, 0.5F, 0);
    setBBoxSize(0.25F * length, 0.5F, 0.5F);
}

/// The bounds of a text follow its font.
void FontStyleNode::initialise() {
    if (parent() != nullptr && parent()->isType(kText)) {
        parent()->initialise();
    }
}

void IndexedFaceSetNode::initialise() {
    if (scene() != nullptr && !initialised()) {
        computeBounds();
        setInitialised(true);
    }
}

void IndexedFaceSetNode::computeBounds() {
    takePointBounds(*this);
}

std::int32_t IndexedFaceSetNode::polygonCount() const {
    const auto indices = coordIndex().values();
    if (indices.empty() || coordinates(*this) == nullptr) {
        return 0;
    }
    // The last index ends a face, whatever it is.
    return static_cast<std::int32_t>(std::count(indices.begin(), indices.end() - 1, -1) + 1);
}

void PointSetNode::initialise() {
    if (!initialised()) {
        computeBounds();
        setInitialised(true);
    }
}

void PointSetNode::computeBounds() {
    takePointBounds(*this);
}

void IndexedLineSetNode::initialise() {
    if (!initialised()) {
        computeBounds();
        setInitialised(true);
    }
}

void ElevationGridNode::initialise() {
    if (!initialised()) {
        computeBounds();
        setInitialised(true);
    }
}

void ElevationGridNode::computeBounds() {
    const float x = static_cast<float>(xDimension()) * xSpacing();
    const float z = static_cast<float>(zDimension()) * zSpacing();
    setBBoxCenter(x / 2, 0, z / 2);
    setBBoxSize(x, 0, z);
}

std::int32_t ElevationGridNode::polygonCount() const {
    const double x = xDimension();
    const double z = zDimension();
    return x >= 1 && z >= 1 ? polygons((z * 4 - 4) * (x - 1)) : 0;
}

void ExtrusionNode::initialise() {
    if (initialised()) {
        return;
    }
    if (crossSectionCount() == 0) {
        addCrossSection(1.0F, 1.0F);
        addCrossSection(1.0F, -1.0F);
        addCrossSection(-1.0F, -1.0F);
        addCrossSection(-1.0F, 1.0F);
        addCrossSection(1.0F, 1.0F);
    }
    if (spineCount() == 0) {
        addSpine(0.0F, 0.0F, 0.0F);
        addSpine(0.0F, 1.0F, 0.0F);
    }
    computeBounds();
    setInitialised(true);
}

std::int32_t ExtrusionNode::polygonCount() const {
    return polygons((static_cast<double>(spineCount()) + 1) * crossSectionCount());
}

}  // namespace nodes
