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

/// A box around something, along both sets of axes.
struct View {
    Vec3 middle[2], half[2];
};

/// The core without its radius.
View ViewOf(const Core& core, const Axes& axes);

/// A placed tree along both sets of axes.
class PlacedTree {
  public:
    PlacedTree(const Placed& mesh, const Vec3& reference, const Axes& axes);

    const MeshTree& Tree() const { return *m_tree; }
    View Whole() const;
    /// Of the box at `place` in `node`.
    View Of(const MeshTree::Node& node, int place) const;
    /// At least how far the four boxes of a node are from `box`, as squares.
    void Distances(const MeshTree::Node& node, const View& box, double slack,
                   double (&squared)[MeshTree::kWidth]) const;
    /// At most how deep anything in the four boxes reaches into anything in `box`; below 0: at
    /// least how far they are apart.
    void Depths(const MeshTree::Node& node, const View& box, double slack,
                double (&depth)[MeshTree::kWidth]) const;

  private:
    friend class OverlapTest;

    const MeshTree* m_tree;
    /// From units of the tree: of middles and, absolute, of half extents.
    Mat3 m_linear[2], m_reach[2];
    Vec3 m_origin[2];
};

/// Whether boxes of a tree overlap others, four at a time in single precision; what is nearer than
/// its rounding counts as overlapping.
class OverlapTest {
  public:
    /// A box made ready for this test.
    struct Box {
        Float4 offset[2][3];
        Float4 reach[2][3];
    };
    /// All boxes asked about will be in `whole`; they are grown by `radius`.
    OverlapTest(const PlacedTree& tree, const View& whole, double radius);

    Box Prepare(const View& box) const;
    /// One bit for each place in the node.
    unsigned Overlapping(const MeshTree::Node& node, const Box& box) const;

  private:
    Vec3 m_origin[2];
    double m_radius;
    double m_scale[2][3];
    Float4 m_linear[2][3][3];
    Float4 m_absolute[2][3][3];
};

}  // namespace solid
