#pragma once

#include "model/SceneObject.h"

/// Stands along y, middle at the origin.
class CCylinder : public CSceneObject {
  public:
    CCylinder(CGroup* group, const std::string& label, float radius, float height);
    CCylinder(const CCylinder& source, CGroup* target);

    const MAV_cylinder& Record() const noexcept { return m_record; }
    void SetDisplayMatrix(const MAV_matrix& matrix) noexcept override;
    void GetInfo(KstObjectInfo* info) const override;

  private:
    DT_ShapeHandle BuildSolidShape() const override;
    bool ShowSurface(const CSurface& surface) noexcept override;
    std::unique_ptr<CSceneObject> Copy(CGroup* target) const override;

    MAV_cylinder m_record;
};
