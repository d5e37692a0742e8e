#include "model/PolygonGroup.h"

#include "kestrane.h"
#include "model/ObjectInfo.h"
#include "model/VertexInput.h"

CPolygonGroup::CPolygonGroup(CGroup* group, const std::string& label, int polygonCount,
                             const int* vertexCounts, const float* vertices, const float* texCoords)
    : CPolygonSet(kTypePolygonGroup, group, label, polygonCount) {
    m_vertexCounts.assign(vertexCounts, vertexCounts + polygonCount);
    m_vertices = ReadVertices(SumOf(polygonCount, vertexCounts), vertices);
    if (texCoords) {
        m_texCoords.reserve(m_vertices.size());
        for (std::size_t i = 0; i < m_vertices.size(); ++i)
            m_texCoords.push_back({texCoords[2 * i], texCoords[2 * i + 1]});
    }
    ComputeNormals(polygonCount);
    Complete(polygonCount);
}

CPolygonGroup::CPolygonGroup(const CPolygonGroup& source, CGroup* target)
    : CPolygonSet(source, target) {}

std::unique_ptr<CSceneObject> CPolygonGroup::Copy(CGroup* target) const {
    return std::make_unique<CPolygonGroup>(*this, target);
}

void CPolygonGroup::GetInfo(KstObjectInfo* info) const {
    auto counts = CopyForHost(m_vertexCounts);
    auto vertices = CopyForHost(m_vertices);
    CSceneObject::GetInfo(info);
    info->p1.i = Record().polygonCount;
    info->p2.ints = counts.release();
    info->p3.floats = vertices.release();
}
