#pragma once

/// A tree of boxes over the polygons of a mesh, in the frame of the mesh, built once.

#include <cstdint>
#include <vector>

#include "platform/solid/Aabb.h"
#include "platform/solid/Shape.h"

namespace solid {

class MeshTree {
  public:
    struct Node {
        Vec3 centre, half;
        /// Of a leaf the polygon. Of an inner node, its children are the next node and this one.
        std::int32_t link = 0;
        bool leaf = false;
    };

    /// `counts[i]` points for polygon i. The tree's points are relative to `centre`.
    MeshTree(const std::vector<Vec3>& points, const std::vector<int>& counts, const Vec3& centre);

    int PolygonCount() const { return static_cast<int>(m_starts.size()) - 1; }
    VertexSpan Polygon(int index) const {
        const auto i = static_cast<std::size_t>(index);
        return {m_points.data() + m_starts[i], m_starts[i + 1] - m_starts[i]};
    }
    /// Node 0 is the root. There is at least one polygon.
    const Node& NodeAt(int index) const { return m_nodes[static_cast<std::size_t>(index)]; }
    Aabb Bounds() const {
        const Node& root = m_nodes.front();
        return {root.centre - root.half, root.centre + root.half};
    }

  private:
    struct Item {
        Aabb box;
        Vec3 centre;
        std::int32_t polygon;
    };
    void BuildNodes(std::vector<Item>& items);

    std::vector<Vec3> m_points;
    std::vector<std::int32_t> m_starts;
    std::vector<Node> m_nodes;
};

}  // namespace solid
