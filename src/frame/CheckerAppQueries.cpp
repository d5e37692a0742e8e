#include "collision/CollisionManager.h"
#include "frame/Arguments.h"
#include "frame/CheckerApp.h"
#include "model/Group.h"

namespace {

/// The tests on a group that a query names, before those on its further arguments.
int TestQueriedGroup(const CGroup* group) noexcept {
    if (group == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    return group->IsCollisionCapable() ? KST_OK : KST_ERROR_NOT_CAPABLE;
}

/// Both groups are looked up before the capability of either is looked at.
int TestQueriedGroups(const CGroup* group1, const CGroup* group2) noexcept {
    if (group1 == nullptr || group2 == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    const bool capable = group1->IsCollisionCapable() && group2->IsCollisionCapable();
    return capable ? KST_OK : KST_ERROR_NOT_CAPABLE;
}

}  // namespace

int CCheckerApp::CheckPointCollision(int group, float x, float y, float z, bool all, int* count) {
    const CGroup* queried = FindGroupBelowRoot(group);
    const int status = TestQueriedGroup(queried);
    if (status != KST_OK || count == nullptr) {
        return status != KST_OK ? status : KST_ERROR_ARGUMENT;
    }
    return m_collision->CheckPoint(*queried, {x, y, z}, all, count);
}

int CCheckerApp::CheckLineCollision(int group, float x1, float y1, float z1, float x2, float y2,
                                    float z2, bool all, int* count) {
    const CGroup* queried = FindGroupBelowRoot(group);
    const int status = TestQueriedGroup(queried);
    if (status != KST_OK || count == nullptr) {
        return status != KST_OK ? status : KST_ERROR_ARGUMENT;
    }
    return m_collision->CheckLine(*queried, {x1, y1, z1}, {x2, y2, z2}, all, count);
}

int CCheckerApp::CheckGroupCollision(int group1, int group2, bool all, int* count) {
    const CGroup* first = FindGroupBelowRoot(group1);
    const CGroup* second = FindGroupBelowRoot(group2);
    const int status = TestQueriedGroups(first, second);
    if (status != KST_OK || count == nullptr) {
        return status != KST_OK ? status : KST_ERROR_ARGUMENT;
    }
    return m_collision->CheckGroups(*first, *second, all, count);
}

int CCheckerApp::GetClosestPairs(int group1, int group2, int* count) {
    const CGroup* first = FindGroupBelowRoot(group1);
    const CGroup* second = FindGroupBelowRoot(group2);
    const int status = TestQueriedGroups(first, second);
    if (status != KST_OK || count == nullptr) {
        return status != KST_OK ? status : KST_ERROR_ARGUMENT;
    }
    return m_collision->GetClosestPairs(*first, *second, count);
}

int CCheckerApp::GetPenetrationDepths(int group1, int group2, int* count) {
    const CGroup* first = FindGroupBelowRoot(group1);
    const CGroup* second = FindGroupBelowRoot(group2);
    const int status = TestQueriedGroups(first, second);
    if (status != KST_OK || count == nullptr) {
        return status != KST_OK ? status : KST_ERROR_ARGUMENT;
    }
    return m_collision->GetPenetrationDepths(*first, *second, count);
}

int CCheckerApp::GetResults(void* results) {
    if (results == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    CCollisionManager::CopyResults(static_cast<CCollisionResult*>(results));
    return KST_OK;
}

int CCheckerApp::GetID(int* id, const std::string& label) {
    const int* found = g_labels.Find(label);
    if (found == nullptr) {
        return KST_ERROR_UNKNOWN_LABEL;
    }
    if (id == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    *id = *found;
    return KST_OK;
}
