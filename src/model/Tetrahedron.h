#pragma once

#include <array>

#include "model/PolygonSet.h"

/// A solid tetrahedron, kept as four faces that look outwards.
class CTetrahedron : public CPolygonSet {
  public:
    /// `vertices`: four corners, 12 floats. If they stand left-handed, the second and third change
    /// places.
    CTetrahedron(CGroup* group, const std::string& label, const float* vertices);
    CTetrahedron(const CTetrahedron& source, CGroup* target);

    /// As they are kept.
    std::array<MAV_vector, 4> Corners() const noexcept;
    void GetInfo(KstObjectInfo* info) const override;

  private:
    DT_ShapeHandle BuildSolidShape() const override;
    std::unique_ptr<CSceneObject> Copy(CGroup* target) const override;
};
