#include "model/Triangles.h"

#include "kestrane.h"
#include "model/ObjectInfo.h"
#include "model/VertexInput.h"

CTriangles::CTriangles(CGroup* group, const std::string& label, int triangleCount,
                       const float* vertices)
    : CPolygonSet(kTypeTriangles, group, label, triangleCount) {
    m_vertices = ReadVertices(3 * static_cast<std::size_t>(triangleCount), vertices);
    ComputeNormals(triangleCount);
    Complete(triangleCount);
}

CTriangles::CTriangles(const CTriangles& source, CGroup* target) : CPolygonSet(source, target) {}

std::unique_ptr<CSceneObject> CTriangles::Copy(CGroup* target) const {
    return std::make_unique<CTriangles>(*this, target);
}

void CTriangles::GetInfo(KstObjectInfo* info) const {
    auto vertices = CopyForHost(Vertices());
    CSceneObject::GetInfo(info);
    info->p1.i = Record().polygonCount;
    info->p2.floats = vertices.release();
}
