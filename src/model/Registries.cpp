#include "model/Registries.h"

#include "model/Group.h"
#include "model/SceneObject.h"
#include "model/neighbours.h"

CCollisionNeighbour* g_collision = nullptr;
CDisplayNeighbour* g_visualiser = nullptr;
CPanelNeighbour* g_controlPanel = nullptr;

std::map<int, CGroup*> g_groups;
std::map<int, CSceneObject*> g_objects;
CLabels g_labels;
std::set<CGroup*, CIdLess> g_animatedGroups;
std::set<CSceneObject*, CIdLess> g_animatedObjects;
int g_nextGroupId = 0;
int g_nextObjectId = 0;
float g_currentTime = 0;
float g_timeScaleMax = 0;

bool CIdLess::operator()(const CGroup* a, const CGroup* b) const noexcept {
    return a->Id() < b->Id();
}

bool CIdLess::operator()(const CSceneObject* a, const CSceneObject* b) const noexcept {
    return a->Id() < b->Id();
}
