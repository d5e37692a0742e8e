#include "model/VertexInput.h"

#include <cstdint>
#include <new>

std::size_t SumOf(int count, const int* values) noexcept {
    std::size_t sum = 0;
    for (int i = 0; i < count; ++i)
        sum += static_cast<std::size_t>(values[i]);
    return sum;
}

std::vector<MAV_vector> ReadVertices(std::size_t count, const float* vertices) {
    // A vector would report this as a length error.
    if (count > PTRDIFF_MAX / sizeof(MAV_vector))
        throw std::bad_alloc();
    std::vector<MAV_vector> result(count);
    for (MAV_vector& v : result) {
        v = mav_vectorSet(vertices[0], vertices[1], vertices[2]);
        vertices += 3;
    }
    return result;
}

MAV_vector PolygonNormal(const MAV_vector* vertices, int count) noexcept {
    if (count < 3)
        return mav_vectorSet(0, 0, 0);
    return mav_vectorCrossProduct(mav_vectorSub(vertices[1], vertices[0]),
                                  mav_vectorSub(vertices[2], vertices[0]));
}
