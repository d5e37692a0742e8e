#include <limits>

#include "WindowTest.h"

namespace {

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kFov = 60;

class FlightsTest : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        list = mav_SMSObjListNew();
    }
    void TearDown() override {
        for (MAV_object* const object : objects)
            mav_objectDelete(object);
        mav_SMSDelete(list);
        WindowTest::TearDown();
    }
    /// Sides and middle.
    MAV_object* Box(const MAV_vector& size, const MAV_vector& at) {
        records.push_back(std::make_unique<MAV_box>(
            MAV_box{size.x, size.y, size.z, 1, 1, nullptr, mav_matrixXYZSet(MAV_ID_MATRIX, at)}));
        objects.push_back(mav_objectNew(mav_class_box, records.back().get()));
        mav_SMSObjectAdd(list, objects.back());
        return objects.back();
    }
    /// How far out in the picture a corner of the box stands at the most; 1 is its edge.
    float Extent(const MAV_vector& size, const MAV_vector& at, float aspect) const {
        const MAV_matrix m = mav_windowViewMatrix(window);
        float extent = 0;
        for (int i = 0; i < 8; ++i) {
            const MAV_vector c = {at.x + (i & 1 ? 0.5F : -0.5F) * size.x,
                                  at.y + (i & 2 ? 0.5F : -0.5F) * size.y,
                                  at.z + (i & 4 ? 0.5F : -0.5F) * size.z};
            const auto row = [&](std::size_t r) {
                return m[r] * c.x + m[r + 1] * c.y + m[r + 2] * c.z + m[r + 3];
            };
            const float half = -row(8) * std::tan(kFov / 2 * 3.14159265F / 180);
            EXPECT_GE(-row(8), 0.099F) << "before the nearest that is drawn";
            extent = std::max({extent, std::abs(row(0)) / half / aspect, std::abs(row(4)) / half});
        }
        return extent;
    }

    MAV_SMS* list = nullptr;
    std::vector<std::unique_ptr<MAV_box>> records;
    std::vector<MAV_object*> objects;
};

TEST_F(FlightsTest, EndWhereTheWholeBoxIsSeenAsLargeAsWanted) {
    const MAV_vector at = {3, -40, 500};
    for (const MAV_vector& size :
         {MAV_vector{1, 1, 1}, {0.02F, 30, 1}, {9, 5, 2}, {0, 0, 0}, {2, 3, 200}}) {
        const MAV_object* const object = Box(size, at);
        for (const float aspect : {2.0F, 0.4F}) {
            mav_windowPerspectiveSet(window, 0.1F, 5000, kFov, aspect);
            for (const MAV_vector& view :
                 {MAV_vector{0, 0, -1}, {1, 0, 0}, {3, -2, 1}, {0, -1, 0}}) {
                for (const float share : {1.0F, 0.5F}) {
                    Look({1, 2, 3}, view, {0, 1, 0.1F});
                    const MAV_vector former = camera.view;
                    ASSERT_TRUE(mav_viewParamsAnimateToObject(window, object, share, 0));
                    Frame();
                    EXPECT_FALSE(mav_viewParamsAnimating());
                    EXPECT_EQ(former, camera.view);
                    const float extent = Extent(size, at, aspect);
                    EXPECT_LE(extent, share + 2e-3F);
                    EXPECT_TRUE(extent >= share - 2e-3F || size.y == 0);
                }
            }
        }
    }
}

TEST_F(FlightsTest, GoOnlyAcrossInOrthogonalViews) {
    const MAV_object* const object = Box({1, 2, 3}, {10, 20, -30});
    mav_windowOrthogonalSet(window, 0.1F, 500, 10, 2);
    Look({0, 0, 5}, {0, 0, -1}, {0, 1, 0});
    ASSERT_TRUE(mav_viewParamsAnimateToObject(window, object, 1, 0));
    Frame();
    ExpectNear({10, 20, 5}, camera.eye, 1e-5F);
}

TEST_F(FlightsTest, TakeTheirTimeAndNoneForEver) {
    Box({1, 1, 1}, {0, 0, -50});
    for (const auto& [time, seconds] : {std::pair(0.0F, 0.0),
                                        {0.25F, 0.25},
                                        {59.5F, 59.5},
                                        {-1.0F, 1.0},
                                        {-kInf, 1.0},
                                        {kNan, 1.0},
                                        {kInf, 1.0},
                                        {1e30F, 60.0}}) {
        ASSERT_TRUE(mav_viewParamsAnimateToSMS(window, list, 1, time));
        EXPECT_EQ(seconds, window->state->flight->duration.count()) << time;
    }
    // On the way it is between both ends, in their order.
    ASSERT_TRUE(mav_viewParamsAnimateToSMS(window, list, 1, 0.2F));
    float former = 0;
    const float end = window->state->flight->to.z;
    for (; mav_viewParamsAnimating(); former = camera.eye.z) {
        Frame();
        EXPECT_LE(camera.eye.z, former);
        EXPECT_GE(camera.eye.z, end);
    }
    EXPECT_EQ(end, former);
}

TEST_F(FlightsTest, LeaveTheCameraToWhoeverMovesIt) {
    Box({1, 1, 1}, {0, 0, -50});
    for (MAV_vector MAV_viewParams::*part : {&MAV_viewParams::eye, &MAV_viewParams::view}) {
        ASSERT_TRUE(mav_viewParamsAnimateToSMS(window, list, 1, 60));
        Frame();
        EXPECT_TRUE(mav_viewParamsAnimating());
        camera.*part = {0.6F, 0, -0.8F};
        const MAV_vector set = camera.eye;
        Frame();
        EXPECT_FALSE(mav_viewParamsAnimating());
        EXPECT_EQ(set, camera.eye);
    }
    ASSERT_TRUE(mav_viewParamsAnimateToSMS(window, list, 1, 60));
    mav_windowViewParamsSet(window, nullptr);
    Frame();
    EXPECT_FALSE(mav_viewParamsAnimating());
    EXPECT_FALSE(mav_viewParamsAnimateToSMS(window, list, 1, 60));
}

TEST_F(FlightsTest, DoNotBeginWhereThereIsNothingToSee) {
    EXPECT_FALSE(mav_viewParamsAnimateToSMS(window, list, 1, 0));
    Box({kNan, 1, 1}, {0, 0, 0});
    Box({1, 1, 1}, {kInf, 0, 0});
    EXPECT_FALSE(mav_viewParamsAnimateToSMS(window, list, 1, 0));
    const MAV_object* const object = Box({1, 1, 1}, {0, 0, -50});
    for (const float size : {0.0F, -1.0F, kNan, 1e-45F})
        EXPECT_FALSE(mav_viewParamsAnimateToObject(window, object, size, 0)) << size;
    EXPECT_FALSE(mav_viewParamsAnimating());
    // From a camera that is nowhere there is a way all the same.
    camera.eye = {kNan, kInf, 0};
    EXPECT_TRUE(mav_viewParamsAnimateToSMS(window, list, 1, 0.01F));
    for (int i = 0; mav_viewParamsAnimating(); ++i) {
        Frame();
        EXPECT_TRUE(std::isfinite(camera.eye.x + camera.eye.y));
    }
    EXPECT_GT(camera.eye.z, -50);
    EXPECT_EQ(0, camera.eye.x);
}

}  // namespace
