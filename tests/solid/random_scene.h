#pragma once

/// What the tests of scenes share: objects of all kinds thrown about at random, and the recording
/// of the callbacks of a test.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <tuple>
#include <vector>

#include "platform/solid/Object.h"
#include "platform/solid/RespTable.h"
#include "platform/solid/Scene.h"
#include "platform/solid/Solid.h"

namespace scene_tests {

/// The same numbers on every machine, which the distributions of the standard library do not
/// promise.
class Random {
  public:
    explicit Random(std::uint32_t seed) : m_engine(seed) {}
    std::uint32_t Below(std::uint32_t n) { return static_cast<std::uint32_t>(m_engine() % n); }
    float In(float from, float to) {
        return from + (to - from) * static_cast<float>(m_engine() >> 8) / 16777216.0f;
    }

  private:
    std::mt19937 m_engine;
};

struct Matrix {
    float m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};

inline Matrix At(float x, float y, float z) {
    Matrix a;
    a.m[12] = x, a.m[13] = y, a.m[14] = z;
    return a;
}

/// A rotation about a random axis, with the middle anywhere in a cube of edge 2 * `range`.
inline Matrix RandomPlacement(Random& random, float range) {
    float q[4];
    float length = 0;
    do {
        length = 0;
        for (float& c : q) {
            c = random.In(-1, 1);
            length += c * c;
        }
    } while (length < 0.01f || length > 1);
    for (float& c : q) {
        c /= std::sqrt(length);
    }
    const float x = q[0], y = q[1], z = q[2], w = q[3];
    Matrix a = At(random.In(-range, range), random.In(-range, range), random.In(-range, range));
    a.m[0] = 1 - 2 * (y * y + z * z), a.m[1] = 2 * (x * y + w * z), a.m[2] = 2 * (x * z - w * y);
    a.m[4] = 2 * (x * y - w * z), a.m[5] = 1 - 2 * (x * x + z * z), a.m[6] = 2 * (y * z + w * x);
    a.m[8] = 2 * (x * z + w * y), a.m[9] = 2 * (y * z - w * x), a.m[10] = 1 - 2 * (x * x + y * y);
    return a;
}

inline DT_ShapeHandle RandomShape(Random& random) {
    switch (random.Below(5)) {
        case 0:
            return DT_NewSphere(random.In(0.1f, 1));
        case 1:
            return DT_NewCylinder(random.In(0.1f, 0.5f), random.In(0.1f, 2));
        case 2: {
            const float source[3] = {random.In(-3, 3), random.In(-3, 3), random.In(-3, 3)};
            const float target[3] = {random.In(-3, 3), random.In(-3, 3), random.In(-3, 3)};
            return DT_NewLineSegment(source, target);
        }
        default:
            return DT_NewBox(random.In(0.1f, 2), random.In(0.1f, 2), random.In(0.1f, 2));
    }
}

/// A shape and an object of it, destroyed together. The object's client is this.
struct Body {
    explicit Body(DT_ShapeHandle itsShape)
        : shape(itsShape), object(DT_CreateObject(this, itsShape)) {}
    ~Body() {
        DT_DestroyObject(object);
        DT_DeleteShape(shape);
    }
    Body(const Body&) = delete;
    Body& operator=(const Body&) = delete;
    void Place(const Matrix& m) const { DT_SetMatrixf(object, m.m); }

    DT_ShapeHandle shape;
    DT_ObjectHandle object;
    int responseClass = -1;
    bool inScene = false;
};

inline std::unique_ptr<Body> NewCube(float edge = 1) {
    return std::make_unique<Body>(DT_NewBox(edge, edge, edge));
}

struct SceneDeleter {
    void operator()(DT_SceneHandle scene) const { DT_DestroyScene(scene); }
};
struct TableDeleter {
    void operator()(DT_RespTableHandle table) const { DT_DestroyRespTable(table); }
};
using ScenePtr = std::unique_ptr<solid::Scene, SceneDeleter>;
using TablePtr = std::unique_ptr<solid::RespTable, TableDeleter>;

/// What a test calls back, in order: the response's client and the bodies.
struct Recorder {
    using Call = std::tuple<const void*, const Body*, const Body*>;
    std::vector<Call> calls;
    std::size_t doneAfter = SIZE_MAX;
};

/// The client of each response.
struct Client {
    Recorder* recorder = nullptr;
};

inline DT_Bool Record(void* client, void* object1, void* object2, const void* unused) {
    EXPECT_EQ(unused, nullptr);
    Recorder& recorder = *static_cast<Client*>(client)->recorder;
    recorder.calls.emplace_back(client, static_cast<Body*>(object1), static_cast<Body*>(object2));
    return recorder.calls.size() >= recorder.doneAfter ? DT_DONE : DT_CONTINUE;
}

}  // namespace scene_tests
