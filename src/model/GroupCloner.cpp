#include "model/GroupCloner.h"

#include <unordered_map>
#include <utility>
#include <vector>

#include "model/GroupWalk.h"
#include "model/Registries.h"
#include "model/SceneObject.h"
#include "model/neighbours.h"

CGroupCloner::CGroupCloner(CGroup* target) noexcept
    : m_target(target),
      m_current(target),
      m_firstGroupId(g_nextGroupId),
      m_firstObjectId(g_nextObjectId) {}

CGroupCloner::~CGroupCloner() {
    if (m_finished || !m_top)
        return;
    while (m_current != m_target)
        Close();
    groupwalk::Objects(*m_top, [](CSceneObject& object) {
        // The label still means the object that had it before.
        if (!object.m_broughtLabel)
            object.m_label.clear();
    });
    CGroup::Destroy(m_top);
    g_nextGroupId = m_firstGroupId;
    g_nextObjectId = m_firstObjectId;
}

CGroup* CGroupCloner::Open(const CGroup& source, bool colCheck, const std::string& label) {
    CGroup* const copy = CGroup::Adopt(CGroup::New(m_current, colCheck, label));
    if (!m_top)
        m_top = copy;
    m_current = copy;

    copy->m_poseMatrix = source.m_poseMatrix;
    copy->m_scaleMatrix = source.m_scaleMatrix;
    copy->m_activeSurface = source.m_activeSurface;
    copy->UpdateWorldMatrix();
    for (std::size_t i = 0; i < copy->m_surface.size(); ++i)
        copy->m_surface[i] = source.m_surface[i]->Clone();
    copy->m_visibleInView = source.m_visibleInView;
    // Ancestors are counted as the copies are closed, once for each group and not for each object.
    for (const auto& [id, object] : source.m_objects)
        CSceneObject::Enter(object->CopyWithState(copy), CSceneObject::CountReach::kGroupOnly);
    return copy;
}

void CGroupCloner::Close() noexcept {
    CGroup* const parent = m_current->m_parent;
    if (m_current == m_top)
        parent->AddToSubtreeCounts(m_current->m_subtreePrimitiveCount);
    else
        parent->m_subtreePrimitiveCount += m_current->m_subtreePrimitiveCount;
    m_current = parent;
}

CGroup* CGroupCloner::Finish() noexcept {
    while (m_current != m_target)
        Close();
    m_finished = true;
    groupwalk::ParentsFirst(*m_top, [](CGroup& group) {
        for (const auto& [id, object] : group.m_objects)
            object->ClaimLabel();
        if (g_controlPanel)
            g_controlPanel->AddGroupRow(&group, true);
    });
    m_target->UpdateRow();
    return m_top;
}

CGroup* CGroup::Clone(bool colCheck, CGroup* target, const std::string& label) const {
    CGroupCloner cloner(target);
    cloner.Open(*this, colCheck, label);
    return cloner.Finish();
}

CGroup* CGroup::CloneRecursive(const CGroup* source, int* newIds, CGroup* target, int count,
                               const int* ids, const char* const* labels) {
    std::unordered_map<int, int> placeOfId;
    for (int i = 0; i < count; ++i)
        placeOfId.try_emplace(ids[i], i);
    std::vector<std::pair<int, int>> placeAndNewId;

    CGroupCloner cloner(target);
    const CGroup* group = source;
    while (group) {
        const auto wanted = placeOfId.find(group->m_id);
        const char* label = nullptr;
        if (wanted != placeOfId.end() && labels)
            label = labels[wanted->second];
        const CGroup* const copy = cloner.Open(*group, false, label ? label : "");
        if (wanted != placeOfId.end())
            placeAndNewId.emplace_back(wanted->second, copy->m_id);

        const CGroup* next = groupwalk::FirstChild(*group);
        while (!next && group != source) {
            cloner.Close();
            next = groupwalk::NextSibling(*group);
            group = group->m_parent;
        }
        group = next;
    }
    for (const auto& [place, newId] : placeAndNewId)
        newIds[place] = newId;
    return cloner.Finish();
}
