#include "model/SolidMesh.h"

#include <memory>

namespace {

struct ShapeDeleter {
    void operator()(DT_ShapeHandle shape) const noexcept { DT_DeleteShape(shape); }
};

/// Deletes the shape if its building ends early.
using OwnedShape = std::unique_ptr<solid::Shape, ShapeDeleter>;

void AddPolygon(const MAV_vector* vertices, int count) {
    DT_Begin();
    for (int i = 0; i < count; ++i)
        DT_Vertex(vertices[i].x, vertices[i].y, vertices[i].z);
    DT_End();
}

}  // namespace

DT_ShapeHandle BuildSolidMesh(int polygonCount, const int* vertexCounts,
                              const MAV_vector* vertices) {
    OwnedShape shape(DT_NewComplexShape(nullptr));
    for (int i = 0; i < polygonCount; ++i) {
        const int count = vertexCounts ? vertexCounts[i] : 3;
        AddPolygon(vertices, count);
        vertices += count;
    }
    DT_EndComplexShape();
    return shape.release();
}

DT_ShapeHandle BuildSolidTetrahedron(const std::array<MAV_vector, 4>& corners) {
    OwnedShape shape(DT_NewPolytope(nullptr));
    AddPolygon(corners.data(), 4);
    DT_EndPolytope();
    return shape.release();
}
