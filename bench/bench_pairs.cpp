/// W1 to W3: two convex shapes. Yes or no (half of the pairs touch), distance with a point on each
/// (none touches), depth (all touch). The time is that of one pair, the mean over a pool.
///
///   bench_pairs --benchmark_filter=W1/box-box          all libraries
///   bench_pairs --benchmark_filter=dt                  this library's engine alone
///   valgrind --tool=callgrind --toggle-collect='*MeasuredPass*' bench_pairs --pass=W1/box-box/dt
///                                                      instructions of a pool of 1,000 pairs

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Library.h"
#include "Pairs.h"

namespace {

using bench::Library;
using bench::PairCase;
using bench::Points;

struct Workload {
    const char* name;
    bench::Question question;
    bench::Touching pairs;
    /// Asks about pair i; whether the two are in contact, or what says so.
    bool (*ask)(Library& library, int i);
};

bool AskContact(Library& library, int i) {
    return library.InContact(2 * i, 2 * i + 1);
}

bool AskDistance(Library& library, int i) {
    Points points;
    const double distance = library.Distance(2 * i, 2 * i + 1, points);
    benchmark::DoNotOptimize(points);
    return distance <= 0;
}

bool AskDepth(Library& library, int i) {
    Points points;
    const double depth = library.Depth(2 * i, 2 * i + 1, points);
    benchmark::DoNotOptimize(points);
    return depth >= 0;
}

constexpr Workload kWorkloads[] = {
    {"W1", bench::kContact, bench::Touching::kEverySecond, AskContact},
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

std::unique_ptr<Library> Filled(const bench::LibraryKind& kind, const Workload& workload,
                                PairCase pairCase) {
    auto library = kind.make();
    for (const oracle::Pair& pair : Pool(pairCase, workload.pairs)) {
        library->AddObject(pair.a, library->AddGroup(bench::kNoGroup));
        library->AddObject(pair.b, library->AddGroup(bench::kNoGroup));
    }
    return library;
}

/// Asks about all pairs; how many of them touch. Callgrind counts what this takes.
[[gnu::noinline]] int MeasuredPass(Library& library, const Workload& workload) {
    int touching = 0;
    for (int i = 0; i < bench::kPoolSize; ++i) {
        touching += workload.ask(library, i) ? 1 : 0;
    }
    return touching;
}

void Measure(benchmark::State& state, const bench::LibraryKind& kind, const Workload& workload,
             PairCase pairCase) {
    const auto library = Filled(kind, workload, pairCase);
    state.counters["touching"] = MeasuredPass(*library, workload);
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(workload.ask(*library, i));
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

/// One pass over a pool, for callgrind. 1 if there is no benchmark of that name.
int RunPass(const char* wanted) {
    int status = 1;
    ForEach([&](const std::string& name, const bench::LibraryKind& kind, const Workload& workload,
                PairCase pairCase) {
        if (name == wanted) {
            const auto library = Filled(kind, workload, pairCase);
            std::printf("%d of %d pairs touch\n", MeasuredPass(*library, workload),
                        bench::kPoolSize);
            status = 0;
        }
    });
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    static constexpr char kPass[] = "--pass=";
    if (argc == 2 && std::strncmp(argv[1], kPass, sizeof kPass - 1) == 0) {
        return RunPass(argv[1] + sizeof kPass - 1);
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
