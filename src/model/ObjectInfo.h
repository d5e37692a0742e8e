#pragma once

#include <cstdlib>
#include <memory>
#include <vector>

#include "platform/maverik/Maverik.h"

struct FreeDeleter {
    void operator()(void* block) const noexcept { std::free(block); }
};

/// An array that can be handed to the host, who releases it with free().
template <class T>
using HostArray = std::unique_ptr<T[], FreeDeleter>;

/// Copies for the host, never null. Throw std::bad_alloc.
HostArray<float> CopyForHost(const std::vector<MAV_vector>& vertices);
HostArray<float> CopyForHost(const MAV_vector* vertices, std::size_t count);
HostArray<int> CopyForHost(const std::vector<int>& values);
