#include "model/Cylinder.h"

#include "kestrane.h"

namespace {

constexpr int kVertexCount = 25;
constexpr int kEndCaps = 1;

}  // namespace

CCylinder::CCylinder(CGroup* group, const std::string& label, float radius, float height)
    : CSceneObject(kTypeCylinder, group, label),
      m_record{radius, height, kVertexCount, kEndCaps, 0, 0, nullptr, MAV_ID_MATRIX} {
    MakeDrawable(mav_class_cylinder, &m_record);
}

CCylinder::CCylinder(const CCylinder& source, CGroup* target)
    : CCylinder(target, source.Label(), source.m_record.radius, source.m_record.height) {}

void CCylinder::SetDisplayMatrix(const MAV_matrix& matrix) noexcept {
    m_record.matrix = matrix;
}

DT_ShapeHandle CCylinder::BuildSolidShape() const {
    return DT_NewCylinder(m_record.radius, m_record.height);
}

bool CCylinder::ShowSurface(const CSurface& surface) noexcept {
    m_record.xTile = surface.XTile();
    m_record.yTile = surface.YTile();
    m_record.surfaceParams = surface.Params();
    return true;
}

std::unique_ptr<CSceneObject> CCylinder::Copy(CGroup* target) const {
    return std::make_unique<CCylinder>(*this, target);
}

void CCylinder::GetInfo(KstObjectInfo* info) const {
    CSceneObject::GetInfo(info);
    info->p1.f = m_record.radius;
    info->p2.f = m_record.height;
}
