#include "BulletWays.h"

#include <BulletCollision/CollisionDispatch/btBoxBoxDetector.h>
#include <BulletCollision/CollisionDispatch/btCollisionObjectWrapper.h>
#include <BulletCollision/CollisionDispatch/btSphereBoxCollisionAlgorithm.h>
#include <BulletCollision/Gimpact/btGImpactCollisionAlgorithm.h>
#include <BulletCollision/NarrowPhaseCollision/btGjkEpa2.h>
#include <BulletCollision/NarrowPhaseCollision/btGjkEpaPenetrationDepthSolver.h>
#include <BulletCollision/NarrowPhaseCollision/btGjkPairDetector.h>
#include <BulletCollision/NarrowPhaseCollision/btPointCollector.h>
#include <BulletCollision/NarrowPhaseCollision/btVoronoiSimplexSolver.h>

namespace bench::bullet {

namespace {

/// What the solvers leave out of the shapes: all of a sphere but its middle.
btScalar Margins(const Placed& a, const Placed& b) {
    return a.shape->getMargin() + b.shape->getMargin();
}

Answer Collected(btDiscreteCollisionDetectorInterface& detector, const Placed& a, const Placed& b,
                 btScalar reachSquared) {
    btDiscreteCollisionDetectorInterface::ClosestPointInput input;
    input.m_transformA = a.Place();
    input.m_transformB = b.Place();
    input.m_maximumDistanceSquared = reachSquared;
    btPointCollector collector;
    detector.getClosestPoints(input, collector, nullptr);
    return {collector.m_distance,
            collector.m_pointInWorld + collector.m_normalOnBInWorld * collector.m_distance,
            collector.m_pointInWorld};
}

Answer Detected(const Placed& a, const Placed& b, btScalar reachSquared) {
    btVoronoiSimplexSolver simplex;
    btGjkEpaPenetrationDepthSolver epa;
    btGjkPairDetector detector(&a.Convex(), &b.Convex(), &simplex, &epa);
    return Collected(detector, a, b, reachSquared);
}

btVector3 Guess(const Placed& a, const Placed& b) {
    return a.Place().getOrigin() - b.Place().getOrigin();
}

/// False when what remains without margins overlaps, or where the solver gives up.
bool SolveCores(const Placed& a, const Placed& b, btGjkEpaSolver2::sResults& results) {
    return btGjkEpaSolver2::Distance(&a.Convex(), a.Place(), &b.Convex(), b.Place(), Guess(a, b),
                                     results);
}

struct Dispatcher {
    Dispatcher() : dispatcher(&configuration) {
        btGImpactCollisionAlgorithm::registerAlgorithm(&dispatcher);
    }
    btDefaultCollisionConfiguration configuration;
    btCollisionDispatcher dispatcher;
};

struct Wrapper : btCollisionObjectWrapper {
    explicit Wrapper(const Placed& a)
        : btCollisionObjectWrapper(nullptr, a.object.getCollisionShape(), &a.object, a.Place(), -1,
                                   -1) {}
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

Answer SphereBox(const Placed& sphere, const Placed& box) {
    static Dispatcher shared;
    static btCollisionAlgorithmConstructionInfo info(&shared.dispatcher, 0);
    const Wrapper wrapper(box);
    static btSphereBoxCollisionAlgorithm algorithm(nullptr, info, &wrapper, &wrapper, false);
    btVector3 onBox, normal;
    btScalar distance = 1;
    const btVector3& centre = sphere.Place().getOrigin();
    const btScalar radius = static_cast<const btSphereShape&>(*sphere.shape).getRadius();
    if (!algorithm.getSphereDistance(&wrapper, onBox, normal, distance, centre, radius, 0)) {
        return {1, {}, {}};
    }
    return {distance, centre - normal * radius, onBox};
}

}  // namespace

bool PairDetector::InContact(const Placed& a, const Placed& b) {
    return Depth(a, b).distance <= 0;
}

Answer PairDetector::Distance(const Placed& a, const Placed& b) {
    return Detected(a, b, BT_LARGE_FLOAT);
}

Answer PairDetector::Depth(const Placed& a, const Placed& b) {
    const btScalar margins = Margins(a, b);
    return Detected(a, b, margins * margins);
}

bool GjkEpa::InContact(const Placed& a, const Placed& b) {
    btGjkEpaSolver2::sResults results;
    return !SolveCores(a, b, results) || results.distance <= Margins(a, b);
}

Answer GjkEpa::Distance(const Placed& a, const Placed& b) {
    btGjkEpaSolver2::sResults results;
    if (!SolveCores(a, b, results) || results.distance <= Margins(a, b)) {
        return {};
    }
    const btVector3 along = (results.witnesses[1] - results.witnesses[0]) / results.distance;
    return {results.distance - Margins(a, b), results.witnesses[0] + along * a.shape->getMargin(),
            results.witnesses[1] - along * b.shape->getMargin()};
}

Answer GjkEpa::Depth(const Placed& a, const Placed& b) {
    btGjkEpaSolver2::sResults results;
    if (!btGjkEpaSolver2::Penetration(&a.Convex(), a.Place(), &b.Convex(), b.Place(), Guess(a, b),
                                      results)) {
        return {1, {}, {}};
    }
    return {-(results.witnesses[0] - results.witnesses[1]).length(), results.witnesses[0],
            results.witnesses[1]};
}

bool World::InContact(const Placed& a, const Placed& b) {
    return Depth(a, b).distance <= 0;
}

Answer World::Depth(const Placed& a, const Placed& b) {
    static Dispatcher shared;
    const Wrapper wrapperA(a), wrapperB(b);
    Deepest deepest(wrapperA, wrapperB);
    btCollisionAlgorithm* const algorithm =
        shared.dispatcher.findAlgorithm(&wrapperA, &wrapperB, nullptr, BT_CONTACT_POINT_ALGORITHMS);
    static const btDispatcherInfo kInfo;
    algorithm->processCollision(&wrapperA, &wrapperB, kInfo, &deepest);
    algorithm->~btCollisionAlgorithm();
    shared.dispatcher.freeCollisionAlgorithm(algorithm);
    return deepest.answer;
}

bool Direct::InContact(const Placed& a, const Placed& b) {
    return Depth(a, b).distance <= 0;
}

Answer Direct::Depth(const Placed& a, const Placed& b) {
    if (a.shape->getShapeType() != BOX_SHAPE_PROXYTYPE) {
        return SphereBox(a, b);
    }
    btBoxBoxDetector detector(static_cast<const btBoxShape*>(a.shape.get()),
                              static_cast<const btBoxShape*>(b.shape.get()));
    return Collected(detector, a, b, BT_LARGE_FLOAT);
}

}  // namespace bench::bullet
