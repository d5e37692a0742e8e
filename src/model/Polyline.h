#pragma once

#include <vector>

#include "model/SceneObject.h"

/// Open lines, for the eye alone: never in the collision world, and no surface changes their look.
class CPolyline : public CSceneObject {
  public:
    /// `vertexCounts`: not below 0 each. `vertices`: three floats per vertex, line after line.
    CPolyline(CGroup* group, const std::string& label, int lineCount, const int* vertexCounts,
              const float* vertices);
    CPolyline(const CPolyline& source, CGroup* target);

    const MAV_polyline& Record() const noexcept { return m_record; }
    void SetDisplayMatrix(const MAV_matrix& matrix) noexcept override;
    void GetInfo(KstObjectInfo* info) const override;

  private:
    DT_ShapeHandle BuildSolidShape() const override { return nullptr; }
    bool ShowSurface(const CSurface&) noexcept override { return false; }
    std::unique_ptr<CSceneObject> Copy(CGroup* target) const override;
    void Complete();

    std::vector<int> m_vertexCounts;
    std::vector<MAV_vector> m_vertices;
    MAV_surfaceParams m_lineParams;
    MAV_polyline m_record;
};
