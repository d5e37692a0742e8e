#include "platform/maverik/FrameContentsData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

class FrameContentsTest : public testing::Test {
  protected:
    FrameContentsTest() : list(mav_SMSObjListNew()) {
        setup.projection.mat = {1, 0, 0, 0, 0, 1.5f, 0, 0, 0, 0, -1.1f, -2.1f, 0, 0, -1, 0};
        setup.width = setup.height = 500;
    }
    ~FrameContentsTest() override {
        for (MAV_object* const object : objects)
            mav_objectDelete(object);
        mav_SMSDelete(list);
    }

    MAV_object* Add(MAV_class shape, const void* record) {
        objects.push_back(mav_objectNew(shape, record));
        mav_SMSObjectAdd(list, objects.back());
        return objects.back();
    }
    const FrameContents::Data& Collect() {
        contents.Begin(setup, palette);
        contents.Collect(*list, palette, true);
        return contents.Contents();
    }
    bool IsInView(const MAV_vector& p) const {
        const MAV_matrix m = mav_matrixMult(setup.projection, setup.view);
        const auto row = [&](std::size_t i) {
            return m[i] * p.x + m[i + 1] * p.y + m[i + 2] * p.z + m[i + 3];
        };
        const float w = row(12);
        return std::abs(row(0)) <= w && std::abs(row(4)) <= w && std::abs(row(8)) <= w;
    }

    ViewSetup setup;
    MAV_palette palette{10, 14};
    MAV_SMS* list;
    FrameContents contents;
    std::vector<MAV_object*> objects;
};

TEST_F(FrameContentsTest, LeavesOutOnlyWhatIsOutsideTheView) {
    std::mt19937 random(2);
    std::uniform_real_distribution<float> number(-1, 1);
    MAV_vector corners[8];
    for (int i = 0; i < 8; ++i)
        corners[i] = {i & 1 ? 0.5f : -0.5f, i & 2 ? 0.5f : -0.5f, i & 4 ? 0.5f : -0.5f};
    const int counts[] = {8};
    MAV_box box = {1, 1, 1, 1, 1, nullptr, MAV_ID_MATRIX};
    MAV_polyline lines = {1, counts, corners, nullptr, MAV_ID_MATRIX, nullptr};
    Add(mav_class_box, &box);
    Add(mav_class_polyline, &lines);
    int seen = 0, collected = 0;
    for (int round = 0; round < 20000; ++round) {
        setup.view = mav_matrixXYZSet(mav_matrixRPYSet(MAV_ID_MATRIX, 180 * number(random),
                                                       90 * number(random), 180 * number(random)),
                                      {number(random), number(random), number(random)});
        for (std::size_t i = 0; i < 12; ++i)
            box.matrix[i] = (i % 4 == 3 ? 25 : 2) * number(random);
        lines.matrix = box.matrix;
        bool visible = false;
        for (const MAV_vector& c : corners) {
            const MAV_matrix& m = box.matrix;
            const auto row = [&](std::size_t i) {
                return m[i] * c.x + m[i + 1] * c.y + m[i + 2] * c.z + m[i + 3];
            };
            visible |= IsInView({row(0), row(4), row(8)});
        }
        const FrameContents::Data& data = Collect();
        EXPECT_TRUE((data.opaque.size() == 1 && data.lines.size() == 1) || !visible);
        seen += visible ? 1 : 0;
        collected += static_cast<int>(data.opaque.size());
    }
    EXPECT_GT(seen, 1000);
    EXPECT_LT(collected, seen + 20000 / 10);
}

TEST_F(FrameContentsTest, GeometryIsTakenOverOnce) {
    MAV_vector corners[] = {{-1, -1, -5}, {1, -1, -5}, {0, 1, -5}};
    MAV_polygon polygon = {3, {0, 0, 1}, nullptr, corners, nullptr, MAV_ID_MATRIX};
    MAV_object* const object = Add(mav_class_polygon, &polygon);
    Collect();
    const MAV_drawing* const first = object->drawing.get();
    ASSERT_NE(first, nullptr);
    polygon.matrix[3] = 0.5f;
    Collect();
    EXPECT_EQ(object->drawing.get(), first);
    EXPECT_NEAR(mav_objectBounds(object).centre.x, 0.5f, 1e-6f);
    const std::shared_ptr<MAV_drawing> kept = object->drawing;
    mav_objectChanged(object);
    EXPECT_EQ(object->drawing, nullptr);
    Collect();
    EXPECT_NE(object->drawing, kept);
}

TEST_F(FrameContentsTest, SurfacesWithoutSense) {
    const MAV_surfaceParams surfaces[] = {
        mav_surfaceParamsNew(MAV_COLOUR, -1, 0, 0),   mav_surfaceParamsNew(MAV_COLOUR, 16, 0, 0),
        mav_surfaceParamsNew(MAV_MATERIAL, 0, -1, 0), mav_surfaceParamsNew(MAV_MATERIAL, 0, 99, 0),
        mav_surfaceParamsNew(MAV_TEXTURE, 0, 0, -1),  mav_surfaceParamsNew(MAV_TEXTURE, 0, 0, 100),
    };
    std::vector<MAV_box> boxes;
    boxes.reserve(std::size(surfaces));
    for (const MAV_surfaceParams& surface : surfaces) {
        boxes.push_back({1, 1, 1, 1, 1, &surface, mav_matrixXYZSet(MAV_ID_MATRIX, {0, 0, -5})});
        Add(mav_class_box, &boxes.back());
    }
    const FrameContents::Data& data = Collect();
    ASSERT_EQ(data.opaque.size(), boxes.size());
    for (const FrameInstance& instance : data.instances)
        EXPECT_EQ(instance.colour, (std::array<float, 4>{1, 1, 1, 1}));
}

}  // namespace
