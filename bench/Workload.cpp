#include "Workload.h"

#include <benchmark/benchmark.h>

#include <utility>

namespace bench {

namespace {

/// The scene of the benchmark that runs, which is run several times. Never two of them: the public
/// calls know one scene only.
struct Running {
    std::string name;
    std::unique_ptr<Workload> workload;
    int found = 0;
};

Running& Prepared(const std::string& name, const LibraryKind& kind, const MakeWorkload& make) {
    static Running running;
    if (running.name != name) {
        running = {};
        running = {name, make(kind), 0};
        for (int i = 0; i < running.workload->StepCount(); ++i) {
            running.found += running.workload->Step(i);
        }
    }
    return running;
}

}  // namespace

void Register(const std::string& name, Question question, MakeWorkload make) {
    for (const LibraryKind& kind : AllLibraries()) {
        if ((kind.questions & question) == 0) {
            continue;
        }
        const std::string full = name + "/" + kind.name;
        benchmark::RegisterBenchmark(full.c_str(), [=, &kind](benchmark::State& state) {
            Running& running = Prepared(full, kind, make);
            const int steps = running.workload->StepCount();
            int i = 0;
            for (auto _ : state) {
                benchmark::DoNotOptimize(running.workload->Step(i));
                i = i + 1 == steps ? 0 : i + 1;
            }
            state.counters["found"] = running.found;
        });
    }
}

}  // namespace bench
