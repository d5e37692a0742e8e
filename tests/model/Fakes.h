#pragma once

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "AllocationProbe.h"
#include "model/Box.h"
#include "model/Group.h"
#include "model/Registries.h"
#include "model/SceneObject.h"
#include "model/neighbours.h"

/// A collision world of real shapes and objects that notes what it holds.
class FakeCollision : public CCollisionNeighbour {
  public:
    struct Member {
        int responseClass;
        MAV_matrix matrix;
        float margin;
    };

    int GenResponseClass() override { return m_nextClass++; }
    void ReleaseResponseClass(int responseClass) noexcept override {
        for (const auto& [id, member] : members)
            EXPECT_NE(member.responseClass, responseClass) << "of object " << id;
    }
    void AddObject(CSceneObject* object) override {
        EXPECT_NE(object->SolidShape(), nullptr);
        Member member{object->Group()->ResponseClass(), {}, 0};
        object->GetWorldMatrix(member.matrix);
        members.emplace(object->Id(), member);
        try {
            object->SetSolidObject(DT_CreateObject(object, object->SolidShape()));
        } catch (...) {
            members.erase(object->Id());
            throw;
        }
    }
    void RemoveObject(CSceneObject* object) noexcept override {
        EXPECT_EQ(members.erase(object->Id()), 1u);
        DT_DestroyObject(object->SolidObject());
        DT_DeleteShape(object->SolidShape());
    }
    void UpdateObject(CSceneObject* object, const MAV_matrix& world) noexcept override {
        members.at(object->Id()).matrix = world;
        const allocation::Immune immune;
        log.append("c").append(std::to_string(object->Id()));
    }
    void UpdateResponseClass(CSceneObject* object) noexcept override {
        members.at(object->Id()).responseClass = object->Group()->ResponseClass();
    }
    void SetObjectMargin(CSceneObject* object, float margin) noexcept override {
        members.at(object->Id()).margin = margin;
    }

    bool Holds(const CSceneObject* object) const { return members.count(object->Id()) == 1; }

    std::map<int, Member> members;
    std::string log;

  private:
    int m_nextClass = 0;
};

struct MAV_object {
    MAV_class shape;
    void* record;
};

/// A display without windows.
class FakeDisplay : public CDisplayNeighbour {
  public:
    explicit FakeDisplay(std::string& log) : m_log(log) {}

    MAV_object* NewObject(MAV_class shape, void* record) override {
        auto object = std::make_unique<MAV_object>(MAV_object{shape, record});
        ++drawables;
        return object.release();
    }
    void DeleteObject(MAV_object* object) noexcept override {
        const std::unique_ptr<MAV_object> owner(object);
        --drawables;
    }
    void AddObject(CSceneObject* object) override {
        EXPECT_NE(object->MavObject(), nullptr);
        views[object->Id()] = Views(*object->Group());
        MAV_matrix world;
        object->GetWorldMatrix(world);
        LockFrame();
        UpdateObjectMatrix(object, world);
        UnlockFrame();
    }
    void RemoveObject(CSceneObject* object) noexcept override {
        EXPECT_EQ(views.erase(object->Id()), 1u);
    }
    void MoveObject(CSceneObject* object, const CGroup& former) override {
        EXPECT_EQ(views.at(object->Id()), Views(former));
        // Stands for the lists' need of memory.
        const auto token = std::make_unique<int>(0);
        views.at(object->Id()) = Views(*object->Group());
    }
    void UpdateObjectMatrix(CSceneObject* object, const MAV_matrix& world) noexcept override {
        EXPECT_GT(frameLocks, 0) << "of object " << object->Id();
        object->SetDisplayMatrix(world);
        const allocation::Immune immune;
        m_log.append("d").append(std::to_string(object->Id()));
    }
    void Redraw() noexcept override { ++redraws; }
    void LockFrame() noexcept override {
        ++frameLocks;
        ++frameLocksTaken;
    }
    void UnlockFrame() noexcept override { --frameLocks; }
    int NewMaterial(float r, float g, float b, float a) override {
        materials[m_nextMaterial] = {r, g, b, a};
        return m_nextMaterial++;
    }
    void ReleaseMaterial(int index) noexcept override { EXPECT_EQ(materials.erase(index), 1u); }
    void GetMaterial(int index, float* r, float* g, float* b, float* a) noexcept override {
        const auto& colour = materials.at(index);
        *r = colour[0];
        *g = colour[1];
        *b = colour[2];
        *a = colour[3];
    }
    void SetMaterialAlpha(int index, float alpha) override { materials.at(index)[3] = alpha; }
    void SetTextureAlpha(int, float) override {}
    void ShowGroup(CGroup*, int) override {}
    void HideGroup(CGroup*, int) override {}
    void ApplyViewTime(int, float) override {}

    static std::array<bool, kViewCount> Views(const CGroup& group) {
        std::array<bool, kViewCount> views;
        for (int i = 0; i < kViewCount; ++i)
            views[static_cast<std::size_t>(i)] = group.IsVisibleInView(i);
        return views;
    }

    std::map<int, std::array<bool, kViewCount>> views;
    std::map<int, std::array<float, 4>> materials;
    int drawables = 0;
    int frameLocks = 0;
    int frameLocksTaken = 0;
    int redraws = 0;

  private:
    std::string& m_log;
    int m_nextMaterial = 1;
};

/// A panel that keeps one row per group, as text.
class FakePanel : public CPanelNeighbour {
  public:
    void AddGroupRow(CGroup* group, bool) noexcept override {
        if (group->Parent())
            UpdateRow(group);
    }
    void RemoveGroupRow(int groupId) noexcept override { rows.erase(groupId); }
    void UpdateGroupRow(CGroup* group) noexcept override {
        for (; group->Parent(); group = group->Parent())
            UpdateRow(group);
    }
    void SetGroupVisibleInView(CGroup*, int) noexcept override {}
    void SetTimeRange(float) noexcept override {}
    void ShowTime(float) noexcept override {}

    std::map<int, std::string> rows;

  private:
    void UpdateRow(CGroup* group) {
        // A panel must cope with a lack of memory by itself.
        const allocation::Immune immune;
        rows[group->Id()] = group->Label() + " " + std::to_string(group->OwnPrimitiveCount()) +
                            " " + std::to_string(group->SubtreePrimitiveCount()) +
                            (group->IsCollisionCapable() ? " true" : " false");
    }
};

/// A scene with a root group, without a display.
class HeadlessScene : public testing::Test {
  protected:
    HeadlessScene() {
        g_nextGroupId = 0;
        g_nextObjectId = 0;
        g_currentTime = 0;
        g_timeScaleMax = 0;
        g_collision = &collision;
        MakeRoot();
    }
    ~HeadlessScene() override {
        root.reset();
        g_collision = nullptr;
        EXPECT_TRUE(collision.members.empty());
        EXPECT_TRUE(g_groups.empty());
        EXPECT_TRUE(g_objects.empty());
        EXPECT_EQ(g_labels.Size(), 0u);
        EXPECT_TRUE(g_animatedGroups.empty());
        EXPECT_TRUE(g_animatedObjects.empty());
    }

    void MakeRoot() { root = CGroup::CreateRoot(true, "Root group"); }
    CGroup* NewGroup(CGroup* parent, const std::string& label = "", bool colCheck = true) {
        return CGroup::Create(parent, colCheck, label, false);
    }
    CSceneObject* NewBox(CGroup* group, const std::string& label = "") {
        return CreateObject<CBox>(group, label, 1.0f, 2.0f, 3.0f);
    }
    int IdOf(const std::string& label) {
        const int* const id = g_labels.Find(label);
        return id ? *id : -1;
    }

    FakeCollision collision;
    std::unique_ptr<CGroup> root;
};

/// The same with a display and a panel.
class DisplayedScene : public HeadlessScene {
  protected:
    DisplayedScene() : display(collision.log) {
        root.reset();
        g_nextGroupId = 0;
        g_visualiser = &display;
        g_controlPanel = &panel;
        MakeRoot();
    }
    ~DisplayedScene() override {
        root.reset();
        EXPECT_TRUE(display.materials.empty());
        EXPECT_TRUE(display.views.empty());
        EXPECT_EQ(display.drawables, 0);
        EXPECT_EQ(display.frameLocks, 0);
        EXPECT_TRUE(panel.rows.empty());
        g_visualiser = nullptr;
        g_controlPanel = nullptr;
    }

    FakeDisplay display;
    FakePanel panel;
};
