#include "model/Polygon.h"

#include "kestrane.h"
#include "model/ObjectInfo.h"
#include "model/SolidMesh.h"
#include "model/VertexInput.h"

CPolygon::CPolygon(CGroup* group, const std::string& label, int vertexCount, const float* vertices)
    : CSceneObject(kTypePolygon, group, label),
      m_vertices(ReadVertices(static_cast<std::size_t>(vertexCount), vertices)) {
    Complete();
}

CPolygon::CPolygon(const CPolygon& source, CGroup* target)
    : CSceneObject(kTypePolygon, target, source.Label()), m_vertices(source.m_vertices) {
    Complete();
}

void CPolygon::Complete() {
    const int count = static_cast<int>(m_vertices.size());
    const MAV_vector* const vertices = m_vertices.data();
    m_record = {count, PolygonNormal(vertices, count), nullptr, vertices, nullptr, MAV_ID_MATRIX};
    MakeDrawable(mav_class_polygon, &m_record);
}

void CPolygon::SetDisplayMatrix(const MAV_matrix& matrix) noexcept {
    m_record.matrix = matrix;
}

DT_ShapeHandle CPolygon::BuildSolidShape() const {
    return BuildSolidMesh(1, &m_record.vertexCount, m_vertices.data());
}

bool CPolygon::ShowSurface(const CSurface& surface) noexcept {
    if (surface.IsTextured())
        return false;
    m_record.surfaceParams = surface.Params();
    return true;
}

std::unique_ptr<CSceneObject> CPolygon::Copy(CGroup* target) const {
    return std::make_unique<CPolygon>(*this, target);
}

void CPolygon::GetInfo(KstObjectInfo* info) const {
    auto vertices = CopyForHost(m_vertices);
    CSceneObject::GetInfo(info);
    info->p1.i = m_record.vertexCount;
    info->p2.floats = vertices.release();
}
