#include "platform/solid/DynamicTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

#include "awkward_boxes.h"

using namespace solid;

namespace {

constexpr float kMost = std::numeric_limits<float>::max();

class TreeTest : public testing::Test {
  protected:
    float Value(float from, float to) {
        return from + (to - from) * static_cast<float>(m_random() >> 8) / 16777216.0f;
    }
    FloatBox RandomBox(float range, float size) {
        FloatBox box;
        for (int i = 0; i < 3; ++i) {
            box.lower[i] = Value(-range, range);
            box.upper[i] = box.lower[i] + Value(0, size);
        }
        return box;
    }
    void Insert(std::uint32_t id, const FloatBox& box) {
        m_tree.Reserve(id + 1, m_tree.Count() + 1);
        m_tree.Insert(id, box);
        m_boxes[id] = box;
    }
    void Remove(std::uint32_t id) {
        m_tree.Remove(id);
        m_boxes.erase(id);
    }
    /// The ids found, each once; compared with a look at all boxes.
    std::size_t ExpectRight(const FloatBox& box) {
        std::vector<std::uint32_t> found, expected;
        m_tree.Query(box, [&](std::uint32_t id) { found.push_back(id); });
        for (const auto& [id, other] : m_boxes) {
            if (box.Overlaps(other)) {
                expected.push_back(id);
            }
        }
        std::sort(found.begin(), found.end());
        EXPECT_EQ(found, expected);
        EXPECT_EQ(m_tree.Count(), m_boxes.size());
        return found.size();
    }

    std::mt19937 m_random{7};
    DynamicTree m_tree;
    std::map<std::uint32_t, FloatBox> m_boxes;
};

TEST_F(TreeTest, AgreesWithALookAtAllBoxes) {
    std::size_t found = 0;
    int builds = 0;
    for (int step = 0; step < 6000; ++step) {
        const std::uint32_t id = static_cast<std::uint32_t>(m_random() % 300);
        if (m_boxes.count(id) != 0) {
            Remove(id);
        }
        if (step % 1500 < 1200) {  // then it is emptied for a while
            Insert(id, RandomBox(10, 3));
        }
        if (m_tree.WantsBuild()) {
            m_tree.Build();
            ++builds;
        }
        found += ExpectRight(RandomBox(10, 4));
    }
    EXPECT_GT(found, 5000u);
    EXPECT_LT(found, 300000u);
    EXPECT_GT(builds, 5);
    m_tree.Clear();
    m_boxes.clear();
    ExpectRight(RandomBox(10, 4));
    Insert(3, RandomBox(1, 1));
    ExpectRight(RandomBox(10, 10));
}

TEST_F(TreeTest, EmptyAndSingle) {
    EXPECT_EQ(ExpectRight(RandomBox(1, 1)), 0u);
    m_tree.Build();
    EXPECT_EQ(ExpectRight(RandomBox(1, 1)), 0u);
    Insert(5, {{0, 0, 0}, {1, 1, 1}});
    EXPECT_EQ(ExpectRight({{1, 1, 1}, {2, 2, 2}}), 1u);
    EXPECT_EQ(ExpectRight({{std::nextafter(1.0f, 2.0f), 1, 1}, {2, 2, 2}}), 0u);
    Remove(5);
    EXPECT_EQ(ExpectRight({{1, 1, 1}, {2, 2, 2}}), 0u);
}

// Each of these makes a careless tree as deep as it has items: with so many of them, one that
// recursed would crash, and one of quadratic cost not end.
TEST_F(TreeTest, LinesOfItemsAndEqualItems) {
    constexpr std::uint32_t kMany = 50000;
    for (const BoxOfNumber& boxOf : AwkwardBoxes()) {
        m_tree = DynamicTree();
        m_boxes.clear();
        for (std::uint32_t id = 0; id < kMany; ++id) {
            Insert(id, boxOf(id));
        }
        ExpectRight({{10, 0, 0}, {20, 0, 0}});
        m_tree.Build();
        ExpectRight({{1, 2, 3}, {1, 2, 3}});
        for (std::uint32_t id = 0; id < kMany; id += 1 + id % 2) {
            Remove(id);
        }
        ExpectRight({{10, 0, 0}, {1000, 1000, 1000}});
    }
}

TEST_F(TreeTest, EndsOfTheRangeOfFloat) {
    std::uint32_t id = 0;
    for (const float a : {-kMost, -1e30f, 0.0f, 1e-45f, 1e30f, kMost}) {
        for (const float b : {-kMost, -1e-45f, 0.0f, 1e38f, kMost}) {
            const float low = std::min(a, b), high = std::max(a, b);
            Insert(id++, {{low, low, a}, {high, high, a}});
            Insert(id++, FloatBox{{a, b, a}, {a, b, a}}.Grown(0.1f));
        }
    }
    const FloatBox everything{{-kMost, -kMost, -kMost}, {kMost, kMost, kMost}};
    EXPECT_EQ(ExpectRight(everything), m_boxes.size());
    m_tree.Build();
    EXPECT_EQ(ExpectRight(everything), m_boxes.size());
    ExpectRight({{0, 0, 0}, {1, 1, 1}});
    EXPECT_TRUE(everything.Grown(0.1f).Contains(everything));
    EXPECT_TRUE(everything.Contains(everything.Grown(0.1f)));
}

TEST(FloatBox, IsAroundTheBoxAndHardlyLarger) {
    std::mt19937_64 random(11);
    std::size_t inexact = 0;
    for (int i = 0; i < 100000; ++i) {
        const double magnitude = std::ldexp(1.0, static_cast<int>(random() % 330) - 180);
        const double x = magnitude * (static_cast<double>(random() >> 11) * 0x1p-52 - 1.0);
        const FloatBox box = FloatBox::Around({{x, x, x}, {x, x, x}});
        const double lower = static_cast<double>(box.lower[0]);
        const double upper = static_cast<double>(box.upper[0]);
        inexact += lower < upper ? 1 : 0;
        if (std::fabs(x) < static_cast<double>(kMost)) {
            EXPECT_LE(lower, x);
            EXPECT_GE(upper, x);
            EXPECT_LE(static_cast<double>(std::nextafter(box.lower[0], kMost)),
                      x == lower ? kMost : upper);
        } else {
            EXPECT_EQ(box.lower[0], x > 0 ? kMost : -kMost);
            EXPECT_EQ(box.upper[0], x > 0 ? kMost : -kMost);
        }
    }
    EXPECT_GT(inexact, 50000u);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const FloatBox all = FloatBox::Around({{nan, -infinity, nan}, {nan, infinity, nan}});
    EXPECT_TRUE(all.Contains({{-kMost, -kMost, -kMost}, {kMost, kMost, kMost}}));
}

// The probe's comparisons are written for the machine; here they meet the plain ones on all sides.
TEST(BoxProbe, AnswersAsTheBoxDoes) {
    const FloatBox box{{0, 0, 0}, {2, 2, 2}};
    std::size_t hits = 0;
    for (const float bound : {-kMost, -1.0f, 0.0f, 1.0f, 2.0f, 3.0f, kMost}) {
        for (int axis = 0; axis < 3; ++axis) {
            for (const float other : {1.0f, kMost}) {
                FloatBox lower{{1, 1, 1}, {other, other, other}};
                lower.lower[axis] = bound;
                lower.upper[axis] = std::max(other, bound);
                FloatBox upper{{-other, -other, -other}, {1, 1, 1}};
                upper.upper[axis] = bound;
                upper.lower[axis] = std::min(-other, bound);
                for (const FloatBox& b : {lower, upper}) {
                    EXPECT_EQ(BoxProbe(box).Overlaps(b), box.Overlaps(b));
                    EXPECT_EQ(BoxProbe(b).Overlaps(box), box.Overlaps(b));
                    hits += box.Overlaps(b) ? 1 : 0;
                }
            }
        }
    }
    EXPECT_GT(hits, 30u);
}

}  // namespace
