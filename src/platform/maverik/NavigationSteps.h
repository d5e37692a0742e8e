#pragma once

/// Steps of a camera. Each moves by amount times linear, in world units, or turns by amount times
/// angular, in radians; `right` follows the other two. Nothing here needs a window.

#include "platform/maverik/Maverik.h"

/// The point that navigation turns about.
extern MAV_vector mav_nav_center;

/// Along the view direction.
void mav_navigateForwards(MAV_viewParams& params, float amount, float linear, float angular);
/// Along the view direction projected on the plane across `fixed_up`; nothing if it has no length
/// there.
void mav_navigateForwardsFixedUp(MAV_viewParams& params, float amount, float linear, float angular);
/// To the right of the view.
void mav_navigateRight(MAV_viewParams& params, float amount, float linear, float angular);
/// Along `fixed_up`.
void mav_navigateUpFixedUp(MAV_viewParams& params, float amount, float linear, float angular);
/// Turns about `fixed_up`, counter-clockwise seen from above.
void mav_navigateYawFixedUp(MAV_viewParams& params, float amount, float linear, float angular);
/// Turns about the right axis; positive looks up. The view never comes nearer to `fixed_up` than a
/// degree: further turning stops there.
void mav_navigatePitch(MAV_viewParams& params, float amount, float linear, float angular);
