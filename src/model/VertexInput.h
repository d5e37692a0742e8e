#pragma once

#include <vector>

#include "platform/maverik/Maverik.h"

/// Sum of counts that are not below 0.
std::size_t SumOf(int count, const int* values) noexcept;
/// `count` vertices out of a flat array of three floats each. Throws std::bad_alloc.
std::vector<MAV_vector> ReadVertices(std::size_t count, const float* vertices);
/// (b - a) x (c - a) of the first three vertices, not normalised; the zero vector for fewer.
MAV_vector PolygonNormal(const MAV_vector* vertices, int count) noexcept;
