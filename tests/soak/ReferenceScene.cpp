#include "ReferenceScene.h"

#include <algorithm>
#include <utility>

#include "kestrane.h"

namespace reference {

namespace {

Vector Mix(const Vector& a, const Vector& b, double s) {
    return {(1 - s) * a[0] + s * b[0], (1 - s) * a[1] + s * b[1], (1 - s) * a[2] + s * b[2]};
}

Vector ToVector(const float* floats) {
    return {floats[0], floats[1], floats[2]};
}

/// The time within the track; times are taken to be exact in float.
double PhaseOf(const Node::Track& track, double time) {
    const double first = track.keys.front().time;
    const double duration = track.keys.back().time - first;
    if (!track.cyclic) {
        return time;
    }
    if (duration == 0) {
        return first + 1;
    }
    const double cycles = std::floor((time - first) / duration);
    return time - cycles * duration;
}

}  // namespace

void Node::ApplyTime(float time) {
    if (!IsAnimated()) {
        return;
    }
    const std::vector<Key>& keys = track->keys;
    const double phase = PhaseOf(*track, time);
    const auto later = std::find_if(keys.begin(), keys.end(),
                                    [phase](const Key& key) { return phase < key.time; });
    Key from = later == keys.begin() ? keys.front() : *(later - 1);
    Key to = later == keys.end() ? keys.back() : *later;
    // At or before the first time the first key counts, also when several share that time.
    if (phase <= keys.front().time) {
        from = to = keys.front();
    }
    const double span = to.time - from.time;
    const double s = span > 0 ? (phase - from.time) / span : 0;
    position = Mix(from.position, to.position, s);
    scale = Mix(from.scale, to.scale, s);
    turn = Slerp(from.turn, to.turn, s);
}

void Scene::Start() {
    m_groups.clear();
    m_objects.clear();
    m_labels.clear();
    m_nextGroup = 1;
    m_nextObject = 0;
    Group root;
    root.capable = true;
    root.label = "Root group";
    m_labels[root.label] = 0;
    m_groups[0] = root;
}

Group* Scene::Find(int id) {
    const auto found = m_groups.find(id);
    return found == m_groups.end() ? nullptr : &found->second;
}

Node* Scene::MovableGroup(int id) {
    return id == 0 ? nullptr : Find(id);
}

Node* Scene::FindNode(int objectId) {
    const auto found = m_objects.find(objectId);
    return found == m_objects.end() ? nullptr : &found->second;
}

int Scene::CreateGroup(int parent, bool capable, const std::string& label, int& newId) {
    if (!Find(parent)) {
        return KST_ERROR_UNKNOWN_PARENT;
    }
    std::string unique = label;
    for (int n = 1; !unique.empty() && m_labels.count(unique); ++n) {
        unique = label + "_" + std::to_string(n);
    }
    newId = m_nextGroup++;
    Group group;
    group.parent = parent;
    group.capable = capable;
    group.label = unique;
    m_groups[newId] = group;
    m_groups[parent].children.insert(newId);
    if (!unique.empty()) {
        m_labels[unique] = newId;
    }
    return KST_OK;
}

int Scene::EmptyGroup(int id) {
    Group* group = Find(id);
    if (!group) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    while (!group->children.empty()) {
        Erase(*group->children.begin());
    }
    while (!group->objects.empty()) {
        DestroyObject(*group->objects.begin());
    }
    return KST_OK;
}

void Scene::Erase(int groupId) {
    EmptyGroup(groupId);
    const Group& group = m_groups[groupId];
    m_labels.erase(group.label);
    m_groups[group.parent].children.erase(groupId);
    m_groups.erase(groupId);
}

int Scene::DestroyGroup(int id) {
    if (!MovableGroup(id)) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    Erase(id);
    return KST_OK;
}

bool Scene::IsBelow(int id, int ancestor) const {
    while (id != -1 && id != ancestor) {
        id = m_groups.at(id).parent;
    }
    return id == ancestor;
}

int Scene::MoveGroup(int id, int newParent) {
    if (!MovableGroup(id) || !Find(newParent)) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (IsBelow(newParent, id)) {
        return KST_ERROR_OVERLAP;
    }
    Group& group = m_groups[id];
    m_groups[group.parent].children.erase(id);
    m_groups[newParent].children.insert(id);
    group.parent = newParent;
    return KST_OK;
}

int Scene::CloneOne(int source, int target, bool capable, const std::string& label) {
    int id = -1;
    CreateGroup(target, capable, label, id);
    Group& clone = m_groups[id];
    const Group& original = m_groups[source];
    clone.position = original.position;
    clone.turn = original.turn;
    clone.scale = original.scale;
    for (const int objectId : original.objects) {
        Object copy = m_objects[objectId];
        copy.group = id;
        copy.track.reset();
        copy.margin = 0;
        Register(m_nextObject++, std::move(copy));
    }
    return id;
}

int Scene::CloneGroup(int source, int target, bool capable, const std::string& label, int& newId) {
    if (!Find(source)) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (!Find(target)) {
        return KST_ERROR_UNKNOWN_PARENT;
    }
    newId = CloneOne(source, target, capable, label);
    return KST_OK;
}

void Scene::CloneTree(int node, int target, const std::vector<int>& ids,
                      const std::vector<std::string>& labels, std::vector<int>& newIds) {
    const auto match = std::find(ids.begin(), ids.end(), node);
    const auto index = static_cast<std::size_t>(match - ids.begin());
    const bool named = match != ids.end() && !labels.empty();
    const int clone = CloneOne(node, target, false, named ? labels[index] : std::string());
    if (match != ids.end()) {
        newIds[index] = clone;
    }
    for (const int child : m_groups[node].children) {
        CloneTree(child, clone, ids, labels, newIds);
    }
}

int Scene::CloneGroupRecursive(int source, int target, const std::vector<int>& ids,
                               const std::vector<std::string>& labels, std::vector<int>& newIds) {
    if (!Find(source) || !Find(target)) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (IsBelow(target, source)) {
        return KST_ERROR_CLONE_INTO_ITSELF;
    }
    CloneTree(source, target, ids, labels, newIds);
    return KST_OK;
}

int Scene::SetCapability(int id, bool on) {
    if (!MovableGroup(id)) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    Group& group = m_groups[id];
    if (group.capable != on) {
        group.capable = on;
        for (const int objectId : group.objects) {
            m_objects[objectId].margin = 0;
        }
    }
    return KST_OK;
}

int Scene::SetGroupClearance(int id, float margin) {
    if (!MovableGroup(id)) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (margin < 0) {
        return KST_ERROR_ARGUMENT;
    }
    if (m_groups[id].capable) {
        for (const int objectId : ObjectsInWorld(id)) {
            m_objects[objectId].margin = margin;
        }
    }
    return KST_OK;
}

int Scene::ClearGroupKeyStates(int id) {
    Node* group = MovableGroup(id);
    if (!group) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    // A track without keys stays, and its cyclic flag with it.
    if (group->IsAnimated()) {
        group->track.reset();
    }
    return KST_OK;
}

void Scene::Register(int id, Object object) {
    if (!object.label.empty()) {
        m_labels[object.label] = id;
    }
    m_groups[object.group].objects.insert(id);
    m_objects[id] = std::move(object);
}

int Scene::CreateObject(Object object, int& newId) {
    if (std::any_of(object.sizes.begin(), object.sizes.end(), [](float s) { return s < 0; })) {
        return KST_ERROR_ARGUMENT;
    }
    if (!MovableGroup(object.group)) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (!object.label.empty() && m_labels.count(object.label)) {
        return KST_ERROR_LABEL_IN_USE;
    }
    newId = m_nextObject++;
    Register(newId, std::move(object));
    return KST_OK;
}

int Scene::DestroyObject(int id) {
    const auto found = m_objects.find(id);
    if (found == m_objects.end()) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    // Clones share a label: the first of them to go takes it along.
    m_labels.erase(found->second.label);
    m_groups[found->second.group].objects.erase(id);
    m_objects.erase(found);
    return KST_OK;
}

int Scene::MoveObject(int id, int group) {
    const auto found = m_objects.find(id);
    if (found == m_objects.end()) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    if (!MovableGroup(group)) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    Object& object = found->second;
    if (!m_groups[object.group].capable || !m_groups[group].capable) {
        object.margin = 0;
    }
    m_groups[object.group].objects.erase(id);
    m_groups[group].objects.insert(id);
    object.group = group;
    return KST_OK;
}

int Scene::SetObjectClearance(int id, float margin) {
    const auto found = m_objects.find(id);
    if (found == m_objects.end()) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    if (margin < 0) {
        return KST_ERROR_ARGUMENT;
    }
    if (m_groups[found->second.group].capable) {
        found->second.margin = margin;
    }
    return KST_OK;
}

int Scene::ClearObjectKeyStates(int id) {
    Node* object = FindNode(id);
    if (!object) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    object->track.reset();
    return KST_OK;
}

int Scene::AddKeyState(Node& node, float time, const float* position, const Quaternion* turn,
                       const float* scale, float currentTime) {
    if (node.IsAnimated() && node.track->keys.back().time > time) {
        return KST_ERROR_TIME_ORDER;
    }
    Node::Key key = {time, node.position, node.turn, node.scale};
    if (node.IsAnimated()) {
        key = node.track->keys.back();
        key.time = time;
    }
    if (position) {
        key.position = ToVector(position);
    }
    if (turn) {
        key.turn = *turn;
    }
    if (scale) {
        key.scale = ToVector(scale);
    }
    if (!node.track) {
        node.track.emplace();
    }
    node.track->keys.push_back(key);
    node.ApplyTime(currentTime);
    return KST_OK;
}

int Scene::SetTime(float time) {
    if (time < 0) {
        return KST_ERROR_ARGUMENT;
    }
    m_currentTime = time;
    for (auto& [id, object] : m_objects) {
        object.ApplyTime(time);
    }
    for (auto& [id, group] : m_groups) {
        group.ApplyTime(time);
    }
    return KST_OK;
}

int Scene::TestQuery(int group) const {
    const auto found = m_groups.find(group);
    if (group == 0 || found == m_groups.end()) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    return found->second.capable ? KST_OK : KST_ERROR_NOT_CAPABLE;
}

int Scene::TestQuery(int group1, int group2) const {
    const int code1 = TestQuery(group1);
    const int code2 = TestQuery(group2);
    for (const int code : {KST_ERROR_UNKNOWN_GROUP, KST_ERROR_NOT_CAPABLE}) {
        if (code1 == code || code2 == code) {
            return code;
        }
    }
    return ShareGroup(group1, group2) ? KST_ERROR_OVERLAP : KST_OK;
}

bool Scene::ShareGroup(int group1, int group2) const {
    return IsBelow(group1, group2) || IsBelow(group2, group1);
}

void Scene::CollectObjects(int group, std::vector<int>& out) const {
    const Group& node = m_groups.at(group);
    for (const int child : node.children) {
        CollectObjects(child, out);
    }
    out.insert(out.end(), node.objects.begin(), node.objects.end());
}

std::vector<int> Scene::ObjectsInWorld(int group) const {
    std::vector<int> ids;
    CollectObjects(group, ids);
    const auto stands = [this](int id) {
        const Object& object = m_objects.at(id);
        return object.type != KST_POLYLINE && m_groups.at(object.group).capable;
    };
    ids.erase(std::remove_if(ids.begin(), ids.end(), [&](int id) { return !stands(id); }),
              ids.end());
    return ids;
}

Placement Scene::PlacementOf(const Object& object) const {
    std::vector<const Node*> chain = {&object};
    for (int id = object.group; id != 0; id = m_groups.at(id).parent) {
        chain.push_back(&m_groups.at(id));
    }
    Placement placement;
    for (auto node = chain.rbegin(); node != chain.rend(); ++node) {
        const auto& [x, y, z] = (*node)->position;
        placement.map = placement.map * Compose((*node)->position, (*node)->turn, (*node)->scale);
        placement.translationBound += placement.linearBound * std::hypot(x, y, z);
        placement.linearBound *=
            std::max({(*node)->scale[0], (*node)->scale[1], (*node)->scale[2]});
    }
    placement.links = static_cast<int>(chain.size());
    return placement;
}

Containment Scene::Contains(const Object& object, const Vector& point) const {
    constexpr double kNear = 1e-3;  // closer to the surface than this, rounding may decide
    Vector p = {};
    if (object.margin > 0 || object.sizes.empty() || !Unmap(PlacementOf(object).map, point, p)) {
        return Containment::kUnsure;
    }
    // How far the point lies outside, in the shape's own measure; negative inside.
    double outside = 0;
    const std::vector<float>& size = object.sizes;
    const double aside = std::hypot(p[0], p[2]);
    switch (object.type) {
        case KST_BOX:
            outside = std::max({std::fabs(p[0]) - size[0] / 2, std::fabs(p[1]) - size[1] / 2,
                                std::fabs(p[2]) - size[2] / 2});
            break;
        case KST_SPHERE:
            outside = std::hypot(p[0], p[1], p[2]) - size[0];
            break;
        case KST_CYLINDER:
            outside = std::max(aside - size[0], std::fabs(p[1]) - size[1] / 2);
            break;
        default: {
            // A cone tapers from its base below to its tip above.
            const double radius = size[1] > 0 ? size[0] * (0.5 - p[1] / size[1]) : size[0];
            outside = std::max(aside - radius, std::fabs(p[1]) - size[1] / 2);
        }
    }
    if (std::fabs(outside) < kNear * (1 + std::fabs(p[0]) + std::fabs(p[1]) + std::fabs(p[2]))) {
        return Containment::kUnsure;
    }
    return outside < 0 ? Containment::kInside : Containment::kOutside;
}

}  // namespace reference
