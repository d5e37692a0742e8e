#pragma once

/// The collision engine: shapes, placed objects, a scene of them, and tables that say which classes
/// of objects are to be tested against each other.
///
/// Scalars at this interface are `float`; all arithmetic inside is `double`. Shapes are closed
/// sets: exactly touching is contact. Shapes made of polygons (complex shapes) are surfaces: the
/// space that they enclose does not belong to them. Polytopes are solid.
///
/// Placements are any affine maps, singular ones included. An object whose placement holds a value
/// that is not finite takes part in no contact and has no distance to anything.
///
/// A polytope or complex shape is to be finished (DT_EndPolytope, DT_EndComplexShape) before scenes
/// with objects made of it are tested; until then such an object takes no part.
///
/// Ownership: each `New`/`Create` call gives a handle that the caller releases with the matching
/// `Delete`/`Destroy`. A shape must outlive the objects made of it, an object must leave its scene
/// before either is destroyed. No function throws but std::bad_alloc, and none of those that
/// remove, destroy, place or free does; a call that throws has changed nothing, but
/// that a shape left open is finished when the next one is begun.
///
/// Threads: calls on one scene, its objects, and its tables must not overlap in time.

#include <cstddef>
#include <cstdint>

namespace solid {
class Shape;
class Object;
class Scene;
class RespTable;
}  // namespace solid

using DT_ShapeHandle = solid::Shape*;
using DT_ObjectHandle = solid::Object*;
using DT_SceneHandle = solid::Scene*;
using DT_RespTableHandle = solid::RespTable*;

/// A class of objects within one response table: a small number from 0 on.
using DT_ResponseClass = int;

/// Result of a response callback: go on with the next pair, or end the test.
enum DT_Bool : int { DT_CONTINUE = 0, DT_DONE = 1 };

/// The one type of response: the callback gets no contact data.
enum DT_ResponseType : int { DT_SIMPLE_RESPONSE = 1 };

/// `client` as given with the response, then the client pointers of the two objects in contact; the
/// fourth argument is always null. The first object is the one of the smaller creation number.
using DT_ResponseCallback = DT_Bool (*)(void* client, void* object1, void* object2,
                                        const void* unused);

// ---- Shapes ------------------------------------------------------------------------------------
// Sizes below 0 and NaN count as 0. Boxes, spheres, cylinders and cones have their middle at the
// origin; cylinders and cones stand along y, the tip of a cone at +y (half the height above).

DT_ShapeHandle DT_NewBox(float width, float height, float depth);
DT_ShapeHandle DT_NewSphere(float radius);
DT_ShapeHandle DT_NewCylinder(float radius, float height);
DT_ShapeHandle DT_NewCone(float radius, float height);
DT_ShapeHandle DT_NewLineSegment(const float source[3], const float target[3]);

/// A polytope is the convex hull of all vertices given between DT_Begin and DT_End. `reserved` is
/// not used. Between DT_NewPolytope and DT_EndPolytope (or the complex-shape pair) no other shape
/// may be begun on the same thread.
DT_ShapeHandle DT_NewPolytope(const void* reserved);
void DT_EndPolytope();

/// A complex shape is the union of its polygons, one per DT_Begin/DT_End pair. Each polygon is the
/// convex hull of its vertices.
DT_ShapeHandle DT_NewComplexShape(const void* reserved);
void DT_EndComplexShape();

void DT_Begin();
void DT_Vertex(float x, float y, float z);
void DT_End();

/// A complex shape in one call: `counts[i]` of the vertices, three floats each, for polygon i; with
/// counts null, three for each. Of whichever way it is made, the tree that tests need is built at
/// the first question that comes near an object of the shape.
DT_ShapeHandle DT_NewMesh(const float* vertices, std::size_t vertexCount, const int* counts,
                          std::size_t polygonCount);

void DT_DeleteShape(DT_ShapeHandle shape);

// ---- Objects -----------------------------------------------------------------------------------

DT_ObjectHandle DT_CreateObject(void* client, DT_ShapeHandle shape);
void DT_DestroyObject(DT_ObjectHandle object);

/// Placement from 16 floats, column-major; the last row is taken as 0 0 0 1.
void DT_SetMatrixf(DT_ObjectHandle object, const float m[16]);
/// Replaces the translation only.
void DT_SetPosition(DT_ObjectHandle object, const float position[3]);
/// Grows the object by a sphere of this radius, in world units, in all tests. Below 0 counts as 0.
void DT_SetMargin(DT_ObjectHandle object, float margin);
/// Two corners of a box along the axes of the world that holds the object, its margin included.
/// False, and nothing is written, when the placement is not finite or the shape is empty.
bool DT_GetBBox(DT_ObjectHandle object, float min[3], float max[3]);

// ---- Scenes and responses ----------------------------------------------------------------------

DT_SceneHandle DT_CreateScene();
void DT_DestroyScene(DT_SceneHandle scene);
void DT_AddObject(DT_SceneHandle scene, DT_ObjectHandle object);
void DT_RemoveObject(DT_SceneHandle scene, DT_ObjectHandle object);

DT_RespTableHandle DT_CreateRespTable();
void DT_DestroyRespTable(DT_RespTableHandle table);
/// A class without objects. May throw std::bad_alloc.
DT_ResponseClass DT_GenResponseClass(DT_RespTableHandle table);
/// Gives a class back, which DT_GenResponseClass may hand out again. It must have no objects and
/// stand in no response; a class that still has objects stays.
void DT_FreeResponseClass(DT_RespTableHandle table, DT_ResponseClass responseClass);
/// One object can have a class in each of several tables; in one table it has one at most.
void DT_SetResponseClass(DT_RespTableHandle table, DT_ObjectHandle object,
                         DT_ResponseClass responseClass);

void DT_AddPairResponse(DT_RespTableHandle table, DT_ResponseClass class1, DT_ResponseClass class2,
                        DT_ResponseCallback callback, DT_ResponseType type, void* client);
void DT_RemovePairResponse(DT_RespTableHandle table, DT_ResponseClass class1,
                           DT_ResponseClass class2, DT_ResponseCallback callback);

/// The same for every class of one list with every class of another at once, at a cost that grows
/// with the sum of the two counts. A removal names the same lists in the same order.
void DT_AddPairResponses(DT_RespTableHandle table, const DT_ResponseClass* classes1,
                         std::size_t count1, const DT_ResponseClass* classes2, std::size_t count2,
                         DT_ResponseCallback callback, DT_ResponseType type, void* client);
void DT_RemovePairResponses(DT_RespTableHandle table, const DT_ResponseClass* classes1,
                            std::size_t count1, const DT_ResponseClass* classes2,
                            std::size_t count2, DT_ResponseCallback callback);

/// Calls the responses of `table` for all pairs of objects of `scene` in contact, in ascending
/// order of the creation numbers (first object's, then second's), until a callback answers DT_DONE.
/// Returns the number of callbacks made, modulo 65536.
std::uint16_t DT_Test(DT_SceneHandle scene, DT_RespTableHandle table);

/// The same for one response alone, as DT_AddPairResponses takes it, that is not entered into the
/// table; the responses in the table are not looked at.
std::uint16_t DT_TestPairs(DT_SceneHandle scene, DT_RespTableHandle table,
                           const DT_ResponseClass* classes1, std::size_t count1,
                           const DT_ResponseClass* classes2, std::size_t count2,
                           DT_ResponseCallback callback, DT_ResponseType type, void* client);

// ---- Two objects -------------------------------------------------------------------------------

/// Whether two objects are in contact; false when a placement is not finite or a shape is empty.
/// The cheapest of the three questions, and of one mind with the other two.
bool DT_InContact(DT_ObjectHandle object1, DT_ObjectHandle object2);

/// Distance of two objects, 0 when in contact. Writes one point on each, in world coordinates; of
/// objects in contact, one common point twice. Infinity, and no points, when a placement is not
/// finite or a shape is empty.
float DT_GetClosestPair(DT_ObjectHandle object1, DT_ObjectHandle object2, float point1[3],
                        float point2[3]);

/// For two objects in contact: the end points of the shortest penetration vector. Moving object 1
/// by point2 - point1 parts the two (leaves them touching). Of a complex shape, the deepest of its
/// polygons that touch. Returns false, and writes nothing, when the objects are not in contact.
bool DT_GetPenDepth(DT_ObjectHandle object1, DT_ObjectHandle object2, float point1[3],
                    float point2[3]);
