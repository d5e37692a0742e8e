// What is read, written and read again is the same, for all that the form can carry.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "TemporaryFolder.h"
#include "WrittenText.h"
#include "nodes/SceneGraph.h"
#include "nodes/nodes/FieldSpec.h"

namespace nodes {
namespace {

/// Fields that a file cannot set, by the grammar.
const std::set<std::pair<std::int32_t, std::string>> kNotInFiles = {
    {kAnchor, "center"},        {kAnchor, "enabled"},
    {kInline, "load"},          {kIndexedLineSet, "lineWidth"},
    {kTimeSensor, "pauseTime"}, {kTimeSensor, "resumeTime"},
    {kTimeSensor, "numLoops"},  {kLOD, "bboxCenter"},
    {kLOD, "bboxSize"},         {kShape, "bboxCenter"},
    {kShape, "bboxSize"},       {kSwitch, "bboxCenter"},
    {kSwitch, "bboxSize"},
};

bool isInFiles(std::int32_t type, const Field& field) {
    return field.type() != kSFNode && !kNotInFiles.contains({type, field.name()});
}

/// Values that six digits hold, each its own, and none a default.
class Values {
  public:
    explicit Values(unsigned seed) : m_state(seed) {}

    unsigned below(unsigned limit) {
        m_state = m_state * 1664525U + 1013904223U;
        return (m_state >> 8) % limit;
    }

    std::string number() {
        static const char* const kEnds[] = {"", "e-3", "e10", "e-30", ".5"};
        std::string number = below(3) == 0 ? "-" : "";
        number += std::to_string(below(9'000) + 101);
        return number + kEnds[below(5)];
    }

    std::string text() {
        std::string text = "text {";
        text += std::to_string(below(1000));
        return text + (below(2) == 0 ? "] # \\ 'x'" : " ROUTE a.b TO c.d");
    }

    std::string rotation() {
        static const char* const kAxes[] = {"0 1 0", "-1 0 0", "0 0 -1", "0 0 1"};
        return std::string(kAxes[below(4)]) + " " + std::to_string(below(6) + 1) + ".25";
    }

    std::string of(const Field& field) {
        switch (field.type()) {
            case kSFBool:
                return static_cast<const SFBool&>(field).value() ? "FALSE" : "TRUE";
            case kSFInt32:
            case kMFInt32:
                return std::to_string(below(100'000) + 2);
            case kSFString:
            case kMFString:
                return std::string(1, '"').append(text()).append(1, '"');
            case kSFVec2f:
            case kMFVec2f:
                return number() + " " + number();
            case kSFVec3f:
            case kMFVec3f:
            case kSFColor:
            case kMFColor:
                return number() + " " + number() + " " + number();
            case kSFRotation:
            case kMFRotation:
                return rotation();
            default:
                return number();
        }
    }

  private:
    unsigned m_state;
};

/// The text of a field as a file has it.
std::string item(const Field& field, Values& values) {
    const std::string name = std::strcmp(field.name(), "speedTime") == 0 ? "speed" : field.name();
    if (field.type() == kSFImage) {
        std::string image = "image [ 9 4 1";
        for (int i = 0; i < 36; ++i) {
            image.append(" ").append(std::to_string(values.below(1U << 31)));
        }
        return image + " ]\n";
    }
    if (field.isSingleValue()) {
        return name + " " + values.of(field) + "\n";
    }
    std::string text = name + " [";
    for (unsigned i = values.below(5) + 1; i > 0; --i) {
        text.append(" ").append(values.of(field)).append(values.below(2) == 0 ? "," : "");
    }
    return text + " ]\n";
}

/// A node with all fields that a file can set, up to its children.
std::string openedNode(std::int32_t type, Values& values, const std::string& name) {
    const auto node = makeNode(type);
    std::string text = (name.empty() ? "" : "DEF " + name + " ") + node->typeName() + " {\n";
    for (const FieldKind kind : {kPlainField, kExposedField}) {
        for (int i = 0; i < node->fieldCountOf(kind); ++i) {
            const Field& field = *node->fieldOf(kind, i);
            if (isInFiles(type, field)) {
                text += item(field, values);
            }
        }
    }
    if (type == kScript) {
        text +=
            "eventIn SFBool go eventIn MFVec3f way eventOut MFString said\n"
            "field SFFloat a 0.25 field SFBool b TRUE field SFVec3f c 1 2 3\n"
            "field SFString d \"e f\" field SFRotation g 0 1 0 0.5 field SFTime h 12\n"
            "field SFInt32 i -7 field SFColor j 1 0.5 0 field SFVec2f k 1 -1\n"
            "field SFNode l NULL\n";
    }
    return text;
}

std::string nodeText(std::int32_t type, Values& values, const std::string& name) {
    return openedNode(type, values, name) + "}\n";
}

bool isOneOf(std::int32_t type, std::initializer_list<std::int32_t> types) {
    return std::find(types.begin(), types.end(), type) != types.end();
}

/// A world with a node of a type, in the nodes in which the grammar wants it.
std::string worldOf(std::int32_t type, Values& values) {
    const std::string node = nodeText(type, values, "x");
    if (isGeometryType(type)) {
        return "Shape { geometry " + node + "}\n";
    }
    if (isTextureType(type)) {
        return "Shape { appearance Appearance { texture " + node + "} }\n";
    }
    if (type == kTextureTransform) {
        return "Appearance { textureTransform " + node + "}\n";
    }
    return node;
}

void expectSameItems(MField& a, MField& b) {
    ASSERT_EQ(a.count(), b.count()) << a.name();
    std::string textOfA;
    std::string textOfB;
    for (int i = 0; i < a.count(); ++i) {
        ASSERT_TRUE(a.item(i)->equals(*b.item(i)))
            << a.name() << " " << i << ": " << a.itemText(i, textOfA) << ", not "
            << b.itemText(i, textOfB);
    }
}

/// All fields but those boxes that no file holds after it has been written.
void expectSameFields(const Node& a, const Node& b) {
    for (int k = 0; k < kFieldKinds; ++k) {
        const auto kind = static_cast<FieldKind>(k);
        ASSERT_EQ(a.fieldCountOf(kind), b.fieldCountOf(kind));
        for (int i = 0; i < a.fieldCountOf(kind); ++i) {
            Field& ofA = *a.fieldOf(kind, i);
            Field& ofB = *b.fieldOf(kind, i);
            ASSERT_STREQ(ofA.name(), ofB.name());
            ASSERT_EQ(ofA.type(), ofB.type());
            const bool isBox = kind == kPlainField && std::strncmp(ofA.name(), "bbox", 4) == 0;
            if (auto* list = dynamic_cast<MField*>(&ofA)) {
                expectSameItems(*list, static_cast<MField&>(ofB));
            } else if (ofA.type() == kSFNode) {
                const Node* namedByA = static_cast<SFNode&>(ofA).value();
                const Node* namedByB = static_cast<SFNode&>(ofB).value();
                ASSERT_EQ(namedByA != nullptr, namedByB != nullptr) << ofA.name();
                ASSERT_TRUE(!namedByA || namedByA->nameText() == namedByB->nameText());
            } else if (!isBox) {
                ASSERT_TRUE(ofA.equals(ofB))
                    << ofA.name() << ": " << ofA.asText() << " of " << a.typeName();
            }
        }
    }
}

void expectSameTrees(const NodeTree& a, const NodeTree& b) {
    ASSERT_EQ(a.nodeCount(), b.nodeCount());
    const Node* ofB = b.firstNode();
    for (const Node* ofA = a.firstNode(); ofA; ofA = ofA->next(), ofB = ofB->next()) {
        ASSERT_EQ(ofA->type(), ofB->type());
        ASSERT_EQ(ofA->nameText(), ofB->nameText());
        ASSERT_EQ(ofA->childCount(), ofB->childCount());
        ASSERT_EQ(ofA->instanceOf() != nullptr, ofB->instanceOf() != nullptr);
        ASSERT_EQ(ofA->parent() != nullptr, ofB->parent() != nullptr);
        expectSameFields(*ofA, *ofB);
        if (::testing::Test::HasFatalFailure()) {
            return;
        }
    }
}

void expectSameRoutes(const NodeTree& a, const NodeTree& b) {
    ASSERT_EQ(a.routes().size(), b.routes().size());
    auto ofB = b.routes().begin();
    for (const Route& route : a.routes()) {
        EXPECT_EQ(route.fromNode()->nameText(), ofB->fromNode()->nameText());
        EXPECT_EQ(route.toNode()->nameText(), ofB->toNode()->nameText());
        EXPECT_STREQ(route.fromField()->name(), ofB->fromField()->name());
        EXPECT_STREQ(route.toField()->name(), ofB->toField()->name());
        ++ofB;
    }
}

/// Reads TEXT, writes it, reads that, and writes it again.
void expectSameAfterTrip(const std::string& text) {
    const TemporaryFolder folder;
    const std::string in = folder.Write("in.wrl", "#VRML V2.0 utf8\n" + text);
    const std::string out = (folder / "out.wrl").string();
    SceneGraph first;
    ASSERT_TRUE(first.load(in.c_str(), false, nullptr, nullptr))
        << first.error().line << ": " << first.error().message << " " << first.error().token << ": "
        << first.error().lineText << "\n"
        << text;
    ASSERT_EQ(first.writeVrml(out.c_str()), SaveFault::kNone);
    SceneGraph second;
    ASSERT_TRUE(second.load(out.c_str(), false, nullptr, nullptr))
        << second.error().line << ": " << second.error().message << " " << second.error().token
        << ": " << second.error().lineText;
    expectSameTrees(first, second);
    expectSameRoutes(first, second);
    const std::string bytes = folder.Read("out.wrl");
    ASSERT_EQ(second.writeVrml(out.c_str()), SaveFault::kNone);
    EXPECT_TRUE(bytes == folder.Read("out.wrl"));
}

TEST(RoundTrip, EveryTypeWithEveryFieldThatAFileCanSet) {
    for (std::int32_t type = 0; type < kNodeClassCount; ++type) {
        if (type == kDef || type == kRoot) {
            continue;
        }
        SCOPED_TRACE(nodeTypeName(type));
        for (unsigned seed = 1; seed <= 5; ++seed) {
            Values values(seed);
            expectSameAfterTrip(worldOf(type, values));
        }
    }
}

TEST(RoundTrip, TheGeneratedFilesSetEveryField) {
    const TemporaryFolder folder;
    for (std::int32_t type = 0; type < kNodeClassCount; ++type) {
        if (type == kDef || type == kRoot) {
            continue;
        }
        SCOPED_TRACE(nodeTypeName(type));
        Values values(1);
        SceneGraph world;
        ASSERT_TRUE(world.load(folder.Write("in.wrl", "#VRML\n" + worldOf(type, values)).c_str(),
                               false, nullptr, nullptr));
        const Node* node = world.findNodeOfType(type);
        ASSERT_TRUE(node);
        const auto fresh = makeNode(type);
        for (const FieldKind kind : {kPlainField, kExposedField}) {
            for (int i = 0; i < fresh->fieldCountOf(kind); ++i) {
                Field& field = *node->fieldOf(kind, i);
                if (const auto* list = dynamic_cast<const MField*>(&field)) {
                    EXPECT_GT(list->count(), 0) << field.name();
                } else {
                    EXPECT_NE(field.equals(*fresh->fieldOf(kind, i)), isInFiles(type, field))
                        << field.name();
                }
            }
        }
    }
}

/// Worlds of groups in groups, with shapes that have all that a shape can have.
class WorldMaker {
  public:
    explicit WorldMaker(unsigned seed) : m_values(seed) {}

    std::string world() {
        std::string text;
        for (int i = 0; i < 6; ++i) {
            text += child(0);
        }
        return text + routes();
    }

  private:
    std::string newName(std::vector<std::string>& names) {
        if (m_values.below(3) > 0) {
            return "";
        }
        // An old name now and then: a USE means the last node that has it.
        if (!names.empty() && m_values.below(8) == 0) {
            return names[m_values.below(static_cast<unsigned>(names.size()))];
        }
        names.push_back(std::string("n").append(std::to_string(++m_count)));
        return names.back();
    }

    std::string use(const std::vector<std::string>& names) {
        return std::string("USE ") + names[m_values.below(static_cast<unsigned>(names.size()))] +
               "\n";
    }

    /// KEYWORD with a node of TYPE, which is named or has been, or nothing.
    std::string part(const std::string& keyword, std::int32_t type) {
        std::vector<std::string>& names = m_names[type];
        if (m_values.below(4) == 0) {
            return "";
        }
        if (!names.empty() && m_values.below(3) == 0) {
            return keyword + " " + use(names);
        }
        const std::string name = newName(names);
        std::string text = openedNode(type, m_values, name);
        if (type == kAppearance) {
            text += part("material", kMaterial) + part("texture", kTextures[m_values.below(3)]) +
                    part("textureTransform", kTextureTransform);
        }
        // In the order in which they are written.
        if (isOneOf(type, {kIndexedFaceSet, kElevationGrid})) {
            text += part("normal", kNormal);
        }
        if (isOneOf(type, {kIndexedFaceSet, kIndexedLineSet, kPointSet, kElevationGrid})) {
            text += part("color", kColor);
        }
        if (isOneOf(type, {kIndexedFaceSet, kIndexedLineSet, kPointSet})) {
            text += part("coord", kCoordinate);
        }
        if (isOneOf(type, {kIndexedFaceSet, kElevationGrid})) {
            text += part("texCoord", kTextureCoordinate);
        }
        if (type == kText) {
            text += part("fontStyle", kFontStyle);
        }
        return keyword + " " + text + "}\n";
    }

    std::string child(int depth) {
        const unsigned choice = m_values.below(10);
        if (choice < 4 && depth < 5) {
            return group(depth);
        }
        if (choice < 8) {
            const std::string name = newName(m_names[kShape]);
            return (name.empty() ? "" : "DEF " + name + " ") + "Shape {\n" +
                   part("appearance", kAppearance) +
                   part("geometry", kGeometries[m_values.below(10)]) + "}\n";
        }
        if (choice == 8 && !m_names[kShape].empty()) {
            return use(m_names[kShape]);
        }
        const std::int32_t type = kLeaves[m_values.below(std::size(kLeaves))];
        std::string text = openedNode(type, m_values, newName(m_names[type]));
        if (type == kSound) {
            text += part("source", kAudioClip);
        }
        return text + "}\n";
    }

    std::string group(int depth) {
        const std::int32_t type = kGroups[m_values.below(std::size(kGroups))];
        std::string text = openedNode(type, m_values, newName(m_names[type]));
        text += type == kLOD ? "level [\n" : type == kSwitch ? "choice [\n" : "children [\n";
        for (unsigned i = m_values.below(5); i > 0; --i) {
            text += child(depth + 1);
        }
        return text + "]\n}\n";
    }

    std::string routes() {
        std::string text;
        for (const std::string& from : m_names[kPositionInterpolator]) {
            for (const std::string& to : m_names[kTransform]) {
                text += "ROUTE " + from + ".value_changed TO " + to + ".set_translation\n";
            }
        }
        return text;
    }

    static constexpr std::int32_t kTextures[] = {kImageTexture, kMovieTexture, kPixelTexture};
    static constexpr std::int32_t kGeometries[] = {
        kBox,      kCone,   kCylinder, kElevationGrid, kExtrusion, kIndexedFaceSet, kIndexedLineSet,
        kPointSet, kSphere, kText};
    static constexpr std::int32_t kGroups[] = {kAnchor, kBillboard, kCollision, kGroup,
                                               kLOD,    kSwitch,    kTransform};
    static constexpr std::int32_t kLeaves[] = {kBackground,
                                               kDirectionalLight,
                                               kFog,
                                               kPositionInterpolator,
                                               kPositionInterpolator,
                                               kScript,
                                               kSound,
                                               kInline,
                                               kViewpoint,
                                               kWorldInfo};

    Values m_values;
    std::map<std::int32_t, std::vector<std::string>> m_names;
    int m_count = 0;
};

TEST(RoundTrip, WholeWorlds) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        expectSameAfterTrip(WorldMaker(seed).world());
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(RoundTrip, ASavedWorldIsInitialisedAgain) {
    const TemporaryFolder folder;
    const std::string part = folder.Write("part.wrl", "#VRML V2.0 utf8\nDEF inner Group { }\n");
    const std::string in =
        folder.Write("in.wrl",
                     "#VRML V2.0 utf8\n"
                     "DEF s Switch { whichChoice 1 choice [ DEF a Group { } DEF b Group { } ] }\n"
                     "Group { children [ USE a DEF c Shape { geometry DEF d Box { } } ] }\n"
                     "Shape { geometry USE d }\n"
                     "DEF i Inline { url \"" +
                         part + "\" }\n");
    const std::string out = (folder / "out.wrl").string();
    SceneGraph first;
    ASSERT_TRUE(first.load(in.c_str(), true, nullptr, nullptr));
    ASSERT_TRUE(first.findNode("inner"));
    first.saveVrml(out.c_str(), nullptr, nullptr);
    ASSERT_TRUE(first.savedWhole());
    EXPECT_TRUE(first.findNode("inner"));
    EXPECT_EQ(first.findNode("s")->stagedCount(), 2);
    SceneGraph second;
    ASSERT_TRUE(second.load(out.c_str(), false, nullptr, nullptr));
    EXPECT_FALSE(second.findNode("inner"));
    SceneGraph third;
    ASSERT_TRUE(third.load(out.c_str(), true, nullptr, nullptr));
    expectSameTrees(first, third);
}

}  // namespace
}  // namespace nodes
