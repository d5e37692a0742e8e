#pragma once

#include <array>
#include <memory>
#include <string>

#include "kestrane.h"
#include "model/ModelLock.h"

class CCollisionManager;
class CDisplay;
class CGroup;
class CVisView;
class LoadingScenes;

namespace settings {
class ProfileStore;
}

/// The application object: one method for each exported function, with the same name, arguments and
/// codes (see kestrane.h), behind which stand the scene, the collision world and the views. The
/// exported functions add the test of the initialised flag, the model lock and the border against
/// exceptions; scene readers and the control panel call the methods directly, under the model lock.
///
/// A label that is empty means none. A null pointer where one is required is refused as
/// kestrane.h says. Methods throw std::bad_alloc when memory runs out, and have changed nothing
/// then.
class CCheckerApp {
  public:
    CCheckerApp();
    ~CCheckerApp();
    CCheckerApp(const CCheckerApp&) = delete;
    CCheckerApp& operator=(const CCheckerApp&) = delete;

    // ---- Start and stop ----
    int Initialisation(bool visualise, bool showPanel, bool showTimeControls);
    int End();
    int SuspendVisualisation();
    int ResumeVisualisation();

    // ---- Views ----
    int ShowView(int view, const char* title);
    int HideView(int view);
    int SetViewOptions(int view, int options);
    /// Three floats each.
    int SetViewParams(int view, const float* eye, const float* point, const float* up);
    int GetViewParams(int view, float* eyeX, float* eyeY, float* eyeZ, float* pointX, float* pointY,
                      float* pointZ, float* upX, float* upY, float* upZ);
    int AddViewKeyState(int view, float time, const float* eye, const float* point,
                        const float* up);
    int SetViewCyclic(int view, bool cyclic);
    int ClearViewKeyStates(int view);
    int SetBackgroundColor(int view, float r, float g, float b);
    int ScreenCapture(int view, const char* fileName);

    // ---- Groups ----
    int CreateGroup(int* newId, int parent, bool colCheck, const std::string& label,
                    bool collapsed);
    int DestroyGroup(int id);
    int EmptyGroup(int id);
    int MoveGroup(int id, int newParent);
    int SetGroupPosition(int id, float x, float y, float z);
    int SetGroupOrientation(int id, float x, float y, float z);
    int SetGroupScaling(int id, float x, float y, float z);
    int SetGroupQuaternion(int id, float x, float y, float z, float w);
    int SetGroupColor(int id, float r, float g, float b, float a, bool recursive, int surfaceIndex);
    int SetGroupTexture(int id, int texture, float xTile, float yTile, bool recursive,
                        int surfaceIndex);
    int SetGroupActiveSurface(int id, bool recursive, int surfaceIndex);
    int SetGroupCollisionCheckCapability(int id, bool on);
    int SetGroupClearance(int id, float margin);
    int SetGroupVisibility(int id, int view, bool visible);
    int AddGroupKeyState(int id, float time, const float* pos, const float* orient,
                         const float* scale, bool isQuaternion);
    int SetGroupCyclic(int id, bool cyclic);
    int ClearGroupKeyStates(int id);
    int CloneGroup(int* newId, int source, int targetParent, bool colCheck,
                   const std::string& label);
    int CloneGroupRecursive(int* newIds, int source, int targetParent, int count, const int* ids,
                            const char** labels);
    int GetGroup(int id, KstGroupInfo* info);
    int GetGroupChildID(int id, int index, int* childId);
    int GetGroupObjectID(int id, int index, int* objectId);

    // ---- Objects ----
    int DestroyObject(int id);
    int MoveObject(int id, int group);
    int SetObjectPosition(int id, float x, float y, float z);
    int SetObjectOrientation(int id, float x, float y, float z);
    int SetObjectScaling(int id, float x, float y, float z);
    int SetObjectQuaternion(int id, float x, float y, float z, float w);
    int SetObjectColor(int id, float r, float g, float b, float a, int surfaceIndex);
    int SetObjectTexture(int id, int texture, float xTile, float yTile, int surfaceIndex);
    int SetObjectActiveSurface(int id, int surfaceIndex);
    int SetObjectClearance(int id, float margin);
    int AddObjectKeyState(int id, float time, const float* pos, const float* orient,
                          const float* scale, bool isQuaternion);
    int SetObjectCyclic(int id, bool cyclic);
    int ClearObjectKeyStates(int id);
    int GetObjectType(int id, int* type);
    int GetObject(int id, KstObjectInfo* info);

    // ---- Creation of objects; `newId` may be null ----
    int CreateBox(int group, float width, float height, float depth, float x, float y, float z,
                  int* newId, const std::string& label);
    int CreateSphere(int group, float radius, float x, float y, float z, int* newId,
                     const std::string& label);
    int CreateCylinder(int group, float radius, float height, float x, float y, float z, int* newId,
                       const std::string& label);
    int CreateCone(int group, float radius, float height, float x, float y, float z, int* newId,
                   const std::string& label);
    int CreatePolygon(int group, int vertexCount, const float* vertices, int* newId,
                      const std::string& label);
    int CreateTriangles(int group, int triangleCount, const float* vertices, int* newId,
                        const std::string& label);
    /// `texCoords`: two floats per vertex in the order of the vertices, or null for all 0.
    int CreatePolygonGroup(int group, int polygonCount, const int* vertexCounts,
                           const float* vertices, const float* texCoords, int* newId,
                           const std::string& label);
    int CreatePolyline(int group, int lineCount, const int* vertexCounts, const float* vertices,
                       int* newId, const std::string& label);
    int CreateTetrahedron(int group, const float* vertices, int* newId, const std::string& label);

    // ---- Queries ----
    int CheckPointCollision(int group, float x, float y, float z, bool all, int* count);
    int CheckLineCollision(int group, float x1, float y1, float z1, float x2, float y2, float z2,
                           bool all, int* count);
    int CheckGroupCollision(int group1, int group2, bool all, int* count);
    int GetClosestPairs(int group1, int group2, int* count);
    int GetPenetrationDepths(int group1, int group2, int* count);
    int GetResults(void* results);
    int GetID(int* id, const std::string& label);

    // ---- The rest ----
    /// Also the entry of an include: a reader that meets one calls this again. A file that is being
    /// loaded already further out, or nests deeper than 64, is refused with KST_ERROR_FILE.
    int LoadScene(const char* fileName, int group, char** errorText);
    int LoadTexture(int index, const char* fileName, float alpha);
    int SetObjectSelectCallback(KstSelectCallback callback);
    int SetTime(float time);

    /// Null in a headless run. For those who hold the model lock, or know that nobody ends the
    /// library meanwhile.
    CDisplay* Display() const noexcept { return m_display.get(); }

    /// The text of the last scene that failed to load: one buffer of 256 bytes for the whole
    /// process, empty at first, never cleared.
    static char* ErrorText();
    /// Puts a text into that buffer, cut to fit.
    static void SetErrorText(const std::string& text);

  private:
    bool IsOpen(int view) const noexcept;

    std::unique_ptr<settings::ProfileStore> m_settings;
    std::array<std::unique_ptr<CVisView>, 4> m_views;
    std::unique_ptr<CCollisionManager> m_collision;
    /// Null in a headless run.
    std::unique_ptr<CDisplay> m_display;
    std::unique_ptr<LoadingScenes> m_loading;
    std::unique_ptr<CGroup> m_rootGroup;
};

/// The one application object. It is made at the first call and stands until the process ends, so
/// that calls out of a host's static constructors and destructors find it.
CCheckerApp& Application();
