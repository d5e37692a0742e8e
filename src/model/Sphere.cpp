#include "model/Sphere.h"

#include "kestrane.h"

namespace {

constexpr int kVertexCount = 25;
constexpr int kSliceCount = 25;

}  // namespace

CSphere::CSphere(CGroup* group, const std::string& label, float radius)
    : CSceneObject(kTypeSphere, group, label), m_record{radius, kVertexCount, kSliceCount,  0,
                                                        0,      nullptr,      MAV_ID_MATRIX} {
    MakeDrawable(mav_class_sphere, &m_record);
}

CSphere::CSphere(const CSphere& source, CGroup* target)
    : CSphere(target, source.Label(), source.m_record.radius) {}

void CSphere::SetDisplayMatrix(const MAV_matrix& matrix) noexcept {
    m_record.matrix = matrix;
}

DT_ShapeHandle CSphere::BuildSolidShape() const {
    return DT_NewSphere(m_record.radius);
}

bool CSphere::ShowSurface(const CSurface& surface) noexcept {
    m_record.xTile = surface.XTile();
    m_record.yTile = surface.YTile();
    m_record.surfaceParams = surface.Params();
    return true;
}

std::unique_ptr<CSceneObject> CSphere::Copy(CGroup* target) const {
    return std::make_unique<CSphere>(*this, target);
}

void CSphere::GetInfo(KstObjectInfo* info) const {
    CSceneObject::GetInfo(info);
    info->p1.f = m_record.radius;
}
