#include "model/Polyline.h"

#include "kestrane.h"
#include "model/ObjectInfo.h"
#include "model/VertexInput.h"

CPolyline::CPolyline(CGroup* group, const std::string& label, int lineCount,
                     const int* vertexCounts, const float* vertices)
    : CSceneObject(kTypePolyline, group, label),
      m_vertexCounts(vertexCounts, vertexCounts + lineCount),
      m_vertices(ReadVertices(SumOf(lineCount, vertexCounts), vertices)),
      m_lineParams(mav_surfaceParamsNew(MAV_COLOUR, 0, 0, 0)) {
    Complete();
}

CPolyline::CPolyline(const CPolyline& source, CGroup* target)
    : CSceneObject(kTypePolyline, target, source.Label()),
      m_vertexCounts(source.m_vertexCounts),
      m_vertices(source.m_vertices),
      m_lineParams(source.m_lineParams) {
    Complete();
}

void CPolyline::Complete() {
    m_record = {static_cast<int>(m_vertexCounts.size()), m_vertexCounts.data(), m_vertices.data(),
                &m_lineParams, MAV_ID_MATRIX};
    MakeDrawable(mav_class_polyline, &m_record);
}

void CPolyline::SetDisplayMatrix(const MAV_matrix& matrix) noexcept {
    m_record.matrix = matrix;
}

std::unique_ptr<CSceneObject> CPolyline::Copy(CGroup* target) const {
    return std::make_unique<CPolyline>(*this, target);
}

void CPolyline::GetInfo(KstObjectInfo* info) const {
    auto counts = CopyForHost(m_vertexCounts);
    auto vertices = CopyForHost(m_vertices);
    CSceneObject::GetInfo(info);
    info->p1.i = m_record.lineCount;
    info->p2.ints = counts.release();
    info->p3.floats = vertices.release();
}
