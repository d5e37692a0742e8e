#include "collision/CollisionManager.h"

#include <algorithm>
#include <new>
#include <utility>

#include "model/Group.h"
#include "model/Registries.h"
#include "model/SceneObject.h"

namespace {

void SetMatrix(DT_ObjectHandle handle, const MAV_matrix& world) noexcept {
    float columns[16];
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            columns[4 * column + row] = world[4 * row + column];
        }
    }
    DT_SetMatrixf(handle, columns);
}

}  // namespace

// Stands until the process ends, as the scene's registries do.
std::vector<CCollisionResult>& g_collisionResults =
    *std::make_unique<std::vector<CCollisionResult>>().release();

CCollisionManager::CCollisionManager()
    : m_scene(DT_CreateScene()), m_respTable(DT_CreateRespTable()) {
    constexpr float kOrigin[3] = {0.0F, 0.0F, 0.0F};
    constexpr float kUnitAlongY[3] = {0.0F, 1.0F, 0.0F};
    m_point = MakeProbe(Shape(DT_NewSphere(0.0F)));
    try {
        m_line = MakeProbe(Shape(DT_NewLineSegment(kOrigin, kUnitAlongY)));
    } catch (...) {
        DT_RemoveObject(m_scene.get(), m_point.object.get());
        throw;
    }
}

CCollisionManager::~CCollisionManager() {
    DT_RemoveObject(m_scene.get(), m_line.object.get());
    DT_RemoveObject(m_scene.get(), m_point.object.get());
    std::vector<CCollisionResult>().swap(g_collisionResults);
}

/// Objects of the scene have themselves as client, so that no client means a probe.
CCollisionManager::Probe CCollisionManager::MakeProbe(Shape shape) {
    Probe probe;
    probe.shape = std::move(shape);
    probe.object.reset(DT_CreateObject(nullptr, probe.shape.get()));
    probe.classes = {DT_GenResponseClass(m_respTable.get())};
    DT_SetResponseClass(m_respTable.get(), probe.object.get(), probe.classes[0]);
    DT_AddObject(m_scene.get(), probe.object.get());
    return probe;
}

int CCollisionManager::GenResponseClass() {
    return DT_GenResponseClass(m_respTable.get());
}

void CCollisionManager::ReleaseResponseClass(int responseClass) noexcept {
    DT_FreeResponseClass(m_respTable.get(), responseClass);
}

void CCollisionManager::AddObject(CSceneObject* object) {
    Object handle(DT_CreateObject(object, object->SolidShape()));
    MAV_matrix world;
    object->GetWorldMatrix(world);
    SetMatrix(handle.get(), world);
    DT_SetResponseClass(m_respTable.get(), handle.get(), object->Group()->ResponseClass());
    DT_AddObject(m_scene.get(), handle.get());
    object->SetSolidObject(handle.release());
}

void CCollisionManager::RemoveObject(CSceneObject* object) noexcept {
    if (!object->IsInCollisionWorld()) {
        return;
    }
    DT_RemoveObject(m_scene.get(), object->SolidObject());
    DT_DestroyObject(object->SolidObject());
    DT_DeleteShape(object->SolidShape());
    object->SetSolidObject(nullptr);
}

void CCollisionManager::UpdateObject(CSceneObject* object, const MAV_matrix& world) noexcept {
    if (object->IsInCollisionWorld()) {
        SetMatrix(object->SolidObject(), world);
    }
}

void CCollisionManager::UpdateResponseClass(CSceneObject* object) noexcept {
    try {
        SetResponseClass(*object);
    } catch (const std::bad_alloc&) {
        m_classesStale = true;
    }
}

void CCollisionManager::SetResponseClass(const CSceneObject& object) {
    if (object.IsInCollisionWorld()) {
        DT_SetResponseClass(m_respTable.get(), object.SolidObject(),
                            object.Group()->ResponseClass());
    }
}

void CCollisionManager::BringClassesUpToDate() {
    if (!m_classesStale) {
        return;
    }
    for (const auto& [id, object] : g_objects) {
        SetResponseClass(*object);
    }
    m_classesStale = false;
}

void CCollisionManager::SetObjectMargin(CSceneObject* object, float margin) noexcept {
    if (object->IsInCollisionWorld()) {
        DT_SetMargin(object->SolidObject(), margin);
    }
}

void CCollisionManager::CopyResults(CCollisionResult* out) noexcept {
    std::copy(g_collisionResults.begin(), g_collisionResults.end(), out);
}

void CCollisionManager::ClearResults() noexcept {
    // Those of most queries fit in here; asking for the memory again would cost more than a test.
    constexpr std::size_t kKept = 1024;
    g_collisionResults.clear();
    if (g_collisionResults.capacity() > kKept) {
        std::vector<CCollisionResult>().swap(g_collisionResults);
    }
}
