#pragma once

/// Bullet's ways to the same answer about two objects.

#include <btBulletCollisionCommon.h>

#include <memory>

#include "Library.h"

namespace bench::bullet {

inline btVector3 ToVector(const Point& p) {
    return {p[0], p[1], p[2]};
}

inline Point ToPoint(const btVector3& v) {
    return {static_cast<float>(v.x()), static_cast<float>(v.y()), static_cast<float>(v.z())};
}

struct Placed {
    std::unique_ptr<btCollisionShape> shape;
    btCollisionObject object;
    int group = kNoGroup;
    /// In the tree of its group, once it is there.
    btDbvtNode* leaf = nullptr;

    const btConvexShape& Convex() const { return static_cast<const btConvexShape&>(*shape); }
    const btTransform& Place() const { return object.getWorldTransform(); }
};

struct Answer {
    btScalar distance = 0;  ///< below 0: a depth
    btVector3 first{0, 0, 0}, second{0, 0, 0};
};

/// The detector that its own collision algorithms use: GJK, and EPA where that finds an overlap.
struct PairDetector {
    static bool InContact(const Placed& a, const Placed& b);
    static Answer Distance(const Placed& a, const Placed& b);
    static Answer Depth(const Placed& a, const Placed& b);
};

/// The plain solver beneath: one function for distances, one for depths.
struct GjkEpa {
    static bool InContact(const Placed& a, const Placed& b);
    static Answer Distance(const Placed& a, const Placed& b);
    static Answer Depth(const Placed& a, const Placed& b);
};

/// What its world does with two objects that are near: the algorithm that is entered for their
/// shapes. It knows no distances. Two triangle meshes have to be of the kind for GImpact.
struct World {
    static bool InContact(const Placed& a, const Placed& b);
    static Answer Distance(const Placed&, const Placed&) { return {}; }
    static Answer Depth(const Placed& a, const Placed& b);
};

/// The detectors made for two boxes and for a sphere and a box, called past all choice by kind.
struct Direct {
    static bool InContact(const Placed& a, const Placed& b);
    static Answer Distance(const Placed&, const Placed&) { return {}; }
    static Answer Depth(const Placed& a, const Placed& b);
};

}  // namespace bench::bullet
