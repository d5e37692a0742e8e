#pragma once

/// The depth of two boxes, as parallelepipeds of any shape, and the points that have it, in closed
/// form.

#include "platform/solid/BoxFilter.h"
#include "platform/solid/Epa.h"

namespace solid {

/// The face of the difference of two boxes that is nearest to the origin. It is spanned by two of
/// the six edges that the boxes have; 0 to 2 are those of the first.
struct BoxFace {
    int i = -1, j = -1;  ///< -1: no two edges span a plane
    Vec3 normal;         ///< unit, outwards
};

/// Finds that face, unless the boxes (without their radii) are clearly apart: kApart. kTouch: they
/// clearly overlap; kUnknown: they are too near to just touching to tell.
BoxAnswer FindBoxFace(const Core& a, const Core& b, BoxFace& face);

/// The depth of two boxes in contact, which is across that face.
DepthResult BoxFaceDepth(const Core& a, const Core& b, const BoxFace& face);

}  // namespace solid
