#pragma once

#include "model/SceneObject.h"

/// Middle at the origin.
class CSphere : public CSceneObject {
  public:
    CSphere(CGroup* group, const std::string& label, float radius);
    CSphere(const CSphere& source, CGroup* target);

    const MAV_sphere& Record() const noexcept { return m_record; }
    void SetDisplayMatrix(const MAV_matrix& matrix) noexcept override;
    void GetInfo(KstObjectInfo* info) const override;

  private:
    DT_ShapeHandle BuildSolidShape() const override;
    bool ShowSurface(const CSurface& surface) noexcept override;
    std::unique_ptr<CSceneObject> Copy(CGroup* target) const override;

    MAV_sphere m_record;
};
