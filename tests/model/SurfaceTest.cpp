#include "Fakes.h"
#include "model/Polygon.h"

namespace {

constexpr float kTriangle[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};

class Surfaces : public DisplayedScene {
  protected:
    Surfaces()
        : group(NewGroup(root.get())),
          child(NewGroup(group)),
          box(NewBox(group)),
          boxBelow(NewBox(child)) {}

    /// Green component of what the record of the object points to; -1 for a texture.
    float Shown(const MAV_surfaceParams* params) {
        return params->mode == MAV_TEXTURE ? -1 : display.materials.at(params->material)[1];
    }
    float Shown(const CSceneObject* object) {
        return Shown(dynamic_cast<const CBox*>(object)->Record().surfaceParams);
    }
    CPolygon* NewPolygon() {
        return dynamic_cast<CPolygon*>(CreateObject<CPolygon>(group, "", 3, &kTriangle[0]));
    }

    CGroup* group;
    CGroup* child;
    CSceneObject* box;
    CSceneObject* boxBelow;
};

TEST_F(Surfaces, ColoursReachDirectObjectsAndOnDemandAllBelow) {
    group->SetColor(0, 1, 0, 1, false, 0);
    EXPECT_EQ(Shown(box), 1);
    EXPECT_EQ(Shown(boxBelow), 0);
    EXPECT_EQ(Shown(NewBox(group)), 1);
    EXPECT_EQ(Shown(NewBox(child)), 0);
    group->SetColor(0, 0.5f, 0, 1, true, 0);
    EXPECT_EQ(Shown(boxBelow), 0.5f);
    EXPECT_EQ(Shown(NewBox(child)), 0.5f);
    EXPECT_EQ(Shown(NewBox(NewGroup(group))), 0);
    // One material for each of the two surfaces of every owner, none left over.
    EXPECT_EQ(display.materials.size(), 2 * (g_groups.size() + g_objects.size()));
}

TEST_F(Surfaces, TheInactiveSurfaceWaits) {
    box->SetColor(0, 1, 0, 1, 1);
    EXPECT_EQ(Shown(box), 0);
    box->ApplySurface(1);
    EXPECT_EQ(Shown(box), 1);
    group->SetActiveSurface(0, false);
    EXPECT_EQ(Shown(box), 0);
    group->SetColor(0, 0.25f, 0, 1, true, 1);
    group->SetActiveSurface(1, false);
    EXPECT_EQ(Shown(boxBelow), 0.25f);
    EXPECT_EQ(child->ActiveSurface(), 0);
    EXPECT_EQ(Shown(NewBox(child)), 0);
    group->SetActiveSurface(1, true);
    EXPECT_EQ(Shown(NewBox(child)), 0.25f);
}

TEST_F(Surfaces, TexturesCarryTheirTiles) {
    group->SetTexture(42, 2, 3, false, 0);
    const MAV_box& record = dynamic_cast<CBox*>(box)->Record();
    EXPECT_EQ(record.surfaceParams->texture, 42);
    EXPECT_EQ(record.surfaceParams->mode, MAV_TEXTURE);
    EXPECT_EQ(record.xTile * 10 + record.yTile, 23);
    const auto copy = box->Surface(0).Clone();
    EXPECT_TRUE(copy->IsTextured());
    EXPECT_EQ(copy->YTile(), 3);
    group->SetColor(0, 1, 0, 1, false, 0);
    EXPECT_EQ(record.xTile, 0);
    EXPECT_EQ(Shown(box), 1);
}

TEST_F(Surfaces, ShapesWithoutTextureCoordinatesGoOnShowingTheirFormerColour) {
    group->SetColor(0, 0.5f, 0, 1, false, 0);
    CPolygon* const polygon = NewPolygon();
    for (int i = 0; i < 3; ++i)
        polygon->SetTexture(7, 1, 1, 0);
    EXPECT_TRUE(polygon->Surface(0).IsTextured());
    EXPECT_EQ(Shown(polygon->Record().surfaceParams), 0.5f);
    auto* const copy = dynamic_cast<CPolygon*>(polygon->Clone(group));
    CSceneObject::Destroy(polygon);
    EXPECT_EQ(Shown(copy->Record().surfaceParams), 0.5f);
    copy->SetColor(0, 1, 0, 1, 0);
    EXPECT_EQ(Shown(copy->Record().surfaceParams), 1);
    copy->SetTexture(7, 1, 1, 1);
    copy->ApplySurface(1);
    EXPECT_EQ(copy->ActiveSurface(), 0);
    EXPECT_EQ(Shown(copy->Record().surfaceParams), 1);
    EXPECT_EQ(display.materials.size(), 2 * (g_groups.size() + g_objects.size()) - 1);

    group->SetTexture(7, 1, 1, false, 0);
    group->SetTexture(7, 1, 1, false, 1);
    EXPECT_EQ(NewPolygon()->Record().surfaceParams, nullptr);
}

TEST_F(Surfaces, OpacityIsThePalettes) {
    group->SetColor(0, 1, 0, 0.5f, true, 0);
    float r, g, b, a;
    boxBelow->Surface(0).GetColor(&r, &g, &b, &a);
    EXPECT_EQ(a, 0.5f);
    EXPECT_EQ(boxBelow->Surface(0).Alpha(), 1);
    group->SetSurfaceAlpha(0.25f, 0, true);
    boxBelow->Surface(0).GetColor(&r, &g, &b, &a);
    EXPECT_EQ(a, 0.25f);
    EXPECT_EQ(boxBelow->Surface(0).Alpha(), 0.25f);
}

TEST_F(HeadlessScene, WithoutADisplayEveryColourIsOpaqueRed) {
    CGroup* const group = NewGroup(root.get());
    CSceneObject* const box = NewBox(group);
    group->SetColor(0, 1, 0, 0.5f, true, 0);
    group->SetSurfaceAlpha(0.5f, 0, true);
    float colour[4];
    box->Surface(0).GetColor(&colour[0], &colour[1], &colour[2], &colour[3]);
    EXPECT_EQ(colour[0] * 1000 + colour[1] * 100 + colour[2] * 10 + colour[3], 1001);
    EXPECT_EQ(box->Surface(0).Alpha(), 1);
}

}  // namespace
