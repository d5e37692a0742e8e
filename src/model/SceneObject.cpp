#include "model/SceneObject.h"

#include <algorithm>
#include <utility>

#include "kestrane.h"
#include "model/ExportName.h"
#include "model/Placement.h"
#include "model/Registries.h"
#include "model/Rollback.h"
#include "model/neighbours.h"

void CSceneObject::DrawableDeleter::operator()(MAV_object* object) const noexcept {
    // The display goes before the scene does, and its objects with it.
    if (g_visualiser)
        g_visualiser->DeleteObject(object);
}

CSceneObject::CSceneObject(ObjectType type, CGroup* group, std::string label, int primitiveCount)
    : m_id(g_nextObjectId),
      m_group(group),
      m_label(std::move(label)),
      m_type(type),
      m_primitiveCount(primitiveCount) {
    RequireNextId(m_id);
}

CSceneObject::~CSceneObject() = default;

void CSceneObject::MakeDrawable(MAV_class shape, void* record) {
    if (g_visualiser)
        m_mavObject.reset(g_visualiser->NewObject(shape, record));
}

CSceneObject* CSceneObject::Register(std::unique_ptr<CSceneObject> object) {
    object->TakeGroupSurfaces();
    CSceneObject* const entered = Enter(std::move(object), CountReach::kAllAncestors);
    entered->ClaimLabel();
    return entered;
}

CSceneObject* CSceneObject::Enter(std::unique_ptr<CSceneObject> owned, CountReach reach) {
    CSceneObject& object = *owned;
    CGroup& group = *object.m_group;
    const bool upwards = reach == CountReach::kAllAncestors;

    object.m_broughtLabel = !object.m_label.empty() && g_labels.Add(object.m_label, object.m_id);
    CRollback undoLabel([&object] {
        if (object.m_broughtLabel)
            g_labels.Remove(object.m_label);
    });
    g_objects.emplace(object.m_id, &object);
    CRollback undoRegistry([&object] { g_objects.erase(object.m_id); });
    if (upwards)
        group.AddObject(std::move(owned));
    else
        group.AddOwnObject(std::move(owned));
    CRollback undoGroup([&owned, &object, &group, upwards] {
        owned = upwards ? group.RemoveObject(&object) : group.RemoveOwnObject(&object);
    });
    if (g_visualiser)
        g_visualiser->AddObject(&object);
    CRollback undoDisplay([&object] {
        if (g_visualiser)
            g_visualiser->RemoveObject(&object);
    });
    if (group.IsCollisionCapable())
        object.EnterCollisionWorld();

    undoDisplay.Dismiss();
    undoGroup.Dismiss();
    undoRegistry.Dismiss();
    undoLabel.Dismiss();
    ++g_nextObjectId;
    return &object;
}

void CSceneObject::ClaimLabel() noexcept {
    if (!m_label.empty())
        g_labels.Reassign(m_label, m_id);
}

void CSceneObject::Destroy(CSceneObject* object) noexcept {
    // Before any destructor runs: until then a frame may be drawing out of the record.
    object->LeaveScene();
    object->m_group->RemoveObject(object);
}

void CSceneObject::LeaveScene() noexcept {
    if (g_visualiser)
        g_visualiser->RemoveObject(this);
    LeaveCollisionWorld();
    if (!m_label.empty())
        g_labels.Remove(m_label);
    g_objects.erase(m_id);
    g_animatedObjects.erase(this);
}

void CSceneObject::EnterCollisionWorld() {
    if (m_type == kTypePolyline)
        return;
    m_solidShape = BuildSolidShape();
    CRollback undoShape([this] {
        DT_DeleteShape(m_solidShape);
        m_solidShape = nullptr;
    });
    g_collision->AddObject(this);
    undoShape.Dismiss();
}

void CSceneObject::LeaveCollisionWorld() noexcept {
    if (!IsInCollisionWorld())
        return;
    g_collision->RemoveObject(this);
    m_solidObject = nullptr;
    m_solidShape = nullptr;
}

void CSceneObject::GetWorldMatrix(MAV_matrix& out) const noexcept {
    out = mav_matrixMult(m_group->WorldMatrix(), m_localMatrix);
}

void CSceneObject::GetExportName(std::string& out) const {
    MakeExportName(m_label, "object", m_id, out);
}

void CSceneObject::GetInfo(KstObjectInfo* info) const {
    *info = KstObjectInfo();
    info->groupId = m_group->Id();
    MAV_matrix world;
    GetWorldMatrix(world);
    std::copy(world.mat.begin(), world.mat.end(), info->matrix);
}

// ---- Transforms --------------------------------------------------------------------------------

void CSceneObject::UpdateLocalMatrix() noexcept {
    m_localMatrix = mav_matrixMult(m_poseMatrix, m_scaleMatrix);
}

void CSceneObject::PassTransforms() noexcept {
    MAV_matrix world;
    GetWorldMatrix(world);
    if (g_visualiser)
        g_visualiser->UpdateObjectMatrix(this, world);
    if (IsInCollisionWorld())
        g_collision->UpdateObject(this, world);
}

void CSceneObject::UpdateTransforms() noexcept {
    {
        const CFrameGuard guard;
        PassTransforms();
    }
    if (g_visualiser)
        g_visualiser->Redraw();
}

void CSceneObject::SetPosition(float x, float y, float z) noexcept {
    m_poseMatrix = mav_matrixXYZSet(m_poseMatrix, mav_vectorSet(x, y, z));
    UpdateLocalMatrix();
    UpdateTransforms();
}

void CSceneObject::SetOrientation(float x, float y, float z) noexcept {
    m_poseMatrix = WithAngles(m_poseMatrix, x, y, z);
    UpdateLocalMatrix();
    UpdateTransforms();
}

void CSceneObject::SetScaling(float x, float y, float z) noexcept {
    m_scaleMatrix = ScalingMatrix(x, y, z);
    UpdateLocalMatrix();
    UpdateTransforms();
}

void CSceneObject::SetQuaternion(float x, float y, float z, float w) noexcept {
    m_poseMatrix = WithQuaternion(m_poseMatrix, x, y, z, w);
    UpdateLocalMatrix();
    UpdateTransforms();
}

void CSceneObject::SetClearance(float margin) noexcept {
    if (IsInCollisionWorld())
        g_collision->SetObjectMargin(this, margin);
}

// ---- Surfaces ----------------------------------------------------------------------------------

void CSceneObject::ApplySurface(int index) noexcept {
    const CFrameGuard guard;
    const CSurface& surface = Surface(index);
    if (!ShowSurface(surface))
        return;
    m_activeSurface = static_cast<unsigned char>(index);
    m_shownSurface = &surface;
    m_formerSurface.reset();
}

void CSceneObject::TakeGroupSurfaces() {
    m_surface[0] = m_group->Surface(0).Clone();
    ApplySurface(0);
    m_surface[1] = m_group->Surface(1).Clone();
    ApplySurface(m_group->ActiveSurface());
}

void CSceneObject::SetSurface(std::unique_ptr<CSurface> surface, int index) noexcept {
    const CFrameGuard guard;
    auto old = std::exchange(m_surface[static_cast<std::size_t>(index)], std::move(surface));
    if (index == m_activeSurface)
        ApplySurface(index);
    if (m_shownSurface == old.get())
        m_formerSurface = std::move(old);
}

void CSceneObject::SetColor(float r, float g, float b, float a, int index) {
    SetSurface(std::make_unique<CSurface>(r, g, b, a), index);
    if (g_visualiser)
        g_visualiser->Redraw();
}

void CSceneObject::SetTexture(int texture, float xTile, float yTile, int index) {
    SetSurface(std::make_unique<CSurface>(texture, xTile, yTile), index);
    if (g_visualiser)
        g_visualiser->Redraw();
}

void CSceneObject::SetSurfaceAlpha(float alpha, int index) {
    if (m_type != kTypePolyline)
        m_surface[static_cast<std::size_t>(index)]->SetAlpha(alpha);
}

// ---- Motion ------------------------------------------------------------------------------------

void CSceneObject::SetCyclic(bool cyclic) {
    if (!m_motion)
        m_motion = std::make_unique<CMotion>();
    m_motion->SetCyclic(cyclic);
}

void CSceneObject::AddKeyState(float time, const float* pos, const float* orient,
                               const float* scale, bool isQuaternion) {
    auto fresh = m_motion ? nullptr : std::make_unique<CMotion>();
    CMotion& motion = fresh ? *fresh : *m_motion;
    const bool entered = g_animatedObjects.insert(this).second;
    CRollback undo([this, entered] {
        if (entered)
            g_animatedObjects.erase(this);
    });
    motion.AddKeyState(time, pos, orient, scale, isQuaternion, m_poseMatrix, m_scaleMatrix);
    undo.Dismiss();
    if (fresh)
        m_motion = std::move(fresh);
    m_animated = true;
    ApplyTime(g_currentTime);
}

void CSceneObject::ClearKeyStates() noexcept {
    m_motion.reset();
    m_animated = false;
    g_animatedObjects.erase(this);
}

void CSceneObject::EvaluateMotion(float time) noexcept {
    m_motion->Evaluate(time, m_poseMatrix, m_scaleMatrix);
}

void CSceneObject::ApplyTime(float time) noexcept {
    EvaluateMotion(time);
    UpdateLocalMatrix();
    UpdateTransforms();
}

// ---- Copies and moves --------------------------------------------------------------------------

std::unique_ptr<CSceneObject> CSceneObject::CopyWithState(CGroup* target) const {
    auto copy = Copy(target);
    copy->CopyStateFrom(*this);
    return copy;
}

CSceneObject* CSceneObject::Clone(CGroup* target) const {
    CSceneObject* const clone = Enter(CopyWithState(target), CountReach::kAllAncestors);
    clone->ClaimLabel();
    return clone;
}

void CSceneObject::CopyStateFrom(const CSceneObject& source) {
    m_localMatrix = source.m_localMatrix;
    m_poseMatrix = source.m_poseMatrix;
    m_scaleMatrix = source.m_scaleMatrix;
    for (std::size_t i = 0; i < m_surface.size(); ++i)
        m_surface[i] = source.m_surface[i]->Clone();
    m_activeSurface = source.m_activeSurface;
    if (source.m_formerSurface) {
        m_formerSurface = source.m_formerSurface->Clone();
        ShowSurface(*m_formerSurface);
        m_shownSurface = m_formerSurface.get();
    } else {
        ApplySurface(m_activeSurface);
    }
}

void CSceneObject::MoveTo(CGroup* group) {
    CGroup& former = *m_group;
    const bool wasInWorld = IsInCollisionWorld();
    const bool belongsInWorld = group->IsCollisionCapable() && m_type != kTypePolyline;
    const bool enters = belongsInWorld && !wasInWorld;

    former.PassObject(this, *group);
    m_group = group;
    CRollback undoPass([this, &former, group] {
        group->PassObject(this, former);
        m_group = &former;
    });
    if (enters)
        EnterCollisionWorld();
    CRollback undoWorld([this, enters] {
        if (enters)
            LeaveCollisionWorld();
    });
    if (g_visualiser)
        g_visualiser->MoveObject(this, former);
    undoWorld.Dismiss();
    undoPass.Dismiss();

    if (wasInWorld && !belongsInWorld)
        LeaveCollisionWorld();
    else if (wasInWorld)
        g_collision->UpdateResponseClass(this);
    UpdateTransforms();
    if (g_controlPanel) {
        g_controlPanel->UpdateGroupRow(&former);
        g_controlPanel->UpdateGroupRow(group);
    }
}
