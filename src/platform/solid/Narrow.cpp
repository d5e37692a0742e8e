#include "platform/solid/Narrow.h"

#include <utility>

#include "platform/solid/ConvexPair.h"
#include "platform/solid/Core.h"
#include "platform/solid/MeshCases.h"
#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

bool IsMesh(const Placed& p) {
    return p.shape->Kind() == ShapeKind::kMesh;
}

/// From coordinates relative to `reference` to the world.
PointPair ToWorld(PointPair pair, const Vec3& reference, bool swap) {
    pair.point1 += reference;
    pair.point2 += reference;
    if (swap)
        std::swap(pair.point1, pair.point2);
    return pair;
}

/// From the middle of a to that of b. The origins of placements are floats, so that their
/// difference is exact also far from the origin of the world.
Vec3 Apart(const Placed& a, const Placed& b) {
    const Vec3 origins = b.placement.origin - a.placement.origin;
    return origins +
           (b.placement.linear * b.shape->Centre() - a.placement.linear * a.shape->Centre());
}

/// A pair with a mesh as it stands when the origin of the first is that of the world, for the same
/// reason. Coordinates are then relative to the middle of the first.
struct NearPair {
    NearPair(const Placed& first, const Placed& second) : a(first), b(second) {
        b.placement.origin -= a.placement.origin;
        a.placement.origin = {};
        middle = WorldCentre(a);
    }
    bool Contact() const {
        if (IsMesh(a) && IsMesh(b))
            return MeshesContact(a, b, middle);
        return IsMesh(b) ? MeshContact(a, b, middle) : MeshContact(b, a, middle);
    }
    PointPair Closest() const {
        if (IsMesh(a) && IsMesh(b))
            return MeshesClosest(a, b, middle);
        return IsMesh(b) ? MeshClosest(a, b, middle) : MeshClosest(b, a, middle);
    }
    bool Penetration(PointPair& result) const {
        if (IsMesh(a) && IsMesh(b))
            return MeshesPenetration(a, b, middle, result);
        return IsMesh(b) ? MeshPenetration(a, b, middle, result)
                         : MeshPenetration(b, a, middle, result);
    }

    Placed a, b;
    Vec3 middle;
};

/// Where the middle of b stands as seen from that of a, and what their balls tell.
struct Balls {
    Balls(const Placed& a, const Placed& b) : apart(Apart(a, b)) {
        const double squared = LengthSquared(apart);
        inner = static_cast<double>(a.traits.inner) + static_cast<double>(b.traits.inner);
        const double outer =
            static_cast<double>(a.traits.outer) + static_cast<double>(b.traits.outer);
        touch = inner > kBallLeast * outer && squared < inner * inner;
        miss = squared > outer * outer;
    }
    /// A point of both bodies, relative to the middle of a, if they touch.
    Vec3 Common(const Placed& a) const {
        return apart * (static_cast<double>(a.traits.inner) / inner);
    }

    Vec3 apart;
    double inner;
    bool touch, miss;
};

}  // namespace

bool InContact(const Placed& a, const Placed& b) {
    const Balls balls(a, b);
    if (balls.touch || balls.miss)
        return balls.touch;
    if (!IsMesh(a) && !IsMesh(b))
        return ConvexContact(MakeCoreAt(a, {}), MakeCoreAt(b, balls.apart));
    return NearPair(a, b).Contact();
}

PointPair ClosestPoints(const Placed& a, const Placed& b) {
    const Vec3 reference = WorldCentre(a);
    const Balls balls(a, b);
    if (balls.touch) {
        const Vec3 common = reference + balls.Common(a);
        return {common, common, 0};
    }
    if (!IsMesh(a) && !IsMesh(b)) {
        const PointPair pair = ConvexClosest(MakeCoreAt(a, {}), MakeCoreAt(b, balls.apart));
        return ToWorld(pair, reference, false);
    }
    return ToWorld(NearPair(a, b).Closest(), reference, !IsMesh(b));
}

bool Penetration(const Placed& a, const Placed& b, PointPair& result) {
    const Balls balls(a, b);
    if (balls.miss)
        return false;
    PointPair pair;
    const bool contact =
        IsMesh(a) || IsMesh(b)
            ? NearPair(a, b).Penetration(pair)
            : ConvexPenetration(MakeCoreAt(a, {}), MakeCoreAt(b, balls.apart), pair);
    if (contact)
        result = ToWorld(pair, WorldCentre(a), IsMesh(a) && !IsMesh(b));
    return contact;
}

}  // namespace solid
