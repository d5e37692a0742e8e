#include "model/Registries.h"

#include <limits>
#include <memory>
#include <new>

#include "model/Group.h"
#include "model/ModelLock.h"
#include "model/SceneObject.h"
#include "model/neighbours.h"

namespace {

template <class T>
T& NeverDestroyed() {
    return *std::make_unique<T>().release();
}

}  // namespace

std::recursive_mutex g_modelLock;

CCollisionNeighbour* g_collision = nullptr;
CDisplayNeighbour* g_visualiser = nullptr;
CPanelNeighbour* g_controlPanel = nullptr;

CIdTable<CGroup>& g_groups = NeverDestroyed<CIdTable<CGroup>>();
CIdTable<CSceneObject>& g_objects = NeverDestroyed<CIdTable<CSceneObject>>();
CLabels& g_labels = NeverDestroyed<CLabels>();
std::set<CGroup*, CIdLess>& g_animatedGroups = NeverDestroyed<std::set<CGroup*, CIdLess>>();
std::set<CSceneObject*, CIdLess>& g_animatedObjects =
    NeverDestroyed<std::set<CSceneObject*, CIdLess>>();
unsigned long long g_classChanges = 0;
int g_nextGroupId = 0;
int g_nextObjectId = 0;
float g_currentTime = 0;
float g_timeScaleMax = 0;

void RequireNextId(int next) {
    if (next == std::numeric_limits<int>::max())
        throw std::bad_alloc();
}

bool CIdLess::operator()(const CGroup* a, const CGroup* b) const noexcept {
    return a->Id() < b->Id();
}

bool CIdLess::operator()(const CSceneObject* a, const CSceneObject* b) const noexcept {
    return a->Id() < b->Id();
}
