#include "model/Group.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "kestrane.h"
#include "model/DeferredCounts.h"
#include "model/ExportName.h"
#include "model/GroupWalk.h"
#include "model/Placement.h"
#include "model/Registries.h"
#include "model/Rollback.h"
#include "model/SceneObject.h"
#include "model/neighbours.h"

namespace {

void RequestRedraw() noexcept {
    if (g_visualiser)
        g_visualiser->Redraw();
}

/// Objects that move in one go. A frame is asked for at the end.
class CMoving {
  public:
    CMoving() = default;
    ~CMoving() {
        if (m_count > 0)
            RequestRedraw();
    }
    CMoving(const CMoving&) = delete;
    CMoving& operator=(const CMoving&) = delete;

    void Pass(CSceneObject& object) noexcept {
        if (m_count++ % kObjectsALock == 0) {
            m_guard.reset();
            m_guard.emplace();
        }
        object.PassTransforms();
    }

  private:
    /// So many that a frame never waits long, and the lock is taken seldom.
    static constexpr int kObjectsALock = 2000;
    std::optional<CFrameGuard> m_guard;
    int m_count = 0;
};

}  // namespace

CGroup::CGroup(CGroup* parent, const std::string& label)
    : m_id(g_nextGroupId), m_parent(parent), m_label(label) {
    if (parent) {
        m_visibleInView = parent->m_visibleInView;
        m_worldMatrix = parent->m_worldMatrix;
    }
    for (auto& surface : m_surface)
        surface = std::make_unique<CSurface>(1.0f, 0.0f, 0.0f, 1.0f);
    RequestRedraw();
}

std::unique_ptr<CGroup> CGroup::New(CGroup* parent, bool colCheck, const std::string& label) {
    RequireNextId(g_nextGroupId);
    std::unique_ptr<CGroup> group(
        new CGroup(parent, label.empty() ? label : g_labels.MakeUnique(label)));
    if (colCheck)
        group->m_responseClass = g_collision->GenResponseClass();
    // What was entered here leaves with the group if a later step fails.
    if (!group->m_label.empty())
        g_labels.Add(group->m_label, group->m_id);
    g_groups.emplace(group->m_id, group.get());
    return group;
}

CGroup* CGroup::Adopt(std::unique_ptr<CGroup> group) {
    // The place first, so that the group is still owned here if there is no memory for it.
    auto& place = group->m_parent->m_children[group->m_id];
    place = std::move(group);
    ++g_nextGroupId;
    ++g_classChanges;
    return place.get();
}

CGroup* CGroup::Create(CGroup* parent, bool colCheck, const std::string& label, bool collapsed) {
    CGroup* const group = Adopt(New(parent, colCheck, label));
    if (g_controlPanel)
        g_controlPanel->AddGroupRow(group, collapsed);
    return group;
}

std::unique_ptr<CGroup> CGroup::CreateRoot(bool colCheck, const std::string& label) {
    std::unique_ptr<CGroup> root = New(nullptr, colCheck, label);
    ++g_nextGroupId;
    ++g_classChanges;
    if (g_controlPanel)
        g_controlPanel->AddGroupRow(root.get(), false);
    return root;
}

void CGroup::Destroy(CGroup* group) noexcept {
    CGroup* const parent = group->m_parent;
    group->Empty();
    parent->m_children.erase(group->m_id);
    parent->UpdateRow();
}

CGroup::~CGroup() {
    Empty();
    ReleaseResponseClass();
    g_groups.erase(m_id);
    g_animatedGroups.erase(this);
    if (g_controlPanel && m_parent)
        g_controlPanel->RemoveGroupRow(m_id);
    if (!m_label.empty())
        g_labels.Remove(m_label);
}

void CGroup::Empty() noexcept {
    const int before = m_subtreePrimitiveCount;
    bool changed = false;
    CGroup* group = groupwalk::FirstLeaf(*this);
    for (;;) {
        changed = changed || !group->m_objects.empty();
        group->DestroyOwnObjects();
        if (group == this)
            break;
        // The walk stays within the subtree: the ancestors' counts follow at the end, once.
        CGroup* const parent = group->m_parent;
        parent->m_children.erase(group->m_id);
        changed = true;
        group = groupwalk::FirstLeaf(*parent);
    }
    m_subtreePrimitiveCount = 0;
    if (!changed)
        return;
    if (m_parent)
        m_parent->AddToSubtreeCounts(-before);
    UpdateRow();
}

void CGroup::DestroyOwnObjects() noexcept {
    while (!m_objects.empty()) {
        m_objects.begin()->second->LeaveScene();
        m_objects.erase(m_objects.begin());
    }
    m_ownPrimitiveCount = 0;
    m_subtreePrimitiveCount = 0;
}

void CGroup::UpdateRow() noexcept {
    if (g_controlPanel)
        g_controlPanel->UpdateGroupRow(this);
}

bool CGroup::IsWithin(const CGroup& ancestor) const noexcept {
    for (const CGroup* group = this; group; group = group->m_parent) {
        if (group == &ancestor)
            return true;
    }
    return false;
}

void CGroup::AddToSubtreeCounts(int count) noexcept {
    for (CGroup* group = this; group; group = group->m_parent)
        group->m_subtreePrimitiveCount += count;
}

void CGroup::AddToAncestors(int count) noexcept {
    if (CDeferredCounts::IsOf(*this))
        m_uncounted += count;
    else if (m_parent)
        m_parent->AddToSubtreeCounts(count);
}

void CGroup::GetInfo(KstGroupInfo* info) const noexcept {
    info->childCount = static_cast<int>(m_children.size());
    info->objectCount = static_cast<int>(m_objects.size());
    std::copy(m_visibleInView.begin(), m_visibleInView.end(), info->visibleInView);
    info->colCheck = IsCollisionCapable();
}

void CGroup::GetExportName(std::string& out) const {
    MakeExportName(m_label, "group", m_id, out);
}

void CGroup::AddOwnObject(std::unique_ptr<CSceneObject>&& object) {
    auto& place = m_objects[object->Id()];
    place = std::move(object);
    m_ownPrimitiveCount += place->PrimitiveCount();
    m_subtreePrimitiveCount += place->PrimitiveCount();
}

std::unique_ptr<CSceneObject> CGroup::RemoveOwnObject(CSceneObject* object) noexcept {
    auto node = m_objects.extract(object->Id());
    m_ownPrimitiveCount -= object->PrimitiveCount();
    m_subtreePrimitiveCount -= object->PrimitiveCount();
    return std::move(node.mapped());
}

void CGroup::AddObject(std::unique_ptr<CSceneObject>&& object) {
    const int count = object->PrimitiveCount();
    AddOwnObject(std::move(object));
    AddToAncestors(count);
    UpdateRow();
}

std::unique_ptr<CSceneObject> CGroup::RemoveObject(CSceneObject* object) noexcept {
    auto removed = RemoveOwnObject(object);
    AddToAncestors(-removed->PrimitiveCount());
    UpdateRow();
    return removed;
}

void CGroup::PassObject(CSceneObject* object, CGroup& to) noexcept {
    m_ownPrimitiveCount -= object->PrimitiveCount();
    AddToSubtreeCounts(-object->PrimitiveCount());
    to.m_objects.insert(m_objects.extract(object->Id()));
    to.m_ownPrimitiveCount += object->PrimitiveCount();
    to.AddToSubtreeCounts(object->PrimitiveCount());
}

void CGroup::CollectOwnObjects(std::vector<CSceneObject*>& out) const {
    for (const auto& [id, object] : m_objects)
        out.push_back(object.get());
}

void CGroup::CollectObjects(std::vector<CSceneObject*>& out) const {
    groupwalk::Objects(*this, [&out](CSceneObject& object) { out.push_back(&object); });
}

void CGroup::CollectGroups(std::vector<CGroup*>& out) {
    groupwalk::ParentsFirst(*this, [&out](CGroup& group) { out.push_back(&group); });
}

void CGroup::CollectResponseClasses(std::vector<int>& out) const {
    groupwalk::ChildrenFirst(*this, [&out](const CGroup& group) {
        if (group.IsCollisionCapable())
            out.push_back(group.m_responseClass);
    });
}

void CGroup::SetCollisionCapability(bool on) {
    if (on == IsCollisionCapable())
        return;
    if (on) {
        m_responseClass = g_collision->GenResponseClass();
        ++g_classChanges;
        CRollback undo([this] {
            for (const auto& [id, object] : m_objects)
                object->LeaveCollisionWorld();
            ReleaseResponseClass();
        });
        for (const auto& [id, object] : m_objects)
            object->EnterCollisionWorld();
        undo.Dismiss();
    } else {
        for (const auto& [id, object] : m_objects)
            object->LeaveCollisionWorld();
        ReleaseResponseClass();
    }
    UpdateRow();
}

void CGroup::ReleaseResponseClass() noexcept {
    if (IsCollisionCapable())
        g_collision->ReleaseResponseClass(m_responseClass);
    m_responseClass = kNoResponseClass;
    ++g_classChanges;
}

void CGroup::SetClearance(float margin) noexcept {
    groupwalk::Objects(*this, [margin](CSceneObject& object) { object.SetClearance(margin); });
}

void CGroup::SetViewVisibility(int view, bool visible) noexcept {
    groupwalk::ChildrenFirst(*this, [view, visible](CGroup& group) {
        group.m_visibleInView[static_cast<std::size_t>(view)] = visible;
    });
}

void CGroup::SetPosition(float x, float y, float z) noexcept {
    m_poseMatrix = mav_matrixXYZSet(m_poseMatrix, mav_vectorSet(x, y, z));
    UpdateWorldMatrix();
    UpdateObjects();
}

void CGroup::SetOrientation(float x, float y, float z) noexcept {
    m_poseMatrix = WithAngles(m_poseMatrix, x, y, z);
    UpdateWorldMatrix();
    UpdateObjects();
}

void CGroup::SetScaling(float x, float y, float z) noexcept {
    m_scaleMatrix = ScalingMatrix(x, y, z);
    UpdateWorldMatrix();
    UpdateObjects();
}

void CGroup::SetQuaternion(float x, float y, float z, float w) noexcept {
    m_poseMatrix = WithQuaternion(m_poseMatrix, x, y, z, w);
    UpdateWorldMatrix();
    UpdateObjects();
}

void CGroup::UpdateWorldMatrix() noexcept {
    groupwalk::ParentsFirst(*this, [](CGroup& group) {
        group.m_localMatrix = mav_matrixMult(group.m_poseMatrix, group.m_scaleMatrix);
        group.m_worldMatrix =
            group.m_parent ? mav_matrixMult(group.m_parent->m_worldMatrix, group.m_localMatrix)
                           : group.m_localMatrix;
    });
}

void CGroup::UpdateObjects() noexcept {
    CMoving moving;
    groupwalk::Objects(*this, [&moving](CSceneObject& object) { moving.Pass(object); });
}

void CGroup::SetSurface(std::unique_ptr<CSurface> surface, int index, bool recursive) {
    // All copies are made before the first is handed out: from then on nothing can fail.
    std::size_t copyCount = m_objects.size();
    if (recursive) {
        copyCount = 0;
        groupwalk::ParentsFirst(
            *this, [&copyCount](const CGroup& group) { copyCount += 1 + group.m_objects.size(); });
        --copyCount;
    }
    std::vector<std::unique_ptr<CSurface>> copies(copyCount);
    for (auto& copy : copies)
        copy = surface->Clone();

    auto next = copies.begin();
    const auto i = static_cast<std::size_t>(index);
    const auto giveTo = [&next, i, index](CGroup& group, std::unique_ptr<CSurface> own) {
        group.m_surface[i] = std::move(own);
        for (const auto& [id, object] : group.m_objects)
            object->SetSurface(std::move(*next++), index);
    };
    giveTo(*this, std::move(surface));
    if (!recursive)
        return;
    groupwalk::ParentsFirst(*this, [this, &next, &giveTo](CGroup& group) {
        if (&group != this)
            giveTo(group, std::move(*next++));
    });
}

void CGroup::SetColor(float r, float g, float b, float a, bool recursive, int index) {
    SetSurface(std::make_unique<CSurface>(r, g, b, a), index, recursive);
    RequestRedraw();
}

void CGroup::SetTexture(int texture, float xTile, float yTile, bool recursive, int index) {
    SetSurface(std::make_unique<CSurface>(texture, xTile, yTile), index, recursive);
    RequestRedraw();
}

void CGroup::SetActiveSurface(int index, bool recursive) noexcept {
    m_activeSurface = index;
    if (recursive) {
        groupwalk::ParentsFirst(*this, [index](CGroup& group) { group.m_activeSurface = index; });
    }
    groupwalk::Objects(*this, [index](CSceneObject& object) { object.ApplySurface(index); });
    RequestRedraw();
}

void CGroup::SetSurfaceAlpha(float alpha, int index, bool recursive) {
    const auto apply = [alpha, index](CGroup& group) {
        for (const auto& [id, object] : group.m_objects)
            object->SetSurfaceAlpha(alpha, index);
        group.m_surface[static_cast<std::size_t>(index)]->SetAlpha(alpha);
    };
    if (recursive)
        groupwalk::ChildrenFirst(*this, apply);
    else
        apply(*this);
}

void CGroup::SetCyclic(bool cyclic) {
    if (!m_motion)
        m_motion = std::make_unique<CMotion>();
    m_motion->SetCyclic(cyclic);
}

void CGroup::AddKeyState(float time, const float* pos, const float* orient, const float* scale,
                         bool isQuaternion) {
    // A set entry or a track without keys that is left over by a failure must not be seen.
    auto fresh = m_motion ? nullptr : std::make_unique<CMotion>();
    CMotion& motion = fresh ? *fresh : *m_motion;
    const bool entered = g_animatedGroups.insert(this).second;
    CRollback undo([this, entered] {
        if (entered)
            g_animatedGroups.erase(this);
    });
    motion.AddKeyState(time, pos, orient, scale, isQuaternion, m_poseMatrix, m_scaleMatrix);
    undo.Dismiss();
    if (fresh)
        m_motion = std::move(fresh);
    m_animated = true;
    ApplyTime(g_currentTime);
}

void CGroup::ClearKeyStates() noexcept {
    if (!m_animated)
        return;
    m_motion.reset();
    m_animated = false;
    g_animatedGroups.erase(this);
}

void CGroup::EvaluateMotion(float time) noexcept {
    m_motion->Evaluate(time, m_poseMatrix, m_scaleMatrix);
}

void CGroup::ApplyTime(float time) noexcept {
    EvaluateMotion(time);
    UpdateWorldMatrix();
    UpdateObjects();
}

void CGroup::MoveTo(CGroup* newParent) noexcept {
    CGroup* const oldParent = m_parent;

    oldParent->AddToSubtreeCounts(-m_subtreePrimitiveCount);
    newParent->m_children.insert(oldParent->m_children.extract(m_id));
    m_parent = newParent;
    ++g_classChanges;
    newParent->AddToSubtreeCounts(m_subtreePrimitiveCount);
    if (g_controlPanel) {
        oldParent->UpdateRow();
        newParent->UpdateRow();
        groupwalk::ParentsFirst(*this, [](CGroup& group) {
            g_controlPanel->RemoveGroupRow(group.m_id);
            g_controlPanel->AddGroupRow(&group, false);
        });
        newParent->UpdateRow();
    }
    UpdateWorldMatrix();
    UpdateObjects();
}

void ApplyTimeToScene(float time) noexcept {
    for (CSceneObject* object : g_animatedObjects)
        object->EvaluateMotion(time);
    for (CGroup* group : g_animatedGroups)
        group->EvaluateMotion(time);

    const auto animatedAbove = [](const CGroup* group) {
        while (group && !group->IsAnimated())
            group = group->Parent();
        return group != nullptr;
    };
    {
        CMoving moving;
        for (CSceneObject* object : g_animatedObjects) {
            object->UpdateLocalMatrix();
            if (!animatedAbove(object->Group()))
                moving.Pass(*object);
        }
    }
    for (CGroup* group : g_animatedGroups) {
        if (!animatedAbove(group->Parent())) {
            group->UpdateWorldMatrix();
            group->UpdateObjects();
        }
    }
}
