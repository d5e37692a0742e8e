#pragma once

#include "model/SceneObject.h"

/// Axis-parallel in its own frame, width along x, height along y, depth along z; middle at the
/// origin.
class CBox : public CSceneObject {
  public:
    CBox(CGroup* group, const std::string& label, float width, float height, float depth);
    CBox(const CBox& source, CGroup* target);

    const MAV_box& Record() const noexcept { return m_record; }
    void SetDisplayMatrix(const MAV_matrix& matrix) noexcept override;
    void GetInfo(KstObjectInfo* info) const override;

  private:
    DT_ShapeHandle BuildSolidShape() const override;
    bool ShowSurface(const CSurface& surface) noexcept override;
    std::unique_ptr<CSceneObject> Copy(CGroup* target) const override;

    MAV_box m_record;
};
