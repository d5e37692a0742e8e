#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>

#include "nodes/nodes/Node.h"
#include "nodes/reader/Keywords.h"

namespace nodes {

/// What stands behind a field keyword.
enum class ValueForm : std::uint8_t {
    kBool,
    kInt,
    kFloat,
    kTime,
    kString,
    kVec2,
    kVec3,
    kColor,
    kRotation,
    kInts,
    kFloats,
    kStrings,
    kVec2s,
    kVec3s,
    kColors,
    kRotations,
    kImage,
    /// One node.
    kNode,
    /// One node, or any number of them between brackets.
    kNodes,
    // Declarations of a Script.
    kScriptField,
    kScriptEventIn,
    kScriptEventOut,
};

/// Sets of node types, by number.
using NodeSet = std::uint64_t;
constexpr NodeSet setOf(std::initializer_list<NodeType> types) {
    NodeSet set = 0;
    for (const NodeType type : types) {
        set |= NodeSet{1} << static_cast<unsigned>(type);
    }
    return set;
}
constexpr bool holds(NodeSet set, std::int32_t type) {
    return (set >> static_cast<unsigned>(type) & 1) != 0;
}
/// The nodes that may stand at the top level of a file and among children.
constexpr NodeSet kChildTypes = setOf({kAnchor,
                                       kBillboard,
                                       kCollision,
                                       kGroup,
                                       kInline,
                                       kLOD,
                                       kSwitch,
                                       kTransform,
                                       kColorInterpolator,
                                       kCoordinateInterpolator,
                                       kNormalInterpolator,
                                       kOrientationInterpolator,
                                       kPositionInterpolator,
                                       kScalarInterpolator,
                                       kCylinderSensor,
                                       kPlaneSensor,
                                       kProximitySensor,
                                       kSphereSensor,
                                       kTimeSensor,
                                       kTouchSensor,
                                       kVisibilitySensor,
                                       kColor,
                                       kCoordinate,
                                       kNormal,
                                       kTextureCoordinate,
                                       kAppearance,
                                       kMaterial,
                                       kAudioClip,
                                       kDirectionalLight,
                                       kPointLight,
                                       kSpotLight,
                                       kScript,
                                       kShape,
                                       kSound,
                                       kWorldInfo,
                                       kBackground,
                                       kFog,
                                       kNavigationInfo,
                                       kViewpoint,
                                       kFontStyle});

/// One thing that a node may hold in a file.
struct GrammarRow {
    NodeType node;
    FieldKeyword keyword;
    ValueForm form;
    /// Where the value goes; null for a value that is read and dropped, and for nodes, which become
    /// children.
    Field& (*target)(Node&) = nullptr;
    /// The nodes that may stand here, beside a USE.
    NodeSet accepted = 0;
    bool acceptsNull = false;
    /// May not stand twice.
    bool isSingle = false;
};

/// Null if a file may not hold the field in a node of the type.
const GrammarRow* findGrammarRow(std::int32_t node, FieldKeyword keyword);

/// A field type of which a Script may declare an event, and a field as well if it is no list.
struct ScriptType {
    FieldType type;
    ValueForm form;
    std::unique_ptr<Field> (*make)();
};
/// Null for all other types; for an SFNode there are rules of its own.
const ScriptType* findScriptType(std::int32_t type);

}  // namespace nodes
