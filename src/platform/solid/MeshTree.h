#pragma once

/// A tree of boxes over the polygons of a mesh, in the frame of the mesh, built once.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/solid/Aabb.h"
#include "platform/solid/Shape.h"

namespace solid {

class MeshTree {
  public:
    /// Boxes that stand side by side in a node, to be looked at together.
    static constexpr int kWidth = 4;
    /// Link of a place in a node that is not taken. Its box is that of another place.
    static constexpr std::uint32_t kNone = 0xffffffffU;

    /// Boxes in units of Unit(), as middles and half extents: never smaller than what they hold,
    /// and all numbers small enough for single precision, however large the mesh is.
    struct alignas(16) Node {
        float centre[3][kWidth];
        float half[3][kWidth];
        std::uint32_t link[kWidth];
    };

    /// Around what each box of a node holds one more bound: the space between two planes along a
    /// normal, which hugs a surface where the box does not (Stefan Gottschalk, Ming Lin, Dinesh
    /// Manocha, "OBBTree", 1996, on why that pays). Zero normals bound nothing.
    struct alignas(16) Slabs {
        float normal[3][kWidth];
        float lower[kWidth], upper[kWidth];
    };

    /// `counts[i]` points for polygon i; without counts, three each. A polygon with a point that is
    /// not finite, or without points, is left out. The tree's own coordinates are relative to
    /// `centre`.
    MeshTree(const std::vector<FloatPoint>& points, const std::vector<int>& counts,
             const Vec3& centre);

    bool IsEmpty() const { return m_nodes.empty(); }
    /// Polygons are numbered anew, those of one node in a row.
    int CornerCount(std::uint32_t polygon) const {
        return m_starts.empty() ? 3 : static_cast<int>(m_starts[polygon + 1U] - m_starts[polygon]);
    }
    Vec3 Corner(std::uint32_t polygon, int i) const {
        const std::uint32_t start = m_starts.empty() ? 3 * polygon : m_starts[polygon];
        return ToVec3(m_points[start + static_cast<std::uint32_t>(i)]) - m_centre;
    }
    /// Node 0 is the root. There is at least one polygon.
    const Node& NodeAt(std::uint32_t index) const { return m_nodes[index]; }
    const Slabs& SlabsAt(std::uint32_t index) const { return m_slabs[index]; }
    static bool IsPolygon(std::uint32_t link) { return (link & kPolygon) != 0; }
    static std::uint32_t PolygonOf(std::uint32_t link) { return link & ~kPolygon; }

    /// A power of two: the length that is 1 in nodes.
    double Unit() const { return m_unit; }
    const Aabb& Bounds() const { return m_bounds; }

  private:
    static constexpr std::uint32_t kPolygon = 0x80000000U;

    struct Extents;
    struct Item;
    class Builder;

    /// Once all else is there.
    void BuildSlabs();
    void SetSlab(Slabs& slabs, std::size_t place, std::uint32_t begin, std::uint32_t end) const;
    /// Of twice the length of its area.
    Vec3 Normal(std::uint32_t polygon) const;

    std::vector<FloatPoint> m_points;
    std::vector<std::uint32_t> m_starts;  ///< empty if all polygons are triangles
    std::vector<Node> m_nodes;
    std::vector<Slabs> m_slabs;
    Vec3 m_centre;
    Aabb m_bounds;
    double m_unit = 1;
};

}  // namespace solid
