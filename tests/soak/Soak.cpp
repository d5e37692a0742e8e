#include "Soak.h"

#include <algorithm>
#include <cmath>

namespace {

using reference::Node;
using reference::Object;
using reference::Quaternion;

// Beyond these the scene is thinned out, so that a call's cost and the memory stay bounded.
constexpr std::size_t kMostGroups = 40;
constexpr std::size_t kMostObjects = 150;
constexpr int kDeepest = 12;

constexpr float kFullTurn = 6.2831855f;

const char* OrNull(const std::string& label) {
    return label.empty() ? nullptr : label.c_str();
}

}  // namespace

const std::vector<Soak::Choice> Soak::kChoices = {
    {70, "CreateGroup", &Soak::CreateGroup},
    {8, "DestroyGroup", &Soak::DestroyGroup},
    {1, "EmptyGroup", &Soak::EmptyGroup},
    {30, "MoveGroup", &Soak::MoveGroup},
    {15, "CloneGroup", &Soak::CloneGroup},
    {6, "CloneGroupRecursive", &Soak::CloneGroupRecursive},
    {30, "SetCapability", &Soak::SetCapability},
    {10, "SetGroupClearance", &Soak::SetGroupClearance},
    {150, "PlaceGroup", &Soak::PlaceGroup},
    {30, "AddGroupKey", &Soak::AddGroupKey},
    {15, "ClearGroupKeys", &Soak::ClearGroupKeys},
    {10, "SetGroupCyclic", &Soak::SetGroupCyclic},
    {20, "GroupDisplayCalls", &Soak::GroupDisplayCalls},
    {120, "CreateSolid", &Soak::CreateSolid},
    {80, "CreateMesh", &Soak::CreateMesh},
    {60, "DestroyObject", &Soak::DestroyObject},
    {40, "MoveObject", &Soak::MoveObject},
    {180, "PlaceObject", &Soak::PlaceObject},
    {20, "SetObjectClearance", &Soak::SetObjectClearance},
    {40, "AddObjectKey", &Soak::AddObjectKey},
    {20, "ClearObjectKeys", &Soak::ClearObjectKeys},
    {10, "SetObjectCyclic", &Soak::SetObjectCyclic},
    {20, "ObjectDisplayCalls", &Soak::ObjectDisplayCalls},
    {30, "CheckPoint", &Soak::CheckPoint},
    {20, "CheckLine", &Soak::CheckLine},
    {10, "CheckGroups", &Soak::CheckGroups},
    {5, "ClosestPairs", &Soak::ClosestPairs},
    {40, "GetId", &Soak::GetId},
    {25, "SetTime", &Soak::SetTime},
    {20, "ViewCalls", &Soak::ViewCalls},
    {1, "LoadMissingScene", &Soak::LoadMissingScene},
};

Soak::Soak(std::uint64_t seed) : m_random(seed) {
    Expect(KST_OK, KST_Initialisation(false, false, false), "start");
}

Soak::~Soak() {
    KST_End();
}

void Soak::Step() {
    static const int total = [] {
        int sum = 0;
        for (const Choice& choice : kChoices) {
            sum += choice.weight;
        }
        return sum;
    }();
    int left = m_random.Below(total);
    auto choice = kChoices.begin();
    while (left >= choice->weight) {
        left -= choice->weight;
        ++choice;
    }
    m_call = choice->name;
    ++m_calls;
    (this->*choice->operation)();

    if (m_calls % 16 == 0) {
        m_call = "look";
        CompareGroup(SomeGroup());
        CompareObject(SomeObject());
    }
    if (m_calls % 200000 == 0) {
        m_call = "restart";
        Restart();
    }
}

// ---- Groups ----

void Soak::CreateGroup() {
    const std::string label = SomeLabel();
    int parent = SomeGroup();
    const bool capable = m_random.Chance(60);
    int depth = 0;
    for (int id = parent; m_reference.Groups().count(id) && id > 0; ++depth) {
        id = m_reference.Groups().at(id).parent;
    }
    if (m_reference.Groups().size() >= kMostGroups) {
        DestroyGroup();
        return;
    }
    if (depth >= kDeepest) {
        parent = 0;
    }
    int id = -5;
    int expectedId = -5;
    const int expected = m_reference.CreateGroup(parent, capable, label, expectedId);
    Expect(expected, KST_CreateGroup(&id, parent, capable, OrNull(label), m_random.Chance(50)),
           "code");
    Expect(expectedId, id, "new id");
    if (m_random.Chance(5)) {
        Expect(KST_ERROR_UNKNOWN_PARENT, KST_CreateGroup(nullptr, 0, capable, nullptr, false),
               "code without a place for the id");
    }
}

void Soak::DestroyGroup() {
    const int id = SomeGroup();
    Expect(m_reference.DestroyGroup(id), KST_DestroyGroup(id), "code");
}

void Soak::EmptyGroup() {
    const int id = SomeGroup();
    Expect(m_reference.EmptyGroup(id), KST_EmptyGroup(id), "code");
}

void Soak::MoveGroup() {
    const int id = SomeGroup();
    const int parent = SomeGroup();
    Expect(m_reference.MoveGroup(id, parent), KST_MoveGroup(id, parent), "code");
}

void Soak::CloneGroup() {
    if (m_reference.Groups().size() >= kMostGroups ||
        m_reference.Objects().size() >= kMostObjects) {
        DestroyGroup();
        return;
    }
    const int source = SomeGroup();
    const int target = SomeGroup();
    const bool capable = m_random.Chance(50);
    const std::string label = SomeLabel();
    int id = -5;
    int expectedId = -5;
    const int expected = m_reference.CloneGroup(source, target, capable, label, expectedId);
    Expect(expected, KST_CloneGroup(&id, source, target, capable, OrNull(label)), "code");
    Expect(expectedId, id, "new id");
}

void Soak::CloneGroupRecursive() {
    if (m_reference.Groups().size() >= kMostGroups ||
        m_reference.Objects().size() >= kMostObjects) {
        DestroyGroup();
        return;
    }
    const int source = SomeGroup();
    const int target = SomeGroup();
    const int count = m_random.Below(4);
    std::vector<int> ids;
    std::vector<std::string> labels;
    std::vector<const char*> labelPointers;
    for (int i = 0; i < count; ++i) {
        ids.push_back(i == 0 ? source : SomeGroup());
        labels.push_back(SomeLabel());
    }
    for (const std::string& label : labels) {
        labelPointers.push_back(OrNull(label));
    }
    const bool named = count > 0 && m_random.Chance(70);
    std::vector<int> expectedIds(ids.size(), -5);
    std::vector<int> newIds(ids.size(), -5);
    const int expected = m_reference.CloneGroupRecursive(
        source, target, ids, named ? labels : std::vector<std::string>(), expectedIds);
    Expect(expected,
           KST_CloneGroupRecursive(newIds.data(), source, target, count, ids.data(),
                                   named ? labelPointers.data() : nullptr),
           "code");
    Require(newIds == expectedIds, "new ids differ");
}

void Soak::SetCapability() {
    const int id = SomeGroup();
    const bool on = m_random.Chance(65);
    Expect(m_reference.SetCapability(id, on), KST_SetGroupCollisionCheckCapability(id, on), "code");
}

void Soak::SetGroupClearance() {
    const int id = SomeGroup();
    const float margin = SomeMargin();
    Expect(m_reference.SetGroupClearance(id, margin), KST_SetGroupClearance(id, margin), "code");
}

void Soak::PlaceGroup() {
    const int id = SomeGroup();
    PlaceNode(m_reference.MovableGroup(id), id, true);
}

void Soak::AddGroupKey() {
    const int id = SomeGroup();
    AddKey(m_reference.MovableGroup(id), id, true);
}

void Soak::ClearGroupKeys() {
    const int id = SomeGroup();
    Expect(m_reference.ClearGroupKeyStates(id), KST_ClearGroupKeyStates(id), "code");
}

void Soak::SetGroupCyclic() {
    const int id = SomeGroup();
    const bool cyclic = m_random.Chance(60);
    Node* node = m_reference.MovableGroup(id);
    if (node) {
        if (!node->track) {
            node->track.emplace();
        }
        node->track->cyclic = cyclic;
    }
    Expect(node ? KST_OK : KST_ERROR_UNKNOWN_GROUP, KST_SetGroupCyclic(id, cyclic), "code");
}

void Soak::GroupDisplayCalls() {
    const int id = SomeGroup();
    const int movable = m_reference.MovableGroup(id) ? KST_OK : KST_ERROR_UNKNOWN_GROUP;
    const float red = m_random.Between(-1, 2);
    Expect(KST_OK, KST_SetGroupColor(id, red, 0, 0, 1, m_random.Chance(50), 0), "colour");
    Expect(KST_OK, KST_SetGroupTexture(id, m_random.Below(200), red, 1, false, 0), "texture");
    const int surface = m_random.Below(4) - 1;
    const bool known = surface == 0 || surface == 1;
    Expect(movable != KST_OK ? movable
           : known           ? KST_OK
                             : KST_ERROR_ARGUMENT,
           KST_SetGroupActiveSurface(id, true, surface), "surface");
    Expect(movable, KST_SetGroupVisibility(id, m_random.Below(4), m_random.Chance(50)),
           "visibility");
}

// ---- Objects ----

void Soak::CreateAndCompare(int code, int newId, Object object) {
    int expectedId = -5;
    Expect(m_reference.CreateObject(std::move(object), expectedId), code, "code");
    Expect(expectedId, newId, "new id");
}

void Soak::CreateSolid() {
    if (m_reference.Objects().size() >= kMostObjects) {
        DestroyObject();
        return;
    }
    Object object;
    object.type = KST_BOX + m_random.Below(4);
    object.group = SomeGroup();
    object.label = SomeLabel();
    const int sizeCount = object.type == KST_BOX ? 3 : object.type == KST_SPHERE ? 1 : 2;
    for (int i = 0; i < sizeCount; ++i) {
        object.sizes.push_back(m_random.Chance(2)   ? -1.0f
                               : m_random.Chance(4) ? 0.0f
                                                    : m_random.Between(0.1f, 8));
    }
    const float x = m_random.Between(-20, 20);
    const float y = m_random.Between(-20, 20);
    const float z = m_random.Between(-20, 20);
    object.position = {x, y, z};
    const std::vector<float>& size = object.sizes;
    const char* label = OrNull(object.label);
    const int group = object.group;
    int id = -5;
    int code = 0;
    switch (object.type) {
        case KST_BOX:
            code = KST_CreateBox(group, size[0], size[1], size[2], x, y, z, &id, label);
            break;
        case KST_SPHERE:
            code = KST_CreateSphere(group, size[0], x, y, z, &id, label);
            break;
        case KST_CYLINDER:
            code = KST_CreateCylinder(group, size[0], size[1], x, y, z, &id, label);
            break;
        default:
            code = KST_CreateCone(group, size[0], size[1], x, y, z, &id, label);
    }
    CreateAndCompare(code, id, object);
}

void Soak::CreateMesh() {
    if (m_reference.Objects().size() >= kMostObjects) {
        DestroyObject();
        return;
    }
    Object object;
    object.type = KST_TRIANGLES + m_random.Below(5);
    object.group = SomeGroup();
    object.label = SomeLabel();
    const char* label = OrNull(object.label);
    const int group = object.group;
    const int parts = 1 + m_random.Below(4);
    std::vector<float>& vertices = object.vertices;
    int id = -5;
    int code = 0;
    if (object.type == KST_TRIANGLES) {
        vertices = SomeVertices(3 * parts);
        code = KST_CreateTriangles(group, parts, vertices.data(), &id, label);
    } else if (object.type == KST_POLYGON) {
        vertices = SomeVertices(2 + parts);
        code = KST_CreatePolygon(group, 2 + parts, vertices.data(), &id, label);
    } else if (object.type == KST_TETRAHEDRON) {
        // One corner at the origin and one on each axis, so that the sign of the volume is sure.
        vertices.assign(12, 0.0f);
        for (const std::size_t i : {3u, 7u, 11u}) {
            vertices[i] = (m_random.Chance(50) ? 1.0f : -1.0f) * m_random.Between(1, 4);
        }
        code = KST_CreateTetrahedron(group, vertices.data(), &id, label);
    } else {
        int total = 0;
        for (int i = 0; i < parts; ++i) {
            object.counts.push_back(3 + m_random.Below(3));
            total += object.counts.back();
        }
        vertices = SomeVertices(total);
        const auto create =
            object.type == KST_POLYGON_GROUP ? &KST_CreatePolygonGroup : &KST_CreatePolyline;
        code = create(group, parts, object.counts.data(), vertices.data(), &id, label);
    }
    CreateAndCompare(code, id, object);
}

void Soak::DestroyObject() {
    const int id = SomeObject();
    Expect(m_reference.DestroyObject(id), KST_DestroyObject(id), "code");
}

void Soak::MoveObject() {
    const int id = SomeObject();
    const int group = SomeGroup();
    Expect(m_reference.MoveObject(id, group), KST_MoveObject(id, group), "code");
}

void Soak::PlaceObject() {
    const int id = SomeObject();
    PlaceNode(m_reference.FindNode(id), id, false);
}

void Soak::SetObjectClearance() {
    const int id = SomeObject();
    const float margin = SomeMargin();
    Expect(m_reference.SetObjectClearance(id, margin), KST_SetObjectClearance(id, margin), "code");
}

void Soak::AddObjectKey() {
    const int id = SomeObject();
    AddKey(m_reference.FindNode(id), id, false);
}

void Soak::ClearObjectKeys() {
    const int id = SomeObject();
    Expect(m_reference.ClearObjectKeyStates(id), KST_ClearObjectKeyStates(id), "code");
}

void Soak::SetObjectCyclic() {
    const int id = SomeObject();
    const bool cyclic = m_random.Chance(60);
    Node* node = m_reference.FindNode(id);
    if (node) {
        if (!node->track) {
            node->track.emplace();
        }
        node->track->cyclic = cyclic;
    }
    Expect(node ? KST_OK : KST_ERROR_UNKNOWN_OBJECT, KST_SetObjectCyclic(id, cyclic), "code");
}

void Soak::ObjectDisplayCalls() {
    const int id = SomeObject();
    const bool known = m_reference.FindNode(id) != nullptr;
    const auto code = [known](bool argumentsGood) {
        return !known ? KST_ERROR_UNKNOWN_OBJECT : argumentsGood ? KST_OK : KST_ERROR_ARGUMENT;
    };
    const float value = m_random.Between(-1, 2);
    const int surface = m_random.Below(4) - 1;
    const bool surfaceGood = surface == 0 || surface == 1;
    Expect(code(value >= 0 && value <= 1), KST_SetObjectColor(id, 0, value, 0, 1, 0), "colour");
    Expect(code(value > 0 && surfaceGood), KST_SetObjectTexture(id, 5, value, 1, surface),
           "texture");
    Expect(code(surfaceGood), KST_SetObjectActiveSurface(id, surface), "surface");
}

// ---- What groups and objects share ----

void Soak::PlaceNode(Node* node, int id, bool isGroup) {
    const int unknown = isGroup ? KST_ERROR_UNKNOWN_GROUP : KST_ERROR_UNKNOWN_OBJECT;
    const int refused = !node ? unknown : node->IsAnimated() ? KST_ERROR_ANIMATED : KST_OK;
    const int kind = m_random.Below(4);
    if (kind == 0) {
        float p[3];
        for (float& value : p) {
            value = m_random.Between(-20, 20);
        }
        const auto set = isGroup ? &KST_SetGroupPosition : &KST_SetObjectPosition;
        Expect(refused, set(id, p[0], p[1], p[2]), "position");
        if (refused == KST_OK) {
            node->position = {p[0], p[1], p[2]};
        }
        return;
    }
    if (kind == 1) {
        float s[3];
        for (float& value : s) {
            value = m_random.Chance(2) ? 0.0f : m_random.Between(0.2f, 1.6f);
        }
        const bool bad = m_random.Chance(3);
        s[2] = bad ? -s[2] - 0.1f : s[2];
        const auto set = isGroup ? &KST_SetGroupScaling : &KST_SetObjectScaling;
        const int expected = refused == KST_OK && bad ? KST_ERROR_ARGUMENT : refused;
        Expect(expected, set(id, s[0], s[1], s[2]), "scaling");
        if (expected == KST_OK) {
            node->scale = {s[0], s[1], s[2]};
        }
        return;
    }
    if (kind == 2) {
        float q[4];
        const Quaternion turn = SomeTurn(q);
        const auto set = isGroup ? &KST_SetGroupQuaternion : &KST_SetObjectQuaternion;
        Expect(refused, set(id, q[0], q[1], q[2], q[3]), "quaternion");
        if (refused == KST_OK) {
            node->turn = turn;
        }
        return;
    }
    float a[3];
    for (float& value : a) {
        value = m_random.Chance(10) ? kFullTurn * 0.25f * static_cast<float>(m_random.Below(5))
                                    : m_random.Between(0, kFullTurn);
    }
    const bool bad = m_random.Chance(3);
    a[1] = bad ? (m_random.Chance(50) ? 6.3f : -0.01f) : a[1];
    const auto set = isGroup ? &KST_SetGroupOrientation : &KST_SetObjectOrientation;
    const int expected = refused == KST_OK && bad ? KST_ERROR_ARGUMENT : refused;
    Expect(expected, set(id, a[0], a[1], a[2]), "orientation");
    if (expected == KST_OK) {
        node->turn = reference::FromAngles(a[0], a[1], a[2]);
    }
}

void Soak::AddKey(Node* node, int id, bool isGroup) {
    const bool longTrack = node && node->track && node->track->keys.size() >= 8;
    if (longTrack) {
        isGroup ? ClearGroupKeys() : ClearObjectKeys();
        return;
    }
    const float last = node && node->IsAnimated() ? node->track->keys.back().time : 0;
    const float time = std::max(0.0f, last + 0.25f * static_cast<float>(m_random.Below(9) - 1));
    const float position[3] = {m_random.Between(-20, 20), m_random.Between(-20, 20), 1};
    const float scale[3] = {m_random.Between(0.2f, 1.6f), 1, m_random.Between(0.2f, 1.6f)};
    const bool isQuaternion = m_random.Chance(50);
    float orientation[4] = {m_random.Between(0, kFullTurn), m_random.Between(0, kFullTurn),
                            m_random.Between(0, kFullTurn), 0};
    Quaternion turn = reference::FromAngles(orientation[0], orientation[1], orientation[2]);
    if (isQuaternion) {
        turn = SomeTurn(orientation);
    }
    const bool hasPosition = m_random.Chance(70);
    const bool hasScale = m_random.Chance(40);
    bool hasTurn = m_random.Chance(60);
    // Half a turn apart, both ways round are the shorter one.
    if (hasTurn && node && node->IsAnimated() &&
        std::fabs(reference::Dot(node->track->keys.back().turn, turn)) < 1e-2) {
        hasTurn = false;
    }
    const bool bad = hasTurn && !isQuaternion && m_random.Chance(4);
    if (bad) {
        orientation[2] = 7;
    }
    int expected = bad       ? KST_ERROR_ARGUMENT
                   : node    ? KST_OK
                   : isGroup ? KST_ERROR_UNKNOWN_GROUP
                             : KST_ERROR_UNKNOWN_OBJECT;
    if (expected == KST_OK) {
        expected = reference::Scene::AddKeyState(
            *node, time, hasPosition ? position : nullptr, hasTurn ? &turn : nullptr,
            hasScale ? scale : nullptr, m_reference.CurrentTime());
    }
    const auto add = isGroup ? &KST_AddGroupKeyState : &KST_AddObjectKeyState;
    Expect(expected,
           add(id, time, hasPosition ? position : nullptr, hasTurn ? orientation : nullptr,
               hasScale ? scale : nullptr, isQuaternion),
           "code");
}
