/// W1 to W3: two convex shapes. Yes or no (half of the pairs touch), distance with a point on each
/// (none touches), depth (all touch). The time is that of one pair, the mean over a pool. The
/// objects stand where they are, so what a library finds out about a placement once is not in the
/// time; in W1-moved the second object is put in its place before each question.
///
///   bench_pairs --benchmark_filter=W1/box-box          all libraries
///   bench_pairs --benchmark_filter='/dt$'              this library's engine alone
///   valgrind --tool=callgrind --instr-atstart=no bench_pairs --pass='W1/.*/dt$'
///                                                      instructions of a pool of 1,000 pairs

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "Library.h"
#include "Pairs.h"

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_STOP_INSTRUMENTATION
#define CALLGRIND_DUMP_STATS_AT(name)
#endif

namespace {

using bench::Library;
using bench::PairCase;
using bench::Points;

struct Workload {
    const char* name;
    bench::Question question;
    bench::Touching pairs;
    /// Asks about pair i; whether the two are in contact, or what says so.
    bool (*ask)(Library& library, const oracle::Pair& pair, int i);
};

bool AskContact(Library& library, const oracle::Pair&, int i) {
    return library.InContact(2 * i, 2 * i + 1);
}

bool AskMoved(Library& library, const oracle::Pair& pair, int i) {
    const oracle::Matrix& place = pair.b.matrix;
    library.Move(2 * i + 1, {place[12], place[13], place[14]});
    return library.InContact(2 * i, 2 * i + 1);
}

bool AskDistance(Library& library, const oracle::Pair&, int i) {
    Points points;
    const double distance = library.Distance(2 * i, 2 * i + 1, points);
    benchmark::DoNotOptimize(points);
    return distance <= 0;
}

bool AskDepth(Library& library, const oracle::Pair&, int i) {
    Points points;
    const double depth = library.Depth(2 * i, 2 * i + 1, points);
    benchmark::DoNotOptimize(points);
    return depth >= 0;
}

constexpr Workload kWorkloads[] = {
    {"W1", bench::kContact, bench::Touching::kEverySecond, AskContact},
    {"W1-moved", bench::kContact, bench::Touching::kEverySecond, AskMoved},
    {"W2", bench::kDistance, bench::Touching::kNever, AskDistance},
    {"W3", bench::kDepth, bench::Touching::kAlways, AskDepth}};

const std::vector<oracle::Pair>& Pool(PairCase pairCase, bench::Touching touching) {
    static std::map<std::pair<PairCase, bench::Touching>, std::vector<oracle::Pair>> pools;
    std::vector<oracle::Pair>& pool = pools[{pairCase, touching}];
    if (pool.empty()) {
        pool = MakePool(pairCase, touching);
    }
    return pool;
}

/// A pool in one library.
struct Filled {
    Filled(const bench::LibraryKind& kind, const Workload& asked, PairCase pairCase)
        : workload(asked), pool(Pool(pairCase, asked.pairs)), library(kind.make()) {
        for (const oracle::Pair& pair : pool) {
            library->AddObject(pair.a, library->AddGroup(bench::kNoGroup));
            library->AddObject(pair.b, library->AddGroup(bench::kNoGroup));
        }
    }
    bool Ask(int i) const { return workload.ask(*library, pool[static_cast<std::size_t>(i)], i); }

    const Workload& workload;
    const std::vector<oracle::Pair>& pool;
    std::unique_ptr<Library> library;
};

/// Asks about all pairs; how many of them touch.
int OnePass(const Filled& filled) {
    int touching = 0;
    for (int i = 0; i < bench::kPoolSize; ++i) {
        touching += filled.Ask(i) ? 1 : 0;
    }
    return touching;
}

void Measure(benchmark::State& state, const bench::LibraryKind& kind, const Workload& workload,
             PairCase pairCase) {
    const Filled filled(kind, workload, pairCase);
    state.counters["touching"] = OnePass(filled);
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(filled.Ask(i));
        i = i + 1 == bench::kPoolSize ? 0 : i + 1;
    }
}

/// Calls `visit` with the name of each benchmark and what it consists of.
template <typename Visit>
void ForEach(const Visit& visit) {
    for (const Workload& workload : kWorkloads) {
        for (const PairCase pairCase : bench::kPairCases) {
            for (const bench::LibraryKind& kind : bench::AllLibraries()) {
                if ((kind.questions & workload.question) == 0 ||
                    (kind.spheresAndBoxesAlone && pairCase != PairCase::kBoxBox &&
                     pairCase != PairCase::kSphereBox)) {
                    continue;
                }
                visit(std::string(workload.name) + "/" + Name(pairCase) + "/" + kind.name, kind,
                      workload, pairCase);
            }
        }
    }
}

/// One pass over a pool for each benchmark whose name matches, for callgrind, which dumps what it
/// counted after each. 1 if there is none.
int RunPasses(const char* wanted) {
    const std::regex pattern(wanted);
    int status = 1;
    ForEach([&](const std::string& name, const bench::LibraryKind& kind, const Workload& workload,
                PairCase pairCase) {
        if (!std::regex_search(name, pattern)) {
            return;
        }
        const Filled filled(kind, workload, pairCase);
        OnePass(filled);  // what is found out once is not counted, as it is not timed
        CALLGRIND_START_INSTRUMENTATION;
        const int touching = OnePass(filled);
        CALLGRIND_STOP_INSTRUMENTATION;
        CALLGRIND_DUMP_STATS_AT(name.c_str());
        std::printf("%s: %d of %d pairs touch\n", name.c_str(), touching, bench::kPoolSize);
        status = 0;
    });
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    static constexpr char kPass[] = "--pass=";
    if (argc == 2 && std::strncmp(argv[1], kPass, sizeof kPass - 1) == 0) {
        return RunPasses(argv[1] + sizeof kPass - 1);
    }
    ForEach([](const std::string& name, const bench::LibraryKind& kind, const Workload& workload,
               PairCase pairCase) {
        benchmark::RegisterBenchmark(name.c_str(), [&kind, &workload, pairCase](auto& state) {
            Measure(state, kind, workload, pairCase);
        });
    });
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
