#include "platform/solid/MeshFrames.h"

#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

Vec3 Widened(const float (&coordinates)[3][MeshTree::kWidth], int place) {
    return {static_cast<double>(coordinates[0][place]), static_cast<double>(coordinates[1][place]),
            static_cast<double>(coordinates[2][place])};
}

Mat3 TransposeTimes(const Mat3& a, const Mat3& b) {
    return {{a.TransposeTimes(b.col[0]), a.TransposeTimes(b.col[1]), a.TransposeTimes(b.col[2])}};
}

/// The boxes of a node in double precision.
struct WideNode {
    double centre[3][MeshTree::kWidth], half[3][MeshTree::kWidth];

    explicit WideNode(const MeshTree::Node& node) {
        for (int i = 0; i < 3; ++i) {
            for (int k = 0; k < MeshTree::kWidth; ++k) {
                centre[i][k] = static_cast<double>(node.centre[i][k]);
                half[i][k] = static_cast<double>(node.half[i][k]);
            }
        }
    }
};

/// By how much the four boxes of a node are apart from a box along each axis of one set; below 0:
/// by how much they overlap.
struct Gaps {
    double along[3][MeshTree::kWidth];

    Gaps(const Mat3& linear, const Mat3& reach, const Vec3& offset, const Vec3& extents,
         const WideNode& node) {
        for (int i = 0; i < 3; ++i) {
            const double x = linear.col[0][i], y = linear.col[1][i], z = linear.col[2][i];
            const double ax = reach.col[0][i], ay = reach.col[1][i], az = reach.col[2][i];
            const double apart = offset[i], other = extents[i];
            for (int k = 0; k < MeshTree::kWidth; ++k) {
                const double middle =
                    x * node.centre[0][k] + y * node.centre[1][k] + z * node.centre[2][k] + apart;
                const double extent =
                    ax * node.half[0][k] + ay * node.half[1][k] + az * node.half[2][k] + other;
                along[i][k] = std::fabs(middle) - extent;
            }
        }
    }
};

/// How much longer the placement makes all lengths, if it is the same for all; else 0.
double ScaleOf(const Mat3& m) {
    const double xx = LengthSquared(m.col[0]);
    const double most = kRigid * xx;
    for (int i = 0; i < 3; ++i) {
        if (std::fabs(Dot(m.col[i], m.col[(i + 1) % 3])) > most ||
            std::fabs(LengthSquared(m.col[i]) - xx) > 2 * most)
            return 0;
    }
    return std::sqrt(xx);
}

}  // namespace

Mat3 Orthonormal(const Mat3& m) {
    // What is left of a column must be more than rounding.
    constexpr double kLeast = 1e-8;
    Mat3 result;
    int count = 0;
    for (const Vec3& column : m.col) {
        Vec3 rest = column;
        // Twice is enough (W. Kahan, in B. Parlett, "The Symmetric Eigenvalue Problem", 1980).
        for (int pass = 0; pass < 2; ++pass) {
            for (int i = 0; i < count; ++i)
                rest -= result.col[i] * Dot(result.col[i], rest);
        }
        const double squared = LengthSquared(rest);
        if (squared > 0 && squared > kLeast * LengthSquared(column))
            result.col[count++] = rest * (1 / std::sqrt(squared));
    }
    if (count == 0)
        return {};
    if (count == 1)
        result.col[1] = Perpendicular(result.col[0]);
    if (count < 3)
        result.col[2] = Cross(result.col[0], result.col[1]);
    return result;
}

View ViewOf(const Core& core, const Axes& axes) {
    View view;
    for (int f = 0; f < 2; ++f) {
        const Mat3& axis = axes.of[f];
        view.middle[f] = axis.TransposeTimes(core.centre);
        if (core.kind == CoreKind::kPoint)
            continue;
        if (core.kind == CoreKind::kBox) {
            for (int i = 0; i < 3; ++i)
                view.half[f] += Abs(axis.TransposeTimes(core.linear.col[i] * core.half[i]));
            continue;
        }
        for (int i = 0; i < 3; ++i) {
            const double upper = Dot(axis.col[i], Support(core, axis.col[i]));
            const double lower = Dot(axis.col[i], Support(core, -axis.col[i]));
            view.middle[f][i] = (upper + lower) * 0.5;
            // Rounding may leave a flat body less than nothing.
            view.half[f][i] = std::max(upper - lower, 0.0) * 0.5;
        }
    }
    return view;
}

PlacedTree::PlacedTree(const Placed& mesh, const Vec3& reference, const Axes& axes, int own)
    : m_tree(&mesh.shape->Mesh()),
      m_own(own),
      m_scale(ScaleOf(mesh.placement.linear) * m_tree->Unit()) {
    const Vec3 origin = WorldCentre(mesh) - reference;
    for (int f = 0; f < 2; ++f) {
        m_linear[f] = TransposeTimes(axes.of[f], mesh.placement.linear);
        for (int i = 0; i < 3; ++i) {
            m_linear[f].col[i] *= m_tree->Unit();
            m_reach[f].col[i] = Abs(m_linear[f].col[i]);
        }
        m_origin[f] = axes.of[f].TransposeTimes(origin);
        for (int i = 0; i < 3 && m_scale > 0; ++i)
            m_turn[f].col[i] = m_linear[f].col[i] * (1 / m_scale);
    }
}

View PlacedTree::Whole() const {
    View view;
    const double perUnit = 1 / m_tree->Unit();
    for (int f = 0; f < 2; ++f) {
        view.middle[f] = m_linear[f] * (m_tree->Bounds().Centre() * perUnit) + m_origin[f];
        view.half[f] = m_reach[f] * (m_tree->Bounds().HalfSize() * perUnit);
    }
    return view;
}

View PlacedTree::Of(std::uint32_t index, int place) const {
    const MeshTree::Node& node = m_tree->NodeAt(index);
    const Vec3 centre = Widened(node.centre, place), half = Widened(node.half, place);
    View view;
    for (int f = 0; f < 2; ++f) {
        view.middle[f] = m_linear[f] * centre + m_origin[f];
        view.half[f] = m_reach[f] * half;
    }
    if (m_scale > 0) {
        const MeshTree::Slabs& slabs = m_tree->SlabsAt(index);
        view.normal = m_turn[m_own] * Widened(slabs.normal, place);
        const double origin = Dot(view.normal, m_origin[m_own]);
        view.lower = origin + m_scale * (static_cast<double>(slabs.lower[place]) - kSlabSlack);
        view.upper = origin + m_scale * (static_cast<double>(slabs.upper[place]) + kSlabSlack);
    }
    return view;
}

void PlacedTree::RaiseDistances(const MeshTree::Slabs& slabs, const View& box, double slack,
                                double (&squared)[MeshTree::kWidth]) const {
    // Where the box is as tight as it is along any.
    if (!(m_scale > 0))
        return;
    const int f = 1 - m_own;
    const Mat3& turn = m_turn[f];
    const Vec3 offset = box.middle[f] - m_origin[f];
    const Vec3& half = box.half[f];
    const double origin = Dot(box.normal, m_origin[f]);
    const double lower = box.lower - origin, upper = box.upper - origin;
    for (int k = 0; k < MeshTree::kWidth; ++k) {
        const Vec3 normal = turn * Widened(slabs.normal, k);
        const double middle = Dot(normal, offset), extent = Dot(Abs(normal), half);
        // The same normal as a part along that of the planes around the other and a rest.
        const double part = Dot(normal, box.normal);
        const Vec3 rest = normal - box.normal * part;
        const double restMiddle = Dot(rest, offset), restExtent = Dot(Abs(rest), half);
        const double ends[2] = {part * lower, part * upper};
        const double least =
            std::max(middle - extent, std::min(ends[0], ends[1]) + restMiddle - restExtent);
        const double most =
            std::min(middle + extent, std::max(ends[0], ends[1]) + restMiddle + restExtent);
        const double below = m_scale * (static_cast<double>(slabs.lower[k]) - kSlabSlack) - most;
        const double above = least - m_scale * (static_cast<double>(slabs.upper[k]) + kSlabSlack);
        const double gap = std::max(below, above) - slack;
        if (gap > 0)
            squared[k] = std::max(squared[k], gap * gap * (1 - kSlabSlack));
    }
}

void PlacedTree::Depths(const MeshTree::Node& node, const View& box, double slack,
                        double (&depth)[MeshTree::kWidth]) const {
    const WideNode wide(node);
    double widest[2][MeshTree::kWidth];
    for (int f = 0; f < 2; ++f) {
        const Gaps gaps(m_linear[f], m_reach[f], m_origin[f] - box.middle[f], box.half[f], wide);
        for (int k = 0; k < MeshTree::kWidth; ++k)
            widest[f][k] = std::max(std::max(gaps.along[0][k], gaps.along[1][k]), gaps.along[2][k]);
    }
    for (int k = 0; k < MeshTree::kWidth; ++k)
        depth[k] = slack - std::max(widest[0][k], widest[1][k]);
}

NodeTest::NodeTest(const PlacedTree& tree, const View& whole, double radius) : m_radius(radius) {
    double most = 0;
    for (int f = 0; f < 2; ++f) {
        m_origin[f] = tree.m_origin[f];
        for (int i = 0; i < 3; ++i) {
            const Mat3& reach = tree.m_reach[f];
            most = std::max(most, reach.col[0][i] + reach.col[1][i] + reach.col[2][i] +
                                      std::fabs(m_origin[f][i] - whole.middle[f][i]) +
                                      whole.half[f][i] + radius);
        }
    }
    m_scale = most > 0 ? 1 / most : 1;
    for (int f = 0; f < 2; ++f) {
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                const auto value = static_cast<float>(tree.m_linear[f].col[j][i] * m_scale);
                m_linear[f][i][j] = Float4(value);
                m_absolute[f][i][j] = Float4(std::fabs(value));
            }
        }
    }
}

NodeTest::Box NodeTest::Prepare(const View& box) const {
    Box result;
    for (int f = 0; f < 2; ++f) {
        for (int i = 0; i < 3; ++i) {
            const double offset = (m_origin[f][i] - box.middle[f][i]) * m_scale;
            const double reach = (box.half[f][i] + m_radius) * m_scale;
            result.offset[f][i] = Float4(static_cast<float>(offset));
            result.reach[f][i] = Float4(static_cast<float>(reach) + kNodeRounding);
        }
    }
    return result;
}

namespace {

/// The boxes of a node.
struct NodeBoxes {
    Float4 centre[3], half[3];

    explicit NodeBoxes(const MeshTree::Node& node) {
        for (int i = 0; i < 3; ++i) {
            centre[i] = Float4::Load(node.centre[i]);
            half[i] = Float4::Load(node.half[i]);
        }
    }
};

/// x * row, the same row for all four x.
Float4 Times(const Float4 (&row)[3], const Float4 (&x)[3]) {
    return row[0] * x[0] + row[1] * x[1] + row[2] * x[2];
}

}  // namespace

/// The axes of the faces of two boxes (Stefan Gottschalk, "Separating axis theorem", 1996). Those
/// across edges part few boxes more, for a price above that of looking into them.
unsigned NodeTest::Overlapping(const MeshTree::Node& node, const Box& box) const {
    const NodeBoxes boxes(node);
    unsigned apart = 0;
    for (int f = 0; f < 2; ++f) {
        for (int i = 0; i < 3; ++i) {
            const Float4 middle = Times(m_linear[f][i], boxes.centre) + box.offset[f][i];
            const Float4 extent = Times(m_absolute[f][i], boxes.half) + box.reach[f][i];
            apart |= Abs(middle).MaskAbove(extent);
        }
        if (apart == 15)
            return 0;
    }
    return ~apart & 15U;
}

void NodeTest::Distances(const MeshTree::Node& node, const Box& box,
                         double (&squared)[MeshTree::kWidth]) const {
    const NodeBoxes boxes(node);
    Float4 sums[2] = {Float4(0), Float4(0)};
    for (int f = 0; f < 2; ++f) {
        for (int i = 0; i < 3; ++i) {
            const Float4 middle = Times(m_linear[f][i], boxes.centre) + box.offset[f][i];
            const Float4 extent = Times(m_absolute[f][i], boxes.half) + box.reach[f][i];
            const Float4 gap = Max(Abs(middle) - extent, Float4(0));
            sums[f] = sums[f] + gap * gap;
        }
    }
    float greater[MeshTree::kWidth];
    Max(sums[0], sums[1]).Store(greater);
    const double scale = (1 - static_cast<double>(kNodeRounding)) / (m_scale * m_scale);
    for (int k = 0; k < MeshTree::kWidth; ++k)
        squared[k] = static_cast<double>(greater[k]) * scale;
}

}  // namespace solid
