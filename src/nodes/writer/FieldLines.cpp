#include "nodes/writer/FieldLines.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <initializer_list>

#include "nodes/nodes/FieldSpec.h"
#include "nodes/nodes/NodeType.h"

namespace nodes {
namespace {

/// A line by the name of its field, which is its keyword too unless another one is given.
struct Line {
    LineForm form;
    const char* keyword;
    const char* field = nullptr;
    std::int32_t childType = kNoType;
};

constexpr Line single(const char* name) {
    return {LineForm::kSingle, name, name};
}
constexpr Line singleAs(const char* keyword, const char* name) {
    return {LineForm::kSingle, keyword, name};
}
constexpr Line list(const char* name) {
    return {LineForm::kList, name, name};
}
constexpr Line image(const char* name) {
    return {LineForm::kImage, name, name};
}
constexpr Line child(const char* keyword, std::int32_t type) {
    return {LineForm::kChild, keyword, nullptr, type};
}
constexpr Line textureChild(const char* keyword) {
    return {LineForm::kTexture, keyword};
}
constexpr Line geometryChild(const char* keyword) {
    return {LineForm::kGeometry, keyword};
}

struct ClassLines {
    std::int32_t type;
    std::initializer_list<Line> lines;
};

// The order of the lines of each class. A class that is not here prints none.
const ClassLines kClasses[] = {
    {kAnchor, {single("description"), list("parameter"), list("url")}},
    {kAppearance,
     {child("material", kMaterial), textureChild("texture"),
      child("textureTransform", kTextureTransform)}},
    {kAudioClip,
     {single("description"), single("pitch"), single("startTime"), single("stopTime"),
      single("loop"), list("url")}},
    {kBackground,
     {list("groundColor"), list("skyColor"), list("groundAngle"), list("skyAngle"),
      list("frontUrl"), list("backUrl"), list("leftUrl"), list("rightUrl"), list("topUrl"),
      list("bottomUrl")}},
    {kBillboard, {single("axisOfRotation")}},
    {kBox, {single("size")}},
    {kCollision, {single("collide")}},
    {kColorInterpolator, {list("key"), list("keyValue")}},
    {kColor, {list("color")}},
    {kCone, {single("bottomRadius"), single("height"), single("side"), single("bottom")}},
    {kCoordinateInterpolator, {list("key"), list("keyValue")}},
    {kCoordinate, {list("point")}},
    {kCylinder,
     {single("radius"), single("height"), single("side"), single("top"), single("bottom")}},
    {kCylinderSensor,
     {single("autoOffset"), single("diskAngle"), single("enabled"), single("maxAngle"),
      single("minAngle"), single("offset")}},
    {kDirectionalLight,
     {single("on"), single("intensity"), single("ambientIntensity"), single("color"),
      single("direction")}},
    {kElevationGrid,
     {single("xDimension"), single("xSpacing"), single("zDimension"), single("zSpacing"),
      list("height"), single("colorPerVertex"), single("normalPerVertex"), single("ccw"),
      single("solid"), single("creaseAngle"), child("normal", kNormal), child("color", kColor),
      child("texCoord", kTextureCoordinate)}},
    {kExtrusion,
     {single("beginCap"), single("endCap"), single("solid"), single("ccw"), single("convex"),
      single("creaseAngle"), list("crossSection"), list("orientation"), list("scale"),
      list("spine")}},
    {kFog, {single("color"), single("fogType"), single("visibilityRange")}},
    {kFontStyle,
     {single("size"), single("family"), single("style"), single("horizontal"),
      single("leftToRight"), single("topToBottom"), single("language"), single("spacing"),
      list("justify")}},
    {kImageTexture, {single("repeatS"), single("repeatT"), list("url")}},
    {kIndexedFaceSet,
     {single("ccw"), single("colorPerVertex"), single("normalPerVertex"), single("convex"),
      single("creaseAngle"), single("solid"), child("normal", kNormal), child("color", kColor),
      child("coord", kCoordinate), child("texCoord", kTextureCoordinate), list("coordIndex"),
      list("texCoordIndex"), list("colorIndex"), list("normalIndex")}},
    {kIndexedLineSet,
     {single("colorPerVertex"), child("color", kColor), child("coord", kCoordinate),
      list("coordIndex"), list("colorIndex")}},
    {kInline, {list("url")}},
    {kLOD, {single("center"), list("range")}},
    {kMaterial,
     {single("diffuseColor"), single("ambientIntensity"), single("specularColor"),
      single("emissiveColor"), single("shininess"), single("transparency")}},
    {kMovieTexture,
     {single("loop"), singleAs("speed", "speedTime"), single("startTime"), single("stopTime"),
      single("repeatS"), single("repeatT"), list("url")}},
    {kNavigationInfo,
     {single("visibilityLimit"), single("headlight"), single("speed"), list("type"),
      list("avatarSize")}},
    {kNormalInterpolator, {list("key"), list("keyValue")}},
    {kNormal, {list("vector")}},
    {kOrientationInterpolator, {list("key"), list("keyValue")}},
    {kPixelTexture, {image("image"), single("repeatS"), single("repeatT")}},
    {kPlaneSensor,
     {single("autoOffset"), single("enabled"), single("maxPosition"), single("minPosition"),
      single("offset")}},
    {kPointLight,
     {single("on"), single("intensity"), single("ambientIntensity"), single("color"),
      single("location"), single("radius"), single("attenuation")}},
    {kPointSet, {child("color", kColor), child("coord", kCoordinate)}},
    {kPositionInterpolator, {list("key"), list("keyValue")}},
    {kProximitySensor, {single("enabled"), single("center"), single("size")}},
    {kScalarInterpolator, {list("key"), list("keyValue")}},
    {kScript, {single("directOutput"), single("mustEvaluate"), list("url")}},
    {kShape, {child("appearance", kAppearance), geometryChild("geometry")}},
    {kSound,
     {single("direction"), single("location"), single("maxFront"), single("minFront"),
      single("maxBack"), single("minBack"), single("intensity"), single("priority"),
      single("spatialize"), child("source", kAudioClip), child("source", kMovieTexture)}},
    {kSphere, {single("radius")}},
    {kSphereSensor, {single("autoOffset"), single("enabled"), single("offset")}},
    {kSpotLight,
     {single("on"), single("intensity"), single("ambientIntensity"), single("color"),
      single("direction"), single("location"), single("beamWidth"), single("cutOffAngle"),
      single("radius"), single("attenuation")}},
    {kSwitch, {single("whichChoice")}},
    {kText, {single("maxExtent"), list("string"), list("length"), child("fontStyle", kFontStyle)}},
    {kTextureCoordinate, {list("point")}},
    {kTextureTransform,
     {single("translation"), single("rotation"), single("scale"), single("center")}},
    {kTimeSensor,
     {single("cycleInterval"), single("enabled"), single("loop"), single("startTime"),
      single("stopTime")}},
    {kTouchSensor, {single("enabled")}},
    {kTransform,
     {single("translation"), single("rotation"), single("scale"), single("scaleOrientation"),
      single("center")}},
    {kViewpoint,
     {single("fieldOfView"), single("jump"), single("position"), single("orientation"),
      single("description")}},
    {kVisibilitySensor, {single("enabled"), single("center"), single("size")}},
    {kWorldInfo, {single("title"), list("info")}},
};

FieldLine resolved(std::int32_t type, const Line& line) {
    FieldLine result{line.form, line.keyword, nullptr, line.childType};
    if (line.field) {
        const NodeClass& ofType = nodeClass(type);
        // Events may bear the names of fields, and go into no file.
        const FieldSpec* spec = ofType.find(kPlainField, line.field);
        if (!spec) {
            spec = ofType.find(kExposedField, line.field);
        }
        assert(spec);
        result.field = spec->of;
    }
    return result;
}

// Behind the classes, the form of all types without one.
using Table = std::array<NodeForm, kNodeClassCount + 1>;

Table makeTable() {
    Table table;
    for (const ClassLines& ofClass : kClasses) {
        NodeForm& form = table[static_cast<std::size_t>(ofClass.type)];
        for (const Line& line : ofClass.lines) {
            form.lines.push_back(resolved(ofClass.type, line));
            form.hasChildLines = form.hasChildLines || !line.field;
        }
    }
    table[kLOD].childrenKeyword = "level";
    table[kSwitch].childrenKeyword = "choice";
    return table;
}

}  // namespace

const NodeForm& nodeForm(std::int32_t type) {
    static const Table table = makeTable();
    const bool hasClass = type >= 0 && type < kNodeClassCount;
    return table[static_cast<std::size_t>(hasClass ? type : kNodeClassCount)];
}

}  // namespace nodes
