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
    const Vec3 reference = WorldCentre(a);
    const Balls balls(a, b);
    if (balls.touch || balls.miss)
        return balls.touch;
    if (!IsMesh(a) && !IsMesh(b))
        return ConvexContact(MakeCoreAt(a, {}), MakeCoreAt(b, balls.apart));
    if (IsMesh(a) && IsMesh(b))
        return MeshesContact(a, b, reference);
    return IsMesh(b) ? MeshContact(a, b, reference) : MeshContact(b, a, reference);
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
    if (IsMesh(a) && IsMesh(b))
        return ToWorld(MeshesClosest(a, b, reference), reference, false);
    const PointPair pair = IsMesh(b) ? MeshClosest(a, b, reference) : MeshClosest(b, a, reference);
    return ToWorld(pair, reference, !IsMesh(b));
}

bool Penetration(const Placed& a, const Placed& b, PointPair& result) {
    const Vec3 reference = WorldCentre(a);
    const Balls balls(a, b);
    if (balls.miss)
        return false;
    PointPair pair;
    bool contact;
    if (!IsMesh(a) && !IsMesh(b)) {
        contact = ConvexPenetration(MakeCoreAt(a, {}), MakeCoreAt(b, balls.apart), pair);
    } else if (IsMesh(a) && IsMesh(b)) {
        contact = MeshesPenetration(a, b, reference, pair);
    } else {
        contact = IsMesh(b) ? MeshPenetration(a, b, reference, pair)
                            : MeshPenetration(b, a, reference, pair);
    }
    if (contact)
        result = ToWorld(pair, reference, IsMesh(a) && !IsMesh(b));
    return contact;
}

}  // namespace solid
