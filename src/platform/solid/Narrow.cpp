#include "platform/solid/Narrow.h"

#include <utility>

#include "platform/solid/ConvexPair.h"
#include "platform/solid/Core.h"
#include "platform/solid/MeshCases.h"

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

}  // namespace

bool InContact(const Placed& a, const Placed& b) {
    const Vec3 reference = WorldCentre(a);
    if (!IsMesh(a) && !IsMesh(b))
        return ConvexContact(MakeCore(a, reference), MakeCore(b, reference));
    if (IsMesh(a) && IsMesh(b))
        return MeshesContact(a, b, reference);
    return IsMesh(b) ? MeshContact(a, b, reference) : MeshContact(b, a, reference);
}

PointPair ClosestPoints(const Placed& a, const Placed& b) {
    const Vec3 reference = WorldCentre(a);
    if (!IsMesh(a) && !IsMesh(b)) {
        const PointPair pair = ConvexClosest(MakeCore(a, reference), MakeCore(b, reference));
        return ToWorld(pair, reference, false);
    }
    if (IsMesh(a) && IsMesh(b))
        return ToWorld(MeshesClosest(a, b, reference), reference, false);
    const PointPair pair = IsMesh(b) ? MeshClosest(a, b, reference) : MeshClosest(b, a, reference);
    return ToWorld(pair, reference, !IsMesh(b));
}

bool Penetration(const Placed& a, const Placed& b, PointPair& result) {
    const Vec3 reference = WorldCentre(a);
    PointPair pair;
    bool contact;
    if (!IsMesh(a) && !IsMesh(b)) {
        contact = ConvexPenetration(MakeCore(a, reference), MakeCore(b, reference), pair);
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
