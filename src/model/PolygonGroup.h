#pragma once

#include "model/PolygonSet.h"

/// Polygons with any number of vertices each, and texture coordinates where they were given.
class CPolygonGroup : public CPolygonSet {
  public:
    /// `vertexCounts`: not below 0 each. `vertices`: three floats per vertex, polygon after
    /// polygon. `texCoords`: two floats per vertex, or null: then all are 0.
    CPolygonGroup(CGroup* group, const std::string& label, int polygonCount,
                  const int* vertexCounts, const float* vertices, const float* texCoords = nullptr);
    CPolygonGroup(const CPolygonGroup& source, CGroup* target);

    void GetInfo(KstObjectInfo* info) const override;

  private:
    bool TakesTextures() const noexcept override { return true; }
    std::unique_ptr<CSceneObject> Copy(CGroup* target) const override;
};
