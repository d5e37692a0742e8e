/// W4, W5, W7 and W9: scenes of many boxes. Everything that a step of a simulation does is in the
/// time, the moves and the test.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Boxes.h"
#include "Workload.h"

namespace {

using bench::Library;
using bench::Point;
using oracle::Random;
using oracle::Spec;

constexpr double kTurn = 6.283185307179586;

/// W4: an assembly of 20 boxes goes round in front of fixed boxes.
class MovingAssembly : public bench::Workload {
  public:
    MovingAssembly(const bench::LibraryKind& kind, int count, bool all)
        : m_library(kind.make()), m_all(all) {
        Random random(4);
        for (const Spec& box : bench::RandomBoxes(random, count)) {
            m_library->AddObject(box, m_fixed);
        }
        std::vector<Point> places;
        for (std::size_t i = 0; i < kParts; ++i) {
            places.push_back(bench::RandomPoint(random, 2));
            m_parts[i] = m_library->AddObject(bench::RandomBox(random, places.back()), m_moving);
        }
        const double radius = static_cast<double>(bench::RangeOf(count)) / 2;
        for (int s = 0; s < StepCount(); ++s) {
            const double angle = kTurn * s / StepCount();
            for (Point p : places) {
                p[0] += static_cast<float>(radius * std::cos(angle));
                p[1] += static_cast<float>(radius * std::sin(angle));
                m_positions.push_back(p);
            }
        }
    }

    int StepCount() const override { return 1000; }
    int Step(int i) override {
        const Point* position = &m_positions[static_cast<std::size_t>(i) * kParts];
        for (const int part : m_parts) {
            m_library->Move(part, *position++);
        }
        return m_library->CountContacts(m_moving, m_fixed, m_all);
    }

  private:
    static constexpr std::size_t kParts = 20;

    std::unique_ptr<Library> m_library;
    bool m_all;
    int m_fixed = m_library->AddGroup(bench::kNoGroup);
    int m_moving = m_library->AddGroup(bench::kNoGroup);
    int m_parts[kParts];
    std::vector<Point> m_positions;
};

/// W5: all boxes move a little, and those of even number are tested against those of odd number.
class EvenAgainstOdd : public bench::Workload {
  public:
    EvenAgainstOdd(const bench::LibraryKind& kind, int count, float jump)
        : m_library(kind.make()), m_count(static_cast<std::size_t>(count)) {
        Random random(5);
        const std::vector<Spec> boxes = bench::RandomBoxes(random, count);
        for (std::size_t i = 0; i < m_count; ++i) {
            m_objects.push_back(m_library->AddObject(boxes[i], i % 2 == 0 ? m_even : m_odd));
        }
        for (int s = 0; s < StepCount(); ++s) {
            for (const Spec& box : boxes) {
                const Point move = bench::RandomPoint(random, jump);
                m_positions.push_back(
                    {box.matrix[12] + move[0], box.matrix[13] + move[1], box.matrix[14] + move[2]});
            }
        }
    }

    int StepCount() const override { return 16; }
    int Step(int i) override {
        const Point* position = &m_positions[static_cast<std::size_t>(i) * m_count];
        for (const int object : m_objects) {
            m_library->Move(object, *position++);
        }
        return m_library->CountContacts(m_even, m_odd, true);
    }

  private:
    std::unique_ptr<Library> m_library;
    std::size_t m_count;
    int m_even = m_library->AddGroup(bench::kNoGroup);
    int m_odd = m_library->AddGroup(bench::kNoGroup);
    std::vector<int> m_objects;
    std::vector<Point> m_positions;
};

/// W7: a point, or a segment two units long, against all of 10,000 boxes.
class Probe : public bench::Workload {
  public:
    Probe(const bench::LibraryKind& kind, bool segment)
        : m_library(kind.make()), m_segment(segment) {
        Random random(7);
        constexpr int kCount = 10000;
        for (const Spec& box : bench::RandomBoxes(random, kCount)) {
            m_library->AddObject(box, m_boxes);
        }
        for (int s = 0; s < StepCount(); ++s) {
            const Point from = bench::RandomPoint(random, bench::RangeOf(kCount));
            Point to = bench::RandomPoint(random, 1);
            const float length = std::hypot(to[0], to[1], to[2]);
            for (std::size_t k = 0; k < 3; ++k) {
                to[k] = from[k] + 2 * to[k] / length;
            }
            m_ends.push_back({from, to});
        }
    }

    int StepCount() const override { return 4096; }
    int Step(int i) override {
        const auto& [from, to] = m_ends[static_cast<std::size_t>(i)];
        return m_segment ? m_library->CountAtSegment(m_boxes, from, to)
                         : m_library->CountAtPoint(m_boxes, from);
    }

  private:
    std::unique_ptr<Library> m_library;
    bool m_segment;
    int m_boxes = m_library->AddGroup(bench::kNoGroup);
    std::vector<std::pair<Point, Point>> m_ends;
};

/// W9: two subtrees of 1,000 groups of one box each, nothing near, one box moved.
class TwoSubtrees : public bench::Workload {
  public:
    explicit TwoSubtrees(const bench::LibraryKind& kind) : m_library(kind.make()) {
        Random random(9);
        constexpr int kGroups = 1000;
        for (int i = 0; i < 2 * kGroups; ++i) {
            Point middle = bench::RandomPoint(random, bench::RangeOf(kGroups));
            middle[0] += i < kGroups ? 0.0f : 100.0f;
            m_library->AddObject(bench::RandomBox(random, middle),
                                 m_library->AddGroup(i < kGroups ? m_first : m_second));
        }
    }

    int StepCount() const override { return 2; }
    int Step(int i) override {
        m_library->Move(0, {0, i == 0 ? 5.0f : -5.0f, 0});
        return m_library->CountContacts(m_first, m_second, true);
    }

  private:
    std::unique_ptr<Library> m_library;
    int m_first = m_library->AddGroup(bench::kNoGroup);
    int m_second = m_library->AddGroup(bench::kNoGroup);
};

/// The first test after so many boxes were added.
void FirstTest(benchmark::State& state, const bench::LibraryKind& kind, int count) {
    Random random(1);
    const std::vector<Spec> boxes = bench::RandomBoxes(random, count);
    for (auto _ : state) {
        state.PauseTiming();
        auto library = kind.make();
        const int group = library->AddGroup(bench::kNoGroup);
        for (const Spec& box : boxes) {
            library->AddObject(box, group);
        }
        state.ResumeTiming();
        benchmark::DoNotOptimize(library->CountAtPoint(group, {0, 0, 0}));
        state.PauseTiming();
        library.reset();
        state.ResumeTiming();
    }
}

template <typename Made, typename... Arguments>
void RegisterScene(const std::string& name, Arguments... arguments) {
    bench::Register(name, bench::kScenes, [=](const bench::LibraryKind& kind) {
        return std::make_unique<Made>(kind, arguments...);
    });
}

bool RegisterAll() {
    for (const bool all : {true, false}) {
        for (const int count : {1000, 10000, 100000}) {
            RegisterScene<MovingAssembly>(
                std::string("W4/") + (all ? "all" : "first") + "/" + std::to_string(count), count,
                all);
        }
    }
    for (const bool large : {false, true}) {
        for (const int count : {1000, 10000}) {
            RegisterScene<EvenAgainstOdd>(
                std::string("W5/") + (large ? "large" : "small") + "/" + std::to_string(count),
                count, large ? 5.0f : 0.1f);
        }
    }
    RegisterScene<Probe>("W7/point", false);
    RegisterScene<Probe>("W7/segment", true);
    RegisterScene<TwoSubtrees>("W9");
    for (const int count : {10000, 100000}) {
        for (const bench::LibraryKind& kind : bench::AllLibraries()) {
            if ((kind.questions & bench::kScenes) != 0) {
                const std::string name = "first-test/" + std::to_string(count) + "/" + kind.name;
                benchmark::RegisterBenchmark(name.c_str(), [=, &kind](benchmark::State& state) {
                    FirstTest(state, kind, count);
                });
            }
        }
    }
    return true;
}

const bool kRegistered = RegisterAll();

}  // namespace
