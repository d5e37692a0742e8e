#pragma once

#include <array>

#include "platform/maverik/Maverik.h"

/// Rules about the point that a camera turns about, without windows.

/// Where the ray of the camera meets the horizontal plane through `centre`, at height `height`; x
/// and z within 250 times `speed`. A camera that looks level takes the plane across z instead, or
/// across x.
std::array<float, 3> CentreOnPlane(const MAV_viewParams& camera, const MAV_vector& centre,
                                   float height, float speed) noexcept;

/// The eye, kept half of `speed` before the centre, on the side that it came from, if it has come
/// nearer, past the centre, or to the other side of the height of the centre. `wasAbove`: it was
/// above that height.
MAV_vector KeptBeforeCentre(const MAV_vector& eye, const MAV_vector& oldEye,
                            const MAV_vector& centre, float height, bool wasAbove,
                            float speed) noexcept;
