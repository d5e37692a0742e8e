#pragma once

#include <vector>

#include "model/SceneObject.h"

/// One convex polygon, given by its corners in the object's frame.
class CPolygon : public CSceneObject {
  public:
    /// `vertices`: three floats per vertex.
    CPolygon(CGroup* group, const std::string& label, int vertexCount, const float* vertices);
    CPolygon(const CPolygon& source, CGroup* target);

    const MAV_polygon& Record() const noexcept { return m_record; }
    void SetDisplayMatrix(const MAV_matrix& matrix) noexcept override;
    void GetInfo(KstObjectInfo* info) const override;

  private:
    DT_ShapeHandle BuildSolidShape() const override;
    bool ShowSurface(const CSurface& surface) noexcept override;
    std::unique_ptr<CSceneObject> Copy(CGroup* target) const override;
    void Complete();

    std::vector<MAV_vector> m_vertices;
    MAV_polygon m_record;
};
