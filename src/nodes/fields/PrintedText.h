#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace nodes {

/// Copies TEXT, cut off to CAPACITY characters with the terminating zero; returns BUFFER.
char* printText(std::string_view text, char* buffer, std::size_t capacity);
/// Prints up to four VALUES as "%g" does, with a blank between two.
char* printNumbers(std::span<const float> values, char* buffer, std::size_t capacity);
/// Takes as many numbers, up to four, from TEXT as VALUES holds; false, with VALUES as they were,
/// if TEXT is null or has fewer.
bool takeNumbers(const char* text, std::span<float> values);

}  // namespace nodes
