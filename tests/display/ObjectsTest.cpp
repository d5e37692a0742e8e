#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "platform/maverik/Objects.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

struct ObjectDeleter {
    void operator()(MAV_object* object) const noexcept { mav_objectDelete(object); }
};
using ObjectPtr = std::unique_ptr<MAV_object, ObjectDeleter>;
struct ListDeleter {
    void operator()(MAV_SMS* list) const noexcept { mav_SMSDelete(list); }
};
using ListPtr = std::unique_ptr<MAV_SMS, ListDeleter>;

TEST(Lists, HoldWhatWasAddedUntilItIsRemoved) {
    const MAV_box record = {1, 1, 1, 1, 1, nullptr, MAV_ID_MATRIX};
    ListPtr a(mav_SMSObjListNew());
    ListPtr b(mav_SMSObjListNew());
    std::vector<ObjectPtr> objects;
    for (int i = 0; i < 5; ++i) {
        objects.emplace_back(mav_objectNew(mav_class_box, &record));
        mav_SMSObjectAdd(a.get(), objects.back().get());
        mav_SMSObjectAdd(a.get(), objects.back().get());
        mav_SMSObjectAdd(b.get(), objects.back().get());
    }
    EXPECT_EQ(a->objects.size(), 5u);
    mav_SMSObjectRmv(a.get(), objects[1].get());
    mav_SMSObjectRmv(a.get(), objects[1].get());
    mav_SMSObjectRmv(a.get(), objects[4].get());
    EXPECT_EQ(a->objects.size(), 3u);
    EXPECT_FALSE(mav_SMSHolds(a.get(), objects[1].get()));
    EXPECT_TRUE(mav_SMSHolds(b.get(), objects[1].get()));
    objects.erase(objects.begin());
    EXPECT_EQ(a->objects.size(), 2u);
    for (const ListPtr* const list : {&a, &b}) {
        for (std::size_t i = 0; i < (*list)->objects.size(); ++i)
            EXPECT_EQ((*list)->objects[i]->place[(*list)->index], static_cast<int>(i));
    }
    EXPECT_EQ(b->objects.size(), 4u);
    a.reset();
    const ListPtr again(mav_SMSObjListNew());
    EXPECT_FALSE(mav_SMSHolds(again.get(), objects[1].get()));
    mav_objectDelete(nullptr);
    mav_SMSDelete(nullptr);
}

TEST(Lists, AreLimited) {
    std::vector<ListPtr> lists;
    for (std::size_t i = 0; i < kMostLists; ++i) {
        lists.emplace_back(mav_SMSObjListNew());
        EXPECT_TRUE(lists.back());
    }
    EXPECT_EQ(mav_SMSObjListNew(), nullptr);
    lists.erase(lists.begin() + 3);
    EXPECT_TRUE(ListPtr(mav_SMSObjListNew()));
}

MAV_matrix RandomMatrix(std::mt19937& random) {
    std::uniform_real_distribution<float> number(-3, 3);
    MAV_matrix matrix = MAV_ID_MATRIX;
    for (std::size_t i = 0; i < 12; ++i)
        matrix[i] = number(random);
    return matrix;
}

MAV_vector Apply(const MAV_matrix& m, double x, double y, double z) {
    const auto row = [&](std::size_t i) {
        return static_cast<float>(m[i] * x + m[i + 1] * y + m[i + 2] * z + m[i + 3]);
    };
    return {row(0), row(4), row(8)};
}

/// Bounds hold all points, and the box is no larger than they are (within `slack`).
void ExpectTight(const MAV_object* object, const std::vector<MAV_vector>& points, float slack) {
    const MAV_bounds bounds = mav_objectBounds(object);
    MAV_vector low, high;
    ASSERT_TRUE(mav_objectBox(object, low, high));
    MAV_vector least = points[0], most = points[0];
    for (const MAV_vector& p : points) {
        const MAV_vector d = mav_vectorSub(p, bounds.centre);
        EXPECT_LE(std::hypot(d.x, d.y, d.z), bounds.radius * 1.0001f + 1e-5f);
        least = {std::min(least.x, p.x), std::min(least.y, p.y), std::min(least.z, p.z)};
        most = {std::max(most.x, p.x), std::max(most.y, p.y), std::max(most.z, p.z)};
    }
    const float found[] = {low.x, low.y, low.z, high.x, high.y, high.z};
    const float expected[] = {least.x, least.y, least.z, most.x, most.y, most.z};
    for (int i = 0; i < 6; ++i)
        EXPECT_NEAR(found[i], expected[i], slack) << i;
}

TEST(Bounds, HoldAllPointsOfShapesUnderAnyMatrix) {
    std::mt19937 random(1);
    constexpr int kSteps = 360;
    for (int round = 0; round < 50; ++round) {
        const MAV_matrix m = RandomMatrix(random);
        std::vector<MAV_vector> box, sphere, cylinder, cone;
        for (int i = 0; i < 8; ++i)
            box.push_back(Apply(m, i & 1 ? 1 : -1, i & 2 ? 2 : -2, i & 4 ? 3 : -3));
        for (int i = 0; i < kSteps; ++i) {
            const double angle = 2 * M_PI * i / kSteps, c = std::cos(angle), s = std::sin(angle);
            for (const double z : {-2.0, 2.0}) {
                cylinder.push_back(Apply(m, 1.5 * c, 1.5 * s, z));
                cone.push_back(Apply(m, z > 0 ? 0 : 1.5 * c, z > 0 ? 0 : 1.5 * s, z));
            }
            for (int j = 0; j <= kSteps / 2; ++j) {
                const double up = M_PI * j / (kSteps / 2.0), r = 2 * std::sin(up);
                sphere.push_back(Apply(m, r * c, r * s, 2 * std::cos(up)));
            }
        }
        const MAV_box boxRecord = {2, 4, 6, 1, 1, nullptr, m};
        const MAV_sphere sphereRecord = {2, 25, 25, 1, 1, nullptr, m};
        const MAV_cylinder cylinderRecord = {1.5f, 4, 25, 1, 1, 1, nullptr, m};
        const MAV_cone coneRecord = {0, 1.5f, 4, 25, 1, 1, 1, nullptr, m};
        const MAV_polyline polylineRecord = {1, nullptr, nullptr, nullptr, m, nullptr};
        ExpectTight(ObjectPtr(mav_objectNew(mav_class_box, &boxRecord)).get(), box, 1e-4f);
        ExpectTight(ObjectPtr(mav_objectNew(mav_class_sphere, &sphereRecord)).get(), sphere, 2e-3f);
        ExpectTight(ObjectPtr(mav_objectNew(mav_class_cylinder, &cylinderRecord)).get(), cylinder,
                    2e-3f);
        ExpectTight(ObjectPtr(mav_objectNew(mav_class_cone, &coneRecord)).get(), cone, 2e-3f);

        const int counts[] = {5};
        std::vector<MAV_vector> local, world;
        std::uniform_real_distribution<float> number(-3, 3);
        for (int i = 0; i < 5; ++i) {
            local.push_back({number(random), number(random), number(random)});
            world.push_back(Apply(m, local.back().x, local.back().y, local.back().z));
        }
        MAV_polyline lines = polylineRecord;
        lines.vertexCounts = counts;
        lines.vertices = local.data();
        ExpectTight(ObjectPtr(mav_objectNew(mav_class_polyline, &lines)).get(), world, 1e-4f);
    }
}

TEST(Bounds, NoneWhereNothingFiniteIs) {
    MAV_box box = {1, 1, 1, 1, 1, nullptr, MAV_ID_MATRIX};
    MAV_vector low = {7, 7, 7}, high = low;
    const ObjectPtr object(mav_objectNew(mav_class_box, &box));
    for (const float value : {kNan, std::numeric_limits<float>::infinity()}) {
        box.matrix[5] = value;
        EXPECT_LT(mav_objectBounds(object.get()).radius, 0);
        EXPECT_FALSE(mav_objectBox(object.get(), low, high));
        EXPECT_EQ(low.x, 7);
    }
    for (const auto& [top, bottom] : {std::pair(kNan, 1.0f), std::pair(1.0f, kNan)}) {
        const MAV_cone cone = {top, bottom, 1, 25, 1, 1, 1, nullptr, MAV_ID_MATRIX};
        const ObjectPtr sharp(mav_objectNew(mav_class_cone, &cone));
        EXPECT_LT(mav_objectBounds(sharp.get()).radius, 0);
    }
    const MAV_vector vertices[] = {{1, 2, 3}, {kNan, 0, 0}, {3, 2, 1}};
    MAV_polygonGrp group = {1, nullptr, nullptr, nullptr, vertices, nullptr, MAV_ID_MATRIX};
    const ObjectPtr mesh(mav_objectNew(mav_class_polygonGrp, &group));
    EXPECT_NEAR(mav_objectBounds(mesh.get()).radius, std::sqrt(2.0f), 1e-5f);
    group.polygonCount = 0;
    EXPECT_LT(mav_objectBounds(mesh.get()).radius, 0);
}

}  // namespace
