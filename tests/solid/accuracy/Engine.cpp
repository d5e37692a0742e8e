#include "Engine.h"

#include <cstddef>
#include <utility>

#include "Convex.h"

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

/// A scene with two classes that are tested against each other.
class TwoClasses {
  public:
    TwoClasses() {
        DT_AddPairResponse(m_table, m_class1, m_class2, Continue, DT_SIMPLE_RESPONSE, nullptr);
    }
    ~TwoClasses() {
        DT_DestroyRespTable(m_table);
        DT_DestroyScene(m_scene);
    }
    TwoClasses(const TwoClasses&) = delete;
    TwoClasses& operator=(const TwoClasses&) = delete;

    bool Touch(DT_ObjectHandle a, DT_ObjectHandle b) const {
        DT_SetResponseClass(m_table, a, m_class1);
        DT_SetResponseClass(m_table, b, m_class2);
        DT_AddObject(m_scene, a);
        DT_AddObject(m_scene, b);
        const bool contact = DT_Test(m_scene, m_table) != 0;
        DT_RemoveObject(m_scene, a);
        DT_RemoveObject(m_scene, b);
        return contact;
    }

  private:
    DT_SceneHandle m_scene = DT_CreateScene();
    DT_RespTableHandle m_table = DT_CreateRespTable();
    DT_ResponseClass m_class1 = DT_GenResponseClass(m_table);
    DT_ResponseClass m_class2 = DT_GenResponseClass(m_table);
};

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

double Answers::Depth() const {
    return Length(Widened(depth2.data()) - Widened(depth1.data()));
}

Answers Ask(const EngineObject& a, const EngineObject& b) {
    static const TwoClasses kScene;
    Answers answers;
    answers.contact = kScene.Touch(a.Handle(), b.Handle());
    answers.inContact = DT_InContact(a.Handle(), b.Handle());
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
