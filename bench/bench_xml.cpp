// Reads a scene of about 50 MB, polygon groups with hundreds of thousands of points, into an
// XmlDocument, and into libxml2's own tree with the same validation. Counters: megabytes of text
// per second, and what the tree holds of the heap, in megabytes. The last lines compare the two.

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <malloc.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "scenefiles/xml/XmlDocument.h"

namespace {

constexpr size_t kFileSize = 50'000'000;

struct Record {
    double seconds = 0.0;
    double heapBytes = 0.0;
};
Record g_ours;
Record g_libxml2;

/// The scene with its DTD in a folder of its own, for as long as the program runs.
class SceneFile {
  public:
    SceneFile() : m_folder(std::filesystem::temp_directory_path() / "kestrane_bench_xml") {
        std::filesystem::create_directories(m_folder);
        std::filesystem::copy_file(KESTRANE_DTD, m_folder / "kestrane.dtd",
                                   std::filesystem::copy_options::overwrite_existing);
        std::ofstream out(GetPath(), std::ios::binary);
        out << "<?xml version=\"1.0\"?>\n<!DOCTYPE scene SYSTEM \"kestrane.dtd\">\n<scene>\n"
               "  <group label=\"mesh\" colCheck=\"true\">\n";
        char line[128];
        unsigned random = 1;
        while (static_cast<size_t>(out.tellp()) < kFileSize) {
            out << "    <polygonGroup>\n";
            for (int polygon = 0; polygon < 1000; ++polygon) {
                out << "      <polygon>\n";
                for (int point = 0; point < 4; ++point) {
                    double value[3];
                    for (double& v : value) {
                        random = random * 1664525u + 1013904223u;
                        v = random / 4294967296.0 * 2000.0 - 1000.0;
                    }
                    std::snprintf(line, sizeof(line),
                                  "        <point x=\"%.8g\" y=\"%.8g\" z=\"%.8g\"/>\n", value[0],
                                  value[1], value[2]);
                    out << line;
                }
                out << "      </polygon>\n";
            }
            out << "    </polygonGroup>\n";
        }
        out << "  </group>\n</scene>\n";
    }
    ~SceneFile() { std::filesystem::remove_all(m_folder); }
    SceneFile(const SceneFile&) = delete;
    SceneFile& operator=(const SceneFile&) = delete;

    std::string GetPath() const { return (m_folder / "scene.xml").string(); }

  private:
    std::filesystem::path m_folder;
};

const std::string& ScenePath() {
    static const SceneFile file;
    static const std::string path = file.GetPath();
    return path;
}

double HeapBytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

template <typename Load>
void Measure(benchmark::State& state, Record& record, Load load) {
    const std::string& path = ScenePath();
    record.seconds = 1e30;
    for (auto _ : state) {
        const double before = HeapBytes();
        const auto start = std::chrono::steady_clock::now();
        auto tree = load(path);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        record.heapBytes = HeapBytes() - before;
        record.seconds = std::min(record.seconds, taken.count());
        state.SetIterationTime(taken.count());
        if (!tree) {
            state.SkipWithError("the scene was refused");
            return;
        }
    }
    state.counters["MB/s"] = static_cast<double>(kFileSize) / 1e6 / record.seconds;
    state.counters["heap MB"] = record.heapBytes / 1e6;
}

void LoadXmlDocument(benchmark::State& state) {
    Measure(state, g_ours, [](const std::string& path) {
        auto document = std::make_unique<XmlDocument>();
        return document->Load(path) == 0 ? std::move(document) : nullptr;
    });
}

void LoadLibxml2Tree(benchmark::State& state) {
    Measure(state, g_libxml2, [](const std::string& path) {
        return std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>(
            xmlReadFile(path.c_str(), nullptr,
                        XML_PARSE_DTDVALID | XML_PARSE_DTDATTR | XML_PARSE_DTDLOAD),
            &xmlFreeDoc);
    });
}

BENCHMARK(LoadLibxml2Tree)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(LoadXmlDocument)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    if (g_ours.seconds > 0.0 && g_libxml2.seconds > 0.0) {
        std::printf("XmlDocument / libxml2's tree: time %.2f, heap %.2f\n",
                    g_ours.seconds / g_libxml2.seconds, g_ours.heapBytes / g_libxml2.heapBytes);
    }
    return 0;
}
