#pragma once

#include "platform/maverik/Palette.h"

inline constexpr int kLightCount = 14;

/// The colours that overlays draw with (PaletteColour).
void SetUpColours(MAV_palette& palette);
/// Light 0 at the eye, switched on, and 13 weaker ones around the scene.
void SetUpLights(MAV_palette& palette) noexcept;
/// Off, light 0 gives no highlights any more; its diffuse light stays.
void SetUpHeadlight(MAV_palette& palette, bool on) noexcept;
