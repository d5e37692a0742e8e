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

/// By how much the four boxes of a node are apart from a box along each axis of one set; below 0:
/// by how much they overlap.
struct Gaps {
    double along[3][MeshTree::kWidth];

    Gaps(const Mat3& linear, const Mat3& reach, const Vec3& offset, const Vec3& half,
         const MeshTree::Node& node) {
        for (int i = 0; i < 3; ++i) {
            const double x = linear.col[0][i], y = linear.col[1][i], z = linear.col[2][i];
            const double ax = reach.col[0][i], ay = reach.col[1][i], az = reach.col[2][i];
            const double apart = offset[i], other = half[i];
            for (int k = 0; k < MeshTree::kWidth; ++k) {
                const double middle = x * static_cast<double>(node.centre[0][k]) +
                                      y * static_cast<double>(node.centre[1][k]) +
                                      z * static_cast<double>(node.centre[2][k]) + apart;
                const double extent = ax * static_cast<double>(node.half[0][k]) +
                                      ay * static_cast<double>(node.half[1][k]) +
                                      az * static_cast<double>(node.half[2][k]) + other;
                along[i][k] = std::fabs(middle) - extent;
            }
        }
    }
};

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

PlacedTree::PlacedTree(const Placed& mesh, const Vec3& reference, const Axes& axes)
    : m_tree(&mesh.shape->Mesh()) {
    const Vec3 origin = WorldCentre(mesh) - reference;
    for (int f = 0; f < 2; ++f) {
        m_linear[f] = TransposeTimes(axes.of[f], mesh.placement.linear);
        for (int i = 0; i < 3; ++i) {
            m_linear[f].col[i] *= m_tree->Unit();
            m_reach[f].col[i] = Abs(m_linear[f].col[i]);
        }
        m_origin[f] = axes.of[f].TransposeTimes(origin);
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

View PlacedTree::Of(const MeshTree::Node& node, int place) const {
    const Vec3 centre = Widened(node.centre, place), half = Widened(node.half, place);
    View view;
    for (int f = 0; f < 2; ++f) {
        view.middle[f] = m_linear[f] * centre + m_origin[f];
        view.half[f] = m_reach[f] * half;
    }
    return view;
}

void PlacedTree::Distances(const MeshTree::Node& node, const View& box, double slack,
                           double (&squared)[MeshTree::kWidth]) const {
    double sums[2][MeshTree::kWidth];
    for (int f = 0; f < 2; ++f) {
        const Gaps gaps(m_linear[f], m_reach[f], m_origin[f] - box.middle[f],
                        box.half[f] + Vec3{slack, slack, slack}, node);
        for (int k = 0; k < MeshTree::kWidth; ++k) {
            const double x = std::max(gaps.along[0][k], 0.0);
            const double y = std::max(gaps.along[1][k], 0.0);
            const double z = std::max(gaps.along[2][k], 0.0);
            sums[f][k] = x * x + y * y + z * z;
        }
    }
    for (int k = 0; k < MeshTree::kWidth; ++k)
        squared[k] = std::max(sums[0][k], sums[1][k]);
}

void PlacedTree::Depths(const MeshTree::Node& node, const View& box, double slack,
                        double (&depth)[MeshTree::kWidth]) const {
    double widest[2][MeshTree::kWidth];
    for (int f = 0; f < 2; ++f) {
        const Gaps gaps(m_linear[f], m_reach[f], m_origin[f] - box.middle[f], box.half[f], node);
        for (int k = 0; k < MeshTree::kWidth; ++k)
            widest[f][k] = std::max(std::max(gaps.along[0][k], gaps.along[1][k]), gaps.along[2][k]);
    }
    for (int k = 0; k < MeshTree::kWidth; ++k)
        depth[k] = slack - std::max(widest[0][k], widest[1][k]);
}

OverlapTest::OverlapTest(const PlacedTree& tree, const View& whole, double radius)
    : m_radius(radius) {
    for (int f = 0; f < 2; ++f) {
        m_origin[f] = tree.m_origin[f];
        for (int i = 0; i < 3; ++i) {
            // Each axis has a scale of its own, by which no number below is above 1.
            const double most =
                tree.m_reach[f].col[0][i] + tree.m_reach[f].col[1][i] + tree.m_reach[f].col[2][i] +
                std::fabs(m_origin[f][i] - whole.middle[f][i]) + whole.half[f][i] + radius;
            m_scale[f][i] = most > 0 ? 1 / most : 1;
            for (int j = 0; j < 3; ++j) {
                const auto value = static_cast<float>(tree.m_linear[f].col[j][i] * m_scale[f][i]);
                m_linear[f][i][j] = Float4(value);
                m_absolute[f][i][j] = Float4(std::fabs(value));
            }
        }
    }
}

OverlapTest::Box OverlapTest::Prepare(const View& box) const {
    Box result;
    for (int f = 0; f < 2; ++f) {
        for (int i = 0; i < 3; ++i) {
            const double scale = m_scale[f][i];
            const double offset = (m_origin[f][i] - box.middle[f][i]) * scale;
            const double reach = (box.half[f][i] + m_radius) * scale;
            result.offset[f][i] = Float4(static_cast<float>(offset));
            result.reach[f][i] = Float4(static_cast<float>(reach) + kNodeRounding);
        }
    }
    return result;
}

/// The axes of the faces of two boxes (Stefan Gottschalk, "Separating axis theorem", 1996). Those
/// across edges part few boxes more, for a price above that of looking into them.
unsigned OverlapTest::Overlapping(const MeshTree::Node& node, const Box& box) const {
    const Float4 cx = Float4::Load(node.centre[0]), cy = Float4::Load(node.centre[1]),
                 cz = Float4::Load(node.centre[2]);
    const Float4 hx = Float4::Load(node.half[0]), hy = Float4::Load(node.half[1]),
                 hz = Float4::Load(node.half[2]);
    unsigned apart = 0;
    for (int f = 0; f < 2; ++f) {
        for (int i = 0; i < 3; ++i) {
            const Float4 middle = m_linear[f][i][0] * cx + m_linear[f][i][1] * cy +
                                  m_linear[f][i][2] * cz + box.offset[f][i];
            const Float4 extent = m_absolute[f][i][0] * hx + m_absolute[f][i][1] * hy +
                                  m_absolute[f][i][2] * hz + box.reach[f][i];
            apart |= Abs(middle).MaskAbove(extent);
        }
        if (apart == 15)
            return 0;
    }
    return ~apart & 15U;
}

}  // namespace solid
