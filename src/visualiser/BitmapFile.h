#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/maverik/Palette.h"

/// The bytes of a Windows bitmap file of 32 bits a pixel, rows from the bottom up, without a colour
/// table. Empty if the image is larger than the format's 4 GiB. Throws std::bad_alloc.
std::vector<std::uint8_t> EncodeBitmap(const MAV_image& image);

/// Creates or truncates the file. False if it cannot be written: one that cannot be opened stays as
/// it is, of any other nothing is left.
bool WriteBitmap(const MAV_image& image, const std::string& path);
