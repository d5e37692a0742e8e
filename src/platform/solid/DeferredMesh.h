#pragma once

/// The polygons of a mesh, whose tree is built when the first question comes near the mesh: most
/// meshes of a large scene are never near anything, and a scene stands as soon as it is read.

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

#include "platform/solid/MeshTree.h"

namespace solid {

class DeferredMesh {
  public:
    /// `counts[i]` points for polygon i; without counts, three each. At least one polygon has
    /// points and no other than finite ones. `centre` as for MeshTree.
    DeferredMesh(std::vector<FloatPoint> points, std::vector<int> counts, const Vec3& centre);
    ~DeferredMesh();
    DeferredMesh(const DeferredMesh&) = delete;
    DeferredMesh& operator=(const DeferredMesh&) = delete;

    /// May throw std::bad_alloc, and then nothing has changed. Any number of threads may ask.
    const MeshTree& Tree() const {
        const MeshTree* const tree = m_ready.load(std::memory_order_acquire);
        return tree != nullptr ? *tree : Build();
    }

  private:
    const MeshTree& Build() const;

    // The polygons until the tree is there, and then the tree.
    mutable std::vector<FloatPoint> m_points;
    mutable std::vector<int> m_counts;
    Vec3 m_centre;
    mutable std::unique_ptr<const MeshTree> m_tree;
    mutable std::atomic<const MeshTree*> m_ready{nullptr};
};

}  // namespace solid
