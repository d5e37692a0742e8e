#include "model/Cone.h"

#include "kestrane.h"

namespace {

constexpr int kVertexCount = 25;
constexpr int kEndCaps = 1;

}  // namespace

CCone::CCone(CGroup* group, const std::string& label, float radius, float height)
    : CSceneObject(kTypeCone, group, label), m_record{0, radius, height,  kVertexCount, kEndCaps,
                                                      0, 0,      nullptr, MAV_ID_MATRIX} {
    MakeDrawable(mav_class_cone, &m_record);
}

CCone::CCone(const CCone& source, CGroup* target)
    : CCone(target, source.Label(), source.m_record.bottomRadius, source.m_record.height) {}

void CCone::SetDisplayMatrix(const MAV_matrix& matrix) noexcept {
    m_record.matrix = matrix;
}

DT_ShapeHandle CCone::BuildSolidShape() const {
    return DT_NewCone(m_record.bottomRadius, m_record.height);
}

bool CCone::ShowSurface(const CSurface& surface) noexcept {
    m_record.xTile = surface.XTile();
    m_record.yTile = surface.YTile();
    m_record.surfaceParams = surface.Params();
    return true;
}

std::unique_ptr<CSceneObject> CCone::Copy(CGroup* target) const {
    return std::make_unique<CCone>(*this, target);
}

void CCone::GetInfo(KstObjectInfo* info) const {
    CSceneObject::GetInfo(info);
    info->p1.f = m_record.bottomRadius;
    info->p2.f = m_record.height;
}
