#pragma once

#include <vector>

#include "model/SceneObject.h"

/// What the shapes that consist of several polygons have in common: polygon groups, triangles and
/// tetrahedra. Vertices, counts, normals and texture coordinates each stand in one block.
class CPolygonSet : public CSceneObject {
  public:
    const MAV_polygonGrp& Record() const noexcept { return m_record; }
    /// Of all polygons, one after the other.
    const std::vector<MAV_vector>& Vertices() const noexcept { return m_vertices; }
    void SetDisplayMatrix(const MAV_matrix& matrix) noexcept override;

  protected:
    CPolygonSet(ObjectType type, CGroup* group, const std::string& label, int primitiveCount);
    CPolygonSet(const CPolygonSet& source, CGroup* target);

    /// Points the record at the arrays, which then must not change, and makes the drawable.
    void Complete(int polygonCount);
    /// (b - a) x (c - a) of the first three vertices of each polygon, not normalised; the zero
    /// vector for fewer than three.
    void ComputeNormals(int polygonCount);

    std::vector<int> m_vertexCounts;  ///< empty: each polygon has three
    std::vector<MAV_vector> m_normals;
    std::vector<MAV_texCoord> m_texCoords;  ///< empty: none
    std::vector<MAV_vector> m_vertices;

  private:
    DT_ShapeHandle BuildSolidShape() const override;
    bool ShowSurface(const CSurface& surface) noexcept override;
    /// Whether there is something to put a texture on.
    virtual bool TakesTextures() const noexcept { return false; }

    MAV_polygonGrp m_record;
};
