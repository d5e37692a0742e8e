#include <kestrane.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "Library.h"

namespace bench {

namespace {

void Check(int code) {
    if (code != KST_OK) {
        std::fprintf(stderr, "a call gave the code %d\n", code);
        std::exit(1);
    }
}

struct Quaternion {
    float x, y, z, w;
};

/// S. W. Shepperd, "Quaternion from rotation matrix", 1978.
Quaternion QuaternionOf(const Matrix& m) {
    const auto at = [&](std::size_t row, std::size_t column) {
        return static_cast<double>(m[4 * column + row]);
    };
    const double four[4] = {1 + at(0, 0) - at(1, 1) - at(2, 2), 1 - at(0, 0) + at(1, 1) - at(2, 2),
                            1 - at(0, 0) - at(1, 1) + at(2, 2), 1 + at(0, 0) + at(1, 1) + at(2, 2)};
    const double xy = at(1, 0) + at(0, 1), xz = at(2, 0) + at(0, 2), yz = at(2, 1) + at(1, 2);
    const double xw = at(2, 1) - at(1, 2), yw = at(0, 2) - at(2, 0), zw = at(1, 0) - at(0, 1);
    const double rows[4][4] = {
        {four[0], xy, xz, xw}, {xy, four[1], yz, yw}, {xz, yz, four[2], zw}, {xw, yw, zw, four[3]}};
    std::size_t most = 0;
    for (std::size_t i = 1; i < 4; ++i) {
        most = four[i] > four[most] ? i : most;
    }
    const double scale = 1 / (2 * std::sqrt(four[most]));
    const auto part = [&](std::size_t i) { return static_cast<float>(rows[most][i] * scale); };
    return {part(0), part(1), part(2), part(3)};
}

/// This library as a host calls it.
class PublicLibrary : public Library {
  public:
    PublicLibrary() { Check(KST_Initialisation(false, false, false)); }
    ~PublicLibrary() override { KST_End(); }

    int AddGroup(int parent) override {
        int id = 0;
        Check(KST_CreateGroup(&id, parent == kNoGroup ? 0 : GroupId(parent), true, nullptr, false));
        m_groups.push_back(id);
        return static_cast<int>(m_groups.size()) - 1;
    }
    int AddObject(const Spec& spec, int group) override {
        m_objects.push_back({Create(spec, GroupId(group)), GroupId(group)});
        const int object = static_cast<int>(m_objects.size()) - 1;
        Place(object, spec.matrix);
        return object;
    }
    void Place(int object, const Matrix& matrix) override {
        const Quaternion q = QuaternionOf(matrix);
        Check(KST_SetObjectPosition(ObjectId(object), matrix[12], matrix[13], matrix[14]));
        Check(KST_SetObjectQuaternion(ObjectId(object), q.x, q.y, q.z, q.w));
    }
    void Move(int object, const Point& position) override {
        KST_SetObjectPosition(ObjectId(object), position[0], position[1], position[2]);
    }

    bool InContact(int object1, int object2) override {
        int count = 0;
        KST_CheckGroupCollision(HomeOf(object1), HomeOf(object2), true, &count);
        return count != 0;
    }
    double Distance(int object1, int object2, Points& points) override {
        int count = 0;
        KST_GetClosestPairs(HomeOf(object1), HomeOf(object2), &count);
        return Result(count, points);
    }
    double Depth(int object1, int object2, Points& points) override {
        int count = 0;
        KST_GetPenetrationDepths(HomeOf(object1), HomeOf(object2), &count);
        return Result(count, points);
    }

    int CountContacts(int group1, int group2, bool all) override {
        int count = 0;
        KST_CheckGroupCollision(GroupId(group1), GroupId(group2), all, &count);
        return count;
    }
    int CountAtPoint(int group, const Point& point) override {
        int count = 0;
        KST_CheckPointCollision(GroupId(group), point[0], point[1], point[2], true, &count);
        return count;
    }
    int CountAtSegment(int group, const Point& from, const Point& to) override {
        int count = 0;
        KST_CheckLineCollision(GroupId(group), from[0], from[1], from[2], to[0], to[1], to[2], true,
                               &count);
        return count;
    }
    /// All pairs come back, the nearest first.
    double LeastDistance(int group1, int group2) override {
        int count = 0;
        KST_GetClosestPairs(GroupId(group1), GroupId(group2), &count);
        m_results.resize(static_cast<std::size_t>(count));
        KST_GetResults(m_results.data());
        return static_cast<double>(m_results.at(0).value);
    }

    std::size_t OwnBytes() const override { return m_objects.capacity() * sizeof(Placed); }

  private:
    struct Placed {
        int id;
        int group;
    };

    static int Create(const Spec& spec, int group) {
        int id = 0;
        const float a = spec.size[0], b = spec.size[1], c = spec.size[2];
        // Points are three floats with nothing between them.
        const float* vertices = spec.points.empty() ? nullptr : spec.points[0].data();
        switch (spec.kind) {
            case oracle::Kind::kBox:
                Check(KST_CreateBox(group, a, b, c, 0, 0, 0, &id, nullptr));
                break;
            case oracle::Kind::kSphere:
                Check(KST_CreateSphere(group, a, 0, 0, 0, &id, nullptr));
                break;
            case oracle::Kind::kCylinder:
                Check(KST_CreateCylinder(group, a, b, 0, 0, 0, &id, nullptr));
                break;
            case oracle::Kind::kCone:
                Check(KST_CreateCone(group, a, b, 0, 0, 0, &id, nullptr));
                break;
            case oracle::Kind::kPolytope:
                Check(KST_CreateTetrahedron(group, vertices, &id, nullptr));
                break;
            case oracle::Kind::kMesh:
                Check(KST_CreatePolygonGroup(group, static_cast<int>(spec.counts.size()),
                                             spec.counts.data(), vertices, &id, nullptr));
                break;
            case oracle::Kind::kSegment:
                Check(KST_ERROR_ARGUMENT);
        }
        return id;
    }

    int GroupId(int group) const { return m_groups[static_cast<std::size_t>(group)]; }
    int ObjectId(int object) const { return m_objects[static_cast<std::size_t>(object)].id; }
    /// The group that an object is in.
    int HomeOf(int object) const { return m_objects[static_cast<std::size_t>(object)].group; }

    static double Result(int count, Points& points) {
        KstCollisionResult result;
        if (count != 1) {
            return -1;
        }
        KST_GetResults(&result);
        for (std::size_t i = 0; i < 3; ++i) {
            points.first[i] = result.point1[i];
            points.second[i] = result.point2[i];
        }
        return static_cast<double>(result.value);
    }

    /// Ids.
    std::vector<int> m_groups;
    std::vector<Placed> m_objects;
    std::vector<KstCollisionResult> m_results;
};

}  // namespace

std::vector<LibraryKind> PublicLibraries() {
    return {{"public", [] { return std::make_unique<PublicLibrary>(); }}};
}

}  // namespace bench
