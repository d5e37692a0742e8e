#include "platform/solid/MeshCases.h"

#include <utility>
#include <vector>

#include "platform/solid/ConvexPair.h"
#include "platform/solid/Core.h"
#include "platform/solid/MeshTree.h"
#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// A mesh placed in the world, for walks down its tree.
class PlacedTree {
  public:
    PlacedTree(const Placed& mesh, const Vec3& reference)
        : m_placed(mesh), m_reference(reference), m_tree(mesh.shape->Mesh()) {
        m_centre = WorldCentre(mesh) - reference;
        const Mat3& m = mesh.placement.linear;
        for (int i = 0; i < 3; ++i)
            m_abs.col[i] = Abs(m.col[i]);
        m_slack = kBoxSlack * (MaxNorm(m_centre) + MaxNorm(Box(0).HalfSize())) + mesh.margin;
    }

    const MeshTree::Node& Node(int index) const { return m_tree.NodeAt(index); }
    static int Near(int index) { return index + 1; }
    int Far(int index) const { return Node(index).link; }

    /// The box of a node in the world, the margin of the mesh included.
    Aabb Box(int index) const {
        const MeshTree::Node& node = Node(index);
        const Vec3 centre = m_placed.placement.linear * node.centre + m_centre;
        const Vec3 extent = m_abs * node.half;
        Aabb box{centre - extent, centre + extent};
        box.Grow(m_slack);
        return box;
    }
    /// The polygon of a leaf.
    Core Polygon(int index) const {
        const VertexSpan span = m_tree.Polygon(Node(index).link);
        return MakeCore(m_placed, m_reference, &span);
    }

  private:
    const Placed& m_placed;
    const Vec3 m_reference;
    const MeshTree& m_tree;
    Vec3 m_centre;
    Mat3 m_abs;
    double m_slack = 0;
};

Aabb ConvexBox(const Placed& convex, const Vec3& reference) {
    Affine placement = convex.placement;
    placement.origin -= reference;
    Aabb box = convex.shape->WorldBox(placement, convex.margin);
    box.Grow(kBoxSlack * std::max(MaxNorm(box.lower), MaxNorm(box.upper)));
    return box;
}

/// Calls `visit(leaf)` for each leaf whose box meets `box`, until it answers true.
template <typename Visit>
void ForEachNear(const PlacedTree& tree, const Aabb& box, Visit visit) {
    std::vector<int> stack{0};
    while (!stack.empty()) {
        const int index = stack.back();
        stack.pop_back();
        if (!tree.Box(index).Overlaps(box))
            continue;
        if (tree.Node(index).leaf) {
            if (visit(index))
                return;
            continue;
        }
        stack.push_back(tree.Far(index));
        stack.push_back(PlacedTree::Near(index));
    }
}

struct NodePair {
    int a, b;
    double distance = 0;  ///< of the boxes: the polygons below are at least that far apart
};

/// The two pairs that one makes when its larger node that is no leaf is opened.
std::pair<NodePair, NodePair> Open(const PlacedTree& a, const PlacedTree& b, const NodePair& pair,
                                   const Aabb& boxA, const Aabb& boxB) {
    const bool openA =
        !a.Node(pair.a).leaf &&
        (b.Node(pair.b).leaf || MaxNorm(boxA.HalfSize()) >= MaxNorm(boxB.HalfSize()));
    if (openA)
        return {{PlacedTree::Near(pair.a), pair.b}, {a.Far(pair.a), pair.b}};
    return {{pair.a, PlacedTree::Near(pair.b)}, {pair.a, b.Far(pair.b)}};
}

/// Calls `visit(leafA, leafB)` for each two leaves whose boxes meet, until it answers true.
template <typename Visit>
void ForEachNearPair(const PlacedTree& a, const PlacedTree& b, Visit visit) {
    std::vector<NodePair> stack{{0, 0}};
    while (!stack.empty()) {
        const NodePair pair = stack.back();
        stack.pop_back();
        const Aabb boxA = a.Box(pair.a), boxB = b.Box(pair.b);
        if (!boxA.Overlaps(boxB))
            continue;
        if (a.Node(pair.a).leaf && b.Node(pair.b).leaf) {
            if (visit(pair.a, pair.b))
                return;
            continue;
        }
        const auto [first, second] = Open(a, b, pair, boxA, boxB);
        stack.push_back(second);
        stack.push_back(first);
    }
}

/// No more than this can a convex body and a polygon reach into each other: the least of the depths
/// along the axes of the world.
double DepthBound(const Core& a, const Core& b) {
    static constexpr Vec3 kAxes[6] = {{1, 0, 0},  {0, 1, 0},  {0, 0, 1},
                                      {-1, 0, 0}, {0, -1, 0}, {0, 0, -1}};
    double least = Aabb::kInfinity;
    for (const Vec3& axis : kAxes)
        least = std::min(least, Dot(Support(a, axis) - Support(b, -axis), axis));
    return least + a.radius + b.radius;
}

/// Takes the depth of two polygons, or of a body and one, if it is the deepest so far.
void TakeDeeper(const Core& a, const Core& b, bool& contact, PointPair& deepest) {
    if (contact && DepthBound(a, b) <= deepest.value)
        return;
    PointPair pair;
    if (ConvexPenetration(a, b, pair) && (!contact || pair.value > deepest.value)) {
        contact = true;
        deepest = pair;
    }
}

PointPair Nothing() {
    PointPair pair;
    pair.value = Aabb::kInfinity;
    return pair;
}

}  // namespace

bool MeshContact(const Placed& convex, const Placed& mesh, const Vec3& reference) {
    const PlacedTree tree(mesh, reference);
    const Core core = MakeCore(convex, reference);
    bool contact = false;
    ForEachNear(tree, ConvexBox(convex, reference),
                [&](int leaf) { return contact = ConvexContact(core, tree.Polygon(leaf)); });
    return contact;
}

PointPair MeshClosest(const Placed& convex, const Placed& mesh, const Vec3& reference) {
    const PlacedTree tree(mesh, reference);
    const Core core = MakeCore(convex, reference);
    const Aabb box = ConvexBox(convex, reference);
    PointPair best = Nothing();
    std::vector<NodePair> stack{{0, 0, Distance(tree.Box(0), box)}};
    while (!stack.empty()) {
        const NodePair top = stack.back();
        stack.pop_back();
        if (top.distance >= best.value)
            continue;
        if (tree.Node(top.a).leaf) {
            const PointPair pair = ConvexClosest(core, tree.Polygon(top.a));
            if (pair.value < best.value)
                best = pair;
            if (best.value == 0)
                break;
            continue;
        }
        NodePair nearer{PlacedTree::Near(top.a), 0}, farther{tree.Far(top.a), 0};
        nearer.distance = Distance(tree.Box(nearer.a), box);
        farther.distance = Distance(tree.Box(farther.a), box);
        if (farther.distance < nearer.distance)
            std::swap(nearer, farther);
        stack.push_back(farther);
        stack.push_back(nearer);
    }
    return best;
}

bool MeshPenetration(const Placed& convex, const Placed& mesh, const Vec3& reference,
                     PointPair& result) {
    const PlacedTree tree(mesh, reference);
    const Core core = MakeCore(convex, reference);
    bool contact = false;
    ForEachNear(tree, ConvexBox(convex, reference), [&](int leaf) {
        TakeDeeper(core, tree.Polygon(leaf), contact, result);
        return false;
    });
    return contact;
}

bool MeshesContact(const Placed& a, const Placed& b, const Vec3& reference) {
    const PlacedTree treeA(a, reference), treeB(b, reference);
    bool contact = false;
    ForEachNearPair(treeA, treeB, [&](int leafA, int leafB) {
        return contact = ConvexContact(treeA.Polygon(leafA), treeB.Polygon(leafB));
    });
    return contact;
}

PointPair MeshesClosest(const Placed& a, const Placed& b, const Vec3& reference) {
    const PlacedTree treeA(a, reference), treeB(b, reference);
    PointPair best = Nothing();
    std::vector<NodePair> stack{{0, 0, Distance(treeA.Box(0), treeB.Box(0))}};
    while (!stack.empty()) {
        const NodePair top = stack.back();
        stack.pop_back();
        if (top.distance >= best.value)
            continue;
        if (treeA.Node(top.a).leaf && treeB.Node(top.b).leaf) {
            const PointPair pair = ConvexClosest(treeA.Polygon(top.a), treeB.Polygon(top.b));
            if (pair.value < best.value)
                best = pair;
            if (best.value == 0)
                break;
            continue;
        }
        auto [nearer, farther] = Open(treeA, treeB, top, treeA.Box(top.a), treeB.Box(top.b));
        nearer.distance = Distance(treeA.Box(nearer.a), treeB.Box(nearer.b));
        farther.distance = Distance(treeA.Box(farther.a), treeB.Box(farther.b));
        if (farther.distance < nearer.distance)
            std::swap(nearer, farther);
        stack.push_back(farther);
        stack.push_back(nearer);
    }
    return best;
}

bool MeshesPenetration(const Placed& a, const Placed& b, const Vec3& reference, PointPair& result) {
    const PlacedTree treeA(a, reference), treeB(b, reference);
    bool contact = false;
    ForEachNearPair(treeA, treeB, [&](int leafA, int leafB) {
        TakeDeeper(treeA.Polygon(leafA), treeB.Polygon(leafB), contact, result);
        return false;
    });
    return contact;
}

}  // namespace solid
