#include "frame/Arguments.h"
#include "frame/CheckerApp.h"
#include "frame/TimeScale.h"
#include "model/Box.h"
#include "model/Cone.h"
#include "model/Cylinder.h"
#include "model/Polygon.h"
#include "model/PolygonGroup.h"
#include "model/Polyline.h"
#include "model/SceneObject.h"
#include "model/Sphere.h"
#include "model/Tetrahedron.h"
#include "model/Triangles.h"
#include "model/neighbours.h"

int CCheckerApp::DestroyObject(int id) {
    CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    CSceneObject::Destroy(object);
    return KST_OK;
}

int CCheckerApp::MoveObject(int id, int group) {
    CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    CGroup* target = FindGroupBelowRoot(group);
    if (target == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    object->MoveTo(target);
    return KST_OK;
}

int CCheckerApp::SetObjectPosition(int id, float x, float y, float z) {
    CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    if (object->IsAnimated()) {
        return KST_ERROR_ANIMATED;
    }
    object->SetPosition(x, y, z);
    return KST_OK;
}

int CCheckerApp::SetObjectOrientation(int id, float x, float y, float z) {
    CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    if (object->IsAnimated()) {
        return KST_ERROR_ANIMATED;
    }
    if (!IsOrientation(x, y, z)) {
        return KST_ERROR_ARGUMENT;
    }
    object->SetOrientation(x, y, z);
    return KST_OK;
}

int CCheckerApp::SetObjectScaling(int id, float x, float y, float z) {
    CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    if (object->IsAnimated()) {
        return KST_ERROR_ANIMATED;
    }
    if (!IsSize(x, y, z)) {
        return KST_ERROR_ARGUMENT;
    }
    object->SetScaling(x, y, z);
    return KST_OK;
}

int CCheckerApp::SetObjectQuaternion(int id, float x, float y, float z, float w) {
    CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    if (object->IsAnimated()) {
        return KST_ERROR_ANIMATED;
    }
    object->SetQuaternion(x, y, z, w);
    return KST_OK;
}

int CCheckerApp::SetObjectColor(int id, float r, float g, float b, float a, int surfaceIndex) {
    CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    if (!IsColor(r, g, b, a) || !IsSurface(surfaceIndex)) {
        return KST_ERROR_ARGUMENT;
    }
    if (g_visualiser != nullptr) {
        object->SetColor(r, g, b, a, surfaceIndex);
    }
    return KST_OK;
}

int CCheckerApp::SetObjectTexture(int id, int texture, float xTile, float yTile, int surfaceIndex) {
    CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    if (!IsTiling(xTile, yTile) || !IsSurface(surfaceIndex) || !IsTexture(texture)) {
        return KST_ERROR_ARGUMENT;
    }
    if (g_visualiser != nullptr) {
        object->SetTexture(texture, xTile, yTile, surfaceIndex);
    }
    return KST_OK;
}

int CCheckerApp::SetObjectActiveSurface(int id, int surfaceIndex) {
    CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    if (!IsSurface(surfaceIndex)) {
        return KST_ERROR_ARGUMENT;
    }
    if (g_visualiser != nullptr) {
        object->ApplySurface(surfaceIndex);
        g_visualiser->Redraw();
    }
    return KST_OK;
}

int CCheckerApp::SetObjectClearance(int id, float margin) {
    CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    if (!IsSize(margin)) {
        return KST_ERROR_ARGUMENT;
    }
    object->SetClearance(margin);
    return KST_OK;
}

int CCheckerApp::AddObjectKeyState(int id, float time, const float* pos, const float* orient,
                                   const float* scale, bool isQuaternion) {
    if (!IsKeyOrientation(orient, isQuaternion)) {
        return KST_ERROR_ARGUMENT;
    }
    CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    if (object->Motion() != nullptr && object->Motion()->LastTime() > time) {
        return KST_ERROR_TIME_ORDER;
    }
    object->AddKeyState(time, pos, orient, scale, isQuaternion);
    ExtendTimeScale(time);
    return KST_OK;
}

int CCheckerApp::SetObjectCyclic(int id, bool cyclic) {
    CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    object->SetCyclic(cyclic);
    return KST_OK;
}

int CCheckerApp::ClearObjectKeyStates(int id) {
    CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    object->ClearKeyStates();
    RecomputeTimeScale();
    return KST_OK;
}

int CCheckerApp::GetObjectType(int id, int* type) {
    const CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    if (type == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    *type = object->Type();
    return KST_OK;
}

int CCheckerApp::GetObject(int id, KstObjectInfo* info) {
    const CSceneObject* object = FindObject(id);
    if (object == nullptr) {
        return KST_ERROR_UNKNOWN_OBJECT;
    }
    if (info == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    object->GetInfo(info);
    return KST_OK;
}

namespace {

struct Position {
    float x, y, z;
};

/// The common part of all creation, once the geometry has passed its test. Shapes that are given by
/// their vertices have no position.
template <class Shape, class... Geometry>
int Create(int group, int* newId, const std::string& label, const Position* position,
           const Geometry&... geometry) {
    CGroup* owner = FindGroupBelowRoot(group);
    if (owner == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    if (!label.empty() && g_labels.Contains(label)) {
        return KST_ERROR_LABEL_IN_USE;
    }
    CSceneObject* object = ::CreateObject<Shape>(owner, label, geometry...);
    if (position != nullptr) {
        object->SetPosition(position->x, position->y, position->z);
    }
    if (newId != nullptr) {
        *newId = object->Id();
    }
    return KST_OK;
}

/// Several polygons or lines in one array of vertices.
bool IsPolygonSet(int count, const int* vertexCounts, const float* vertices) noexcept {
    if (count < 1 || vertexCounts == nullptr || vertices == nullptr) {
        return false;
    }
    for (int i = 0; i < count; ++i) {
        if (vertexCounts[i] < 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

int CCheckerApp::CreateBox(int group, float width, float height, float depth, float x, float y,
                           float z, int* newId, const std::string& label) {
    if (!IsSize(width, height, depth)) {
        return KST_ERROR_ARGUMENT;
    }
    const Position centre{x, y, z};
    return Create<CBox>(group, newId, label, &centre, width, height, depth);
}

int CCheckerApp::CreateSphere(int group, float radius, float x, float y, float z, int* newId,
                              const std::string& label) {
    if (!IsSize(radius)) {
        return KST_ERROR_ARGUMENT;
    }
    const Position centre{x, y, z};
    return Create<CSphere>(group, newId, label, &centre, radius);
}

int CCheckerApp::CreateCylinder(int group, float radius, float height, float x, float y, float z,
                                int* newId, const std::string& label) {
    if (!IsSize(radius, height)) {
        return KST_ERROR_ARGUMENT;
    }
    const Position centre{x, y, z};
    return Create<CCylinder>(group, newId, label, &centre, radius, height);
}

int CCheckerApp::CreateCone(int group, float radius, float height, float x, float y, float z,
                            int* newId, const std::string& label) {
    if (!IsSize(radius, height)) {
        return KST_ERROR_ARGUMENT;
    }
    const Position centre{x, y, z};
    return Create<CCone>(group, newId, label, &centre, radius, height);
}

int CCheckerApp::CreatePolygon(int group, int vertexCount, const float* vertices, int* newId,
                               const std::string& label) {
    if (vertexCount < 3 || vertices == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    return Create<CPolygon>(group, newId, label, nullptr, vertexCount, vertices);
}

int CCheckerApp::CreateTriangles(int group, int triangleCount, const float* vertices, int* newId,
                                 const std::string& label) {
    if (triangleCount < 1 || vertices == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    return Create<CTriangles>(group, newId, label, nullptr, triangleCount, vertices);
}

int CCheckerApp::CreatePolygonGroup(int group, int polygonCount, const int* vertexCounts,
                                    const float* vertices, const float* texCoords, int* newId,
                                    const std::string& label) {
    if (!IsPolygonSet(polygonCount, vertexCounts, vertices)) {
        return KST_ERROR_ARGUMENT;
    }
    return Create<CPolygonGroup>(group, newId, label, nullptr, polygonCount, vertexCounts, vertices,
                                 texCoords);
}

int CCheckerApp::CreatePolyline(int group, int lineCount, const int* vertexCounts,
                                const float* vertices, int* newId, const std::string& label) {
    if (!IsPolygonSet(lineCount, vertexCounts, vertices)) {
        return KST_ERROR_ARGUMENT;
    }
    return Create<CPolyline>(group, newId, label, nullptr, lineCount, vertexCounts, vertices);
}

int CCheckerApp::CreateTetrahedron(int group, const float* vertices, int* newId,
                                   const std::string& label) {
    if (vertices == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    return Create<CTetrahedron>(group, newId, label, nullptr, vertices);
}
