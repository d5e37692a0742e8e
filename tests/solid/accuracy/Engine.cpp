#include "Engine.h"

#include <cstddef>
#include <utility>

namespace oracle {

namespace {

DT_ShapeHandle NewShape(const Spec& spec) {
    const auto vertices = [&](std::size_t first, std::size_t count) {
        DT_Begin();
        for (std::size_t i = first; i < first + count; ++i) {
            DT_Vertex(spec.points[i][0], spec.points[i][1], spec.points[i][2]);
        }
        DT_End();
    };
    switch (spec.kind) {
        case Kind::kBox:
            return DT_NewBox(spec.size[0], spec.size[1], spec.size[2]);
        case Kind::kSphere:
            return DT_NewSphere(spec.size[0]);
        case Kind::kCylinder:
            return DT_NewCylinder(spec.size[0], spec.size[1]);
        case Kind::kCone:
            return DT_NewCone(spec.size[0], spec.size[1]);
        case Kind::kSegment:
            return DT_NewLineSegment(spec.points[0].data(), spec.points[1].data());
        case Kind::kPolytope: {
            const DT_ShapeHandle shape = DT_NewPolytope(nullptr);
            vertices(0, spec.points.size());
            DT_EndPolytope();
            return shape;
        }
        case Kind::kMesh:
            break;
    }
    const DT_ShapeHandle shape = DT_NewComplexShape(nullptr);
    std::size_t first = 0;
    for (const int count : spec.counts) {
        vertices(first, static_cast<std::size_t>(count));
        first += static_cast<std::size_t>(count);
    }
    DT_EndComplexShape();
    return shape;
}

DT_Bool Continue(void*, void*, void*, const void*) {
    return DT_CONTINUE;
}

}  // namespace

EngineObject::EngineObject(const Spec& spec)
    : m_shape(NewShape(spec)), m_object(DT_CreateObject(this, m_shape)) {
    Place(spec.matrix);
    DT_SetMargin(m_object, spec.margin);
}

EngineObject::~EngineObject() {
    DT_DestroyObject(m_object);
    DT_DeleteShape(m_shape);
}

bool InContact(const EngineObject& a, const EngineObject& b) {
    const DT_SceneHandle scene = DT_CreateScene();
    const DT_RespTableHandle table = DT_CreateRespTable();
    const DT_ResponseClass classes[2] = {DT_GenResponseClass(table), DT_GenResponseClass(table)};
    DT_SetResponseClass(table, a.Handle(), classes[0]);
    DT_SetResponseClass(table, b.Handle(), classes[1]);
    DT_AddPairResponse(table, classes[0], classes[1], Continue, DT_SIMPLE_RESPONSE, nullptr);
    DT_AddObject(scene, a.Handle());
    DT_AddObject(scene, b.Handle());
    const bool contact = DT_Test(scene, table) != 0;
    DT_RemoveObject(scene, a.Handle());
    DT_RemoveObject(scene, b.Handle());
    DT_DestroyRespTable(table);
    DT_DestroyScene(scene);
    return contact;
}

Answers Ask(const EngineObject& a, const EngineObject& b) {
    Answers answers;
    answers.contact = InContact(a, b);
    answers.distance =
        DT_GetClosestPair(a.Handle(), b.Handle(), answers.point1.data(), answers.point2.data());
    answers.hasDepth =
        DT_GetPenDepth(a.Handle(), b.Handle(), answers.depth1.data(), answers.depth2.data());
    return answers;
}

Answers Ask(const Spec& a, const Spec& b) {
    const EngineObject first(a);
    const EngineObject second(b);
    return Ask(first, second);
}

Answers Swapped(const Answers& answers) {
    Answers swapped = answers;
    std::swap(swapped.point1, swapped.point2);
    std::swap(swapped.depth1, swapped.depth2);
    return swapped;
}

}  // namespace oracle
