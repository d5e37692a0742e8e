#if !defined(_WIN32)
#include <pthread.h>
#endif

#include <atomic>
#include <mutex>
#include <string>

#include "frame/CheckerApp.h"
#include "kestrane.h"
#include "visualiser/Display.h"

namespace {

/// Set between KST_Initialisation and KST_End. Is set under g_lifeLock, cleared under g_lifeLock
/// and g_modelLock.
std::atomic<bool> g_initialised{false};

/// Lets one start or end of the library take its turn. It is taken before all other locks, and the
/// model lock is not held while the end waits for threads.
std::mutex g_lifeLock;

#if defined(__GNUC__)
/// For the places that read a bool as the host passed it.
#define KST_ANY_BOOL __attribute__((no_sanitize("bool")))
#else
#define KST_ANY_BOOL
#endif

/// What a host passes as true may be any byte but 0.
KST_ANY_BOOL bool Argument(bool value) noexcept {
    const volatile auto byte = reinterpret_cast<const unsigned char&>(value);
    return byte != 0;
}

/// A text that is copied inside the border, where a lack of memory is caught; null means none.
struct Text {
    const char* text;
    operator std::string() const { return text == nullptr ? std::string() : std::string(text); }
};

template <class Value>
Value Argument(Value value) noexcept {
    return value;
}

/// A thread that the host cancels ends behind the call that it is in: within one it would leave the
/// scene half changed, or end the process at the border.
class CancelGuard {
  public:
#if defined(_WIN32)
    CancelGuard() noexcept {}
#else
    CancelGuard() noexcept {
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_former);
    }
    ~CancelGuard() {
        pthread_setcancelstate(m_former, nullptr);
    }
#endif
    CancelGuard(const CancelGuard&) = delete;
    CancelGuard& operator=(const CancelGuard&) = delete;

#if !defined(_WIN32)
  private:
    int m_former = 0;
#endif
};

/// The border: no exception leaves the library. Requests that memory cannot hold are out of range.
template <class Body>
int Border(Body&& body) noexcept {
    const CancelGuard guard;
    try {
        return body();
    } catch (...) {
        return KST_ERROR_ARGUMENT;
    }
}

/// The shell of an exported function around the method that does its work.
template <class... Parameters, class... Arguments>
int Call(int (CCheckerApp::*method)(Parameters...), Arguments... arguments) noexcept {
    return Border([&]() KST_ANY_BOOL -> int {
        if (!g_initialised) {
            return KST_ERROR_NOT_INITIALISED;
        }
        const std::lock_guard lock(g_modelLock);
        // KST_End may have had its turn meanwhile.
        if (!g_initialised) {
            return KST_ERROR_NOT_INITIALISED;
        }
        return (Application().*method)(Argument(arguments)...);
    });
}

}  // namespace

// ---- Start and stop ----------------------------------------------------------------------------

int KST_Initialisation(bool visualise, bool showPanel, bool showTimeControls) {
    return Border([&]() -> int {
        if (IsRenderThread()) {
            return KST_OK;
        }
        const std::lock_guard life(g_lifeLock);
        if (g_initialised) {
            return KST_OK;
        }
        const int status = Application().Initialisation(Argument(visualise), Argument(showPanel),
                                                        Argument(showTimeControls));
        g_initialised = status == KST_OK;
        return status;
    });
}

int KST_End() {
    return Border([&]() -> int {
        if (IsRenderThread()) {
            return KST_ERROR_NOT_RENDERING;
        }
        const std::lock_guard life(g_lifeLock);
        {
            // Waits for a call in progress; those that come later see the flag.
            const std::lock_guard lock(g_modelLock);
            if (!g_initialised.exchange(false)) {
                return KST_ERROR_NOT_INITIALISED;
            }
        }
        return Application().End();
    });
}

int KST_SuspendVisualisation() {
    return Call(&CCheckerApp::SuspendVisualisation);
}

int KST_ResumeVisualisation() {
    return Call(&CCheckerApp::ResumeVisualisation);
}

// ---- Views --------------------------------------------------------------------------------------

int KST_ShowView(int view, const char* title) {
    return Call(&CCheckerApp::ShowView, view, title);
}

int KST_HideView(int view) {
    return Call(&CCheckerApp::HideView, view);
}

int KST_SetViewOptions(int view, int options) {
    return Call(&CCheckerApp::SetViewOptions, view, options);
}

int KST_SetViewParams(int view, float eyeX, float eyeY, float eyeZ, float pointX, float pointY,
                      float pointZ, float upX, float upY, float upZ) {
    const float eye[3] = {eyeX, eyeY, eyeZ};
    const float point[3] = {pointX, pointY, pointZ};
    const float up[3] = {upX, upY, upZ};
    return Call(&CCheckerApp::SetViewParams, view, eye, point, up);
}

int KST_GetViewParams(int view, float* eyeX, float* eyeY, float* eyeZ, float* pointX, float* pointY,
                      float* pointZ, float* upX, float* upY, float* upZ) {
    return Call(&CCheckerApp::GetViewParams, view, eyeX, eyeY, eyeZ, pointX, pointY, pointZ, upX,
                upY, upZ);
}

int KST_AddViewKeyState(int view, float time, const float* eye, const float* point,
                        const float* up) {
    return Call(&CCheckerApp::AddViewKeyState, view, time, eye, point, up);
}

int KST_SetViewCyclic(int view, bool cyclic) {
    return Call(&CCheckerApp::SetViewCyclic, view, cyclic);
}

int KST_ClearViewKeyStates(int view) {
    return Call(&CCheckerApp::ClearViewKeyStates, view);
}

int KST_SetBackgroundColor(int view, float r, float g, float b) {
    return Call(&CCheckerApp::SetBackgroundColor, view, r, g, b);
}

int KST_ScreenCapture(int view, const char* fileName) {
    return Call(&CCheckerApp::ScreenCapture, view, fileName);
}

// ---- Groups -------------------------------------------------------------------------------------

int KST_CreateGroup(int* newId, int parent, bool colCheck, const char* label, bool collapsed) {
    return Call(&CCheckerApp::CreateGroup, newId, parent, colCheck, Text{label}, collapsed);
}

int KST_DestroyGroup(int id) {
    return Call(&CCheckerApp::DestroyGroup, id);
}

int KST_EmptyGroup(int id) {
    return Call(&CCheckerApp::EmptyGroup, id);
}

int KST_MoveGroup(int id, int newParent) {
    return Call(&CCheckerApp::MoveGroup, id, newParent);
}

int KST_SetGroupPosition(int id, float x, float y, float z) {
    return Call(&CCheckerApp::SetGroupPosition, id, x, y, z);
}

int KST_SetGroupOrientation(int id, float x, float y, float z) {
    return Call(&CCheckerApp::SetGroupOrientation, id, x, y, z);
}

int KST_SetGroupScaling(int id, float x, float y, float z) {
    return Call(&CCheckerApp::SetGroupScaling, id, x, y, z);
}

int KST_SetGroupQuaternion(int id, float x, float y, float z, float w) {
    return Call(&CCheckerApp::SetGroupQuaternion, id, x, y, z, w);
}

int KST_SetGroupColor(int id, float r, float g, float b, float a, bool recursive,
                      int surfaceIndex) {
    return Call(&CCheckerApp::SetGroupColor, id, r, g, b, a, recursive, surfaceIndex);
}

int KST_SetGroupTexture(int id, int texture, float xTile, float yTile, bool recursive,
                        int surfaceIndex) {
    return Call(&CCheckerApp::SetGroupTexture, id, texture, xTile, yTile, recursive, surfaceIndex);
}

int KST_SetGroupActiveSurface(int id, bool recursive, int surfaceIndex) {
    return Call(&CCheckerApp::SetGroupActiveSurface, id, recursive, surfaceIndex);
}

int KST_SetGroupCollisionCheckCapability(int id, bool on) {
    return Call(&CCheckerApp::SetGroupCollisionCheckCapability, id, on);
}

int KST_SetGroupClearance(int id, float margin) {
    return Call(&CCheckerApp::SetGroupClearance, id, margin);
}

int KST_SetGroupVisibility(int id, int view, bool visible) {
    return Call(&CCheckerApp::SetGroupVisibility, id, view, visible);
}

int KST_AddGroupKeyState(int id, float time, const float* pos, const float* orient,
                         const float* scale, bool isQuaternion) {
    return Call(&CCheckerApp::AddGroupKeyState, id, time, pos, orient, scale, isQuaternion);
}

int KST_SetGroupCyclic(int id, bool cyclic) {
    return Call(&CCheckerApp::SetGroupCyclic, id, cyclic);
}

int KST_ClearGroupKeyStates(int id) {
    return Call(&CCheckerApp::ClearGroupKeyStates, id);
}

int KST_CloneGroup(int* newId, int source, int targetParent, bool colCheck, const char* label) {
    return Call(&CCheckerApp::CloneGroup, newId, source, targetParent, colCheck, Text{label});
}

int KST_CloneGroupRecursive(int* newIds, int source, int targetParent, int count, const int* ids,
                            const char** labels) {
    return Call(&CCheckerApp::CloneGroupRecursive, newIds, source, targetParent, count, ids,
                labels);
}

int KST_GetGroup(int id, KstGroupInfo* info) {
    return Call(&CCheckerApp::GetGroup, id, info);
}

int KST_GetGroupChildID(int id, int index, int* childId) {
    return Call(&CCheckerApp::GetGroupChildID, id, index, childId);
}

int KST_GetGroupObjectID(int id, int index, int* objectId) {
    return Call(&CCheckerApp::GetGroupObjectID, id, index, objectId);
}

// ---- Objects ------------------------------------------------------------------------------------

int KST_DestroyObject(int id) {
    return Call(&CCheckerApp::DestroyObject, id);
}

int KST_MoveObject(int id, int group) {
    return Call(&CCheckerApp::MoveObject, id, group);
}

int KST_SetObjectPosition(int id, float x, float y, float z) {
    return Call(&CCheckerApp::SetObjectPosition, id, x, y, z);
}

int KST_SetObjectOrientation(int id, float x, float y, float z) {
    return Call(&CCheckerApp::SetObjectOrientation, id, x, y, z);
}

int KST_SetObjectScaling(int id, float x, float y, float z) {
    return Call(&CCheckerApp::SetObjectScaling, id, x, y, z);
}

int KST_SetObjectQuaternion(int id, float x, float y, float z, float w) {
    return Call(&CCheckerApp::SetObjectQuaternion, id, x, y, z, w);
}

int KST_SetObjectColor(int id, float r, float g, float b, float a, int surfaceIndex) {
    return Call(&CCheckerApp::SetObjectColor, id, r, g, b, a, surfaceIndex);
}

int KST_SetObjectTexture(int id, int texture, float xTile, float yTile, int surfaceIndex) {
    return Call(&CCheckerApp::SetObjectTexture, id, texture, xTile, yTile, surfaceIndex);
}

int KST_SetObjectActiveSurface(int id, int surfaceIndex) {
    return Call(&CCheckerApp::SetObjectActiveSurface, id, surfaceIndex);
}

int KST_SetObjectClearance(int id, float margin) {
    return Call(&CCheckerApp::SetObjectClearance, id, margin);
}

int KST_AddObjectKeyState(int id, float time, const float* pos, const float* orient,
                          const float* scale, bool isQuaternion) {
    return Call(&CCheckerApp::AddObjectKeyState, id, time, pos, orient, scale, isQuaternion);
}

int KST_SetObjectCyclic(int id, bool cyclic) {
    return Call(&CCheckerApp::SetObjectCyclic, id, cyclic);
}

int KST_ClearObjectKeyStates(int id) {
    return Call(&CCheckerApp::ClearObjectKeyStates, id);
}

int KST_GetObjectType(int id, int* type) {
    return Call(&CCheckerApp::GetObjectType, id, type);
}

int KST_GetObject(int id, KstObjectInfo* info) {
    return Call(&CCheckerApp::GetObject, id, info);
}

// ---- Creation of objects ------------------------------------------------------------------------

int KST_CreateBox(int group, float width, float height, float depth, float x, float y, float z,
                  int* newId, const char* label) {
    return Call(&CCheckerApp::CreateBox, group, width, height, depth, x, y, z, newId, Text{label});
}

int KST_CreateSphere(int group, float radius, float x, float y, float z, int* newId,
                     const char* label) {
    return Call(&CCheckerApp::CreateSphere, group, radius, x, y, z, newId, Text{label});
}

int KST_CreateCylinder(int group, float radius, float height, float x, float y, float z, int* newId,
                       const char* label) {
    return Call(&CCheckerApp::CreateCylinder, group, radius, height, x, y, z, newId, Text{label});
}

int KST_CreateCone(int group, float radius, float height, float x, float y, float z, int* newId,
                   const char* label) {
    return Call(&CCheckerApp::CreateCone, group, radius, height, x, y, z, newId, Text{label});
}

int KST_CreatePolygon(int group, int vertexCount, const float* vertices, int* newId,
                      const char* label) {
    return Call(&CCheckerApp::CreatePolygon, group, vertexCount, vertices, newId, Text{label});
}

int KST_CreateTriangles(int group, int triangleCount, const float* vertices, int* newId,
                        const char* label) {
    return Call(&CCheckerApp::CreateTriangles, group, triangleCount, vertices, newId, Text{label});
}

int KST_CreatePolygonGroup(int group, int polygonCount, const int* vertexCounts,
                           const float* vertices, int* newId, const char* label) {
    return Call(&CCheckerApp::CreatePolygonGroup, group, polygonCount, vertexCounts, vertices,
                nullptr, newId, Text{label});
}

int KST_CreatePolyline(int group, int lineCount, const int* vertexCounts, const float* vertices,
                       int* newId, const char* label) {
    return Call(&CCheckerApp::CreatePolyline, group, lineCount, vertexCounts, vertices, newId,
                Text{label});
}

int KST_CreateTetrahedron(int group, const float* vertices, int* newId, const char* label) {
    return Call(&CCheckerApp::CreateTetrahedron, group, vertices, newId, Text{label});
}

// ---- Queries ------------------------------------------------------------------------------------

int KST_CheckPointCollision(int group, float x, float y, float z, bool all, int* count) {
    return Call(&CCheckerApp::CheckPointCollision, group, x, y, z, all, count);
}

int KST_CheckLineCollision(int group, float x1, float y1, float z1, float x2, float y2, float z2,
                           bool all, int* count) {
    return Call(&CCheckerApp::CheckLineCollision, group, x1, y1, z1, x2, y2, z2, all, count);
}

int KST_CheckGroupCollision(int group1, int group2, bool all, int* count) {
    return Call(&CCheckerApp::CheckGroupCollision, group1, group2, all, count);
}

int KST_GetClosestPairs(int group1, int group2, int* count) {
    return Call(&CCheckerApp::GetClosestPairs, group1, group2, count);
}

int KST_GetPenetrationDepths(int group1, int group2, int* count) {
    return Call(&CCheckerApp::GetPenetrationDepths, group1, group2, count);
}

int KST_GetResults(void* results) {
    return Call(&CCheckerApp::GetResults, results);
}

int KST_GetID(int* id, const char* label) {
    return Call(&CCheckerApp::GetID, id, Text{label});
}

// ---- The rest -----------------------------------------------------------------------------------

int KST_LoadScene(const char* fileName, int group, char** errorText) {
    return Call(&CCheckerApp::LoadScene, fileName, group, errorText);
}

int KST_LoadTexture(int index, const char* fileName, float alpha) {
    return Call(&CCheckerApp::LoadTexture, index, fileName, alpha);
}

int KST_SetObjectSelectCallback(KstSelectCallback callback) {
    return Call(&CCheckerApp::SetObjectSelectCallback, callback);
}

int KST_SetTime(float time) {
    return Call(&CCheckerApp::SetTime, time);
}
