#include "AllocationProbe.h"
#include "Fakes.h"
#include "kestrane.h"
#include "model/Polyline.h"

namespace {

constexpr float kLine[6] = {0, 0, 0, 1, 1, 1};
constexpr int kTwo = 2;

class Tree : public HeadlessScene {
  protected:
    CSceneObject* NewLine(CGroup* group) {
        return CreateObject<CPolyline>(group, "", 1, &kTwo, kLine);
    }
    std::vector<int> ObjectIds(const CGroup& group) {
        std::vector<CSceneObject*> objects;
        group.CollectObjects(objects);
        std::vector<int> ids;
        for (const CSceneObject* object : objects)
            ids.push_back(object->Id());
        return ids;
    }
};

TEST_F(Tree, GroupsTakeIdsInOrderAndUniqueLabels) {
    EXPECT_EQ(root->Id(), 0);
    EXPECT_EQ(IdOf("Root group"), 0);
    CGroup* const a = NewGroup(root.get(), "a");
    CGroup* const b = NewGroup(a, "a");
    CGroup* const c = NewGroup(root.get(), "a");
    EXPECT_EQ(a->Label() + b->Label() + c->Label(), "aa_1a_2");
    EXPECT_EQ(IdOf("a_1"), b->Id());
    NewGroup(a);
    NewGroup(a);
    EXPECT_EQ(g_labels.Size(), 4u);
    EXPECT_EQ(g_nextGroupId, 6);
    CGroup::Destroy(b);
    EXPECT_EQ(NewGroup(a, "a")->Label(), "a_1");
    EXPECT_EQ(g_nextGroupId, 7);
}

TEST_F(Tree, DestructionTakesTheSubtreeWithItsIdsLabelsAndCounts) {
    CGroup* const keep = NewGroup(root.get(), "keep");
    NewBox(keep, "kept");
    CGroup* const a = NewGroup(keep, "a");
    CGroup* const b = NewGroup(a, "b");
    for (CGroup* group : {a, b, keep})
        NewBox(group);
    NewLine(b);
    CSceneObject* const animated = NewBox(b, "animated");
    animated->AddKeyState(0, nullptr, nullptr, nullptr, false);
    b->AddKeyState(0, nullptr, nullptr, nullptr, false);
    EXPECT_EQ(keep->SubtreePrimitiveCount(), 6);
    CGroup::Destroy(a);
    EXPECT_EQ(g_groups.size(), 2u);
    EXPECT_EQ(g_objects.size(), 2u);
    EXPECT_EQ(IdOf("b"), -1);
    EXPECT_EQ(IdOf("animated"), -1);
    EXPECT_EQ(IdOf("kept"), 0);
    EXPECT_EQ(keep->SubtreePrimitiveCount(), 2);
    EXPECT_EQ(root->SubtreePrimitiveCount(), 2);
    EXPECT_EQ(collision.members.size(), 2u);
    root->Empty();
    EXPECT_EQ(g_groups.size(), 1u);
    EXPECT_EQ(root->SubtreePrimitiveCount(), 0);
    EXPECT_EQ(NewGroup(root.get())->Id(), 4);
    EXPECT_EQ(NewBox(NewGroup(root.get()))->Id(), 6);
}

TEST_F(Tree, CollectorsGoChildrenFirst) {
    CGroup* const a = NewGroup(root.get());
    NewBox(a);
    CGroup* const b = NewGroup(a, "", false);
    CGroup* const c = NewGroup(b);
    CGroup* const d = NewGroup(a);
    for (CGroup* group : {d, c, b, a})
        NewBox(group);
    EXPECT_EQ(ObjectIds(*a), (std::vector<int>{2, 3, 1, 0, 4}));
    std::vector<int> classes;
    a->CollectResponseClasses(classes);
    EXPECT_EQ(classes,
              (std::vector<int>{c->ResponseClass(), d->ResponseClass(), a->ResponseClass()}));
    std::vector<CGroup*> groups;
    a->CollectGroups(groups);
    EXPECT_EQ(groups, (std::vector<CGroup*>{a, b, c, d}));
    EXPECT_TRUE(c->IsWithin(*a) && c->IsWithin(*c) && !a->IsWithin(*c) && !d->IsWithin(*b));
}

TEST_F(Tree, CapabilityIsTheGroupsOwn) {
    CGroup* const a = NewGroup(root.get(), "", false);
    CGroup* const b = NewGroup(a, "", false);
    CSceneObject* const boxA = NewBox(a);
    CSceneObject* const boxB = NewBox(b);
    CSceneObject* const line = NewLine(a);
    a->SetPosition(5, 0, 0);
    EXPECT_TRUE(collision.members.empty());
    a->SetCollisionCapability(true);
    EXPECT_TRUE(collision.Holds(boxA));
    EXPECT_FALSE(collision.Holds(boxB) || collision.Holds(line));
    EXPECT_EQ(collision.members.at(boxA->Id()).matrix[3], 5);
    a->SetClearance(2);
    EXPECT_EQ(collision.members.at(boxA->Id()).margin, 2);
    const int before = a->ResponseClass();
    a->SetCollisionCapability(false);
    EXPECT_TRUE(collision.members.empty());
    a->SetCollisionCapability(true);
    EXPECT_NE(a->ResponseClass(), before);
    EXPECT_EQ(collision.members.at(boxA->Id()).margin, 0);
    CSceneObject::Destroy(line);
    CSceneObject::Destroy(boxA);
    EXPECT_TRUE(collision.members.empty());
}

TEST_F(Tree, NewGroupsTakePlaceAndVisibilityOfTheirParent) {
    CGroup* const a = NewGroup(root.get());
    a->SetPosition(1, 2, 3);
    a->SetViewVisibility(2, true);
    CGroup* const b = NewGroup(a);
    EXPECT_EQ(b->WorldMatrix(), a->WorldMatrix());
    KstGroupInfo info;
    b->GetInfo(&info);
    EXPECT_TRUE(info.visibleInView[0] && !info.visibleInView[1] && info.visibleInView[2]);
    EXPECT_TRUE(info.colCheck);
    EXPECT_EQ(info.childCount + info.objectCount, 0);
    a->SetViewVisibility(0, false);
    EXPECT_FALSE(b->IsVisibleInView(0));
    EXPECT_TRUE(root->IsVisibleInView(0));
}

TEST_F(Tree, ExportNames) {
    std::string name;
    NewGroup(root.get(), "a b.c-9/\xc3\xa4")->GetExportName(name);
    EXPECT_EQ(name, "a_b_c_9/__");
    CGroup* const group = NewGroup(root.get());
    group->GetExportName(name);
    EXPECT_EQ(name, "group2");
    NewBox(group)->GetExportName(name);
    EXPECT_EQ(name, "object0");
}

TEST_F(Tree, DepthNeverReachesTheCallStack) {
    constexpr int kDepth = 100000;
    CGroup* top = NewGroup(root.get(), "top");
    CGroup* bottom = top;
    for (int i = 0; i < kDepth; ++i)
        bottom = NewGroup(bottom, "link", false);
    NewBox(bottom, "deep");
    top->SetPosition(1, 0, 0);
    EXPECT_EQ(bottom->WorldMatrix()[3], 1);
    top->SetViewVisibility(1, true);
    top->SetActiveSurface(1, true);
    top->SetColor(0, 1, 0, 1, true, 0);
    std::vector<int> classes;
    top->CollectResponseClasses(classes);
    EXPECT_EQ(classes.size(), 1u);
    EXPECT_EQ(ObjectIds(*top).size(), 1u);

    int newId = -1;
    const int wanted = bottom->Id();
    CGroup* const copy = CGroup::CloneRecursive(top, &newId, root.get(), 1, &wanted, nullptr);
    EXPECT_EQ(g_groups.at(newId)->OwnPrimitiveCount(), 1);
    EXPECT_EQ(copy->SubtreePrimitiveCount(), 1);
    EXPECT_EQ(root->SubtreePrimitiveCount(), 2);
    copy->MoveTo(bottom);
    EXPECT_EQ(top->SubtreePrimitiveCount(), 2);
    EXPECT_EQ(g_groups.at(newId)->WorldMatrix()[3], 2);
    CGroup::Destroy(top);
    EXPECT_EQ(g_groups.size(), 1u);
    EXPECT_EQ(root->SubtreePrimitiveCount(), 0);
}

TEST_F(Tree, ABoxIsSmall) {
    CGroup* const group = NewGroup(root.get(), "", false);
    constexpr std::size_t kBoxes = 10000;
    const std::size_t before = allocation::LiveBytes();
    for (std::size_t i = 0; i < kBoxes; ++i)
        NewBox(group);
    const std::size_t perBox = (allocation::LiveBytes() - before) / kBoxes;
    RecordProperty("bytes_per_box", static_cast<int>(perBox));
    EXPECT_LT(perBox, 800u);
}

TEST_F(DisplayedScene, ThePanelShowsLabelsCountsAndCapability) {
    CGroup* const a = NewGroup(root.get(), "a");
    CGroup* const b = NewGroup(a, "b", false);
    NewBox(b);
    NewBox(a);
    EXPECT_EQ(panel.rows.at(a->Id()), "a 1 2 true");
    EXPECT_EQ(panel.rows.at(b->Id()), "b 1 1 false");
    b->SetCollisionCapability(true);
    EXPECT_EQ(panel.rows.at(b->Id()), "b 1 1 true");
    b->Empty();
    EXPECT_EQ(panel.rows.at(a->Id()), "a 1 1 true");
    NewBox(b);
    CGroup* const copy = a->Clone(false, b, "copy");
    EXPECT_EQ(panel.rows.at(copy->Id()), "copy 1 1 false");
    EXPECT_EQ(panel.rows.at(a->Id()), "a 1 3 true");
    CGroup::CloneRecursive(a, nullptr, root.get(), 0, nullptr, nullptr);
    EXPECT_EQ(panel.rows.size(), 6u);
    copy->MoveTo(root.get());
    EXPECT_EQ(panel.rows.at(a->Id()), "a 1 2 true");
    const int idOfB = b->Id();
    CGroup::Destroy(b);
    EXPECT_EQ(panel.rows.at(a->Id()), "a 1 1 true");
    EXPECT_EQ(panel.rows.count(idOfB), 0u);
}

}  // namespace
