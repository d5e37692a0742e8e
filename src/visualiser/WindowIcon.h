#pragma once

#include <cstdint>
#include <vector>

inline constexpr int kIconSize = 32;

/// The icon of every view window, a cube: red, green, blue, alpha, rows from the top down.
std::vector<std::uint8_t> DrawWindowIcon();
