#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace solid {

/// Capacity for `size` elements, growing by a quarter at a time: room for more without the
/// half-empty arrays of doubling.
template <class T>
void GrowCapacity(std::vector<T>& v, std::size_t size) {
    if (v.capacity() < size) {
        v.reserve(std::max(size, v.capacity() + v.capacity() / 4 + 8));
    }
}

}  // namespace solid
