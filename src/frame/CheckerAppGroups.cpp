#include "frame/Arguments.h"
#include "frame/CheckerApp.h"
#include "frame/SceneLock.h"
#include "frame/TimeScale.h"
#include "model/Group.h"
#include "model/SceneObject.h"
#include "model/neighbours.h"

int CCheckerApp::CreateGroup(int* newId, int parent, bool colCheck, const std::string& label,
                             bool collapsed) {
    CGroup* parentGroup = FindGroup(parent);
    if (newId == nullptr || parentGroup == nullptr) {
        return KST_ERROR_UNKNOWN_PARENT;
    }
    *newId = CGroup::Create(parentGroup, colCheck, label, collapsed)->Id();
    return KST_OK;
}

int CCheckerApp::DestroyGroup(int id) {
    CGroup* group = FindGroupBelowRoot(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    CGroup::Destroy(group);
    return KST_OK;
}

int CCheckerApp::EmptyGroup(int id) {
    CGroup* group = FindGroup(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    const CSceneLock still(m_display.get());
    group->Empty();
    return KST_OK;
}

int CCheckerApp::MoveGroup(int id, int newParent) {
    CGroup* group = FindGroupBelowRoot(id);
    CGroup* parentGroup = FindGroup(newParent);
    if (group == nullptr || parentGroup == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (parentGroup->IsWithin(*group)) {
        return KST_ERROR_OVERLAP;
    }
    const CSceneLock still(m_display.get());
    group->MoveTo(parentGroup);
    return KST_OK;
}

int CCheckerApp::SetGroupPosition(int id, float x, float y, float z) {
    CGroup* group = FindGroupBelowRoot(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (group->IsAnimated()) {
        return KST_ERROR_ANIMATED;
    }
    group->SetPosition(x, y, z);
    return KST_OK;
}

int CCheckerApp::SetGroupOrientation(int id, float x, float y, float z) {
    CGroup* group = FindGroupBelowRoot(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (group->IsAnimated()) {
        return KST_ERROR_ANIMATED;
    }
    if (!IsOrientation(x, y, z)) {
        return KST_ERROR_ARGUMENT;
    }
    group->SetOrientation(x, y, z);
    return KST_OK;
}

int CCheckerApp::SetGroupScaling(int id, float x, float y, float z) {
    CGroup* group = FindGroupBelowRoot(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (group->IsAnimated()) {
        return KST_ERROR_ANIMATED;
    }
    if (!IsSize(x, y, z)) {
        return KST_ERROR_ARGUMENT;
    }
    group->SetScaling(x, y, z);
    return KST_OK;
}

int CCheckerApp::SetGroupQuaternion(int id, float x, float y, float z, float w) {
    CGroup* group = FindGroupBelowRoot(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (group->IsAnimated()) {
        return KST_ERROR_ANIMATED;
    }
    group->SetQuaternion(x, y, z, w);
    return KST_OK;
}

int CCheckerApp::SetGroupColor(int id, float r, float g, float b, float a, bool recursive,
                               int surfaceIndex) {
    if (g_visualiser == nullptr) {
        return KST_OK;
    }
    CGroup* group = FindGroupBelowRoot(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (!IsColor(r, g, b, a) || !IsSurface(surfaceIndex)) {
        return KST_ERROR_ARGUMENT;
    }
    group->SetColor(r, g, b, a, recursive, surfaceIndex);
    return KST_OK;
}

int CCheckerApp::SetGroupTexture(int id, int texture, float xTile, float yTile, bool recursive,
                                 int surfaceIndex) {
    if (g_visualiser == nullptr) {
        return KST_OK;
    }
    if (!IsTexture(texture) || !IsTiling(xTile, yTile)) {
        return KST_ERROR_ARGUMENT;
    }
    CGroup* group = FindGroup(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (!IsSurface(surfaceIndex)) {
        return KST_ERROR_ARGUMENT;
    }
    group->SetTexture(texture, xTile, yTile, recursive, surfaceIndex);
    return KST_OK;
}

int CCheckerApp::SetGroupActiveSurface(int id, bool recursive, int surfaceIndex) {
    CGroup* group = FindGroupBelowRoot(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (!IsSurface(surfaceIndex)) {
        return KST_ERROR_ARGUMENT;
    }
    if (g_visualiser != nullptr) {
        group->SetActiveSurface(surfaceIndex, recursive);
    }
    return KST_OK;
}

int CCheckerApp::SetGroupCollisionCheckCapability(int id, bool on) {
    CGroup* group = FindGroupBelowRoot(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    group->SetCollisionCapability(on);
    return KST_OK;
}

int CCheckerApp::SetGroupClearance(int id, float margin) {
    CGroup* group = FindGroupBelowRoot(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (!IsSize(margin)) {
        return KST_ERROR_ARGUMENT;
    }
    if (group->IsCollisionCapable()) {
        group->SetClearance(margin);
    }
    return KST_OK;
}

int CCheckerApp::SetGroupVisibility(int id, int view, bool visible) {
    CGroup* group = FindGroupBelowRoot(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (!IsView(view)) {
        return KST_ERROR_ARGUMENT;
    }
    if (g_visualiser != nullptr) {
        if (visible) {
            g_visualiser->ShowGroup(group, view);
        } else {
            g_visualiser->HideGroup(group, view);
        }
    }
    if (g_controlPanel != nullptr) {
        g_controlPanel->SetGroupVisibleInView(group, view);
    }
    return KST_OK;
}

int CCheckerApp::AddGroupKeyState(int id, float time, const float* pos, const float* orient,
                                  const float* scale, bool isQuaternion) {
    if (!IsKeyOrientation(orient, isQuaternion)) {
        return KST_ERROR_ARGUMENT;
    }
    CGroup* group = FindGroupBelowRoot(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (group->Motion() != nullptr && group->Motion()->LastTime() > time) {
        return KST_ERROR_TIME_ORDER;
    }
    group->AddKeyState(time, pos, orient, scale, isQuaternion);
    ExtendTimeScale(time);
    return KST_OK;
}

int CCheckerApp::SetGroupCyclic(int id, bool cyclic) {
    CGroup* group = FindGroupBelowRoot(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    group->SetCyclic(cyclic);
    return KST_OK;
}

int CCheckerApp::ClearGroupKeyStates(int id) {
    CGroup* group = FindGroupBelowRoot(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    group->ClearKeyStates();
    RecomputeTimeScale();
    return KST_OK;
}

int CCheckerApp::CloneGroup(int* newId, int source, int targetParent, bool colCheck,
                            const std::string& label) {
    CGroup* sourceGroup = FindGroup(source);
    if (sourceGroup == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    CGroup* target = FindGroup(targetParent);
    if (target == nullptr) {
        return KST_ERROR_UNKNOWN_PARENT;
    }
    if (newId == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    *newId = sourceGroup->Clone(colCheck, target, label)->Id();
    return KST_OK;
}

int CCheckerApp::CloneGroupRecursive(int* newIds, int source, int targetParent, int count,
                                     const int* ids, const char** labels) {
    CGroup* sourceGroup = FindGroup(source);
    CGroup* target = FindGroup(targetParent);
    if (sourceGroup == nullptr || target == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (target->IsWithin(*sourceGroup)) {
        return KST_ERROR_CLONE_INTO_ITSELF;
    }
    if (count < 0 || (count > 0 && (newIds == nullptr || ids == nullptr))) {
        return KST_ERROR_ARGUMENT;
    }
    CGroup::CloneRecursive(sourceGroup, newIds, target, count, ids, labels);
    return KST_OK;
}

int CCheckerApp::GetGroup(int id, KstGroupInfo* info) {
    const CGroup* group = FindGroup(id);
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (info == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    group->GetInfo(info);
    return KST_OK;
}

namespace {

/// The id at a place in a map that is ordered by id.
template <class Map>
int IdAt(const Map& map, int index, int* id) noexcept {
    if (index < 0 || static_cast<std::size_t>(index) >= map.size() || id == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    *id = std::next(map.begin(), index)->first;
    return KST_OK;
}

}  // namespace

int CCheckerApp::GetGroupChildID(int id, int index, int* childId) {
    const CGroup* group = FindGroup(id);
    return group == nullptr ? KST_ERROR_UNKNOWN_GROUP : IdAt(group->Children(), index, childId);
}

int CCheckerApp::GetGroupObjectID(int id, int index, int* objectId) {
    const CGroup* group = FindGroup(id);
    return group == nullptr ? KST_ERROR_UNKNOWN_GROUP : IdAt(group->Objects(), index, objectId);
}
