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

    /// `counts[i]` points for polygon i. The tree's points are relative to `centre`.
    MeshTree(const std::vector<Vec3>& points, const std::vector<int>& counts, const Vec3& centre);

    int PolygonCount() const { return static_cast<int>(m_starts.size()) - 1; }
    /// Polygons are numbered anew, those of one node in a row.
    VertexSpan Polygon(std::uint32_t index) const {
        const std::size_t i = index;
        return {m_points.data() + m_starts[i], m_starts[i + 1] - m_starts[i]};
    }
    /// Node 0 is the root. There is at least one polygon.
    const Node& NodeAt(std::uint32_t index) const { return m_nodes[index]; }
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

    std::vector<Vec3> m_points;
    std::vector<std::int32_t> m_starts;
    std::vector<Node> m_nodes;
    Aabb m_bounds;
    double m_unit = 1;
};

}  // namespace solid
