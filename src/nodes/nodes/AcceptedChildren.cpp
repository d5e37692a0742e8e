#include <algorithm>
#include <cstdint>
#include <initializer_list>

#include "nodes/nodes/Node.h"

namespace nodes {
namespace {

bool standsInGroup(std::int32_t type) {
    return isChildLeafType(type) || isInterpolatorType(type) || isSensorType(type) ||
           isGroupingType(type) || isDynamicGroupType(type) || isBindableType(type);
}

struct Accepted {
    std::int32_t parent;
    /// A group of types that the parent takes; may be null.
    bool (*group)(std::int32_t type);
    std::initializer_list<std::int32_t> types;
};

// A parent that is not here takes no child.
const Accepted kAccepted[] = {
    {kAnchor, standsInGroup, {}},
    {kBillboard, standsInGroup, {}},
    {kCollision, standsInGroup, {}},
    {kGroup, standsInGroup, {}},
    {kLOD, standsInGroup, {}},
    {kSwitch, standsInGroup, {}},
    {kTransform, standsInGroup, {}},
    {kRoot, standsInGroup, {}},
    {kAppearance,
     nullptr,
     {kImageTexture, kMaterial, kMovieTexture, kPixelTexture, kTextureTransform}},
    {kShape, isGeometryType, {kAppearance}},
    {kIndexedFaceSet, nullptr, {kColor, kCoordinate, kNormal, kTextureCoordinate}},
    {kIndexedLineSet, nullptr, {kColor, kCoordinate}},
    {kPointSet, nullptr, {kColor, kCoordinate}},
    {kElevationGrid, nullptr, {kColor, kNormal, kTextureCoordinate}},
    {kText, nullptr, {kFontStyle}},
    {kSound, nullptr, {kAudioClip, kMovieTexture}},
};

}  // namespace

bool Node::acceptsChild(const Node& node) const {
    const auto* row = std::find_if(std::begin(kAccepted), std::end(kAccepted),
                                   [this](const Accepted& one) { return isType(one.parent); });
    if (row == std::end(kAccepted)) {
        return false;
    }
    return (row->group && row->group(node.type())) ||
           std::find(row->types.begin(), row->types.end(), node.type()) != row->types.end();
}

}  // namespace nodes
