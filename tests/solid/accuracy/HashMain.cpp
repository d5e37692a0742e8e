/// Prints a hash of all answers about five scenes: which pairs respond in what order as objects
/// move, and of each two objects contact, distance, points and depth, to the last bit. Builds by
/// any compiler at any optimisation must print the same (same_bits.sh).

#include <bit>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "Engine.h"
#include "Random.h"

namespace oracle {
namespace {

/// G. Fowler, L. C. Noll, K.-P. Vo, "FNV-1a", 1991; 64 bits.
class Hash {
  public:
    void Add(std::uint32_t word) {
        for (int byte = 0; byte < 4; ++byte) {
            m_value = (m_value ^ (word >> (8 * byte) & 0xFF)) * 0x100000001b3U;
        }
    }
    void Add(float value) { Add(std::bit_cast<std::uint32_t>(value)); }
    template <class Values>
    void AddAll(const Values& values) {
        for (const auto value : values) {
            Add(value);
        }
    }
    std::uint64_t Value() const { return m_value; }

  private:
    std::uint64_t m_value = 0xcbf29ce484222325U;
};

struct Recorder {
    Hash hash;
    std::map<const void*, std::uint32_t> numbers;
};

DT_Bool Record(void* client, void* object1, void* object2, const void*) {
    Recorder& recorder = *static_cast<Recorder*>(client);
    recorder.hash.Add(recorder.numbers.at(object1));
    recorder.hash.Add(recorder.numbers.at(object2));
    return DT_CONTINUE;
}

void AddAnswers(const EngineObject& a, const EngineObject& b, Hash& hash) {
    const Answers answers = Ask(a, b);
    hash.Add(static_cast<std::uint32_t>(answers.contact) |
             static_cast<std::uint32_t>(answers.inContact) << 1 |
             static_cast<std::uint32_t>(answers.hasDepth) << 2);
    hash.Add(answers.distance);
    for (const Point* p : {&answers.point1, &answers.point2, &answers.depth1, &answers.depth2}) {
        hash.AddAll(*p);
    }
}

/// Three classes, all but two of the pairs of which respond; every third object moves a little
/// between the tests.
void TestMoving(std::vector<Spec>& specs, const std::vector<std::unique_ptr<EngineObject>>& objects,
                Random& random, Recorder& recorder) {
    const DT_SceneHandle scene = DT_CreateScene();
    const DT_RespTableHandle table = DT_CreateRespTable();
    const DT_ResponseClass classes[] = {DT_GenResponseClass(table), DT_GenResponseClass(table),
                                        DT_GenResponseClass(table)};
    for (const auto& [i, k] : {std::pair{0, 1}, {1, 1}, {0, 2}, {2, 2}}) {
        DT_AddPairResponse(table, classes[i], classes[k], Record, DT_SIMPLE_RESPONSE, &recorder);
    }
    for (std::size_t i = 0; i < objects.size(); ++i) {
        recorder.numbers[objects[i].get()] = static_cast<std::uint32_t>(i);
        DT_SetResponseClass(table, objects[i]->Handle(), classes[i % 3]);
        DT_AddObject(scene, objects[i]->Handle());
    }
    for (int step = 0; step < 8; ++step) {
        recorder.hash.Add(std::uint32_t{DT_Test(scene, table)});
        for (std::size_t i = 0; i < objects.size(); i += 3) {
            for (std::size_t k = 12; k < 15; ++k) {
                specs[i].matrix[k] += static_cast<float>(random.Uniform(-0.25, 0.25));
            }
            objects[i]->Place(specs[i].matrix);
        }
    }
    for (const auto& object : objects) {
        DT_RemoveObject(scene, object->Handle());
    }
    DT_DestroyRespTable(table);
    DT_DestroyScene(scene);
}

void HashScene(const char* name, std::vector<Spec> specs) {
    Hash input;
    std::vector<std::unique_ptr<EngineObject>> objects;
    for (const Spec& spec : specs) {
        input.AddAll(spec.size);
        input.AddAll(spec.matrix);
        for (const Point& point : spec.points) {
            input.AddAll(point);
        }
        objects.push_back(std::make_unique<EngineObject>(spec));
    }
    Recorder recorder;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        for (std::size_t k = i + 1; k < objects.size(); ++k) {
            AddAnswers(*objects[i], *objects[k], recorder.hash);
        }
    }
    Random random(7);
    TestMoving(specs, objects, random, recorder);
    std::printf("%-8s scene %016" PRIx64 " answers %016" PRIx64 "\n", name, input.Value(),
                recorder.hash.Value());
}

/// Near enough to each other that many touch.
std::vector<Spec> Heap(Random& random, int count, int kinds, float reach) {
    std::vector<Spec> specs;
    for (int i = 0; i < count; ++i) {
        const Kind kind = static_cast<Kind>(random.Below(kinds));
        Spec spec = RandomObject(random, kind, static_cast<Aspect>(random.Below(kAspectCount)));
        for (std::size_t k = 12; k < 15; ++k) {
            spec.matrix[k] = static_cast<float>(random.Uniform(-1, 1)) * reach;
        }
        specs.push_back(std::move(spec));
    }
    return specs;
}

std::vector<Spec> PairsOfEachTwoKinds(Random& random) {
    std::vector<Spec> specs;
    for (int first = 0; first < kKindCount; ++first) {
        for (int second = 0; second < kKindCount; ++second) {
            Pair pair = PairOfAnySort(random, static_cast<Kind>(first), static_cast<Kind>(second));
            specs.push_back(std::move(pair.a));
            specs.push_back(std::move(pair.b));
        }
    }
    return specs;
}

/// Cubes and their like face to face.
std::vector<Spec> Stack() {
    std::vector<Spec> specs;
    for (int i = 0; i < 48; ++i) {
        const Spec shapes[] = {Box(1, 1, 1), Cylinder(0.5F, 1), Cone(0.5F, 1), Sphere(0.5F),
                               MeshBox(1, 1, 1)};
        specs.push_back(At(shapes[i % 5], static_cast<float>(i % 4), static_cast<float>(i / 4 % 4),
                           static_cast<float>(i / 16)));
    }
    return specs;
}

}  // namespace
}  // namespace oracle

int main() {
    using oracle::HashScene;
    oracle::Random random(1);
    HashScene("heap", oracle::Heap(random, 90, oracle::kKindCount - 1, 1.5F));
    HashScene("meshes", oracle::Heap(random, 40, oracle::kKindCount, 1));
    HashScene("far", oracle::Heap(random, 60, oracle::kKindCount, 20));
    HashScene("pairs", oracle::PairsOfEachTwoKinds(random));
    HashScene("stack", oracle::Stack());
}
