#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include "Soak.h"

// The comparisons, and where the arguments of the calls come from.

namespace {

using reference::Group;
using reference::Object;
using reference::Placement;
using reference::Quaternion;

// Rounding of one float operation is 6e-8; a link takes some twenty, and angles pass through
// degrees.
constexpr double kTolerancePerLink = 4e-6;

/// A live id near a random one, or now and then one that is gone or never was.
template <typename Map>
int SomeKey(const Map& map, Random& random) {
    if (map.empty() || random.Chance(4)) {
        return random.Chance(50) ? -1 - random.Below(3) : 1000000000 + random.Below(3);
    }
    const int first = map.begin()->first;
    const int last = map.rbegin()->first;
    const int wanted = first + random.Below(last - first + 1);
    return random.Chance(3) ? wanted : map.lower_bound(wanted)->first;
}

}  // namespace

// ---- Comparisons ----

void Soak::CompareAll() {
    m_call = "whole scene";
    for (const auto& [id, group] : m_reference.Groups()) {
        CompareGroup(id);
    }
    for (const auto& [id, object] : m_reference.Objects()) {
        CompareObject(id);
    }
    for (const auto& [label, expected] : m_reference.Labels()) {
        int id = -5;
        Expect(KST_OK, KST_GetID(&id, label.c_str()), "label");
        Expect(expected, id, "id of a label");
    }
}

void Soak::CompareGroup(int id) {
    KstGroupInfo info = {};
    const auto found = m_reference.Groups().find(id);
    if (found == m_reference.Groups().end()) {
        Expect(KST_ERROR_UNKNOWN_GROUP, KST_GetGroup(id, &info), "unknown group");
        return;
    }
    const Group& group = found->second;
    Expect(KST_OK, KST_GetGroup(id, &info), "group");
    Expect(static_cast<int>(group.children.size()), info.childCount, "child groups");
    Expect(static_cast<int>(group.objects.size()), info.objectCount, "objects");
    Expect(group.capable, info.colCheck, "capability");
    for (int view = 0; view < 4; ++view) {
        Expect(view == 0, info.visibleInView[view], "visibility");
    }
    const auto compareIds = [this, id](const std::set<int>& ids, auto get, const char* what) {
        int index = 0;
        for (const int expected : ids) {
            int actual = -5;
            Expect(KST_OK, get(id, index++, &actual), what);
            Expect(expected, actual, what);
        }
        int untouched = -5;
        Expect(KST_ERROR_ARGUMENT, get(id, index, &untouched), what);
        Expect(KST_ERROR_ARGUMENT, get(id, -1, &untouched), what);
        Expect(-5, untouched, what);
    };
    compareIds(group.children, &KST_GetGroupChildID, "child group");
    compareIds(group.objects, &KST_GetGroupObjectID, "object of a group");
}

void Soak::CompareObject(int id) {
    KstObjectInfo info = {};
    int type = -5;
    const auto found = m_reference.Objects().find(id);
    if (found == m_reference.Objects().end()) {
        Expect(KST_ERROR_UNKNOWN_OBJECT, KST_GetObject(id, &info), "unknown object");
        Expect(KST_ERROR_UNKNOWN_OBJECT, KST_GetObjectType(id, &type), "unknown object");
        return;
    }
    const Object& object = found->second;
    Expect(KST_OK, KST_GetObjectType(id, &type), "type");
    Expect(object.type, type, "type");
    Expect(KST_OK, KST_GetObject(id, &info), "object");
    Expect(object.group, info.groupId, "group of an object");
    CompareMatrix(object, info.matrix);
    CompareGeometry(object, info);
}

void Soak::CompareMatrix(const Object& object, const float* matrix) {
    const Placement placement = m_reference.PlacementOf(object);
    const double share = kTolerancePerLink * placement.links;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            const double bound = column == 3 ? placement.translationBound : placement.linearBound;
            const double error = std::fabs(placement.map[row][column] - matrix[4 * row + column]);
            Require(error <= share * bound + 1e-30,
                    "element " + std::to_string(4 * row + column) +
                        " of a world matrix is off by " + std::to_string(error) + ", bound " +
                        std::to_string(bound) + ", links " + std::to_string(placement.links));
        }
    }
    Require(matrix[12] == 0 && matrix[13] == 0 && matrix[14] == 0 && matrix[15] == 1,
            "the last row of a world matrix");
}

void Soak::CompareGeometry(const Object& object, const KstObjectInfo& info) {
    std::vector<float> vertices = object.vertices;
    const auto compareFloats = [this, &vertices](float* floats) {
        Require(floats && std::equal(vertices.begin(), vertices.end(), floats), "vertices");
        std::free(floats);
    };
    switch (object.type) {
        case KST_TRIANGLES:
        case KST_POLYGON:
            Expect(static_cast<int>(vertices.size()) / (object.type == KST_POLYGON ? 3 : 9),
                   info.p1.i, "number of parts");
            compareFloats(info.p2.floats);
            break;
        case KST_POLYGON_GROUP:
        case KST_POLYLINE:
            Expect(static_cast<int>(object.counts.size()), info.p1.i, "number of parts");
            Require(std::equal(object.counts.begin(), object.counts.end(), info.p2.ints),
                    "vertices of each part");
            std::free(info.p2.ints);
            compareFloats(info.p3.floats);
            break;
        case KST_TETRAHEDRON:
            // Stored so that the volume is not positive; see CreateMesh for the corners.
            if (vertices[3] * vertices[7] * vertices[11] > 0) {
                std::swap_ranges(vertices.begin() + 3, vertices.begin() + 6, vertices.begin() + 6);
            }
            compareFloats(info.p1.floats);
            break;
        default: {
            const float words[3] = {info.p1.f, info.p2.f, info.p3.f};
            Require(std::equal(object.sizes.begin(), object.sizes.end(), words), "sizes");
        }
    }
}

void Soak::Expect(int expected, int actual, const char* what) {
    if (expected != actual) {
        Require(false, std::string(what) + ": " + std::to_string(actual) + ", not " +
                           std::to_string(expected));
    }
}

void Soak::Require(bool holds, const std::string& what) {
    if (!holds) {
        throw std::runtime_error("call " + std::to_string(m_calls) + ", " + m_call + ": " + what);
    }
}

// ---- Arguments ----

int Soak::SomeGroup() {
    return SomeKey(m_reference.Groups(), m_random);
}

int Soak::SomeObject() {
    return SomeKey(m_reference.Objects(), m_random);
}

std::string Soak::SomeLabel() {
    if (m_random.Chance(60)) {
        return "";
    }
    std::string label = "part" + std::to_string(m_random.Below(30));
    return m_random.Chance(20) ? label + "_" + std::to_string(1 + m_random.Below(2)) : label;
}

float Soak::SomeMargin() {
    return m_random.Chance(5) ? -0.5f : m_random.Chance(40) ? 0.0f : m_random.Between(0, 2);
}

std::vector<float> Soak::SomeVertices(int count) {
    std::vector<float> vertices(static_cast<std::size_t>(3 * count));
    for (float& value : vertices) {
        value = m_random.Between(-5, 5);
    }
    return vertices;
}

Quaternion Soak::SomeTurn(float (&floats)[4]) {
    double square = 0;
    Quaternion turn = {};
    do {
        for (double& part : turn) {
            part = m_random.Between(-1, 1);
        }
        square = reference::Dot(turn, turn);
    } while (square < 0.01 || square > 1);
    turn = reference::Normalised(turn);
    for (std::size_t i = 0; i < 4; ++i) {
        floats[i] = static_cast<float>(turn[(i + 1) % 4]);
    }
    return turn;
}
