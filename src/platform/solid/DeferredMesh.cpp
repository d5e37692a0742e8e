#include "platform/solid/DeferredMesh.h"

#include <mutex>
#include <utility>

namespace solid {

namespace {

/// One for all meshes: a tree is built once, and a lock in each mesh would outweigh a small one.
std::mutex g_building;

}  // namespace

DeferredMesh::DeferredMesh(std::vector<FloatPoint> points, std::vector<int> counts,
                           const Vec3& centre)
    : m_points(std::move(points)), m_counts(std::move(counts)), m_centre(centre) {}

DeferredMesh::~DeferredMesh() = default;

const MeshTree& DeferredMesh::Build() const {
    const std::lock_guard lock(g_building);
    if (m_tree == nullptr) {
        m_tree = std::make_unique<const MeshTree>(m_points, m_counts, m_centre);
        std::vector<FloatPoint>().swap(m_points);
        std::vector<int>().swap(m_counts);
        m_ready.store(m_tree.get(), std::memory_order_release);
    }
    return *m_tree;
}

}  // namespace solid
