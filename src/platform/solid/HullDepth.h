#pragma once

/// The depth of triangles and tetrahedra, with each other and with boxes, and the points that have
/// it, in closed form.

#include "platform/solid/BoxFilter.h"
#include "platform/solid/Epa.h"

namespace solid {

/// Finds the depth, unless the two (without their radii) are clearly apart: kApart. kTouch: they
/// clearly overlap, and `result` tells how deep. kUnknown: they are too near to just touching, a
/// body is too flat, or it is a hull of other than three or four vertices.
BoxAnswer FindHullDepth(const Core& a, const Core& b, DepthResult& result);

/// The same of a box and a hull.
BoxAnswer FindBoxHullDepth(const Core& box, const Core& hull, DepthResult& result);

}  // namespace solid
