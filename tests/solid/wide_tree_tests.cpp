#include "platform/solid/WideTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

#include "awkward_boxes.h"

using namespace solid;

namespace {

constexpr float kMost = std::numeric_limits<float>::max();

QueryVolume Plain(const FloatBox& box) {
    QueryVolume volume;
    volume.box = box;
    return volume;
}

class WideTreeTest : public testing::TestWithParam<WideTree::How> {
  protected:
    float Value(float from, float to) {
        return from + (to - from) * (static_cast<float>(m_random() >> 8) / 16777216.0f);
    }
    FloatBox RandomBox(float range, float size) {
        FloatBox box;
        for (int i = 0; i < 3; ++i) {
            box.lower[i] = Value(-range, range);
            box.upper[i] = box.lower[i] + Value(0, size);
        }
        return box;
    }
    void Build() {
        std::vector<TreeItem> items;
        for (const auto& [id, box] : m_boxes) {
            m_tree.Reserve(id + 1);
            items.push_back({box, id, 0});
        }
        m_tree.Build(items, GetParam());
        EXPECT_EQ(m_tree.BuiltCount(), m_boxes.size());
    }
    void Remove(std::uint32_t id) {
        m_tree.Remove(id);
        m_boxes.erase(id);
    }
    std::vector<std::uint32_t> Found(const QueryVolume& volume) const {
        std::vector<std::uint32_t> found;
        m_tree.Query(volume, [&](std::uint32_t id) { found.push_back(id); });
        std::sort(found.begin(), found.end());
        return found;
    }
    /// The ids found, each once; compared with a look at all boxes.
    std::size_t ExpectRight(const FloatBox& box) {
        std::vector<std::uint32_t> expected;
        for (const auto& [id, other] : m_boxes) {
            if (box.Overlaps(other)) {
                expected.push_back(id);
            }
            EXPECT_TRUE(m_tree.Has(id));
        }
        EXPECT_EQ(Found(Plain(box)), expected);
        EXPECT_EQ(m_tree.Count(), m_boxes.size());
        return expected.size();
    }

    std::mt19937 m_random{7};
    WideTree m_tree;
    std::map<std::uint32_t, FloatBox> m_boxes;
};

INSTANTIATE_TEST_SUITE_P(How, WideTreeTest,
                         testing::Values(WideTree::How::kFast, WideTree::How::kClosely));

TEST_P(WideTreeTest, AgreesWithALookAtAllBoxes) {
    std::size_t found = 0;
    ExpectRight(RandomBox(10, 4));
    for (std::uint32_t count = 0; count < 1000; count += 1 + count / 16) {
        m_boxes.clear();
        for (std::uint32_t i = 0; i < count; ++i) {
            m_boxes[3 * i + 1] = RandomBox(10, 3);
        }
        Build();
        found += ExpectRight(RandomBox(10, 8));
        for (auto& [id, box] : m_boxes) {
            if (m_random() % 3 != 0) {
                box = RandomBox(12, 3);
                m_tree.SetBox(id, box);
                EXPECT_TRUE(m_tree.Box(id).Contains(box) && box.Contains(m_tree.Box(id)));
            }
        }
        m_tree.Refit();
        found += ExpectRight(RandomBox(10, 8));
        for (std::uint32_t i = 0; i < count; i += 1 + static_cast<std::uint32_t>(m_random() % 2)) {
            Remove(3 * i + 1);
            EXPECT_FALSE(m_tree.Has(3 * i + 1));
        }
        m_tree.Refit();
        found += ExpectRight({{-9, -9, -9}, {9, 9, 9}});
        std::vector<TreeItem> items;
        m_tree.Collect(items);
        EXPECT_EQ(items.size(), m_boxes.size());
        while (!m_boxes.empty()) {
            Remove(m_boxes.begin()->first);
        }
        ExpectRight(RandomBox(10, 8));
    }
    EXPECT_GT(found, 500u);
}

TEST_P(WideTreeTest, TellsWhenAMoveHasMadeItWorse) {
    for (std::uint32_t id = 0; id < 500; ++id) {
        m_boxes[id] = RandomBox(100, 1);
    }
    Build();
    m_tree.Refit();
    EXPECT_FALSE(m_tree.IsWorn());
    for (auto& [id, box] : m_boxes) {
        box = RandomBox(100, 1);
        m_tree.SetBox(id, box);
    }
    m_tree.Refit();
    EXPECT_TRUE(m_tree.IsWorn());
    ExpectRight(RandomBox(100, 20));
}

// Each of these makes a careless tree deep, or puts all items into one cell of a grid.
TEST_P(WideTreeTest, LinesOfItemsAndEqualItems) {
    for (const BoxOfNumber& boxOf : AwkwardBoxes()) {
        m_boxes.clear();
        for (std::uint32_t id = 0; id < 20000; ++id) {
            m_boxes[id] = boxOf(id);
        }
        Build();
        ExpectRight({{10, 0, 0}, {20, 0, 0}});
        ExpectRight({{1, 2, 3}, {1, 2, 3}});
        ExpectRight({{10, 0, 0}, {1000, 1000, 1000}});
    }
}

TEST_P(WideTreeTest, EndsOfTheRangeOfFloat) {
    for (const float a : {-kMost, -1e30f, 0.0f, 1e-45f, 1e30f, kMost}) {
        for (const float b : {-kMost, -1e-45f, 0.0f, 1e38f, kMost}) {
            const float low = std::min(a, b), high = std::max(a, b);
            const auto id = static_cast<std::uint32_t>(m_boxes.size());
            m_boxes[id] = {{low, low, a}, {high, high, a}};
            m_boxes[id + 1] = FloatBox{{a, b, a}, {a, b, a}}.Grown(0.1f);
        }
    }
    const FloatBox everything{{-kMost, -kMost, -kMost}, {kMost, kMost, kMost}};
    Build();
    EXPECT_EQ(ExpectRight(everything), m_boxes.size());
    ExpectRight({{0, 0, 0}, {1, 1, 1}});
    Remove(4);
    Remove(5);
    m_tree.Refit();
    EXPECT_EQ(ExpectRight(everything), m_boxes.size());
}

/// Whether a segment grown by a radius on all sides meets a box, by an interval along the segment.
bool Meets(const Vec3& middle, const Vec3& half, double radius, const FloatBox& box) {
    double from = -1, to = 1;
    for (int a = 0; a < 3; ++a) {
        const double lower = static_cast<double>(box.lower[a]) - radius - middle[a];
        const double upper = static_cast<double>(box.upper[a]) + radius - middle[a];
        if (half[a] == 0) {
            if (lower > 0 || upper < 0) {
                return false;
            }
            continue;
        }
        from = std::max(from, std::min(lower / half[a], upper / half[a]));
        to = std::min(to, std::max(lower / half[a], upper / half[a]));
    }
    return from <= to;
}

// A slanted volume hides nothing that the segment meets, and most of what only its box does.
TEST_P(WideTreeTest, SegmentsFindWhatTheyMeet) {
    std::size_t found = 0, met = 0, inBox = 0;
    for (const double scale : {1.0, 1e-30, 1e25, 1e36}) {
        m_boxes.clear();
        const auto size = static_cast<float>(scale);
        for (std::uint32_t id = 0; id < 2000; ++id) {
            m_boxes[id] = RandomBox(50 * size, 4 * size);
        }
        Build();
        for (int i = 0; i < 300; ++i) {
            const float reach = (i % 3 == 0 ? 100 : i % 3 == 1 ? 10 : 1) * size;
            Vec3 middle, half;
            for (int a = 0; a < 3; ++a) {
                middle[a] = static_cast<double>(Value(-50 * size, 50 * size));
                half[a] = static_cast<double>(m_random() % 5 == 0 ? 0 : Value(-reach, reach));
            }
            const double radius = i % 2 == 0 ? 0 : static_cast<double>(Value(0, size));
            QueryVolume volume;
            Aabb box;
            box.Include(middle - half);
            box.Include(middle + half);
            box.Grow(radius);
            volume.box = FloatBox::Around(box);
            volume.Narrow(middle, half, radius);
            const std::vector<std::uint32_t> ids = Found(volume);
            found += ids.size();
            for (const auto& [id, other] : m_boxes) {
                const bool isFound = std::binary_search(ids.begin(), ids.end(), id);
                const bool isMet = Meets(middle, half, radius, other);
                EXPECT_TRUE(isFound || !isMet);
                EXPECT_TRUE(!isFound || volume.box.Overlaps(other));
                met += isMet ? 1 : 0;
                inBox += volume.box.Overlaps(other) ? 1 : 0;
            }
        }
    }
    EXPECT_GT(met, 500u);
    EXPECT_GT(inBox, 10 * met);
#if defined(__SSE2__)
    EXPECT_LT(found, inBox / 2);
#endif
}

}  // namespace
