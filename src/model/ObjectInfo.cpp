#include "model/ObjectInfo.h"

#include <algorithm>
#include <new>

namespace {

template <class T>
HostArray<T> Allocate(std::size_t count) {
    // An empty block may be null, which would look like a failure to the host as well.
    HostArray<T> array(static_cast<T*>(std::malloc(std::max<std::size_t>(count, 1) * sizeof(T))));
    if (!array)
        throw std::bad_alloc();
    return array;
}

}  // namespace

HostArray<float> CopyForHost(const MAV_vector* vertices, std::size_t count) {
    auto array = Allocate<float>(3 * count);
    float* out = array.get();
    for (const MAV_vector* v = vertices; v != vertices + count; ++v) {
        *out++ = v->x;
        *out++ = v->y;
        *out++ = v->z;
    }
    return array;
}

HostArray<float> CopyForHost(const std::vector<MAV_vector>& vertices) {
    return CopyForHost(vertices.data(), vertices.size());
}

HostArray<int> CopyForHost(const std::vector<int>& values) {
    auto array = Allocate<int>(values.size());
    std::copy(values.begin(), values.end(), array.get());
    return array;
}
