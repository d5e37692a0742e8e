#include "nodes/nodes/NodeType.h"

#include <initializer_list>
#include <iterator>

namespace nodes {
namespace {

constexpr const char* kNames[] = {
#define ABSTRACT(Class, BaseClass)
#define NODE(number, Name, text, BaseClass) text,
#define VALUE(kind, Type, id, Id, text, ...)
#define OVERRIDING_VALUE(kind, Type, id, Id, text, ...)
#define LIST(kind, Type, id, Id, text)
#define OWN(...)
#define END(Class)
#include "nodes/nodes/NodeTable.def"
    // Types of the successor of VRML97, without a class here; behind them the names of fields.
    "XML",
    "LoadSensor",
    "StaticGroup",
    "ColorRGBA",
    "TriangleSet",
    "TriangleFanSet",
    "TriangleStripSet",
    "FillProperties",
    "LineProperties",
    "Arc2D",
    "ArcClose2D",
    "Circle2D",
    "Disk2D",
    "Polyline2D",
    "Polypoint2D",
    "Rectangle2D",
    "TriangleSet2D",
    "MultiTexture",
    "MultiTextureCoordinate",
    "MultiTextureTransformNode",
    "TextureCoordinateGenerator",
    "CoordinateInterpolator2D",
    "PositionInterpolator2D",
    "KeySensor",
    "StringSensor",
    "BooleanFilter",
    "BooleanToggle",
    "BooleanTrigger",
    "BooleanSequencer",
    "IntegerTrigger",
    "IntegerSequencer",
    "TimeTrigger",
    "BooleanTimeTrigger",
    "Shape2D",
    "Transform2D",
    "NodeSequencer",
    "Scene",
    "ROUTE",
    "ambientIntensity",
    "attenuation",
    "autoOffset",
    "avatarSize",
    "axisOfRotation",
    "backUrl",
    "beamWidth",
    "beginCap",
    "bindTime",
    "bottom",
    "bottomRadius",
    "bottomUrl",
    "ccw",
    "center",
    "collide",
    "collideTime",
    "color",
    "colorIndex",
    "colorPerVertex",
    "convex",
    "coordIndex",
    "creaseAngle",
    "crossSection",
    "cutOffAngle",
    "cycleInterval",
    "cycleTime",
    "description",
    "diffuseColor",
    "directOutput",
    "direction",
    "diskAngle",
    "duration",
    "emissiveColor",
    "enabled",
    "endCap",
    "enterTime",
    "exitTime",
    "family",
    "fieldOfView",
    "fogType",
    "fraction",
    "frontUrl",
    "groundAngle",
    "groundColor",
    "headlight",
    "height",
    "hitNormal",
    "hitPoint",
    "hitTexCoord",
    "horizontal",
    "image",
    "inRegion",
    "info",
    "intensity",
    "isActive",
    "isBound",
    "isOver",
    "jump",
    "justify",
    "key",
    "keyValue",
    "language",
    "leftToRight",
    "leftUrl",
    "length",
    "location",
    "loop",
    "maxAngle",
    "maxBack",
    "maxExtent",
    "maxFront",
    "maxPosition",
    "minAngle",
    "minBack",
    "minFront",
    "minPosition",
    "mustEvaluate",
    "normalIndex",
    "normalPerVertex",
    "offset",
    "on",
    "orientation",
    "parameter",
    "pitch",
    "point",
    "position",
    "priority",
    "radius",
    "range",
    "repeatS",
    "repeatT",
    "rightUrl",
    "rotation",
    "scale",
    "scaleOrientation",
    "set_bind",
    "shininess",
    "side",
    "size",
    "skyAngle",
    "skyColor",
    "solid",
    "spacing",
    "spatialize",
    "specularColor",
    "speed",
    "speedTime",
    "spine",
    "startTime",
    "stopTime",
    "string",
    "style",
    "texCoordIndex",
    "time",
    "title",
    "top",
    "topToBottom",
    "topUrl",
    "touchTime",
    "trackPoint",
    "translation",
    "transparency",
    "type",
    "url",
    "value",
    "vector",
    "visibilityLimit",
    "visibilityRange",
    "whichChoice",
    "xDimension",
    "xSpacing",
    "zDimension",
    "zSpacing",
};
static_assert(std::size(kNames) == 227);

constexpr bool isOneOf(std::int32_t type, std::initializer_list<std::int32_t> types) {
    for (const std::int32_t one : types) {
        if (type == one) {
            return true;
        }
    }
    return false;
}

}  // namespace

const char* nodeTypeName(std::int32_t type) {
    return type >= 0 && type < std::ssize(kNames) ? kNames[type] : nullptr;
}

bool isGroupingType(std::int32_t type) {
    return isOneOf(type, {kAnchor, kBillboard, kCollision, kGroup, kLOD, kSwitch, kTransform});
}

bool isGeometryType(std::int32_t type) {
    return isOneOf(type, {kBox, kCone, kCylinder, kElevationGrid, kExtrusion, kIndexedFaceSet,
                          kIndexedLineSet, kPointSet, kSphere, kText});
}

bool isBindableType(std::int32_t type) {
    return isOneOf(type, {kBackground, kFog, kNavigationInfo, kViewpoint});
}

bool isSensorType(std::int32_t type) {
    return isOneOf(type, {kCylinderSensor, kPlaneSensor, kSphereSensor, kProximitySensor,
                          kTimeSensor, kTouchSensor, kVisibilitySensor});
}

bool isInterpolatorType(std::int32_t type) {
    return isOneOf(type, {kColorInterpolator, kCoordinateInterpolator, kNormalInterpolator,
                          kOrientationInterpolator, kPositionInterpolator, kScalarInterpolator});
}

bool isTextureType(std::int32_t type) {
    return isOneOf(type, {kImageTexture, kMovieTexture, kPixelTexture});
}

bool isChildLeafType(std::int32_t type) {
    return isOneOf(type, {kDirectionalLight, kSpotLight, kPointLight, kAudioClip, kScript, kShape,
                          kSound, kWorldInfo});
}

bool isDynamicGroupType(std::int32_t type) {
    return isOneOf(type, {kInline, kLOD, kSwitch});
}

bool isPlaceholderType(std::int32_t type) {
    return type == kDef;
}

}  // namespace nodes
