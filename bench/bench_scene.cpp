/// What a test of a whole scene costs at the DT_* interface. Everything that a step of a simulation
/// does is in the time: the moves, entering and removing the response, and the test.
///
/// Boxes have edges of 0.5 to 1.5, are turned at random, and stand at random in a cube with ten
/// units of volume for each.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "platform/solid/Solid.h"

namespace {

class Random {
  public:
    explicit Random(std::uint32_t seed) : m_engine(seed) {}
    float In(float from, float to) {
        return from + (to - from) * static_cast<float>(m_engine() >> 8) / 16777216.0f;
    }

  private:
    std::mt19937 m_engine;
};

struct Matrix {
    float m[16];
};

Matrix RandomPlacement(Random& random, float range) {
    const float angle = random.In(0, 6.2831853f);
    const float c = std::cos(angle), s = std::sin(angle);
    float axis[3], length = 0;
    do {
        for (float& a : axis) {
            a = random.In(-1, 1);
        }
        length = std::hypot(axis[0], axis[1], axis[2]);
    } while (length > 1 || length < 0.1f);
    const float x = axis[0] / length, y = axis[1] / length, z = axis[2] / length, t = 1 - c;
    return {{c + x * x * t, y * x * t + z * s, z * x * t - y * s, 0,  //
             x * y * t - z * s, c + y * y * t, z * y * t + x * s, 0,  //
             x * z * t + y * s, y * z * t - x * s, c + z * z * t, 0,  //
             random.In(-range, range), random.In(-range, range), random.In(-range, range), 1}};
}

/// Half the edge of the cube in which so many boxes stand.
float RangeOf(std::size_t count) {
    return 0.5f * std::cbrt(10.0f * static_cast<float>(count));
}

DT_Bool CountOne(void* client, void*, void*, const void*) {
    ++*static_cast<std::size_t*>(client);
    return DT_CONTINUE;
}

DT_Bool StopAtOne(void* client, void*, void*, const void*) {
    ++*static_cast<std::size_t*>(client);
    return DT_DONE;
}

class World {
  public:
    World() = default;
    ~World() {
        for (const DT_ObjectHandle object : objects) {
            DT_DestroyObject(object);
        }
        for (const DT_ShapeHandle shape : m_shapes) {
            DT_DeleteShape(shape);
        }
        DT_DestroyRespTable(table);
        DT_DestroyScene(scene);
    }
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    DT_ObjectHandle Add(DT_ShapeHandle shape, int responseClass, const Matrix& placement) {
        m_shapes.push_back(shape);
        objects.push_back(DT_CreateObject(nullptr, shape));
        DT_SetMatrixf(objects.back(), placement.m);
        DT_AddObject(scene, objects.back());
        DT_SetResponseClass(table, objects.back(), responseClass);
        return objects.back();
    }
    void AddBoxes(std::size_t count, int responseClass) {
        const float range = RangeOf(count);
        for (std::size_t i = 0; i < count; ++i) {
            Add(RandomBox(), responseClass, RandomPlacement(random, range));
        }
    }
    DT_ShapeHandle RandomBox() {
        return DT_NewBox(random.In(0.5f, 1.5f), random.In(0.5f, 1.5f), random.In(0.5f, 1.5f));
    }
    std::uint16_t Test(const std::vector<int>& classes1, const std::vector<int>& classes2,
                       DT_ResponseCallback callback) {
        DT_AddPairResponses(table, classes1.data(), classes1.size(), classes2.data(),
                            classes2.size(), callback, DT_SIMPLE_RESPONSE, &hits);
        const std::uint16_t count = DT_Test(scene, table);
        DT_RemovePairResponses(table, classes1.data(), classes1.size(), classes2.data(),
                               classes2.size(), callback);
        return count;
    }
    void Count(benchmark::State& state) const {
        state.counters["hits"] =
            static_cast<double>(hits) / static_cast<double>(state.iterations());
    }

    DT_SceneHandle scene = DT_CreateScene();
    DT_RespTableHandle table = DT_CreateRespTable();
    std::vector<DT_ObjectHandle> objects;
    std::size_t hits = 0;
    Random random{1};

  private:
    std::vector<DT_ShapeHandle> m_shapes;
};

/// An assembly of 20 boxes goes round in front of fixed boxes.
void MovingAssembly(benchmark::State& state, DT_ResponseCallback callback) {
    World world;
    const std::vector<int> fixed{DT_GenResponseClass(world.table)};
    const std::vector<int> moving{DT_GenResponseClass(world.table)};
    const auto count = static_cast<std::size_t>(state.range(0));
    world.AddBoxes(count, fixed[0]);
    constexpr std::size_t kSteps = 1000;
    constexpr std::size_t kParts = 20;
    std::vector<DT_ObjectHandle> parts;
    std::vector<Matrix> places;
    for (std::size_t i = 0; i < kParts; ++i) {
        places.push_back(RandomPlacement(world.random, 2));
        parts.push_back(world.Add(world.RandomBox(), moving[0], places.back()));
    }
    const float radius = RangeOf(count) / 2;
    std::vector<Matrix> steps;
    for (std::size_t s = 0; s < kSteps; ++s) {
        const float angle = 6.2831853f * static_cast<float>(s) / static_cast<float>(kSteps);
        for (Matrix m : places) {
            m.m[12] += radius * std::cos(angle);
            m.m[13] += radius * std::sin(angle);
            steps.push_back(m);
        }
    }
    std::size_t step = 0;
    for (auto _ : state) {
        for (std::size_t i = 0; i < kParts; ++i) {
            DT_SetMatrixf(parts[i], steps[step * kParts + i].m);
        }
        step = (step + 1) % kSteps;
        benchmark::DoNotOptimize(world.Test(moving, fixed, callback));
    }
    world.Count(state);
}
BENCHMARK_CAPTURE(MovingAssembly, AllHits, CountOne)->Arg(1000)->Arg(10000)->Arg(100000);
BENCHMARK_CAPTURE(MovingAssembly, FirstHit, StopAtOne)->Arg(1000)->Arg(10000)->Arg(100000);

/// All boxes move by up to `jump`, and those of even number are tested against those of odd number.
void EvenAgainstOdd(benchmark::State& state, float jump) {
    World world;
    const std::vector<int> even{DT_GenResponseClass(world.table)};
    const std::vector<int> odd{DT_GenResponseClass(world.table)};
    const auto count = static_cast<std::size_t>(state.range(0));
    constexpr std::size_t kSteps = 16;
    std::vector<Matrix> steps[kSteps];
    for (std::size_t i = 0; i < count; ++i) {
        const Matrix place = RandomPlacement(world.random, RangeOf(count));
        world.Add(world.RandomBox(), i % 2 == 0 ? even[0] : odd[0], place);
        for (auto& places : steps) {
            Matrix m = place;
            for (int k = 12; k < 15; ++k) {
                m.m[k] += world.random.In(-jump, jump);
            }
            places.push_back(m);
        }
    }
    std::size_t step = 0;
    for (auto _ : state) {
        for (std::size_t i = 0; i < count; ++i) {
            DT_SetMatrixf(world.objects[i], steps[step][i].m);
        }
        step = (step + 1) % kSteps;
        benchmark::DoNotOptimize(world.Test(even, odd, CountOne));
    }
    world.Count(state);
}
BENCHMARK_CAPTURE(EvenAgainstOdd, SmallMoves, 0.1f)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(EvenAgainstOdd, LargeMoves, 5.0f)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond);

/// A point, or a segment two units long, against all of 10,000 boxes.
void Probe(benchmark::State& state, bool segment) {
    World world;
    const std::vector<int> boxes{DT_GenResponseClass(world.table)};
    const std::vector<int> probes{DT_GenResponseClass(world.table)};
    world.AddBoxes(10000, boxes[0]);
    const float source[3] = {0, 0, 0}, target[3] = {0, 2, 0};
    const DT_ObjectHandle probe =
        world.Add(segment ? DT_NewLineSegment(source, target) : DT_NewSphere(0), probes[0],
                  RandomPlacement(world.random, 1));
    std::vector<Matrix> places(4096);
    for (Matrix& m : places) {
        m = RandomPlacement(world.random, RangeOf(10000));
    }
    std::size_t step = 0;
    for (auto _ : state) {
        DT_SetMatrixf(probe, places[step].m);
        step = (step + 1) % places.size();
        benchmark::DoNotOptimize(world.Test(boxes, probes, CountOne));
    }
    world.Count(state);
}
BENCHMARK_CAPTURE(Probe, Point, false);
BENCHMARK_CAPTURE(Probe, Segment, true);

/// Two subtrees of 1,000 groups of one box each, nothing near, one box of the first one moved.
void ManyClasses(benchmark::State& state) {
    World world;
    std::vector<int> classes[2];
    for (auto& side : classes) {
        for (int i = 0; i < 1000; ++i) {
            side.push_back(DT_GenResponseClass(world.table));
            Matrix m = RandomPlacement(world.random, RangeOf(1000));
            m.m[12] += &side == classes ? 0 : 100;
            world.Add(world.RandomBox(), side.back(), m);
        }
    }
    Matrix m = RandomPlacement(world.random, RangeOf(1000));
    for (auto _ : state) {
        m.m[13] = -m.m[13];
        DT_SetMatrixf(world.objects[0], m.m);
        benchmark::DoNotOptimize(world.Test(classes[0], classes[1], CountOne));
    }
    world.Count(state);
}
BENCHMARK(ManyClasses)->Unit(benchmark::kMicrosecond);

/// The first test after so many boxes were added.
void FirstTest(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto world = std::make_unique<World>();
        const std::vector<int> boxes{DT_GenResponseClass(world->table)};
        const std::vector<int> probes{DT_GenResponseClass(world->table)};
        world->AddBoxes(static_cast<std::size_t>(state.range(0)), boxes[0]);
        world->Add(DT_NewSphere(0), probes[0], RandomPlacement(world->random, 1));
        state.ResumeTiming();
        benchmark::DoNotOptimize(world->Test(boxes, probes, CountOne));
        state.PauseTiming();
        world.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(FirstTest)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
