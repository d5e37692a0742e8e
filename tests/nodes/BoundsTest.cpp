#include "nodes/nodes/Bounds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>

#include "TestTree.h"

namespace nodes {
namespace {

using ::testing::ElementsAre;
using ::testing::FloatNear;
using ::testing::Pointwise;
using Vector = std::array<float, 3>;

MATCHER(IsNear, "") {
    return std::abs(std::get<0>(arg) - std::get<1>(arg)) < 1e-5F;
}

Vector centerOf(const BoxedGeometryNode& geometry) {
    Vector center;
    geometry.getBBoxCenter(center.data());
    return center;
}

Vector sizeOf(const BoxedGeometryNode& geometry) {
    Vector size;
    geometry.getBBoxSize(size.data());
    return size;
}

TEST(BoundingBox, HoldsItsPoints) {
    BoundingBox box;
    Vector center;
    Vector size;
    box.center(center.data());
    box.size(size.data());
    EXPECT_THAT(center, ElementsAre(0, 0, 0));
    EXPECT_THAT(size, ElementsAre(-1, -1, -1));
    box.addBox(Vector{1, 2, 3}.data(), Vector{1, 2, 0}.data());
    box.add(Vector{4, 0, -1}.data());
    box.center(center.data());
    box.size(size.data());
    EXPECT_EQ(9, box.count());
    EXPECT_THAT(center, ElementsAre(2, 2, 1));
    EXPECT_THAT(size, ElementsAre(2, 2, 2));
}

TEST(BoundingBox, NegativePointsEndAtTheSmallestFloat) {
    BoundingBox box;
    box.add(Vector{-4, -2, 1}.data());
    Vector center;
    box.center(center.data());
    EXPECT_THAT(center, ElementsAre(-2, -1, 1));
}

TEST(Bounds, SolidsHaveHalfTheirSizes) {
    BoxNode box;
    box.setSize(2.0F, 4.0F, 6.0F);
    box.initialise();
    EXPECT_THAT(sizeOf(box), ElementsAre(1, 2, 3));
    ConeNode cone;
    cone.setBottomRadius(3.0F);
    cone.initialise();
    EXPECT_THAT(sizeOf(cone), ElementsAre(3, 1, 3));
    CylinderNode cylinder;
    cylinder.setHeight(5.0F);
    cylinder.initialise();
    EXPECT_THAT(sizeOf(cylinder), ElementsAre(1, 2.5F, 1));
    SphereNode sphere;
    sphere.setRadius(2.0F);
    sphere.initialise();
    EXPECT_THAT(sizeOf(sphere), ElementsAre(2, 2, 2));
    ElevationGridNode grid;
    grid.setXDimension(3);
    grid.setZDimension(2);
    grid.setXSpacing(2.0F);
    grid.setZSpacing(5.0F);
    grid.initialise();
    EXPECT_THAT(centerOf(grid), ElementsAre(3, 0, 5));
    EXPECT_THAT(sizeOf(grid), ElementsAre(6, 0, 10));
}

TEST(Bounds, TextsFollowTheirFirstLineAndFont) {
    TextNode text;
    text.initialise();
    EXPECT_THAT(sizeOf(text), ElementsAre(-1, -1, -1));
    text.addString("four");
    text.addString("longer than that");
    auto& font = addTo<FontStyleNode>(text);
    font.initialise();
    EXPECT_THAT(centerOf(text), ElementsAre(-1, 0.5F, 0));
    EXPECT_THAT(sizeOf(text), ElementsAre(1, 0.5F, 0.5F));
    FontStyleNode().initialise();
}

TEST(Bounds, FacesFollowTheirPointsOnceTheyStandInAScene) {
    SceneGraph scene;
    auto& shared = addTo<CoordinateNode>(scene, "points");
    shared.addPoint(0.0F, 0.0F, 0.0F);
    shared.addPoint(2.0F, 4.0F, 6.0F);
    auto faces = std::make_unique<IndexedFaceSetNode>();
    faces->addChild(shared.makeReference(), false);
    faces->initialise();
    EXPECT_THAT(sizeOf(*faces), ElementsAre(-1, -1, -1));
    auto& placed = static_cast<IndexedFaceSetNode&>(scene.addNode(std::move(faces), true));
    EXPECT_THAT(centerOf(placed), ElementsAre(1, 2, 3));
    EXPECT_THAT(sizeOf(placed), ElementsAre(1, 2, 3));
    shared.addPoint(0.0F, 0.0F, 10.0F);
    placed.initialise();
    EXPECT_EQ(3, sizeOf(placed)[2]);
    placed.computeBounds();
    EXPECT_EQ(5, sizeOf(placed)[2]);
}

TEST(Bounds, ExtrusionsGetTheirDefaultsOnce) {
    ExtrusionNode extrusion;
    extrusion.initialise();
    extrusion.initialise();
    EXPECT_EQ(5, extrusion.crossSectionCount());
    EXPECT_THAT(extrusion.crossSectionAt(1), ElementsAre(1, -1));
    EXPECT_EQ(2, extrusion.spineCount());
    EXPECT_THAT(extrusion.spineAt(1), ElementsAre(0, 1, 0));
    EXPECT_EQ(0, extrusion.scaleCount());
    EXPECT_EQ(0, extrusion.orientationCount());
    EXPECT_EQ(15, extrusion.polygonCount());
}

TEST(Bounds, Polygons) {
    EXPECT_EQ(6, BoxNode().polygonCount());
    EXPECT_EQ(256, SphereNode().polygonCount());
    CylinderNode cylinder;
    cylinder.setTop(false);
    EXPECT_EQ(24, cylinder.polygonCount());
    ConeNode cone;
    cone.setBottom(false);
    EXPECT_EQ(15, cone.polygonCount());
    ElevationGridNode grid;
    EXPECT_EQ(0, grid.polygonCount());
    grid.setXDimension(3);
    grid.setZDimension(2);
    EXPECT_EQ(8, grid.polygonCount());
    grid.setXDimension(std::numeric_limits<std::int32_t>::max());
    grid.setZDimension(std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(std::numeric_limits<std::int32_t>::max(), grid.polygonCount());

    IndexedFaceSetNode faces;
    for (const int index : {0, 1, 2, -1, 3, 4, 5}) {
        faces.addCoordIndex(index);
    }
    EXPECT_EQ(0, faces.polygonCount());
    addTo<CoordinateNode>(faces);
    EXPECT_EQ(2, faces.polygonCount());
    faces.addCoordIndex(-1);
    EXPECT_EQ(2, faces.polygonCount());
}

TEST(Bounds, ChildrenThatAClassAccepts) {
    struct {
        std::int32_t parent;
        std::string accepted;
    } const table[] = {
        {kGroup,
         "Anchor AudioClip Background Billboard Collision ColorInterpolator CoordinateInterpolator "
         "CylinderSensor DirectionalLight Fog Group Inline LOD NavigationInfo NormalInterpolator "
         "OrientationInterpolator PlaneSensor PointLight PositionInterpolator ProximitySensor "
         "ScalarInterpolator Script Shape Sound SphereSensor SpotLight Switch TimeSensor "
         "TouchSensor Transform Viewpoint VisibilitySensor WorldInfo "},
        {kAppearance, "ImageTexture Material MovieTexture PixelTexture TextureTransform "},
        {kShape,
         "Appearance Box Cone Cylinder ElevationGrid Extrusion IndexedFaceSet IndexedLineSet "
         "PointSet Sphere Text "},
        {kIndexedFaceSet, "Color Coordinate Normal TextureCoordinate "},
        {kPointSet, "Color Coordinate "},
        {kElevationGrid, "Color Normal TextureCoordinate "},
        {kText, "FontStyle "},
        {kSound, "AudioClip MovieTexture "},
        {kInline, ""},
        {kMaterial, ""},
    };
    for (const auto& row : table) {
        std::string accepted;
        for (std::int32_t type = 0; type < kNodeClassCount; ++type) {
            if (makeNode(row.parent)->acceptsChild(*makeNode(type))) {
                accepted += std::string(nodeTypeName(type)) + " ";
            }
        }
        EXPECT_EQ(row.accepted, accepted) << nodeTypeName(row.parent);
    }
}

TEST(Matrix, TransformsActInTheirOrder) {
    TransformNode transform;
    SFMatrix matrix;
    transform.localMatrix(matrix);
    EXPECT_THAT(moved(matrix, {1, 2, 3}), ElementsAre(1, 2, 3));
    // About its center: stretched along x, turned by a right angle about z, then moved.
    transform.setCenter(1.0F, 0.0F, 0.0F);
    transform.setScale(2.0F, 1.0F, 1.0F);
    transform.setRotation(0.0F, 0.0F, 1.0F, 1.5707963F);
    transform.setTranslation(0.0F, 0.0F, 5.0F);
    transform.localMatrix(matrix);
    EXPECT_THAT(moved(matrix, {2, 0, 0}), Pointwise(IsNear(), Vector{1, 2, 5}));
    // Stretched along the direction that scaleOrientation turns x to.
    TransformNode stretch;
    stretch.setScale(2.0F, 1.0F, 1.0F);
    stretch.setScaleOrientation(0.0F, 0.0F, 1.0F, 1.5707963F);
    stretch.localMatrix(matrix);
    EXPECT_THAT(moved(matrix, {1, 1, 1}), Pointwise(IsNear(), Vector{1, 2, 1}));
}

TEST(Matrix, TheWorldGoesFromTheNodeUp) {
    NodeTree tree;
    auto& outer = addTo<TransformNode>(tree);
    outer.setScale(2.0F, 2.0F, 2.0F);
    auto& inner = addTo<TransformNode>(addTo<GroupNode>(outer));
    inner.setTranslation(1.0F, 0.0F, 0.0F);
    auto& shape = addTo<ShapeNode>(inner);
    SFMatrix world;
    shape.worldMatrix(world);
    EXPECT_THAT(moved(world, {1, 1, 1}), ElementsAre(4, 2, 2));
}

TEST(Bounds, AGroupTakesTheBoxOfAllGeometryBelow) {
    NodeTree tree;
    auto& top = addTo<TransformNode>(tree);
    top.setTranslation(0.0F, 0.0F, 1.0F);
    auto& group = addTo<GroupNode>(top);
    auto& left = addTo<TransformNode>(group);
    left.setTranslation(3.0F, 0.0F, 0.0F);
    left.setScale(1.0F, 2.0F, 1.0F);
    addTo<BoxNode>(addTo<ShapeNode>(left));
    auto& right = addTo<GroupNode>(group);
    addTo<SphereNode>(addTo<ShapeNode>(right));
    // Neither has a box.
    addTo<TextNode>(addTo<ShapeNode>(right));
    addTo<IndexedLineSetNode>(addTo<ShapeNode>(right));
    auto& behind = addTo<ShapeNode>(top);
    addTo<BoxNode>(behind).setSize(100.0F, 100.0F, 100.0F);

    group.computeBBox();
    EXPECT_THAT(group.bboxCenter().value(), Pointwise(IsNear(), Vector{1.5F, 0, 1}));
    EXPECT_THAT(group.bboxSize().value(), Pointwise(IsNear(), Vector{2.5F, 2, 1}));
    GroupNode empty;
    empty.computeBBox();
    EXPECT_THAT(empty.bboxSize().value(), ElementsAre(-1, -1, -1));
}

// Linear in the depth, also where Billboards ask for the place of all that is above them.
TEST(Bounds, DeepTreesNeedNeitherStackNorPatience) {
    constexpr int kDepth = 100000;
    SceneGraph scene;
    auto& top = addTo<GroupNode>(scene);
    Node* node = &top;
    for (int i = 0; i < kDepth; ++i) {
        node = i % 2 != 0 ? static_cast<Node*>(&addTo<BillboardNode>(*node))
                          : static_cast<Node*>(&addTo<TransformNode>(*node));
        addTo<BoxNode>(addTo<ShapeNode>(*node));
    }
    top.computeBBox();
    EXPECT_NEAR(1.0F, top.bboxSize().y(), 0.1F);
    SFMatrix world;
    node->worldMatrix(world);
    EXPECT_TRUE(std::isfinite(moved(world, {1, 1, 1})[0]));
}

}  // namespace
}  // namespace nodes
