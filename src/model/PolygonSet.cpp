#include "model/PolygonSet.h"

#include "model/SolidMesh.h"
#include "model/VertexInput.h"

CPolygonSet::CPolygonSet(ObjectType type, CGroup* group, const std::string& label,
                         int primitiveCount)
    : CSceneObject(type, group, label, primitiveCount) {}

CPolygonSet::CPolygonSet(const CPolygonSet& source, CGroup* target)
    : CSceneObject(source.Type(), target, source.Label(), source.PrimitiveCount()),
      m_vertexCounts(source.m_vertexCounts),
      m_normals(source.m_normals),
      m_texCoords(source.m_texCoords),
      m_vertices(source.m_vertices) {
    Complete(source.m_record.polygonCount);
}

void CPolygonSet::ComputeNormals(int polygonCount) {
    m_normals.reserve(static_cast<std::size_t>(polygonCount));
    const MAV_vector* vertices = m_vertices.data();
    for (std::size_t i = 0; i < static_cast<std::size_t>(polygonCount); ++i) {
        const int count = m_vertexCounts.empty() ? 3 : m_vertexCounts[i];
        m_normals.push_back(PolygonNormal(vertices, count));
        vertices += count;
    }
}

void CPolygonSet::Complete(int polygonCount) {
    m_record.polygonCount = polygonCount;
    m_record.vertexCounts = m_vertexCounts.empty() ? nullptr : m_vertexCounts.data();
    m_record.normals = m_normals.data();
    m_record.texCoords = m_texCoords.empty() ? nullptr : m_texCoords.data();
    m_record.vertices = m_vertices.data();
    m_record.surfaceParams = nullptr;
    m_record.matrix = MAV_ID_MATRIX;
    MakeDrawable(mav_class_polygonGrp, &m_record);
}

void CPolygonSet::SetDisplayMatrix(const MAV_matrix& matrix) noexcept {
    m_record.matrix = matrix;
}

DT_ShapeHandle CPolygonSet::BuildSolidShape() const {
    return BuildSolidMesh(m_record.polygonCount, m_record.vertexCounts, m_record.vertices);
}

bool CPolygonSet::ShowSurface(const CSurface& surface) noexcept {
    if (surface.IsTextured() && !TakesTextures())
        return false;
    m_record.surfaceParams = surface.Params();
    return true;
}
