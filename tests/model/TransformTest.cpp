#include <array>
#include <cmath>
#include <random>

#include "Fakes.h"

namespace {

using Matrix = std::array<double, 16>;

Matrix Product(const Matrix& a, const Matrix& b) {
    Matrix c{};
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t j = 0; j < 4; ++j) {
            for (std::size_t k = 0; k < 4; ++k)
                c[4 * i + j] += a[4 * i + k] * b[4 * k + j];
        }
    }
    return c;
}

constexpr Matrix kIdentity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

/// What a node was last told, and the matrix that follows from it, all in double.
struct Reference {
    float pos[3] = {0, 0, 0};
    float angles[3] = {0, 0, 0};
    float scale[3] = {1, 1, 1};

    Matrix Local() const {
        const double cx = std::cos(angles[0]), sx = std::sin(angles[0]);
        const double cy = std::cos(angles[1]), sy = std::sin(angles[1]);
        const double cz = std::cos(angles[2]), sz = std::sin(angles[2]);
        const Matrix x{1, 0, 0, 0, 0, cx, -sx, 0, 0, sx, cx, 0, 0, 0, 0, 1};
        const Matrix y{cy, 0, sy, 0, 0, 1, 0, 0, -sy, 0, cy, 0, 0, 0, 0, 1};
        const Matrix z{cz, -sz, 0, 0, sz, cz, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        Matrix place = kIdentity;
        Matrix scaling = kIdentity;
        for (std::size_t i = 0; i < 3; ++i) {
            place[4 * i + 3] = pos[i];
            scaling[5 * i] = scale[i];
        }
        return Product(Product(place, Product(y, Product(x, z))), scaling);
    }
};

class Transforms : public HeadlessScene {
  protected:
    float In(float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    }
    template <class Node>
    void Change(Node& node, Reference& reference) {
        switch (random() % 3) {
            case 0:
                for (float& v : reference.pos)
                    v = In(-10, 10);
                node.SetPosition(reference.pos[0], reference.pos[1], reference.pos[2]);
                break;
            case 1:
                for (float& v : reference.angles)
                    v = In(0, 6.2831855f);
                node.SetOrientation(reference.angles[0], reference.angles[1], reference.angles[2]);
                break;
            default:
                for (float& v : reference.scale)
                    v = In(0.5f, 1.5f);
                node.SetScaling(reference.scale[0], reference.scale[1], reference.scale[2]);
        }
    }

    std::mt19937 random{11};
};

TEST_F(Transforms, WorldMatricesAreTheProductOfAllAbove) {
    std::vector<CGroup*> groups{root.get()};
    std::vector<std::size_t> parents{0};
    std::vector<CSceneObject*> boxes{nullptr};
    std::vector<Reference> groupReferences(1), boxReferences(1);
    for (std::size_t i = 1; i < 40; ++i) {
        parents.push_back(random() % i);
        groups.push_back(NewGroup(groups[parents[i]]));
        boxes.push_back(NewBox(groups[i]));
        groupReferences.emplace_back();
        boxReferences.emplace_back();
    }
    for (int step = 0; step < 600; ++step) {
        const std::size_t i = 1 + random() % 39;
        if (random() % 2)
            Change(*groups[i], groupReferences[i]);
        else
            Change(*boxes[i], boxReferences[i]);
    }
    for (std::size_t i = 1; i < 40; ++i) {
        Matrix expected = boxReferences[i].Local();
        for (std::size_t g = i; g != 0; g = parents[g])
            expected = Product(groupReferences[g].Local(), expected);
        const MAV_matrix& actual = collision.members.at(boxes[i]->Id()).matrix;
        double size = 1;
        for (const double v : expected)
            size = std::max(size, std::abs(v));
        for (std::size_t k = 0; k < 16; ++k)
            EXPECT_NEAR(actual[k], expected[k], 3e-6 * size) << "box " << i << " element " << k;
    }
}

TEST_F(Transforms, ScaleOfAGroupScalesPlacesBelow) {
    CGroup* const group = NewGroup(root.get());
    CSceneObject* const box = NewBox(group);
    box->SetPosition(1, 0, 0);
    group->SetPosition(10, 0, 0);
    group->SetScaling(2, 2, 2);
    MAV_matrix world;
    box->GetWorldMatrix(world);
    EXPECT_EQ(mav_matrixXYZGet(world), (MAV_vector{12, 0, 0}));
    group->SetScaling(1, 1, 1);
    box->GetWorldMatrix(world);
    EXPECT_EQ(mav_matrixXYZGet(world), (MAV_vector{11, 0, 0}));
}

TEST_F(Transforms, RotationsKeepThePlace) {
    CGroup* const group = NewGroup(root.get());
    group->SetPosition(1, 2, 3);
    group->SetOrientation(0, 1.5707964f, 0);
    EXPECT_EQ(group->PoseMatrix()[2], 1);
    EXPECT_EQ(group->PoseMatrix()[8], -1);
    EXPECT_EQ(mav_matrixXYZGet(group->PoseMatrix()), (MAV_vector{1, 2, 3}));
    group->SetQuaternion(0, 0, 0, 1);
    EXPECT_EQ(group->PoseMatrix(), mav_matrixXYZSet(MAV_ID_MATRIX, {1, 2, 3}));
}

TEST_F(Transforms, APlaceThatIsNoNumberCanBeLeftAgain) {
    CGroup* const group = NewGroup(root.get());
    CSceneObject* const box = NewBox(group);
    const float nan = std::nanf("");
    for (const bool onGroup : {true, false}) {
        for (int i = 0; i < 2; ++i) {
            if (onGroup) {
                group->SetQuaternion(nan, i ? 0 : nan, 0, 1);
                group->SetScaling(nan, 1, 1);
                group->SetPosition(nan, nan, 0);
                group->SetPosition(1, 2, 3);
                group->SetScaling(1, 1, 1);
                group->SetQuaternion(0, 0, 0, 1);
            } else {
                box->SetQuaternion(nan, i ? 0 : nan, 0, 1);
                box->SetScaling(nan, 1, 1);
                box->SetPosition(0, 0, 0);
                box->SetScaling(1, 1, 1);
                box->SetQuaternion(0, 0, 0, 1);
            }
        }
    }
    EXPECT_EQ(collision.members.at(box->Id()).matrix, mav_matrixXYZSet(MAV_ID_MATRIX, {1, 2, 3}));
}

TEST_F(DisplayedScene, ChangesReachTheDisplayFirstAndChildrensObjectsFirst) {
    CGroup* const group = NewGroup(root.get());
    CSceneObject* const own = NewBox(group);
    CGroup* const child = NewGroup(group);
    CSceneObject* const below = NewBox(child);
    CSceneObject* const later = NewBox(group);
    ASSERT_EQ(own->Id(), 0);
    ASSERT_EQ(below->Id(), 1);
    ASSERT_EQ(later->Id(), 2);
    collision.log.clear();
    group->SetPosition(1, 0, 0);
    EXPECT_EQ(collision.log, "d1c1d0c0d2c2");
}

TEST_F(DisplayedScene, MovingManyObjectsLetsFramesInBetweenAndAsksForOneAtTheEnd) {
    CGroup* const group = NewGroup(root.get());
    for (int i = 0; i < 4001; ++i)
        NewBox(group);
    const int before = display.frameLocksTaken;
    const int redraws = display.redraws;
    group->SetPosition(1, 0, 0);
    EXPECT_EQ(display.frameLocksTaken, before + 3);
    EXPECT_EQ(display.redraws, redraws + 1);
    EXPECT_EQ(display.frameLocks, 0);
}

}  // namespace
