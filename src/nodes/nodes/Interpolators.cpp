// The interpolators: a fraction comes in, the value between two key values goes out.

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>

#include "nodes/nodes/NodeClasses.h"

namespace nodes {
namespace {

float between(float a, float b, float t) {
    return (b - a) * t + a;
}

template <std::size_t kSize>
std::array<float, kSize> between(const std::array<float, kSize>& a,
                                 const std::array<float, kSize>& b, float t) {
    std::array<float, kSize> result;
    for (std::size_t i = 0; i < kSize; ++i) {
        result[i] = between(a[i], b[i], t);
    }
    return result;
}

/// The first of two neighbouring keys with FRACTION between them, both included.
std::optional<std::size_t> segmentOf(std::span<const float> keys, float fraction) {
    for (std::size_t i = 0; i + 1 < keys.size(); ++i) {
        if (keys[i] <= fraction && keys[i + 1] >= fraction) {
            return i;
        }
    }
    return std::nullopt;
}

/// Nothing happens outside the keys, nor where a key has no value.
template <class Interpolator>
void interpolate(Interpolator& node) {
    const std::span<const float> keys = node.key().values();
    const float fraction = node.fraction();
    const std::optional<std::size_t> i = segmentOf(keys, fraction);
    const auto values = node.keyValue().values();
    if (!i || *i + 1 >= values.size()) {
        return;
    }
    // Not a number between equal keys and beside an infinite one: the later key counts there.
    const float t = (fraction - keys[*i]) / (keys[*i + 1] - keys[*i]);
    node.valueField().setValue(std::isfinite(t) ? between(values[*i], values[*i + 1], t)
                                                : values[*i + 1]);
    node.sendEvent(node.valueField());
}

}  // namespace

void ColorInterpolatorNode::eventReceived() {
    interpolate(*this);
}

void CoordinateInterpolatorNode::eventReceived() {
    interpolate(*this);
}

void NormalInterpolatorNode::eventReceived() {
    interpolate(*this);
}

void OrientationInterpolatorNode::eventReceived() {
    interpolate(*this);
}

void PositionInterpolatorNode::eventReceived() {
    interpolate(*this);
}

void ScalarInterpolatorNode::eventReceived() {
    interpolate(*this);
}

}  // namespace nodes
