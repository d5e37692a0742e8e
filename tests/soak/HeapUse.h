#pragma once

#include <cstddef>
#include <fstream>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KESTRANE_SANITIZED_HEAP 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KESTRANE_SANITIZED_HEAP 1
#endif

/// Whether the heap below is the C library's own; a sanitizer's heap has checks of its own.
constexpr bool HeapIsMeasured() {
#if defined(__GLIBC__) && !defined(KESTRANE_SANITIZED_HEAP)
    return true;
#else
    return false;
#endif
}

/// Bytes that the process has allocated and not freed; 0 where that cannot be told.
inline std::size_t BytesInUse() {
#if defined(__GLIBC__) && !defined(KESTRANE_SANITIZED_HEAP)
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
#else
    return 0;
#endif
}

/// Hands what is free back to the system, so that the resident pages tell what is in use.
inline void GiveBackPages() {
#if defined(__GLIBC__) && !defined(KESTRANE_SANITIZED_HEAP)
    malloc_trim(0);
#endif
}

/// Resident pages of the process in bytes; 0 where that cannot be told.
inline std::size_t BytesResident() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * 4096;
}
