#include "model/SolidMesh.h"

#include <memory>

#include "model/VertexInput.h"

namespace {

struct ShapeDeleter {
    void operator()(DT_ShapeHandle shape) const noexcept { DT_DeleteShape(shape); }
};

/// Deletes the shape if its building ends early.
using OwnedShape = std::unique_ptr<solid::Shape, ShapeDeleter>;

}  // namespace

DT_ShapeHandle BuildSolidMesh(int polygonCount, const int* vertexCounts,
                              const MAV_vector* vertices) {
    static_assert(sizeof(MAV_vector) == 3 * sizeof(float));
    const auto polygons = static_cast<std::size_t>(polygonCount);
    const std::size_t count = vertexCounts ? SumOf(polygonCount, vertexCounts) : 3 * polygons;
    return DT_NewMesh(reinterpret_cast<const float*>(vertices), count, vertexCounts, polygons);
}

DT_ShapeHandle BuildSolidTetrahedron(const std::array<MAV_vector, 4>& corners) {
    OwnedShape shape(DT_NewPolytope(nullptr));
    DT_Begin();
    for (const MAV_vector& corner : corners)
        DT_Vertex(corner.x, corner.y, corner.z);
    DT_End();
    DT_EndPolytope();
    return shape.release();
}
