#pragma once

/// Box against box, as parallelepipeds of any shape, by separating axes.

#include "platform/solid/BoxFilter.h"
#include "platform/solid/Core.h"

namespace solid {

/// Without their radii. kUnknown: a box is flat, and the axes do not tell all.
BoxAnswer AskBoxAxes(const Core& a, const Core& b);

}  // namespace solid
