#include <fcl/broadphase/broadphase_dynamic_AABB_tree.h>
#include <fcl/broadphase/default_broadphase_callbacks.h>
#include <fcl/geometry/bvh/BVH_model.h>
#include <fcl/geometry/shape/box.h>
#include <fcl/geometry/shape/capsule.h>
#include <fcl/geometry/shape/cone.h>
#include <fcl/geometry/shape/convex.h>
#include <fcl/geometry/shape/cylinder.h>
#include <fcl/geometry/shape/sphere.h>
#include <fcl/narrowphase/collision.h>
#include <fcl/narrowphase/collision_object.h>
#include <fcl/narrowphase/distance.h>

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "Library.h"

namespace bench {

namespace {

using Vector = fcl::Vector3d;

Vector ToVector(const Point& p) {
    return {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])};
}

Point ToPoint(const Vector& v) {
    return {static_cast<float>(v[0]), static_cast<float>(v[1]), static_cast<float>(v[2])};
}

/// The faces of a tetrahedron, each with its normal outwards.
std::shared_ptr<fcl::CollisionGeometryd> Tetrahedron(const std::vector<Point>& points) {
    auto vertices = std::make_shared<std::vector<Vector>>();
    for (const Point& p : points) {
        vertices->push_back(ToVector(p));
    }
    std::vector<Vector>& v = *vertices;
    if ((v[1] - v[0]).cross(v[2] - v[0]).dot(v[3] - v[0]) > 0) {
        std::swap(v[1], v[2]);
    }
    const auto faces = std::make_shared<std::vector<int>>(
        std::vector<int>{3, 0, 1, 2, 3, 0, 3, 1, 3, 3, 2, 1, 3, 0, 2, 3});
    return std::make_shared<fcl::Convexd>(vertices, 4, faces);
}

std::shared_ptr<fcl::CollisionGeometryd> Mesh(const Spec& spec) {
    auto model = std::make_shared<fcl::BVHModel<fcl::OBBRSSd>>();
    std::vector<Vector> vertices;
    for (const Point& p : spec.points) {
        vertices.push_back(ToVector(p));
    }
    std::vector<fcl::Triangle> triangles;
    std::size_t first = 0;
    for (const int count : spec.counts) {
        const auto corners = static_cast<std::size_t>(count);
        for (std::size_t k = 2; k < corners; ++k) {
            triangles.emplace_back(first, first + k - 1, first + k);
        }
        first += corners;
    }
    model->beginModel();
    model->addSubModel(vertices, triangles);
    model->endModel();
    return model;
}

std::shared_ptr<fcl::CollisionGeometryd> ShapeOf(const Spec& spec) {
    const double a = static_cast<double>(spec.size[0]), b = static_cast<double>(spec.size[1]),
                 c = static_cast<double>(spec.size[2]);
    switch (spec.kind) {
        case oracle::Kind::kBox:
            return std::make_shared<fcl::Boxd>(a, b, c);
        case oracle::Kind::kSphere:
            return std::make_shared<fcl::Sphered>(a);
        case oracle::Kind::kCylinder:
            return std::make_shared<fcl::Cylinderd>(a, b);
        case oracle::Kind::kCone:
            return std::make_shared<fcl::Coned>(a, b);
        case oracle::Kind::kPolytope:
            return Tetrahedron(spec.points);
        case oracle::Kind::kMesh:
            return Mesh(spec);
        case oracle::Kind::kSegment:
            break;
    }
    return nullptr;
}

/// Cylinders and cones stand along z there.
fcl::Transform3d PlaceOf(oracle::Kind kind, const Matrix& matrix) {
    fcl::Transform3d place = fcl::Transform3d::Identity();
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column) {
            place.matrix()(row, column) =
                static_cast<double>(matrix[static_cast<std::size_t>(4 * column + row)]);
        }
    }
    if (kind == oracle::Kind::kCylinder || kind == oracle::Kind::kCone) {
        fcl::Matrix3d turn;
        turn << 1, 0, 0, 0, 0, 1, 0, -1, 0;
        place.linear() *= turn;
    }
    return place;
}

class FclLibrary : public Library {
  public:
    explicit FclLibrary(fcl::GJKSolverType solver) : m_solver(solver) {}

    int AddGroup(int parent) override {
        m_groups.push_back(std::make_unique<Group>());
        m_groups.back()->top = parent == kNoGroup ? m_groups.back().get() : GroupOf(parent).top;
        return static_cast<int>(m_groups.size()) - 1;
    }
    int AddObject(const Spec& spec, int group) override {
        m_objects.push_back(
            {std::make_unique<Object>(ShapeOf(spec), PlaceOf(spec.kind, spec.matrix)),
             GroupOf(group).top, spec.kind});
        // Registered together, at the first query.
        m_objects.back().group->added.push_back(m_objects.back().object.get());
        return static_cast<int>(m_objects.size()) - 1;
    }
    void Place(int object, const Matrix& matrix) override {
        const Placed& placed = PlacedAt(object);
        placed.object->setTransform(PlaceOf(placed.kind, matrix));
        MarkMoved(placed);
    }
    void Move(int object, const Point& position) override {
        const Placed& placed = PlacedAt(object);
        placed.object->setTranslation(ToVector(position));
        MarkMoved(placed);
    }

    bool InContact(int object1, int object2) override {
        fcl::CollisionRequestd request;
        request.gjk_solver_type = m_solver;
        fcl::CollisionResultd result;
        return fcl::collide(Handle(object1), Handle(object2), request, result) != 0;
    }
    double Distance(int object1, int object2, Points& points) override {
        fcl::DistanceRequestd request(true);
        request.gjk_solver_type = m_solver;
        fcl::DistanceResultd result;
        const double distance = fcl::distance(Handle(object1), Handle(object2), request, result);
        points = {ToPoint(result.nearest_points[0]), ToPoint(result.nearest_points[1])};
        return distance < 0 ? 0 : distance;
    }
    double Depth(int object1, int object2, Points& points) override {
        fcl::CollisionRequestd request(1, true);
        request.gjk_solver_type = m_solver;
        fcl::CollisionResultd result;
        if (fcl::collide(Handle(object1), Handle(object2), request, result) == 0) {
            return -1;
        }
        const fcl::Contactd& contact = result.getContact(0);
        // One of the solvers gives depths below 0.
        const Vector half = contact.normal * (contact.penetration_depth / 2);
        points = {ToPoint(contact.pos + half), ToPoint(contact.pos - half)};
        return std::abs(contact.penetration_depth);
    }

    int CountContacts(int group1, int group2, bool all) override {
        Counter counter{m_solver, all, 0};
        UpToDate(group1).collide(&UpToDate(group2), &counter, CountOne);
        return counter.count;
    }
    int CountAtPoint(int group, const Point& point) override {
        m_point.setTranslation(ToVector(point));
        return CountAtProbe(group, m_point);
    }
    int CountAtSegment(int group, const Point& from, const Point& to) override {
        const Vector start = ToVector(from), along = ToVector(to) - start;
        Object segment(std::make_shared<fcl::Capsuled>(0, along.norm()),
                       fcl::Quaterniond::FromTwoVectors(Vector::UnitZ(), along).matrix(),
                       start + along / 2);
        return CountAtProbe(group, segment);
    }
    double LeastDistance(int group1, int group2) override {
        fcl::DefaultDistanceData<double> data;
        data.request.enable_nearest_points = true;
        data.request.gjk_solver_type = m_solver;
        UpToDate(group1).distance(&UpToDate(group2), &data, fcl::DefaultDistanceFunction<double>);
        return data.result.min_distance < 0 ? 0 : data.result.min_distance;
    }

    std::size_t OwnBytes() const override {
        std::size_t bytes = m_objects.capacity() * sizeof(Placed);
        for (const auto& group : m_groups) {
            bytes += (group->added.capacity() + group->moved.capacity()) * sizeof(Object*);
        }
        return bytes;
    }

  protected:
    using Object = fcl::CollisionObjectd;

    const Object* Handle(int object) const { return PlacedAt(object).object.get(); }

  private:
    /// One manager for a group without a parent, with all that is below it.
    struct Group {
        Group* top = nullptr;
        fcl::DynamicAABBTreeCollisionManagerd manager;
        std::vector<Object*> added, moved;
    };
    struct Placed {
        std::unique_ptr<Object> object;
        Group* group;
        oracle::Kind kind;
    };
    struct Counter {
        fcl::GJKSolverType solver;
        bool all;
        int count;
    };

    static bool CountOne(Object* object1, Object* object2, void* client) {
        Counter& counter = *static_cast<Counter*>(client);
        fcl::CollisionRequestd request;
        request.gjk_solver_type = counter.solver;
        fcl::CollisionResultd result;
        if (fcl::collide(object1, object2, request, result) == 0) {
            return false;
        }
        ++counter.count;
        return !counter.all;
    }

    int CountAtProbe(int group, Object& probe) {
        probe.computeAABB();
        Counter counter{m_solver, true, 0};
        UpToDate(group).collide(&probe, &counter, CountOne);
        return counter.count;
    }
    void MarkMoved(const Placed& placed) {
        placed.object->computeAABB();
        if (placed.group->added.empty()) {
            placed.group->moved.push_back(placed.object.get());
        }
    }
    /// Few moved objects are put in their new places one by one; many, and the whole tree is
    /// refitted.
    fcl::DynamicAABBTreeCollisionManagerd& UpToDate(int group) {
        Group& top = *GroupOf(group).top;
        if (!top.added.empty()) {
            top.manager.registerObjects(top.added);
            top.manager.setup();
            top.added.clear();
            top.moved.clear();
        }
        if (!top.moved.empty()) {
            if (4 * top.moved.size() < top.manager.size()) {
                top.manager.update(top.moved);
            } else {
                top.manager.update();
            }
            top.moved.clear();
        }
        return top.manager;
    }
    const Placed& PlacedAt(int object) const { return m_objects[static_cast<std::size_t>(object)]; }
    Group& GroupOf(int group) { return *m_groups[static_cast<std::size_t>(group)]; }

    fcl::GJKSolverType m_solver;
    std::vector<Placed> m_objects;
    std::vector<std::unique_ptr<Group>> m_groups;
    Object m_point{std::make_shared<fcl::Sphered>(0)};
};

/// The depth by way of the signed distance, which is slower and more often right.
class FclSigned : public FclLibrary {
  public:
    FclSigned() : FclLibrary(fcl::GST_LIBCCD) {}

    double Depth(int object1, int object2, Points& points) override {
        const fcl::DistanceRequestd request(true, true);
        fcl::DistanceResultd result;
        const double distance = fcl::distance(Handle(object1), Handle(object2), request, result);
        points = {ToPoint(result.nearest_points[0]), ToPoint(result.nearest_points[1])};
        return -distance;
    }
};

}  // namespace

std::vector<LibraryKind> FclLibraries() {
    return {{"fcl-ccd", [] { return std::make_unique<FclLibrary>(fcl::GST_LIBCCD); }},
            {"fcl-indep", [] { return std::make_unique<FclLibrary>(fcl::GST_INDEP); },
             kEverything & ~kScenes},
            {"fcl-signed", [] { return std::make_unique<FclSigned>(); }, kDepth}};
}

}  // namespace bench
