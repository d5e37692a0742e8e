#pragma once

/// Local depths of curved bodies to full precision, each with a cone of directions in which no
/// depth is less: they spare an expansion the many small faces that it would need there.

#include "platform/solid/Epa.h"

namespace solid {

/// A direction in which the height of the difference body is least among all near it.
struct LocalDepth {
    DepthResult deep;
    /// Tangent of the angle about the axis within which no direction has a lower height.
    double tangent = 0;
    /// Points of the support plane; the difference of the points of `deep` lies between them.
    SupportPoint points[3];
    int count = 0;
};

/// True for a core that is no polytope.
bool IsCurved(const Core& core);

/// Refines a direction near a local depth. The corners of a face near it lie on the pieces of the
/// bodies that touch there. False if there is no such depth, or the iteration does not find it.
bool RefineDepth(const Core& a, const Core& b, const Vec3& start, const SupportPoint (&corners)[3],
                 LocalDepth& local);

/// The depth of two round cylinders or cones with parallel axes. False if they are not that.
bool FindParallelDepth(const Core& a, const Core& b, DepthResult& result);

/// The depths across the flat ends of cylinders and cones, where the point under the origin lies
/// within the end. At most four; gives their number.
int FindEndDepths(const Core& a, const Core& b, LocalDepth* locals);

}  // namespace solid
