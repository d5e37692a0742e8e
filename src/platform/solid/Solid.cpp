#include "platform/solid/Solid.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "platform/solid/FloatBox.h"
#include "platform/solid/Narrow.h"
#include "platform/solid/Object.h"
#include "platform/solid/RespTable.h"
#include "platform/solid/Scene.h"
#include "platform/solid/Shape.h"

using namespace solid;

namespace {

double Size(float size) {
    return size > 0 ? static_cast<double>(size) : 0.0;
}

Vec3 ToVec3(const float v[3]) {
    return {static_cast<double>(v[0]), static_cast<double>(v[1]), static_cast<double>(v[2])};
}

/// Nearest float, without overflow: objects that are finite have finite results.
float ToFloat(double d) {
    constexpr auto kMost = static_cast<double>(std::numeric_limits<float>::max());
    return static_cast<float>(std::clamp(d, -kMost, kMost));
}

/// A distance of 0 means contact, so one that is above 0 must not become 0.
float ToDistance(double d) {
    const float f = ToFloat(d);
    return f == 0 && d > 0 ? std::numeric_limits<float>::denorm_min() : f;
}

void Write(const Vec3& from, float to[3]) {
    if (to != nullptr) {
        to[0] = ToFloat(from.x);
        to[1] = ToFloat(from.y);
        to[2] = ToFloat(from.z);
    }
}

/// Two objects in the order in which pairs are always computed: swapping them then swaps the answer
/// to the last bit.
struct OrderedPair {
    OrderedPair(const Object& object1, const Object& object2)
        : swapped(object2.Number() < object1.Number()),
          first((swapped ? object2 : object1).GetPlaced()),
          second((swapped ? object1 : object2).GetPlaced()) {}
    void WritePoints(const PointPair& points, float point1[3], float point2[3]) const {
        Write(swapped ? points.point2 : points.point1, point1);
        Write(swapped ? points.point1 : points.point2, point2);
    }

    bool swapped;
    Placed first;
    Placed second;
};

/// The shape that a thread is building: the vertices given so far to a shape that the caller
/// already holds, and that gets its form at the end.
class ShapeBuilder {
  public:
    enum class Form { kNone, kPolytope, kComplex };

    Shape* Start(Form form) {
        // A shape that was left open is what was given of it; a caller that lost its way over one
        // shape must not lose all that follow.
        Finish(m_form);
        m_shape =
            Shape::NewUnbuilt(form == Form::kPolytope ? ShapeKind::kPolytope : ShapeKind::kMesh)
                .release();
        m_form = form;
        return m_shape;
    }
    void Finish(Form form) {
        if (m_form == Form::kNone || m_form != form) {
            return;
        }
        EndPolygon();
        if (form == Form::kPolytope) {
            std::vector<Vec3> points;
            points.reserve(m_points.size());
            for (const FloatPoint& point : m_points) {
                points.push_back(ToVec3(point));
            }
            m_shape->BuildPolytope(std::move(points));
        } else {
            m_points.shrink_to_fit();
            m_counts.shrink_to_fit();
            m_shape->BuildMesh(std::move(m_points), std::move(m_counts));
        }
        Drop();
    }
    void Forget(const Shape* shape) {
        if (shape == m_shape) {
            Drop();
        }
    }
    void BeginPolygon() { m_inPolygon = m_form != Form::kNone; }
    void Add(const FloatPoint& vertex) {
        if (m_inPolygon) {
            m_points.push_back(vertex);
        }
    }
    void EndPolygon() {
        if (m_inPolygon && m_points.size() > m_ended) {
            m_counts.push_back(static_cast<int>(m_points.size() - m_ended));
            m_ended = m_points.size();
        }
        m_inPolygon = false;
    }

  private:
    void Drop() { *this = ShapeBuilder(); }

    Form m_form = Form::kNone;
    Shape* m_shape = nullptr;  // the caller's
    std::vector<FloatPoint> m_points;
    std::vector<int> m_counts;
    std::size_t m_ended = 0;  // vertices of polygons that have ended
    bool m_inPolygon = false;
};

thread_local ShapeBuilder t_builder;

}  // namespace

// ---- Shapes ------------------------------------------------------------------------------------

DT_ShapeHandle DT_NewBox(float width, float height, float depth) {
    return Shape::NewBox(Size(width), Size(height), Size(depth)).release();
}

DT_ShapeHandle DT_NewSphere(float radius) {
    return Shape::NewSphere(Size(radius)).release();
}

DT_ShapeHandle DT_NewCylinder(float radius, float height) {
    return Shape::NewCylinder(Size(radius), Size(height)).release();
}

DT_ShapeHandle DT_NewCone(float radius, float height) {
    return Shape::NewCone(Size(radius), Size(height)).release();
}

DT_ShapeHandle DT_NewLineSegment(const float source[3], const float target[3]) {
    return Shape::NewSegment(ToVec3(source), ToVec3(target)).release();
}

DT_ShapeHandle DT_NewPolytope(const void*) {
    return t_builder.Start(ShapeBuilder::Form::kPolytope);
}

void DT_EndPolytope() {
    t_builder.Finish(ShapeBuilder::Form::kPolytope);
}

DT_ShapeHandle DT_NewComplexShape(const void*) {
    return t_builder.Start(ShapeBuilder::Form::kComplex);
}

void DT_EndComplexShape() {
    t_builder.Finish(ShapeBuilder::Form::kComplex);
}

void DT_Begin() {
    t_builder.BeginPolygon();
}

void DT_Vertex(float x, float y, float z) {
    t_builder.Add({x, y, z});
}

void DT_End() {
    t_builder.EndPolygon();
}

DT_ShapeHandle DT_NewMesh(const float* vertices, std::size_t vertexCount, const int* counts,
                          std::size_t polygonCount) {
    std::unique_ptr<Shape> shape = Shape::NewUnbuilt(ShapeKind::kMesh);
    std::vector<FloatPoint> points(vertexCount);
    for (FloatPoint& point : points) {
        point = {vertices[0], vertices[1], vertices[2]};
        vertices += 3;
    }
    std::vector<int> ownCounts;
    if (counts != nullptr) {
        ownCounts.assign(counts, counts + polygonCount);
    }
    shape->BuildMesh(std::move(points), std::move(ownCounts));
    return shape.release();
}

void DT_DeleteShape(DT_ShapeHandle shape) {
    if (shape != nullptr) {
        t_builder.Forget(shape);
        const std::unique_ptr<Shape> owner(shape);
    }
}

// ---- Objects -----------------------------------------------------------------------------------

DT_ObjectHandle DT_CreateObject(void* client, DT_ShapeHandle shape) {
    return std::make_unique<Object>(client, shape).release();
}

void DT_DestroyObject(DT_ObjectHandle object) {
    const std::unique_ptr<Object> owner(object);
}

void DT_SetMatrixf(DT_ObjectHandle object, const float m[16]) {
    object->SetMatrix(m);
}

void DT_SetPosition(DT_ObjectHandle object, const float position[3]) {
    object->SetPosition(position);
}

void DT_SetMargin(DT_ObjectHandle object, float margin) {
    object->SetMargin(margin);
}

bool DT_GetBBox(DT_ObjectHandle object, float min[3], float max[3]) {
    if (!object->TakesPart()) {
        return false;
    }
    const FloatBox box = FloatBox::Around(object->WorldBox());
    std::copy(box.lower, box.lower + 3, min);
    std::copy(box.upper, box.upper + 3, max);
    return true;
}

// ---- Scenes and responses ----------------------------------------------------------------------

DT_SceneHandle DT_CreateScene() {
    return std::make_unique<Scene>().release();
}

void DT_DestroyScene(DT_SceneHandle scene) {
    const std::unique_ptr<Scene> owner(scene);
}

void DT_AddObject(DT_SceneHandle scene, DT_ObjectHandle object) {
    scene->Add(*object);
}

void DT_RemoveObject(DT_SceneHandle scene, DT_ObjectHandle object) {
    scene->Remove(*object);
}

DT_RespTableHandle DT_CreateRespTable() {
    return std::make_unique<RespTable>().release();
}

void DT_DestroyRespTable(DT_RespTableHandle table) {
    const std::unique_ptr<RespTable> owner(table);
}

DT_ResponseClass DT_GenResponseClass(DT_RespTableHandle table) {
    return table->GenClass();
}

void DT_FreeResponseClass(DT_RespTableHandle table, DT_ResponseClass responseClass) {
    table->FreeClass(responseClass);
}

void DT_SetResponseClass(DT_RespTableHandle table, DT_ObjectHandle object,
                         DT_ResponseClass responseClass) {
    table->SetClass(*object, responseClass);
}

void DT_AddPairResponse(DT_RespTableHandle table, DT_ResponseClass class1, DT_ResponseClass class2,
                        DT_ResponseCallback callback, DT_ResponseType, void* client) {
    table->AddResponse(&class1, 1, &class2, 1, callback, client);
}

void DT_RemovePairResponse(DT_RespTableHandle table, DT_ResponseClass class1,
                           DT_ResponseClass class2, DT_ResponseCallback callback) {
    table->RemoveResponse(&class1, 1, &class2, 1, callback);
}

void DT_AddPairResponses(DT_RespTableHandle table, const DT_ResponseClass* classes1,
                         std::size_t count1, const DT_ResponseClass* classes2, std::size_t count2,
                         DT_ResponseCallback callback, DT_ResponseType, void* client) {
    table->AddResponse(classes1, count1, classes2, count2, callback, client);
}

void DT_RemovePairResponses(DT_RespTableHandle table, const DT_ResponseClass* classes1,
                            std::size_t count1, const DT_ResponseClass* classes2,
                            std::size_t count2, DT_ResponseCallback callback) {
    table->RemoveResponse(classes1, count1, classes2, count2, callback);
}

std::uint16_t DT_Test(DT_SceneHandle scene, DT_RespTableHandle table) {
    return table->Test(*scene);
}

std::uint16_t DT_TestPairs(DT_SceneHandle scene, DT_RespTableHandle table,
                           const DT_ResponseClass* classes1, std::size_t count1,
                           const DT_ResponseClass* classes2, std::size_t count2,
                           DT_ResponseCallback callback, DT_ResponseType, void* client) {
    return table->TestBetween(*scene, classes1, count1, classes2, count2, callback, client);
}

// ---- Two objects -------------------------------------------------------------------------------

bool DT_InContact(DT_ObjectHandle object1, DT_ObjectHandle object2) {
    if (!object1->TakesPart() || !object2->TakesPart()) {
        return false;
    }
    const bool swap = object2->Number() < object1->Number();
    return swap ? Object::InContact(*object2, *object1) : Object::InContact(*object1, *object2);
}

float DT_GetClosestPair(DT_ObjectHandle object1, DT_ObjectHandle object2, float point1[3],
                        float point2[3]) {
    if (!object1->TakesPart() || !object2->TakesPart()) {
        return std::numeric_limits<float>::infinity();
    }
    const OrderedPair pair(*object1, *object2);
    const PointPair closest = ClosestPoints(pair.first, pair.second);
    pair.WritePoints(closest, point1, point2);
    return ToDistance(closest.value);
}

bool DT_GetPenDepth(DT_ObjectHandle object1, DT_ObjectHandle object2, float point1[3],
                    float point2[3]) {
    if (!object1->TakesPart() || !object2->TakesPart()) {
        return false;
    }
    const OrderedPair pair(*object1, *object2);
    PointPair deepest;
    if (!Penetration(pair.first, pair.second, deepest)) {
        return false;
    }
    pair.WritePoints(deepest, point1, point2);
    return true;
}
