#include <BulletCollision/Gimpact/btGImpactShape.h>
#include <btBulletCollisionCommon.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BulletWays.h"
#include "Library.h"

namespace bench {

namespace {

using bullet::Answer;
using bullet::Placed;
using bullet::ToPoint;
using bullet::ToVector;

/// Without the margins that round edges off or grow a shape, for these make wrong answers. A mesh
/// has none here.
std::unique_ptr<btConvexShape> ConvexShapeOf(const Spec& spec) {
    const btScalar a = spec.size[0], b = spec.size[1], c = spec.size[2];
    std::unique_ptr<btConvexShape> shape;
    switch (spec.kind) {
        case oracle::Kind::kBox:
            shape = std::make_unique<btBoxShape>(btVector3(a / 2, b / 2, c / 2));
            break;
        case oracle::Kind::kSphere:
            return std::make_unique<btSphereShape>(a);
        case oracle::Kind::kCylinder:
            shape = std::make_unique<btCylinderShape>(btVector3(a, b / 2, a));
            break;
        case oracle::Kind::kCone:
            shape = std::make_unique<btConeShape>(a, b);
            break;
        case oracle::Kind::kPolytope:
        case oracle::Kind::kSegment: {
            auto hull = std::make_unique<btConvexHullShape>();
            for (const Point& p : spec.points) {
                hull->addPoint(ToVector(p), false);
            }
            hull->recalcLocalAabb();
            shape = std::move(hull);
            break;
        }
        case oracle::Kind::kMesh:
            return nullptr;
    }
    shape->setMargin(0);
    return shape;
}

std::unique_ptr<btTriangleMesh> TrianglesOf(const Spec& spec) {
    auto triangles = std::make_unique<btTriangleMesh>();
    std::size_t first = 0;
    for (const int count : spec.counts) {
        const auto corners = static_cast<std::size_t>(count);
        for (std::size_t k = 2; k < corners; ++k) {
            triangles->addTriangle(ToVector(spec.points[first]),
                                   ToVector(spec.points[first + k - 1]),
                                   ToVector(spec.points[first + k]));
        }
        first += corners;
    }
    return triangles;
}

btTransform PlaceOf(const Matrix& matrix) {
    btScalar m[16];
    std::copy(matrix.begin(), matrix.end(), m);
    btTransform place;
    place.setFromOpenGLMatrix(m);
    return place;
}

btDbvtVolume BoundsOf(const Placed& placed) {
    btVector3 low, high;
    placed.object.getCollisionShape()->getAabb(placed.Place(), low, high);
    return btDbvtVolume::FromMM(low, high);
}

/// A tree of boxes for each group without a parent, with all that is below it; what meets in the
/// trees is asked in one of Bullet's ways.
template <typename Way>
class BulletLibrary : public Library {
  public:
    BulletLibrary() {
        m_point.shape = std::make_unique<btSphereShape>(btScalar(0));
        m_point.object.setCollisionShape(m_point.shape.get());
        m_point.object.setWorldTransform(btTransform::getIdentity());
    }

    int AddGroup(int parent) override {
        const int group = static_cast<int>(m_groups.size());
        m_groups.emplace_back();
        m_groups.back().top = parent == kNoGroup ? group : GroupOf(parent).top;
        return group;
    }
    int AddObject(const Spec& spec, int group) override {
        const int object = static_cast<int>(m_objects.size());
        m_objects.push_back(std::make_unique<Placed>());
        Placed& placed = *m_objects.back();
        placed.shape = ConvexShapeOf(spec);
        if (placed.shape == nullptr) {
            m_triangles.push_back(TrianglesOf(spec));
            placed.shape = std::make_unique<btBvhTriangleMeshShape>(m_triangles.back().get(), true);
            placed.shape->setMargin(0);
        }
        placed.object.setCollisionShape(placed.shape.get());
        placed.object.setWorldTransform(PlaceOf(spec.matrix));
        placed.group = GroupOf(group).top;
        GroupOf(placed.group).added.push_back(&placed);
        return object;
    }
    void Place(int object, const Matrix& matrix) override {
        At(object).object.setWorldTransform(PlaceOf(matrix));
        UpdateBounds(At(object));
    }
    void Move(int object, const Point& position) override {
        At(object).object.getWorldTransform().setOrigin(ToVector(position));
        UpdateBounds(At(object));
    }

    bool InContact(int object1, int object2) override {
        Placed &a = At(object1), &b = At(object2);
        if (IsMesh(a) && IsMesh(b)) {
            UseGImpact(a);
            UseGImpact(b);
        }
        return Way::InContact(a, b);
    }
    double Distance(int object1, int object2, Points& points) override {
        const Answer answer = Way::Distance(At(object1), At(object2));
        points = {ToPoint(answer.first), ToPoint(answer.second)};
        return answer.distance < 0 ? 0 : static_cast<double>(answer.distance);
    }
    double Depth(int object1, int object2, Points& points) override {
        const Answer answer = Way::Depth(At(object1), At(object2));
        points = {ToPoint(answer.first), ToPoint(answer.second)};
        return answer.distance > 0 ? -1 : -static_cast<double>(answer.distance);
    }

    int CountContacts(int group1, int group2, bool all) override {
        Group& first = UpToDate(group1);
        Group& second = UpToDate(group2);
        Meeting meeting;
        if (all) {
            first.tree.collideTT(first.tree.m_root, second.tree.m_root, meeting);
            return meeting.count;
        }
        // What goes through two trees cannot be stopped: one object after the other.
        Group& few = first.objects.size() < second.objects.size() ? first : second;
        Group& many = &few == &first ? second : first;
        for (const Placed* object : few.objects) {
            meeting.probe = object;
            many.tree.collideTV(many.tree.m_root, BoundsOf(*object), meeting);
            if (meeting.count > 0) {
                return 1;
            }
        }
        return 0;
    }
    int CountAtPoint(int group, const Point& point) override {
        m_point.object.getWorldTransform().setOrigin(ToVector(point));
        return CountAtProbe(group, m_point);
    }
    int CountAtSegment(int group, const Point& from, const Point& to) override {
        Placed segment;
        segment.shape = ConvexShapeOf(oracle::Segment(from, to));
        segment.object.setCollisionShape(segment.shape.get());
        segment.object.setWorldTransform(btTransform::getIdentity());
        return CountAtProbe(group, segment);
    }
    /// It offers none.
    double LeastDistance(int, int) override { return -1; }

    std::size_t OwnBytes() const override {
        std::size_t bytes = m_objects.capacity() * sizeof(std::unique_ptr<Placed>) +
                            m_objects.size() * (sizeof(Placed) - sizeof(btCollisionObject));
        for (const Group& group : m_groups) {
            bytes += (group.added.capacity() + group.objects.capacity()) * sizeof(Placed*);
        }
        return bytes;
    }

  private:
    Placed& At(int object) { return *m_objects[static_cast<std::size_t>(object)]; }
    struct Group {
        int top = kNoGroup;
        btDbvt tree;
        std::vector<Placed*> added, objects;
    };

    /// Two leaves of two trees, or one and the probe.
    struct Meeting : btDbvt::ICollide {
        void Process(const btDbvtNode* a, const btDbvtNode* b) override {
            Count(*static_cast<const Placed*>(a->data), *static_cast<const Placed*>(b->data));
        }
        void Process(const btDbvtNode* a) override {
            Count(*static_cast<const Placed*>(a->data), *probe);
        }
        void Count(const Placed& a, const Placed& b) { count += Touch(a, b) ? 1 : 0; }

        const Placed* probe = nullptr;
        int count = 0;
    };

    static bool IsMesh(const Placed& a) {
        return a.shape->getShapeType() == TRIANGLE_MESH_SHAPE_PROXYTYPE;
    }
    /// The solver is the fastest for shapes in general, the algorithm of the world for two boxes
    /// and the only one for meshes.
    static bool Touch(const Placed& a, const Placed& b) {
        const bool special = a.shape->getShapeType() == BOX_SHAPE_PROXYTYPE &&
                             b.shape->getShapeType() == BOX_SHAPE_PROXYTYPE;
        return special || IsMesh(a) || IsMesh(b) ? bullet::World::InContact(a, b)
                                                 : bullet::GjkEpa::InContact(a, b);
    }

    int CountAtProbe(int group, const Placed& probe) {
        Meeting meeting;
        meeting.probe = &probe;
        Group& top = UpToDate(group);
        top.tree.collideTV(top.tree.m_root, BoundsOf(probe), meeting);
        return meeting.count;
    }
    Group& UpToDate(int group) {
        Group& top = GroupOf(GroupOf(group).top);
        if (!top.added.empty()) {
            for (Placed* placed : top.added) {
                placed->leaf = top.tree.insert(BoundsOf(*placed), placed);
                top.objects.push_back(placed);
            }
            top.added.clear();
            top.tree.optimizeTopDown();
        }
        return top;
    }
    /// With the margin of its own broad phase, so that small moves cost little.
    void UpdateBounds(Placed& placed) {
        constexpr btScalar kMargin = btScalar(0.05);
        if (placed.leaf != nullptr) {
            btDbvtVolume bounds = BoundsOf(placed);
            GroupOf(placed.group).tree.update(placed.leaf, bounds, kMargin);
        }
    }
    /// The kind of mesh that can be tested against another mesh.
    void UseGImpact(Placed& placed) {
        if (placed.object.getCollisionShape() != placed.shape.get()) {
            return;
        }
        const auto& mesh = static_cast<const btBvhTriangleMeshShape&>(*placed.shape);
        m_gimpact.push_back(std::make_unique<btGImpactMeshShape>(
            const_cast<btStridingMeshInterface*>(mesh.getMeshInterface())));
        m_gimpact.back()->setMargin(0);
        m_gimpact.back()->updateBound();
        placed.object.setCollisionShape(m_gimpact.back().get());
    }
    Group& GroupOf(int group) { return m_groups[static_cast<std::size_t>(group)]; }

    std::vector<std::unique_ptr<btTriangleMesh>> m_triangles;
    std::vector<std::unique_ptr<btGImpactMeshShape>> m_gimpact;
    std::deque<Group> m_groups;
    std::vector<std::unique_ptr<Placed>> m_objects;
    Placed m_point;
};

}  // namespace

std::vector<LibraryKind> BulletLibraries() {
    // Built for one or the other precision.
    const std::string bits = sizeof(btScalar) == sizeof(double) ? "64" : "";
    return {
        {"bullet-pair" + bits,
         [] { return std::make_unique<BulletLibrary<bullet::PairDetector>>(); },
         kContact | kDistance | kDepth},
        {"bullet-epa" + bits, [] { return std::make_unique<BulletLibrary<bullet::GjkEpa>>(); },
         kContact | kDistance | kDepth},
        {"bullet-world" + bits, [] { return std::make_unique<BulletLibrary<bullet::World>>(); },
         kContact | kDepth | kScenes | kMeshContact},
        {"bullet-direct" + bits, [] { return std::make_unique<BulletLibrary<bullet::Direct>>(); },
         kContact | kDepth, true},
    };
}

}  // namespace bench
