/// W13: one KST_SetGroupPosition with 10,000 objects below the group, with and without a display.
///
/// Benchmarks: "W13/moves/headless"; "display", which draws in memory all the while; "suspended",
/// the same display with drawing suspended. Processor time is that of the calling thread: the
/// display draws on a thread of its own.

#include <benchmark/benchmark.h>
#include <kestrane.h>

#include <array>
#include <cstdlib>
#include <string>

namespace {

constexpr int kGroups = 100, kObjectsAGroup = 100;
constexpr float kSpacing = 3;

enum class Way { kHeadless, kDisplay, kSuspended };
constexpr std::array<const char*, 3> kNames = {"headless", "display", "suspended"};

int CreateShape(int group, int number, float x, float y) {
    int id = 0;
    switch (number % 4) {
        case 0:
            return KST_CreateBox(group, 1, 2, 1, x, y, 0, &id, nullptr);
        case 1:
            return KST_CreateSphere(group, 1, x, y, 0, &id, nullptr);
        case 2:
            return KST_CreateCylinder(group, 1, 2, x, y, 0, &id, nullptr);
        default:
            return KST_CreateCone(group, 1, 2, x, y, 0, &id, nullptr);
    }
}

/// Returns the first code that is none of success.
int BuildScene(int* top) {
    int code = KST_CreateGroup(top, 0, true, nullptr, true);
    for (int i = 0; i < kGroups && code == KST_OK; ++i) {
        int group = 0;
        code = KST_CreateGroup(&group, *top, true, nullptr, true);
        for (int j = 0; j < kObjectsAGroup && code == KST_OK; ++j) {
            code = CreateShape(group, j, kSpacing * static_cast<float>(i),
                               kSpacing * static_cast<float>(j));
        }
    }
    return code;
}

void Measure(benchmark::State& state, Way way) {
    int top = 0;
    int code = KST_Initialisation(way != Way::kHeadless, false, false);
    code = code == KST_OK ? BuildScene(&top) : code;
    if (way != Way::kHeadless) {
        code = code == KST_OK ? KST_SuspendVisualisation() : code;
    }
    if (way == Way::kDisplay) {
        code = code == KST_OK ? KST_ResumeVisualisation() : code;
    }
    float x = 0;
    for (auto _ : state) {
        x += 0.001F;
        KST_SetGroupPosition(top, x, 0, 0);
    }
    if (code != KST_OK) {
        state.SkipWithError(("a call gave the code " + std::to_string(code)).c_str());
    }
    KST_End();
}

}  // namespace

int main(int argc, char** argv) {
    // Unless another one is named: no window system in between.
    setenv("SDL_VIDEODRIVER", "offscreen", 0);
    for (const Way way : {Way::kHeadless, Way::kDisplay, Way::kSuspended}) {
        benchmark::RegisterBenchmark(
            (std::string("W13/moves/") + kNames[static_cast<std::size_t>(way)]).c_str(), Measure,
            way)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
