#pragma once

/// Meshes against convex bodies and against each other. Coordinates are relative to `reference`.

#include "platform/solid/Narrow.h"

namespace solid {

bool MeshContact(const Placed& convex, const Placed& mesh, const Vec3& reference);
PointPair MeshClosest(const Placed& convex, const Placed& mesh, const Vec3& reference);
bool MeshPenetration(const Placed& convex, const Placed& mesh, const Vec3& reference,
                     PointPair& result);

bool MeshesContact(const Placed& a, const Placed& b, const Vec3& reference);
PointPair MeshesClosest(const Placed& a, const Placed& b, const Vec3& reference);
bool MeshesPenetration(const Placed& a, const Placed& b, const Vec3& reference, PointPair& result);

}  // namespace solid
