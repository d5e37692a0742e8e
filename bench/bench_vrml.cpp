/// W11: a VRML97 file of 50 MB read into a tree of nodes, beside Coin, and into the scene.
///
/// Without --memory, benchmarks: "W11/read/LIBRARY", "W11/load/LIBRARY". With it, one line for each
/// of them: its name and the memory that a process of its own has held at most, in bytes, with a
/// tab between.

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "VrmlFile.h"
#include "kestrane.h"
#include "nodes/SceneGraph.h"

#ifdef BENCH_COIN
#include <Inventor/SoDB.h>
#include <Inventor/SoInput.h>
#include <Inventor/VRMLnodes/SoVRMLGroup.h>
#endif

namespace {

/// What a way of reading makes of the file, until it is destroyed.
class Content {
  public:
    Content() = default;
    Content(const Content&) = delete;
    Content& operator=(const Content&) = delete;
    virtual ~Content() = default;
    /// False if the file was refused.
    virtual bool Read(const char* path) = 0;
};

class NodesOfOurs : public Content {
  public:
    bool Read(const char* path) override { return m_graph.load(path, true, nullptr, nullptr); }

  private:
    nodes::SceneGraph m_graph;
};

/// In a group that takes part in collisions.
class Scene : public Content {
  public:
    Scene() {
        KST_Initialisation(false, false, false);
        KST_CreateGroup(&m_group, 0, true, nullptr, true);
    }
    ~Scene() override { KST_End(); }
    bool Read(const char* path) override { return KST_LoadScene(path, m_group, nullptr) == KST_OK; }

  private:
    int m_group = 0;
};

#ifdef BENCH_COIN
class NodesOfCoin : public Content {
  public:
    NodesOfCoin() {
        static const bool started = (SoDB::init(), true);
        static_cast<void>(started);
    }
    ~NodesOfCoin() override {
        if (m_nodes != nullptr) {
            m_nodes->unref();
        }
    }
    bool Read(const char* path) override {
        SoInput input;
        if (!input.openFile(path)) {
            return false;
        }
        m_nodes = SoDB::readAllVRML(&input);
        if (m_nodes != nullptr) {
            m_nodes->ref();
        }
        return m_nodes != nullptr;
    }

  private:
    SoVRMLGroup* m_nodes = nullptr;
};
#endif

struct Way {
    std::string name;
    std::function<std::unique_ptr<Content>()> make;
};

const std::vector<Way>& Ways() {
    static const std::vector<Way> ways = {
        {"W11/read/nodes", [] { return std::make_unique<NodesOfOurs>(); }},
#ifdef BENCH_COIN
        {"W11/read/coin", [] { return std::make_unique<NodesOfCoin>(); }},
#endif
        {"W11/load/public", [] { return std::make_unique<Scene>(); }},
    };
    return ways;
}

const bench::VrmlFile& File() {
    static const bench::VrmlFile file;
    return file;
}

void Measure(benchmark::State& state, const Way& way) {
    const bench::VrmlFile& file = File();
    for (auto _ : state) {
        state.PauseTiming();
        std::unique_ptr<Content> content = way.make();
        state.ResumeTiming();
        const bool read = content->Read(file.Path().c_str());
        state.PauseTiming();
        content.reset();
        state.ResumeTiming();
        if (!read) {
            state.SkipWithError("the file was refused");
            return;
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(file.Size()));
}

// ---- Memory: each way in a process of its own, which tells what it has held at most ----

/// Of this process, in bytes.
std::uint64_t MostHeld() {
    std::uint64_t kilobytes = 0;
    std::array<char, 256> line{};
    if (std::FILE* const status = std::fopen("/proc/self/status", "r")) {
        while (std::fgets(line.data(), static_cast<int>(line.size()), status) != nullptr &&
               std::sscanf(line.data(), "VmHWM: %lu", &kilobytes) != 1) {
        }
        std::fclose(status);
    }
    return kilobytes * 1024;
}

int TellMemory(const char* name, const char* path) {
    for (const Way& way : Ways()) {
        if (way.name == name) {
            const std::unique_ptr<Content> content = way.make();
            if (!content->Read(path)) {
                return 1;
            }
            std::printf("%s\t%lu\n", name, MostHeld());
            return 0;
        }
    }
    return 1;
}

int TellMemoryOfAll(const char* program) {
    std::printf("W11/file\t%zu\n", File().Size());
    for (const Way& way : Ways()) {
        std::fflush(stdout);
        const std::string command =
            std::string("'") + program + "' --memory-of " + way.name + " '" + File().Path() + "'";
        if (std::system(command.c_str()) != 0) {
            return 1;
        }
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 4 && std::strcmp(argv[1], "--memory-of") == 0) {
        return TellMemory(argv[2], argv[3]);
    }
    if (argc == 2 && std::strcmp(argv[1], "--memory") == 0) {
        return TellMemoryOfAll(argv[0]);
    }
    for (const Way& way : Ways()) {
        benchmark::RegisterBenchmark(way.name.c_str(), [&way](benchmark::State& state) {
            Measure(state, way);
        })->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
