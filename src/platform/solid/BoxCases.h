#pragma once

/// Box against box, as parallelepipeds of any shape, by separating axes.

#include "platform/solid/BoxFilter.h"
#include "platform/solid/Epa.h"

namespace solid {

/// What the separating axes tell of two boxes without their radii.
struct BoxAxes {
    bool separated = false;  ///< an axis parts them for certain
    bool full = false;       ///< the difference body has volume, so that the axes tell all
    double depth = 0;        ///< of boxes not separated
    Vec3 axis;               ///< unit; of the depth, as in DepthResult
};

BoxAxes TestBoxAxes(const Core& a, const Core& b);

/// The same axes, asked for a yes or no only. kUnknown: a box is flat, and the axes do not tell
/// all.
BoxAnswer AskBoxAxes(const Core& a, const Core& b);

}  // namespace solid
