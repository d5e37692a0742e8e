#include <functional>
#include <new>
#include <sstream>

#include "AllocationProbe.h"
#include "Fakes.h"
#include "model/PolygonGroup.h"
#include "model/Polyline.h"
#include "model/Tetrahedron.h"
#include "model/Triangles.h"

namespace {

constexpr int kCounts[2] = {3, 4};
constexpr float kVertices[21] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 0, 1, 1, 1, 1, 0, 1, 1};

/// Lets every allocation of an operation fail in turn, and compares all that can be seen of the
/// scene with how it was before.
class Failure : public DisplayedScene {
  protected:
    Failure() : a(NewGroup(root.get(), "a")), b(NewGroup(a, "a")) {
        box =
            CreateObject<CBox>(a, "box with a label that no string keeps inside", 1.0f, 1.0f, 1.0f);
        CreateObject<CTetrahedron>(b, "tetra", &kVertices[0]);
        CreateObject<CPolyline>(b, "", 2, kCounts, &kVertices[0]);
        NewBox(b, "twin")->Clone(b);
        other = NewGroup(root.get(), "other", false);
        other->SetViewVisibility(2, true);
        NewBox(other)->SetPosition(1, 2, 3);
        NewBox(other);
    }

    std::string Describe() {
        std::ostringstream text;
        text << "ids " << g_nextGroupId << ' ' << g_nextObjectId << " labels " << g_labels.Size()
             << " materials " << display.materials.size() << " drawables " << display.drawables
             << " animated " << g_animatedGroups.size() << ' ' << g_animatedObjects.size();
        for (const auto& [id, group] : g_groups) {
            text << "\ngroup " << id << ' ' << group->Label() << '=' << IdOf(group->Label()) << ' '
                 << group->OwnPrimitiveCount() << ' ' << group->SubtreePrimitiveCount() << " class "
                 << group->ResponseClass() << " children " << group->Children().size()
                 << " objects " << group->Objects().size();
            DescribeOwner(*group, text);
        }
        for (const auto& [id, object] : g_objects) {
            text << "\nobject " << id << ' ' << object->Label() << '=' << IdOf(object->Label())
                 << " in " << object->Group()->Id() << " owned "
                 << object->Group()->Objects().count(id);
            DescribeOwner(*object, text);
            const auto member = collision.members.find(id);
            if (member != collision.members.end())
                text << " class " << member->second.responseClass;
            for (const bool visible : display.views.at(id))
                text << (visible ? " +" : " -");
        }
        for (const auto& [id, row] : panel.rows)
            text << "\nrow " << id << ' ' << row;
        return text.str();
    }

    void Sweep(const char* name, const std::function<void()>& operation) {
        SCOPED_TRACE(name);
        long failures = 0;
        for (;; ++failures) {
            const std::string before = Describe();
            const std::size_t bytes = allocation::LiveBytes();
            allocation::FailAt(failures + 1);
            bool failed = false;
            try {
                operation();
            } catch (const std::bad_alloc&) {
                failed = true;
            }
            allocation::CallOff();
            if (!failed)
                break;
            ASSERT_EQ(Describe(), before) << "after failure of allocation " << failures + 1;
            // The first free candidates of labels may stay.
            ASSERT_LE(allocation::LiveBytes(), bytes + 256 + before.size());
        }
        // An operation without an allocation would have shown nothing.
        EXPECT_GT(failures, 0);
    }

    CGroup* a;
    CGroup* b;
    CGroup* other;
    CSceneObject* box;

  private:
    template <class Owner>
    static void DescribeOwner(const Owner& owner, std::ostream& text) {
        text << " active " << owner.ActiveSurface();
        for (int i = 0; i < kSurfaceCount; ++i)
            text << ' ' << owner.Surface(i).PaletteIndex();
        text << (owner.IsAnimated() ? " animated" : " still");
        if (owner.Motion())
            text << " keys " << owner.Motion()->Keys().size();
    }
};

TEST_F(Failure, OfCreationsChangesNothing) {
    Sweep("group", [this] { CGroup::Create(a, true, "a", false); });
    Sweep("box", [this] { NewBox(b, "a label that is longer than a string keeps inside"); });
    Sweep("polygon group", [this] {
        CreateObject<CPolygonGroup>(a, "polygons", 2, kCounts, &kVertices[0], &kVertices[0]);
    });
    Sweep("triangles", [this] { CreateObject<CTriangles>(a, "", 2, &kVertices[0]); });
    Sweep("tetrahedron", [this] { CreateObject<CTetrahedron>(a, "", &kVertices[0]); });
    Sweep("polyline", [this] { CreateObject<CPolyline>(b, "", 2, kCounts, &kVertices[0]); });
}

TEST_F(Failure, OfCopiesChangesNothing) {
    Sweep("object", [this] { box->Clone(other); });
    Sweep("group", [this] { b->Clone(true, other, "a"); });
    int newIds[2] = {-1, -1};
    const int ids[2] = {b->Id(), a->Id()};
    const char* const labels[2] = {"a", "other"};
    Sweep("subtree", [&] {
        EXPECT_EQ(newIds[0], -1);
        CGroup::CloneRecursive(a, newIds, other, 2, ids, labels);
    });
    EXPECT_NE(newIds[0], -1);
}

TEST_F(Failure, OfChangesChangesNothing) {
    Sweep("capability", [this] { other->SetCollisionCapability(true); });
    other->SetCollisionCapability(false);
    CSceneObject* const outside = NewBox(other);
    Sweep("move in", [&] { outside->MoveTo(a); });
    Sweep("move out", [&] { outside->MoveTo(other); });
    Sweep("colour", [this] { a->SetColor(0, 1, 0, 1, true, 0); });
    Sweep("texture", [this] { box->SetTexture(3, 1, 1, 0); });
    Sweep("group's key", [this] { a->AddKeyState(1, nullptr, nullptr, nullptr, false); });
    Sweep("object's key", [this] { box->AddKeyState(1, nullptr, nullptr, nullptr, false); });
    Sweep("cyclic", [this] { b->SetCyclic(true); });
}

TEST_F(Failure, MovementAndDestructionNeedNoMemory) {
    a->AddKeyState(1, nullptr, nullptr, nullptr, false);
    allocation::FailAt(1);
    a->SetPosition(1, 2, 3);
    box->SetOrientation(1, 2, 3);
    ApplyTimeToScene(2);
    b->MoveTo(other);
    a->ClearKeyStates();
    a->SetActiveSurface(1, true);
    a->SetCollisionCapability(false);
    a->SetClearance(1);
    CGroup::Destroy(other);
    CSceneObject::Destroy(box);
    root->Empty();
    EXPECT_TRUE(allocation::CallOff());
}

}  // namespace
