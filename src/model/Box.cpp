#include "model/Box.h"

#include "kestrane.h"

CBox::CBox(CGroup* group, const std::string& label, float width, float height, float depth)
    : CSceneObject(kTypeBox, group, label), m_record{width, height,  depth,        0,
                                                     0,     nullptr, MAV_ID_MATRIX} {
    MakeDrawable(mav_class_box, &m_record);
}

CBox::CBox(const CBox& source, CGroup* target)
    : CBox(target, source.Label(), source.m_record.width, source.m_record.height,
           source.m_record.depth) {}

void CBox::SetDisplayMatrix(const MAV_matrix& matrix) noexcept {
    m_record.matrix = matrix;
}

DT_ShapeHandle CBox::BuildSolidShape() const {
    return DT_NewBox(m_record.width, m_record.height, m_record.depth);
}

bool CBox::ShowSurface(const CSurface& surface) noexcept {
    m_record.xTile = surface.XTile();
    m_record.yTile = surface.YTile();
    m_record.surfaceParams = surface.Params();
    return true;
}

std::unique_ptr<CSceneObject> CBox::Copy(CGroup* target) const {
    return std::make_unique<CBox>(*this, target);
}

void CBox::GetInfo(KstObjectInfo* info) const {
    CSceneObject::GetInfo(info);
    info->p1.f = m_record.width;
    info->p2.f = m_record.height;
    info->p3.f = m_record.depth;
}
