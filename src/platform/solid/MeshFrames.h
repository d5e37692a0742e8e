#pragma once

/// Boxes of mesh trees, placed anyhow, as they stand along two sets of axes at right angles: those
/// of the one and those of the other body of a pair. Two boxes that overlap do so along all of
/// them, and are no nearer than they are along any set. Coordinates are relative to the reference
/// of the pair; no placement has to be inverted, so it may be singular.

#include "platform/solid/Core.h"
#include "platform/solid/Float4.h"
#include "platform/solid/MeshTree.h"

namespace solid {

/// Unit columns at right angles, the first along the first column of `m` that is not 0, and so on.
Mat3 Orthonormal(const Mat3& m);

/// Two sets of axes.
struct Axes {
    Mat3 of[2];
};

/// A box around something, along both sets of axes. What is in it also lies between two planes, in
/// coordinates along the set that is its own; a zero normal bounds nothing.
struct View {
    Vec3 middle[2], half[2];
    Vec3 normal;
    double lower = 0, upper = 0;
};

/// The core without its radius.
View ViewOf(const Core& core, const Axes& axes);

/// A placed tree along both sets of axes.
class PlacedTree {
  public:
    /// `own` is the number of the mesh's own set of axes.
    PlacedTree(const Placed& mesh, const Vec3& reference, const Axes& axes, int own);

    const MeshTree& Tree() const { return *m_tree; }
    View Whole() const;
    /// Of the box at a place in a node.
    View Of(std::uint32_t node, int place) const;
    /// At least how far what is in the four boxes of a node is from `box`, as squares, by the
    /// planes around it: raises what is less.
    void RaiseDistances(const MeshTree::Slabs& slabs, const View& box, double slack,
                        double (&squared)[MeshTree::kWidth]) const;
    /// At most how deep anything in the four boxes reaches into anything in `box`; below 0: at
    /// least how far they are apart.
    void Depths(const MeshTree::Node& node, const View& box, double slack,
                double (&depth)[MeshTree::kWidth]) const;

  private:
    friend class NodeTest;

    const MeshTree* m_tree;
    int m_own;
    /// From units of the tree: of middles and, absolute, of half extents.
    Mat3 m_linear[2], m_reach[2];
    Vec3 m_origin[2];
    /// Of a placement that keeps angles: without its scale, and that scale; else 0.
    Mat3 m_turn[2];
    double m_scale = 0;
};

/// Boxes of a tree against others, four at a time in single precision, on the safe side of its
/// rounding.
class NodeTest {
  public:
    /// A box made ready for this test.
    struct Box {
        Float4 offset[2][3];
        Float4 reach[2][3];
    };
    /// All boxes asked about will be in `whole`; they are grown by `radius`.
    NodeTest(const PlacedTree& tree, const View& whole, double radius);

    Box Prepare(const View& box) const;
    /// Whether the boxes of a node may overlap the box: one bit for each.
    unsigned Overlapping(const MeshTree::Node& node, const Box& box) const;
    /// At least how far they are from it, as squares.
    void Distances(const MeshTree::Node& node, const Box& box,
                   double (&squared)[MeshTree::kWidth]) const;

  private:
    Vec3 m_origin[2];
    double m_radius;
    double m_scale;  ///< by which no number here is above 1
    Float4 m_linear[2][3][3];
    Float4 m_absolute[2][3][3];
};

}  // namespace solid
