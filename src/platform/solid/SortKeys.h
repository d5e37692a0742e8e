#pragma once

/// Sorting of pairs of creation numbers.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace solid {

struct SortKey {
    std::uint64_t first;
    std::uint64_t second;
    std::size_t index;
};

/// By `first`, then by `second`; equal ones as they stood. `spare` is for its memory. May throw
/// std::bad_alloc.
void SortByKey(std::vector<SortKey>& keys, std::vector<SortKey>& spare);

}  // namespace solid
