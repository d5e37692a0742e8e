#ifndef KESTRANE_H
#define KESTRANE_H

#include <stdbool.h>

#if defined(_WIN32)
#if defined(KESTRANE_BUILDING)
#define KST_API __declspec(dllexport)
#elif defined(KESTRANE_STATIC)
#define KST_API
#else
#define KST_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define KST_API __attribute__((visibility("default")))
#else
#define KST_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef enum KstCode {
    KST_OK = 0,
    KST_ERROR_NOT_INITIALISED = -1,
    KST_ERROR_UNKNOWN_GROUP = -2,
    KST_ERROR_UNKNOWN_PARENT = -3,
    KST_ERROR_UNKNOWN_OBJECT = -4,
    KST_ERROR_ARGUMENT = -5,
    KST_ERROR_OVERLAP = -6,
    KST_ERROR_UNKNOWN_LABEL = -7,
    KST_ERROR_LABEL_IN_USE = -8,
    KST_ERROR_FILE = -9,
    KST_ERROR_NOT_RENDERING = -10,
    KST_ERROR_CLONE_INTO_ITSELF = -11,
    KST_ERROR_VIEW_NOT_OPEN = -12,
    KST_ERROR_NO_COLLISION = -13,
    KST_ERROR_NOT_CAPABLE = -14,
    KST_ERROR_TIME_ORDER = -16,
    KST_ERROR_ANIMATED = -17
} KstCode;

typedef enum KstObjectType {
    KST_BOX = 1,
    KST_SPHERE = 2,
    KST_CYLINDER = 3,
    KST_CONE = 4,
    KST_TRIANGLES = 5,
    KST_POLYGON = 6,
    KST_POLYGON_GROUP = 7,
    KST_POLYLINE = 8,
    KST_TETRAHEDRON = 9
} KstObjectType;

typedef enum KstViewOption {
    KST_COMPASS_ON = 1,
    KST_COMPASS_OFF = 2,
    KST_GRID_ON = 4,
    KST_GRID_OFF = 8,
    KST_PERSPECTIVE = 16,
    KST_ORTHOGONAL = 32,
    KST_STATUS_ON = 64,
    KST_STATUS_OFF = 128,
    KST_BACKFACE_CULLING_ON = 256,
    KST_BACKFACE_CULLING_OFF = 512
} KstViewOption;

typedef struct KstGroupInfo {
    int childCount;
    int objectCount;
    bool visibleInView[4];
    bool colCheck;
} KstGroupInfo;

typedef union KstWord {
    float f;
    int i;
    float* floats;
    int* ints;
} KstWord;

typedef struct KstObjectInfo {
    int groupId;
    float matrix[16];
    KstWord p1;
    KstWord p2;
    KstWord p3;
} KstObjectInfo;

typedef struct KstCollisionResult {
    int id1;
    int id2;
    float point1[3];
    float point2[3];
    float value;
} KstCollisionResult;

typedef void (*KstSelectCallback)(int objectId, float* point);

KST_API int KST_Initialisation(bool visualise, bool showPanel, bool showTimeControls);
KST_API int KST_End(void);
KST_API int KST_SuspendVisualisation(void);
KST_API int KST_ResumeVisualisation(void);

KST_API int KST_ShowView(int view, const char* title);
KST_API int KST_HideView(int view);
KST_API int KST_SetViewOptions(int view, int options);
KST_API int KST_SetViewParams(int view, float eyeX, float eyeY, float eyeZ, float pointX,
                              float pointY, float pointZ, float upX, float upY, float upZ);
KST_API int KST_GetViewParams(int view, float* eyeX, float* eyeY, float* eyeZ, float* pointX,
                              float* pointY, float* pointZ, float* upX, float* upY, float* upZ);
KST_API int KST_AddViewKeyState(int view, float time, const float* eye, const float* point,
                                const float* up);
KST_API int KST_SetViewCyclic(int view, bool cyclic);
KST_API int KST_ClearViewKeyStates(int view);
KST_API int KST_SetBackgroundColor(int view, float r, float g, float b);
KST_API int KST_ScreenCapture(int view, const char* fileName);

KST_API int KST_CreateGroup(int* newId, int parent, bool colCheck, const char* label,
                            bool collapsed);
KST_API int KST_DestroyGroup(int id);
KST_API int KST_EmptyGroup(int id);
KST_API int KST_MoveGroup(int id, int newParent);
KST_API int KST_SetGroupPosition(int id, float x, float y, float z);
KST_API int KST_SetGroupOrientation(int id, float x, float y, float z);
KST_API int KST_SetGroupScaling(int id, float x, float y, float z);
KST_API int KST_SetGroupQuaternion(int id, float x, float y, float z, float w);
KST_API int KST_SetGroupColor(int id, float r, float g, float b, float a, bool recursive,
                              int surfaceIndex);
KST_API int KST_SetGroupTexture(int id, int texture, float xTile, float yTile, bool recursive,
                                int surfaceIndex);
KST_API int KST_SetGroupActiveSurface(int id, bool recursive, int surfaceIndex);
KST_API int KST_SetGroupCollisionCheckCapability(int id, bool on);
KST_API int KST_SetGroupClearance(int id, float margin);
KST_API int KST_SetGroupVisibility(int id, int view, bool visible);
KST_API int KST_AddGroupKeyState(int id, float time, const float* pos, const float* orient,
                                 const float* scale, bool isQuaternion);
KST_API int KST_SetGroupCyclic(int id, bool cyclic);
KST_API int KST_ClearGroupKeyStates(int id);
KST_API int KST_CloneGroup(int* newId, int source, int targetParent, bool colCheck,
                           const char* label);
KST_API int KST_CloneGroupRecursive(int* newIds, int source, int targetParent, int count,
                                    const int* ids, const char** labels);
KST_API int KST_GetGroup(int id, KstGroupInfo* info);
KST_API int KST_GetGroupChildID(int id, int index, int* childId);
KST_API int KST_GetGroupObjectID(int id, int index, int* objectId);

KST_API int KST_DestroyObject(int id);
KST_API int KST_MoveObject(int id, int group);
KST_API int KST_SetObjectPosition(int id, float x, float y, float z);
KST_API int KST_SetObjectOrientation(int id, float x, float y, float z);
KST_API int KST_SetObjectScaling(int id, float x, float y, float z);
KST_API int KST_SetObjectQuaternion(int id, float x, float y, float z, float w);
KST_API int KST_SetObjectColor(int id, float r, float g, float b, float a, int surfaceIndex);
KST_API int KST_SetObjectTexture(int id, int texture, float xTile, float yTile, int surfaceIndex);
KST_API int KST_SetObjectActiveSurface(int id, int surfaceIndex);
KST_API int KST_SetObjectClearance(int id, float margin);
KST_API int KST_AddObjectKeyState(int id, float time, const float* pos, const float* orient,
                                  const float* scale, bool isQuaternion);
KST_API int KST_SetObjectCyclic(int id, bool cyclic);
KST_API int KST_ClearObjectKeyStates(int id);
KST_API int KST_GetObjectType(int id, int* type);
KST_API int KST_GetObject(int id, KstObjectInfo* info);

KST_API int KST_CreateBox(int group, float width, float height, float depth, float x, float y,
                          float z, int* newId, const char* label);
KST_API int KST_CreateSphere(int group, float radius, float x, float y, float z, int* newId,
                             const char* label);
KST_API int KST_CreateCylinder(int group, float radius, float height, float x, float y, float z,
                               int* newId, const char* label);
KST_API int KST_CreateCone(int group, float radius, float height, float x, float y, float z,
                           int* newId, const char* label);
KST_API int KST_CreatePolygon(int group, int vertexCount, const float* vertices, int* newId,
                              const char* label);
KST_API int KST_CreateTriangles(int group, int triangleCount, const float* vertices, int* newId,
                                const char* label);
KST_API int KST_CreatePolygonGroup(int group, int polygonCount, const int* vertexCounts,
                                   const float* vertices, int* newId, const char* label);
KST_API int KST_CreatePolyline(int group, int lineCount, const int* vertexCounts,
                               const float* vertices, int* newId, const char* label);
KST_API int KST_CreateTetrahedron(int group, const float* vertices, int* newId, const char* label);

KST_API int KST_CheckPointCollision(int group, float x, float y, float z, bool all, int* count);
KST_API int KST_CheckLineCollision(int group, float x1, float y1, float z1, float x2, float y2,
                                   float z2, bool all, int* count);
KST_API int KST_CheckGroupCollision(int group1, int group2, bool all, int* count);
KST_API int KST_GetClosestPairs(int group1, int group2, int* count);
KST_API int KST_GetPenetrationDepths(int group1, int group2, int* count);
KST_API int KST_GetResults(void* results);
KST_API int KST_GetID(int* id, const char* label);
KST_API int KST_LoadScene(const char* fileName, int group, char** errorText);
KST_API int KST_LoadTexture(int index, const char* fileName, float alpha);
KST_API int KST_SetObjectSelectCallback(KstSelectCallback callback);
KST_API int KST_SetTime(float time);

#ifdef __cplusplus
}
#endif

#endif
