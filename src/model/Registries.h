#pragma once

/// All that lives in the scene, by id, by label and by motion. Nothing here owns: groups and
/// objects enter and leave by themselves. The registries stand until the process ends, also for
/// calls out of a host's static destructors.

#include <set>

#include "model/IdTable.h"
#include "model/Labels.h"

class CGroup;
class CSceneObject;

/// Orders by id, so that walks over a set go the same way in every run.
struct CIdLess {
    bool operator()(const CGroup* a, const CGroup* b) const noexcept;
    bool operator()(const CSceneObject* a, const CSceneObject* b) const noexcept;
};

extern CIdTable<CGroup>& g_groups;
extern CIdTable<CSceneObject>& g_objects;
extern CLabels& g_labels;

/// Those with key states.
extern std::set<CGroup*, CIdLess>& g_animatedGroups;
extern std::set<CSceneObject*, CIdLess>& g_animatedObjects;

/// Grows whenever the response classes of some subtree have become others.
extern unsigned long long g_classChanges;

/// Ids are never given out twice between two starts of the library.
extern int g_nextGroupId;
extern int g_nextObjectId;
/// Throws std::bad_alloc when there is no id left but `next`.
void RequireNextId(int next);

/// The time last set, and the largest time of any key state seen; both in the host's unit of time.
extern float g_currentTime;
extern float g_timeScaleMax;
