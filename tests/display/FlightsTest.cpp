#include "WindowTest.h"

namespace {

struct FlightsTest : WindowTest {
    FlightsTest() : object(mav_objectNew(mav_class_box, &box)), list(mav_SMSObjListNew()) {
        mav_SMSObjectAdd(list, object);
    }
    ~FlightsTest() override {
        mav_objectDelete(object);
        mav_SMSDelete(list);
    }
    /// How far out in the picture a corner of the box stands at the most; 1 is its edge.
    float Extent(float aspect) const {
        const MAV_matrix m = mav_matrixMult(mav_windowViewMatrix(window), box.matrix);
        float extent = 0;
        for (int i = 0; i < 8; ++i) {
            const float x = box.width * (i & 1 ? 0.5F : -0.5F);
            const float y = box.height * (i & 2 ? 0.5F : -0.5F);
            const float z = box.depth * (i & 4 ? 0.5F : -0.5F);
            const auto row = [&](std::size_t r) {
                return m[r] * x + m[r + 1] * y + m[r + 2] * z + m[r + 3];
            };
            EXPECT_GE(-row(8), 0.099F) << "before the nearest that is drawn";
            const float half = -row(8) * std::tan(3.14159265F / 6);
            extent = std::max({extent, std::abs(row(0)) / half / aspect, std::abs(row(4)) / half});
        }
        return extent;
    }

    MAV_box box = {1, 1, 1, 1, 1, nullptr, mav_matrixXYZSet(MAV_ID_MATRIX, {3, -40, 500})};
    MAV_object* const object;
    MAV_SMS* const list;
};

TEST_F(FlightsTest, EndWhereTheWholeBoxIsSeenAsLargeAsWanted) {
    for (const MAV_vector& size :
         {MAV_vector{1, 1, 1}, {0.02F, 30, 1}, {9, 5, 2}, {0, 0, 0}, {2, 3, 200}}) {
        box.width = size.x, box.height = size.y, box.depth = size.z;
        for (const float aspect : {2.0F, 0.4F}) {
            mav_windowPerspectiveSet(window, 0.1F, 5000, 60, aspect);
            for (const MAV_vector& view :
                 {MAV_vector{0, 0, -1}, {1, 0, 0}, {3, -2, 1}, {0, -1, 0}}) {
                for (const float share : {1.0F, 0.5F}) {
                    Look({1, 2, 3}, view, {0, 1, 0.1F});
                    const MAV_vector former = camera.view;
                    ASSERT_TRUE(mav_viewParamsAnimateToObject(window, object, share, 0));
                    Frame();
                    EXPECT_FALSE(mav_viewParamsAnimating());
                    EXPECT_EQ(former, camera.view);
                    const float extent = Extent(aspect);
                    EXPECT_LE(extent, share + 2e-3F);
                    EXPECT_TRUE(extent >= share - 2e-3F || size.y == 0);
                }
            }
        }
    }
    // An orthogonal view only moves across.
    mav_windowOrthogonalSet(window, 0.1F, 500, 10, 2);
    Look({0, 0, 5}, {0, 0, -1}, {0, 1, 0});
    ASSERT_TRUE(mav_viewParamsAnimateToObject(window, object, 1, 0));
    Frame();
    ExpectNear({3, -40, 5}, camera.eye, 1e-5F);
}

TEST_F(FlightsTest, TakeTheirTimeAndNoneForEver) {
    for (const auto& [time, seconds] : {std::pair(0.0F, 0.0),
                                        {59.5F, 59.5},
                                        {-1.0F, 1.0},
                                        {-kInf, 1.0},
                                        {kNan, 1.0},
                                        {kInf, 1.0},
                                        {1e30F, 60.0}}) {
        ASSERT_TRUE(mav_viewParamsAnimateToSMS(window, list, 1, time));
        EXPECT_EQ(seconds, window->state->flight->duration.count()) << time;
    }
    // On the way it is between both ends, in their order; also from a camera that is nowhere.
    camera.eye = {kNan, kInf, 0};
    ASSERT_TRUE(mav_viewParamsAnimateToSMS(window, list, 1, 0.1F));
    const MAV_vector end = window->state->flight->to;
    for (float former = 0; mav_viewParamsAnimating(); former = camera.eye.z) {
        Frame();
        EXPECT_TRUE(former <= camera.eye.z && camera.eye.z <= end.z) << camera.eye.z;
    }
    EXPECT_EQ(end, camera.eye);
}

TEST_F(FlightsTest, LeaveTheCameraToWhoeverMovesIt) {
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
    for (const float size : {0.0F, -1.0F, kNan, 1e-45F})
        EXPECT_FALSE(mav_viewParamsAnimateToObject(window, object, size, 0)) << size;
    box.matrix[3] = kInf;
    EXPECT_FALSE(mav_viewParamsAnimateToSMS(window, list, 1, 0));
    mav_SMSObjectRmv(list, object);
    EXPECT_FALSE(mav_viewParamsAnimateToSMS(window, list, 1, 0));
    EXPECT_FALSE(mav_viewParamsAnimating());
}

}  // namespace
