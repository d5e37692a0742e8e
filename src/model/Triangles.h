#pragma once

#include "model/PolygonSet.h"

class CTriangles : public CPolygonSet {
  public:
    /// `vertices`: nine floats per triangle.
    CTriangles(CGroup* group, const std::string& label, int triangleCount, const float* vertices);
    CTriangles(const CTriangles& source, CGroup* target);

    void GetInfo(KstObjectInfo* info) const override;

  private:
    std::unique_ptr<CSceneObject> Copy(CGroup* target) const override;
};
