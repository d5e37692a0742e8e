#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/maverik/Maverik.h"

/// Cuts outlines into triangles by clipping ears, as G. H. Meisters, "Polygons have ears" (1975),
/// allows. A corner is looked at again only when a neighbour has gone (D. Eberly, "Triangulation by
/// ear clipping", 1998), and reflex corners within an ear are looked up in a k-d tree (J. L.
/// Bentley, 1975) instead of one by one, which takes about n log n steps on the whole.
///
/// Keeps its memory from outline to outline.
class Triangulator {
  public:
    /// Appends the triangles of the outline, with the vertices numbered from `first` on; they turn
    /// the same way as the outline. `normal` is used only where the outline itself has none, as
    /// one with two equal lobes. Outlines that have no area or a vertex that is not finite give
    /// nothing; of those that cross themselves some triangles come, whichever.
    void Add(const MAV_vector* vertices, std::size_t count, const MAV_vector& normal,
             std::uint32_t first, std::vector<std::uint32_t>& triangles);

  private:
    struct Point {
        double x, y;
        friend bool operator==(const Point&, const Point&) = default;
    };
    using Corners = std::array<Point, 3>;
    /// A range of m_reflex, and the rectangle around those of it that the tree was made with.
    struct Node {
        Point low, high;
        std::uint32_t begin, end;
        std::uint32_t parent;
        std::uint32_t child;   ///< the first of two; 0 in leaves
        std::uint32_t active;  ///< how many of the range are reflex still
    };

    bool Project(const MAV_vector* vertices, std::size_t count, const MAV_vector& normal);
    static double Turn(const Point& a, const Point& b, const Point& c) noexcept {
        return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
    }
    double TurnAt(std::uint32_t i) const noexcept {
        return Turn(m_points[m_previous[i]], m_points[i], m_points[m_next[i]]);
    }

    void Link();
    void Clip();
    bool IsEar(std::uint32_t i) const;
    void Remove(std::uint32_t i);
    /// A corner to take where no ear is left, as it happens to outlines that cross themselves.
    std::uint32_t AnyCorner(std::uint32_t from) const noexcept;

    void BuildTree();
    void BuildNode(std::uint32_t node);
    void Deactivate(std::uint32_t i) noexcept;
    bool HoldsReflex(const Corners& triangle) const;

    std::vector<Point> m_points;
    std::vector<std::uint32_t> m_previous, m_next;
    std::vector<std::uint8_t> m_isReflex, m_isRemoved;
    std::vector<std::uint32_t> m_queue;
    std::vector<std::uint32_t> m_reflex;
    std::vector<std::uint32_t> m_leafOf;
    std::vector<Node> m_nodes;
    mutable std::vector<std::uint32_t> m_stack;
    std::size_t m_left = 0;
    std::uint32_t m_first = 0;
    std::vector<std::uint32_t>* m_triangles = nullptr;
};
