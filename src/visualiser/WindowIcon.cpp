#include "visualiser/WindowIcon.h"

#include <array>
#include <cmath>

namespace {

using Pixel = std::array<std::uint8_t, 4>;

constexpr Pixel kTop = {0xf2, 0xb1, 0x34, 0xff};
constexpr Pixel kLeftFace = {0xc8, 0x55, 0x3d, 0xff};
constexpr Pixel kRightFace = {0x2d, 0x5d, 0x7b, 0xff};
constexpr Pixel kOutside = {0, 0, 0, 0};

/// A cube seen along its diagonal is a hexagon of three rhombi. x to the right, y downwards, the
/// middle at the origin, the corners at distance 1.
Pixel PixelAt(float x, float y) {
    constexpr float kHalfWidth = 0.8660254F;  // cos 30 degrees
    constexpr float kSlope = 0.57735027F;     // tan 30 degrees
    const float rise = kSlope * std::fabs(x);
    if (std::fabs(x) > kHalfWidth || std::fabs(y) > 1 - rise) {
        return kOutside;
    }
    if (y < -rise) {
        return kTop;
    }
    return x < 0 ? kLeftFace : kRightFace;
}

}  // namespace

std::vector<std::uint8_t> DrawWindowIcon() {
    std::vector<std::uint8_t> icon;
    icon.reserve(static_cast<std::size_t>(kIconSize * kIconSize) * kOutside.size());
    constexpr float kMiddle = (kIconSize - 1) / 2.0F;
    constexpr float kRadius = kIconSize / 2.0F;
    for (int row = 0; row < kIconSize; ++row) {
        for (int column = 0; column < kIconSize; ++column) {
            const Pixel pixel = PixelAt((static_cast<float>(column) - kMiddle) / kRadius,
                                        (static_cast<float>(row) - kMiddle) / kRadius);
            icon.insert(icon.end(), pixel.begin(), pixel.end());
        }
    }
    return icon;
}
