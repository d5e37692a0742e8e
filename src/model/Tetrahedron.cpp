#include "model/Tetrahedron.h"

#include <utility>

#include "kestrane.h"
#include "model/ObjectInfo.h"
#include "model/SolidMesh.h"
#include "model/VertexInput.h"

namespace {

constexpr int kFaceCount = 4;
/// Corners of each face, as seen from outside against the clock.
constexpr std::size_t kFaces[kFaceCount][3] = {{0, 1, 2}, {0, 3, 1}, {3, 2, 1}, {0, 2, 3}};

}  // namespace

CTetrahedron::CTetrahedron(CGroup* group, const std::string& label, const float* vertices)
    : CPolygonSet(kTypeTetrahedron, group, label, 1) {
    std::vector<MAV_vector> corners = ReadVertices(4, vertices);
    const MAV_vector normal = PolygonNormal(corners.data(), 3);
    if (mav_vectorDotProduct(normal, mav_vectorSub(corners[3], corners[0])) > 0)
        std::swap(corners[1], corners[2]);

    m_vertices.reserve(3 * kFaceCount);
    m_normals.reserve(kFaceCount);
    for (const auto& face : kFaces) {
        const MAV_vector& a = corners[face[0]];
        const MAV_vector& b = corners[face[1]];
        const MAV_vector& c = corners[face[2]];
        m_vertices.insert(m_vertices.end(), {a, b, c});
        m_normals.push_back(
            mav_vectorNormalize(mav_vectorCrossProduct(mav_vectorSub(b, a), mav_vectorSub(c, b))));
    }
    Complete(kFaceCount);
}

CTetrahedron::CTetrahedron(const CTetrahedron& source, CGroup* target)
    : CPolygonSet(source, target) {}

std::array<MAV_vector, 4> CTetrahedron::Corners() const noexcept {
    // The second face begins p0, p3.
    return {Vertices()[0], Vertices()[1], Vertices()[2], Vertices()[4]};
}

DT_ShapeHandle CTetrahedron::BuildSolidShape() const {
    return BuildSolidTetrahedron(Corners());
}

std::unique_ptr<CSceneObject> CTetrahedron::Copy(CGroup* target) const {
    return std::make_unique<CTetrahedron>(*this, target);
}

void CTetrahedron::GetInfo(KstObjectInfo* info) const {
    const auto corners = Corners();
    auto vertices = CopyForHost(corners.data(), corners.size());
    CSceneObject::GetInfo(info);
    info->p1.floats = vertices.release();
}
