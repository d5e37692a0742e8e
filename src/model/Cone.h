#pragma once

#include "model/SceneObject.h"

/// Stands along y, tip at +y, middle of the height at the origin.
class CCone : public CSceneObject {
  public:
    CCone(CGroup* group, const std::string& label, float radius, float height);
    CCone(const CCone& source, CGroup* target);

    const MAV_cone& Record() const noexcept { return m_record; }
    void SetDisplayMatrix(const MAV_matrix& matrix) noexcept override;
    void GetInfo(KstObjectInfo* info) const override;

  private:
    DT_ShapeHandle BuildSolidShape() const override;
    bool ShowSurface(const CSurface& surface) noexcept override;
    std::unique_ptr<CSceneObject> Copy(CGroup* target) const override;

    MAV_cone m_record;
};
