#pragma once

#include <array>

/// The placement, column-major, that carries the unit segment from (0, 0, 0) to (0, 1, 0) onto the
/// one from `start` to `end`: a stretch along y, then the turn of +y onto the segment's direction
/// about the axis at right angles to both, then the translation to `start`. The image of the unit
/// segment is `end - start` rounded once, whatever the direction. A segment of length 0 gives the
/// point.
std::array<float, 16> PlaceUnitSegment(const std::array<float, 3>& start,
                                       const std::array<float, 3>& end) noexcept;
