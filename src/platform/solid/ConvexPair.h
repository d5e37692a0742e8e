#pragma once

/// The three questions about two convex bodies, dispatched over the table of pairs.

#include "platform/solid/Core.h"
#include "platform/solid/Narrow.h"

namespace solid {

bool ConvexContact(const Core& a, const Core& b);
PointPair ConvexClosest(const Core& a, const Core& b);
/// False when not in contact.
bool ConvexPenetration(const Core& a, const Core& b, PointPair& result);

}  // namespace solid
