#pragma once

/// Sets of boxes, by number, that make a careless tree as deep as it has items, or put all of them
/// into one cell of a grid.

#include <cmath>
#include <cstdint>
#include <functional>
#include <vector>

#include "platform/solid/FloatBox.h"

using BoxOfNumber = std::function<solid::FloatBox(std::uint32_t)>;

inline std::vector<BoxOfNumber> AwkwardBoxes() {
    using solid::FloatBox;
    const auto line = [](std::uint32_t id) {
        const float x = static_cast<float>(id);
        return FloatBox{{x, 0, 0}, {x, 0, 0}};
    };
    const auto equal = [](std::uint32_t) { return FloatBox{{1, 2, 3}, {1, 2, 3}}; };
    const auto growing = [](std::uint32_t id) {
        const float x = std::pow(1.001f, static_cast<float>(id));
        return FloatBox{{-x, -x, -x}, {x, x, x}};
    };
    const auto outwards = [](std::uint32_t id) {
        const float x = std::pow(1.001f, static_cast<float>(id));
        return FloatBox{{x, x, x}, {x, x, x}};
    };
    const auto oneFarAway = [](std::uint32_t id) {
        const float x = id == 7 ? 1e30f : static_cast<float>(id % 200);
        const float y = static_cast<float>(id / 200);
        return FloatBox{{x, y, 0}, {x, y, 0}};
    };
    return {line, equal, growing, outwards, oneFarAway};
}
