#include <BulletCollision/CollisionDispatch/btBoxBoxDetector.h>
#include <BulletCollision/CollisionDispatch/btCollisionObjectWrapper.h>
#include <BulletCollision/CollisionDispatch/btSphereBoxCollisionAlgorithm.h>
#include <BulletCollision/NarrowPhaseCollision/btGjkEpa2.h>
#include <BulletCollision/NarrowPhaseCollision/btGjkEpaPenetrationDepthSolver.h>
#include <BulletCollision/NarrowPhaseCollision/btGjkPairDetector.h>
#include <BulletCollision/NarrowPhaseCollision/btPointCollector.h>
#include <BulletCollision/NarrowPhaseCollision/btVoronoiSimplexSolver.h>
#include <btBulletCollisionCommon.h>

#include <memory>
#include <vector>

#include "Library.h"

namespace bench {

namespace {

btVector3 ToVector(const Point& p) {
    return {p[0], p[1], p[2]};
}

Point ToPoint(const btVector3& v) {
    return {v.x(), v.y(), v.z()};
}

/// Without the margins that round edges off or grow a shape, for these make wrong answers.
std::unique_ptr<btConvexShape> ShapeOf(const Spec& spec) {
    const float a = spec.size[0], b = spec.size[1], c = spec.size[2];
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

btTransform PlaceOf(const Matrix& m) {
    btTransform place;
    place.setFromOpenGLMatrix(m.data());
    return place;
}

struct Answer {
    btScalar distance = 0;  ///< below 0: a depth
    btVector3 first{0, 0, 0}, second{0, 0, 0};
};

struct Placed {
    std::unique_ptr<btConvexShape> shape;
    btCollisionObject object;
};

/// What the solvers leave out of the shapes: all of a sphere but its middle.
btScalar Margins(const Placed& a, const Placed& b) {
    return a.shape->getMargin() + b.shape->getMargin();
}

/// The detector that its own collision algorithms use: GJK, and EPA where that finds an overlap.
class PairDetector {
  public:
    static bool InContact(const Placed& a, const Placed& b) { return Depth(a, b).distance <= 0; }
    static Answer Distance(const Placed& a, const Placed& b) { return Ask(a, b, BT_LARGE_FLOAT); }
    static Answer Depth(const Placed& a, const Placed& b) {
        const btScalar margins = Margins(a, b);
        return Ask(a, b, margins * margins);
    }

  private:
    static Answer Ask(const Placed& a, const Placed& b, btScalar reachSquared) {
        btVoronoiSimplexSolver simplex;
        btGjkEpaPenetrationDepthSolver epa;
        btGjkPairDetector detector(a.shape.get(), b.shape.get(), &simplex, &epa);
        btGjkPairDetector::ClosestPointInput input;
        input.m_transformA = a.object.getWorldTransform();
        input.m_transformB = b.object.getWorldTransform();
        input.m_maximumDistanceSquared = reachSquared;
        btPointCollector collector;
        detector.getClosestPoints(input, collector, nullptr);
        return {collector.m_distance,
                collector.m_pointInWorld + collector.m_normalOnBInWorld * collector.m_distance,
                collector.m_pointInWorld};
    }
};

/// The plain solver beneath: one function for distances, one for depths.
class GjkEpa {
  public:
    static bool InContact(const Placed& a, const Placed& b) {
        btGjkEpaSolver2::sResults results;
        return !Cores(a, b, results) || results.distance <= Margins(a, b);
    }
    static Answer Distance(const Placed& a, const Placed& b) {
        btGjkEpaSolver2::sResults results;
        if (!Cores(a, b, results) || results.distance <= Margins(a, b)) {
            return {};
        }
        const btVector3 along = (results.witnesses[1] - results.witnesses[0]) / results.distance;
        return {results.distance - Margins(a, b),
                results.witnesses[0] + along * a.shape->getMargin(),
                results.witnesses[1] - along * b.shape->getMargin()};
    }
    static Answer Depth(const Placed& a, const Placed& b) {
        btGjkEpaSolver2::sResults results;
        if (!btGjkEpaSolver2::Penetration(a.shape.get(), a.object.getWorldTransform(),
                                          b.shape.get(), b.object.getWorldTransform(), Guess(a, b),
                                          results)) {
            return {1, {}, {}};
        }
        return {-(results.witnesses[0] - results.witnesses[1]).length(), results.witnesses[0],
                results.witnesses[1]};
    }

  private:
    /// False when what remains without margins overlaps, or where the solver gives up.
    static bool Cores(const Placed& a, const Placed& b, btGjkEpaSolver2::sResults& results) {
        return btGjkEpaSolver2::Distance(a.shape.get(), a.object.getWorldTransform(), b.shape.get(),
                                         b.object.getWorldTransform(), Guess(a, b), results);
    }
    static btVector3 Guess(const Placed& a, const Placed& b) {
        return a.object.getWorldTransform().getOrigin() - b.object.getWorldTransform().getOrigin();
    }
};

/// What its world does with two objects that are near: the algorithm that is entered for their
/// shapes.
class World {
  public:
    static bool InContact(const Placed& a, const Placed& b) { return Depth(a, b).distance <= 0; }
    static Answer Distance(const Placed&, const Placed&) { return {}; }
    static Answer Depth(const Placed& a, const Placed& b) {
        static btDefaultCollisionConfiguration configuration;
        static btCollisionDispatcher dispatcher(&configuration);
        const Wrapper wrapperA(a), wrapperB(b);
        Deepest deepest(wrapperA, wrapperB);
        btCollisionAlgorithm* const algorithm =
            dispatcher.findAlgorithm(&wrapperA, &wrapperB, nullptr, BT_CONTACT_POINT_ALGORITHMS);
        static const btDispatcherInfo kInfo;
        algorithm->processCollision(&wrapperA, &wrapperB, kInfo, &deepest);
        algorithm->~btCollisionAlgorithm();
        dispatcher.freeCollisionAlgorithm(algorithm);
        return deepest.answer;
    }

  private:
    struct Wrapper : btCollisionObjectWrapper {
        explicit Wrapper(const Placed& a)
            : btCollisionObjectWrapper(nullptr, a.shape.get(), &a.object,
                                       a.object.getWorldTransform(), -1, -1) {}
    };
    struct Deepest : btManifoldResult {
        Deepest(const Wrapper& a, const Wrapper& b) : btManifoldResult(&a, &b) {}
        void addContactPoint(const btVector3& normal, const btVector3& onSecond,
                             btScalar distance) override {
            if (distance < answer.distance) {
                answer = {distance, onSecond + normal * distance, onSecond};
            }
        }
        Answer answer{1, {}, {}};
    };
};

/// The detectors made for two boxes and for a sphere and a box, called past all choice by kind.
class Direct {
  public:
    static bool InContact(const Placed& a, const Placed& b) { return Depth(a, b).distance <= 0; }
    static Answer Distance(const Placed&, const Placed&) { return {}; }
    static Answer Depth(const Placed& a, const Placed& b) {
        return a.shape->getShapeType() == BOX_SHAPE_PROXYTYPE ? BoxBox(a, b) : SphereBox(a, b);
    }

  private:
    static Answer BoxBox(const Placed& a, const Placed& b) {
        btBoxBoxDetector detector(static_cast<const btBoxShape*>(a.shape.get()),
                                  static_cast<const btBoxShape*>(b.shape.get()));
        btBoxBoxDetector::ClosestPointInput input;
        input.m_transformA = a.object.getWorldTransform();
        input.m_transformB = b.object.getWorldTransform();
        btPointCollector collector;
        detector.getClosestPoints(input, collector, nullptr);
        return {collector.m_distance,
                collector.m_pointInWorld + collector.m_normalOnBInWorld * collector.m_distance,
                collector.m_pointInWorld};
    }
    static Answer SphereBox(const Placed& sphere, const Placed& box) {
        static btDefaultCollisionConfiguration configuration;
        static btCollisionDispatcher dispatcher(&configuration);
        static btCollisionAlgorithmConstructionInfo info(&dispatcher, 0);
        const btCollisionObjectWrapper wrapper(nullptr, box.shape.get(), &box.object,
                                               box.object.getWorldTransform(), -1, -1);
        static btSphereBoxCollisionAlgorithm algorithm(nullptr, info, &wrapper, &wrapper, false);
        btVector3 onBox, normal;
        btScalar distance = 1;
        const btVector3& centre = sphere.object.getWorldTransform().getOrigin();
        const btScalar radius = static_cast<const btSphereShape*>(sphere.shape.get())->getRadius();
        if (!algorithm.getSphereDistance(&wrapper, onBox, normal, distance, centre, radius, 0)) {
            return {1, {}, {}};
        }
        return {distance, centre - normal * radius, onBox};
    }
};

template <typename Way>
class BulletLibrary : public Library {
  public:
    void Add(const Spec& spec, int) override {
        auto placed = std::make_unique<Placed>();
        placed->shape = ShapeOf(spec);
        placed->object.setCollisionShape(placed->shape.get());
        placed->object.setWorldTransform(PlaceOf(spec.matrix));
        m_objects.push_back(std::move(placed));
    }

    bool InContact(int object1, int object2) override {
        return Way::InContact(Object(object1), Object(object2));
    }
    double Distance(int object1, int object2, Points& points) override {
        const Answer answer = Way::Distance(Object(object1), Object(object2));
        points = {ToPoint(answer.first), ToPoint(answer.second)};
        return answer.distance < 0 ? 0 : static_cast<double>(answer.distance);
    }
    double Depth(int object1, int object2, Points& points) override {
        const Answer answer = Way::Depth(Object(object1), Object(object2));
        points = {ToPoint(answer.first), ToPoint(answer.second)};
        return answer.distance > 0 ? -1 : -static_cast<double>(answer.distance);
    }

  private:
    const Placed& Object(int object) const { return *m_objects[static_cast<std::size_t>(object)]; }

    std::vector<std::unique_ptr<Placed>> m_objects;
};

}  // namespace

std::vector<LibraryKind> BulletLibraries() {
    return {
        {"bullet-pair", [] { return std::make_unique<BulletLibrary<PairDetector>>(); }},
        {"bullet-epa", [] { return std::make_unique<BulletLibrary<GjkEpa>>(); }},
        {"bullet-world", [] { return std::make_unique<BulletLibrary<World>>(); },
         kContact | kDepth},
        {"bullet-direct", [] { return std::make_unique<BulletLibrary<Direct>>(); },
         kContact | kDepth, true},
    };
}

}  // namespace bench
