#pragma once

/// The depth of two boxes, as parallelepipeds of any shape, and the points that have it, in closed
/// form.

#include "platform/solid/Epa.h"

namespace solid {

/// The depth of two boxes in contact, without their radii. False where no two of their edges span
/// a plane.
bool FindBoxDepth(const Core& a, const Core& b, DepthResult& result);

}  // namespace solid
