#include "Fakes.h"

namespace {

class Restructure : public DisplayedScene {
  protected:
    Restructure() : a(NewGroup(root.get(), "a")), b(NewGroup(root.get(), "b")) {
        a->SetPosition(10, 0, 0);
        box = NewBox(a, "box");
        box->SetPosition(1, 0, 0);
    }
    float WorldX(const CSceneObject* object) {
        MAV_matrix world;
        object->GetWorldMatrix(world);
        return world[3];
    }

    CGroup* a;
    CGroup* b;
    CSceneObject* box;
};

TEST_F(Restructure, AClonedGroupStandsByItself) {
    CGroup* const child = NewGroup(a, "child");
    NewBox(child);
    box->AddKeyState(0, nullptr, nullptr, nullptr, false);
    a->SetColor(0, 1, 0, 1, false, 1);
    a->SetActiveSurface(1, false);
    a->SetViewVisibility(3, true);
    b->SetPosition(100, 0, 0);
    a->SetClearance(3);

    CGroup* const first = a->Clone(false, b, "copy");
    CGroup* const second = a->Clone(true, b, "copy");
    EXPECT_EQ(first->Label() + second->Label(), "copycopy_1");
    EXPECT_TRUE(second->Children().empty());
    EXPECT_EQ(second->ActiveSurface(), 1);
    const CSceneObject* const copy = second->Objects().begin()->second.get();
    EXPECT_EQ(WorldX(copy), 111);
    EXPECT_EQ(copy->ActiveSurface(), 1);
    float r, g, bl;
    copy->Surface(1).GetColor(&r, &g, &bl, nullptr);
    EXPECT_EQ(g, 1);
    EXPECT_FALSE(copy->IsAnimated());
    EXPECT_EQ(copy->Motion(), nullptr);
    EXPECT_FALSE(collision.Holds(first->Objects().begin()->second.get()));
    EXPECT_EQ(collision.members.at(copy->Id()).margin, 0);
    EXPECT_EQ(collision.members.at(copy->Id()).matrix[3], 111);
    EXPECT_TRUE(display.views.at(copy->Id())[3]);
    EXPECT_EQ(b->SubtreePrimitiveCount(), 2);
    EXPECT_EQ(root->SubtreePrimitiveCount(), 4);
    a->Clone(true, child, "");
    EXPECT_EQ(root->SubtreePrimitiveCount(), 5);
}

TEST_F(Restructure, ALabelMeansTheNewestCloneUntilAnyOfThemGoes) {
    CSceneObject* const clone = box->Clone(b);
    EXPECT_EQ(IdOf("box"), clone->Id());
    CGroup* const group = a->Clone(false, b, "");
    EXPECT_EQ(IdOf("box"), group->Objects().begin()->first);
    CSceneObject::Destroy(box);
    EXPECT_EQ(IdOf("box"), -1);
    EXPECT_EQ(clone->Label(), "box");
    CSceneObject* const again = clone->Clone(a);
    EXPECT_EQ(IdOf("box"), again->Id());
}

TEST_F(Restructure, RecursiveClonesNameWhatTheHostAsksFor) {
    CGroup* const c = NewGroup(a, "c");
    CGroup* const d = NewGroup(c, "d");
    NewGroup(a, "e");
    NewBox(d);
    NewBox(d);
    const int ids[4] = {d->Id(), c->Id(), 999, d->Id()};
    const char* const labels[4] = {"new d", nullptr, "x", "y"};
    int newIds[4] = {-1, -1, -1, -1};
    CGroup* const copy = CGroup::CloneRecursive(a, newIds, b, 4, ids, labels);
    EXPECT_EQ(copy->Label(), "");
    EXPECT_EQ(copy->Children().size(), 2u);
    EXPECT_EQ(newIds[2], -1);
    EXPECT_EQ(newIds[3], -1);
    EXPECT_EQ(g_groups.at(newIds[0])->Label(), "new d");
    EXPECT_EQ(g_groups.at(newIds[0])->Parent(), g_groups.at(newIds[1]));
    EXPECT_EQ(g_groups.at(newIds[1])->Label(), "");
    EXPECT_EQ(g_groups.at(newIds[0])->OwnPrimitiveCount(), 2);
    EXPECT_EQ(copy->SubtreePrimitiveCount(), 3);
    EXPECT_EQ(b->SubtreePrimitiveCount(), 3);
    EXPECT_FALSE(copy->IsCollisionCapable());
    CGroup::CloneRecursive(c, nullptr, b, 0, nullptr, nullptr);
    EXPECT_EQ(b->SubtreePrimitiveCount(), 5);
}

TEST_F(Restructure, AMovedGroupTakesItsPlaceUnderTheNewParent) {
    CGroup* const c = NewGroup(a, "c", true);
    CSceneObject* const below = NewBox(c);
    b->SetPosition(0, 5, 0);
    b->SetViewVisibility(0, false);
    c->MoveTo(b);
    EXPECT_EQ(c->Parent(), b);
    EXPECT_EQ(collision.members.at(below->Id()).matrix, b->WorldMatrix());
    EXPECT_EQ(a->SubtreePrimitiveCount(), 1);
    EXPECT_EQ(b->SubtreePrimitiveCount(), 1);
    EXPECT_EQ(root->SubtreePrimitiveCount(), 2);
    EXPECT_TRUE(c->IsVisibleInView(0));
    c->MoveTo(b);
    EXPECT_EQ(b->SubtreePrimitiveCount(), 1);
    EXPECT_EQ(b->Children().size(), 1u);
}

TEST_F(Restructure, AMovedObjectFollowsItsNewGroup) {
    CGroup* const incapable = NewGroup(root.get(), "", false);
    incapable->SetViewVisibility(1, true);
    b->SetPosition(0, 5, 0);
    box->MoveTo(b);
    EXPECT_EQ(box->Group(), b);
    EXPECT_EQ(collision.members.at(box->Id()).responseClass, b->ResponseClass());
    EXPECT_EQ(collision.members.at(box->Id()).matrix[7], 5);
    EXPECT_EQ(a->OwnPrimitiveCount(), 0);
    EXPECT_EQ(b->OwnPrimitiveCount(), 1);
    box->MoveTo(incapable);
    EXPECT_FALSE(box->IsInCollisionWorld());
    EXPECT_TRUE(display.views.at(box->Id())[1]);
    box->MoveTo(incapable);
    box->MoveTo(a);
    EXPECT_EQ(collision.members.at(box->Id()).matrix[3], 11);
    EXPECT_EQ(root->SubtreePrimitiveCount(), 1);
    EXPECT_EQ(IdOf("box"), box->Id());
}

}  // namespace
