// Random calls against a reference scene, with the memory watched:
//
//     kestrane_soak [CALLS [SEED]]
//
// 10 million calls by default. Ends with 1 at the first answer that differs, or when memory grows.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "HeapUse.h"
#include "Soak.h"

namespace {

constexpr long kDefaultCalls = 10000000;
constexpr int kSamples = 20;

// What the C library and the containers keep for themselves may differ from sample to sample.
constexpr std::size_t kSlack = 256 * 1024;

bool Run(long calls, std::uint64_t seed) {
    Soak soak(seed);
    std::size_t first = 0;
    std::printf("%12s %8s %8s %14s %14s\n", "calls", "groups", "objects", "in use empty",
                "resident");
    for (int sample = 1; sample <= kSamples; ++sample) {
        const long until = calls / kSamples * sample;
        for (long call = calls / kSamples * (sample - 1); call < until; ++call) {
            soak.Step();
        }
        soak.CompareAll();
        const std::size_t groups = soak.Reference().Groups().size();
        const std::size_t objects = soak.Reference().Objects().size();
        soak.Empty();
        const std::size_t inUse = BytesInUse();
        std::printf("%12ld %8zu %8zu %14zu %14zu\n", until, groups, objects, inUse,
                    BytesResident());
        std::fflush(stdout);
        if (sample == 1) {
            first = inUse;
        } else if (HeapIsMeasured() && inUse > first + kSlack) {
            std::fprintf(stderr, "memory grows: %zu bytes more in use\n", inUse - first);
            return false;
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const long calls = argc > 1 ? std::atol(argv[1]) : kDefaultCalls;
    const std::uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1;
    if (calls < kSamples) {
        std::fprintf(stderr, "usage: kestrane_soak [CALLS [SEED]], at least %d calls\n", kSamples);
        return 2;
    }
    try {
        const auto start = std::chrono::steady_clock::now();
        if (!Run(calls, seed)) {
            return 1;
        }
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        std::printf("%ld calls agree, seed %llu, %.1f s\n", calls,
                    static_cast<unsigned long long>(seed), time.count());
        return 0;
    } catch (const std::exception& fault) {
        std::fprintf(stderr, "seed %llu, %s\n", static_cast<unsigned long long>(seed),
                     fault.what());
        return 1;
    }
}
