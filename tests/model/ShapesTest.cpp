#include <cmath>
#include <cstdlib>

#include "Fakes.h"
#include "kestrane.h"
#include "model/Cone.h"
#include "model/Cylinder.h"
#include "model/Polygon.h"
#include "model/PolygonGroup.h"
#include "model/Polyline.h"
#include "model/Sphere.h"
#include "model/Tetrahedron.h"
#include "model/Triangles.h"

namespace {

std::vector<float> Take(float* block, std::size_t count) {
    std::vector<float> values(block, block + count);
    std::free(block);
    return values;
}

std::vector<int> Take(int* block, std::size_t count) {
    std::vector<int> values(block, block + count);
    std::free(block);
    return values;
}

std::vector<float> Ramp(std::size_t count) {
    std::vector<float> values;
    for (std::size_t i = 0; i < count; ++i)
        values.push_back(static_cast<float>(i * i % 17));
    return values;
}

class Shapes : public DisplayedScene {
  protected:
    Shapes() : group(NewGroup(root.get(), "shapes")) {}

    KstObjectInfo InfoOf(const CSceneObject* object) {
        KstObjectInfo info;
        object->GetInfo(&info);
        EXPECT_EQ(info.groupId, object->Group()->Id());
        return info;
    }
    /// Distance of the object's collision shape from a point.
    float DistanceFrom(const CSceneObject* object, float x, float y, float z) {
        const DT_ShapeHandle shape = DT_NewSphere(0);
        const DT_ObjectHandle probe = DT_CreateObject(nullptr, shape);
        const float position[3] = {x, y, z};
        DT_SetPosition(probe, position);
        float a[3], b[3];
        const float distance = DT_GetClosestPair(object->SolidObject(), probe, a, b);
        DT_DestroyObject(probe);
        DT_DeleteShape(shape);
        return distance;
    }

    CGroup* group;
};

TEST_F(Shapes, SimpleSolidsTellTheirSizesAndAreTheirShapes) {
    CSceneObject* const box = CreateObject<CBox>(group, "", 2.0f, 4.0f, 6.0f);
    CSceneObject* const sphere = CreateObject<CSphere>(group, "", 3.0f);
    CSceneObject* const cylinder = CreateObject<CCylinder>(group, "", 1.0f, 4.0f);
    CSceneObject* const cone = CreateObject<CCone>(group, "", 1.0f, 4.0f);
    for (CSceneObject* object : {box, sphere, cylinder, cone}) {
        CSceneObject* const copy = object->Clone(group);
        for (const CSceneObject* o : {object, copy}) {
            const KstObjectInfo info = InfoOf(o);
            switch (o->Type()) {
                case kTypeBox:
                    EXPECT_EQ(info.p1.f + 10 * info.p2.f + 100 * info.p3.f, 642);
                    EXPECT_NEAR(DistanceFrom(o, 11, 0, 0), 10, 1e-5);
                    EXPECT_NEAR(DistanceFrom(o, 0, 0, 13), 10, 1e-5);
                    break;
                case kTypeSphere:
                    EXPECT_EQ(info.p1.f, 3);
                    EXPECT_EQ(info.p2.floats, nullptr);
                    EXPECT_NEAR(DistanceFrom(o, 0, 13, 0), 10, 1e-5);
                    break;
                default:
                    EXPECT_EQ(info.p1.f + 10 * info.p2.f, 41);
                    EXPECT_NEAR(DistanceFrom(o, 0, 12, 0), 10, 1e-5);
                    EXPECT_NEAR(DistanceFrom(o, 11, -2, 0), 10, 1e-5);
            }
        }
    }
}

TEST_F(Shapes, PolygonsKeepTheirVerticesAndNormals) {
    const float square[12] = {0, 0, 0, 2, 0, 0, 2, 3, 0, 0, 3, 0};
    CSceneObject* const polygon = CreateObject<CPolygon>(group, "", 4, square);
    CSceneObject* const copy = polygon->Clone(group);
    CSceneObject::Destroy(polygon);
    const MAV_polygon& record = dynamic_cast<CPolygon*>(copy)->Record();
    EXPECT_EQ(record.normal, (MAV_vector{0, 0, 6}));
    const KstObjectInfo info = InfoOf(copy);
    EXPECT_EQ(info.p1.i, 4);
    EXPECT_EQ(Take(info.p2.floats, 12), std::vector<float>(square, square + 12));
    EXPECT_NEAR(DistanceFrom(copy, 1, 1, 5), 5, 1e-5);
}

TEST_F(Shapes, PolygonGroupsReadOnThroughTheFlatArrays) {
    const int counts[5] = {3, 0, 4, 2, 3};
    const auto vertices = Ramp(36);
    const auto texCoords = Ramp(24);
    auto* const plain = dynamic_cast<CPolygonGroup*>(
        CreateObject<CPolygonGroup>(group, "", 5, counts, vertices.data()));
    auto* const textured = dynamic_cast<CPolygonGroup*>(
        CreateObject<CPolygonGroup>(group, "", 5, counts, vertices.data(), texCoords.data()));
    EXPECT_EQ(plain->PrimitiveCount(), 5);
    EXPECT_EQ(plain->Record().texCoords, nullptr);
    EXPECT_EQ(textured->Record().texCoords[11].v, texCoords[23]);
    for (const int degenerate : {1, 3})
        EXPECT_EQ(plain->Record().normals[degenerate], (MAV_vector{0, 0, 0}));
    // Of the last polygon: (b - a) x (c - a) of vertices 9, 10, 11.
    const MAV_vector a{vertices[27], vertices[28], vertices[29]},
        b{vertices[30], vertices[31], vertices[32]}, c{vertices[33], vertices[34], vertices[35]};
    EXPECT_EQ(plain->Record().normals[4],
              mav_vectorCrossProduct(mav_vectorSub(b, a), mav_vectorSub(c, a)));
    CSceneObject* const copy = textured->Clone(group);
    const KstObjectInfo info = InfoOf(copy);
    EXPECT_EQ(info.p1.i, 5);
    EXPECT_EQ(Take(info.p2.ints, 5), std::vector<int>(counts, counts + 5));
    EXPECT_EQ(Take(info.p3.floats, 36), vertices);
    EXPECT_EQ(dynamic_cast<CPolygonGroup*>(copy)->Record().texCoords[11].v, texCoords[23]);
    EXPECT_EQ(group->OwnPrimitiveCount(), 15);
}

TEST_F(Shapes, ArraysForTheHostAreNeverNull) {
    const int none = 0;
    const float nothing = 0;
    const KstObjectInfo info = InfoOf(CreateObject<CPolygonGroup>(group, "", 1, &none, &nothing));
    EXPECT_NE(info.p3.floats, nullptr);
    std::free(info.p2.ints);
    std::free(info.p3.floats);
}

TEST_F(Shapes, TrianglesCountEach) {
    const auto vertices = Ramp(900);
    CSceneObject* const triangles = CreateObject<CTriangles>(group, "", 100, vertices.data());
    EXPECT_EQ(group->SubtreePrimitiveCount(), 100);
    CreateObject<CTetrahedron>(group, "", vertices.data());
    EXPECT_EQ(group->SubtreePrimitiveCount(), 101);
    const KstObjectInfo info = InfoOf(triangles);
    EXPECT_EQ(info.p1.i, 100);
    EXPECT_EQ(Take(info.p2.floats, 900), vertices);
    CSceneObject::Destroy(triangles);
    EXPECT_EQ(root->SubtreePrimitiveCount(), 1);
}

TEST_F(Shapes, TetrahedraLookOutwardsHoweverTheyAreGiven) {
    // d > 0 as given.
    const float right[12] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
    const float left[12] = {0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 0, 1};
    auto* const a = dynamic_cast<CTetrahedron*>(CreateObject<CTetrahedron>(group, "", &right[0]));
    auto* const b = dynamic_cast<CTetrahedron*>(CreateObject<CTetrahedron>(group, "", &left[0]));
    EXPECT_EQ(a->Vertices(), b->Vertices());
    const KstObjectInfo info = InfoOf(a);
    EXPECT_EQ(Take(info.p1.floats, 12), std::vector<float>(left, left + 12));

    const MAV_polygonGrp& record = a->Record();
    ASSERT_EQ(record.polygonCount, 4);
    const MAV_vector middle{0.25f, 0.25f, 0.25f};
    for (int face = 0; face < 4; ++face) {
        const MAV_vector& normal = record.normals[face];
        EXPECT_NEAR(mav_vectorDotProduct(normal, normal), 1, 1e-6);
        EXPECT_LT(mav_vectorDotProduct(mav_vectorSub(middle, record.vertices[3 * face]), normal),
                  0);
    }
    // Solid, and closed by all four corners.
    EXPECT_EQ(DistanceFrom(a, 0.2f, 0.2f, 0.2f), 0);
    EXPECT_EQ(DistanceFrom(a, 0, 0, 1), 0);
}

TEST_F(Shapes, PolylinesAreForTheEyeAlone) {
    const int counts[2] = {3, 4};
    const auto vertices = Ramp(21);
    auto* const line = dynamic_cast<CPolyline*>(
        CreateObject<CPolyline>(group, "line", 2, counts, vertices.data()));
    EXPECT_FALSE(line->IsInCollisionWorld());
    const MAV_surfaceParams* const params = line->Record().surfaceParams;
    EXPECT_EQ(params->mode, MAV_COLOUR);
    line->SetColor(0, 1, 0, 1, 0);
    line->SetSurfaceAlpha(0.5f, 0);
    EXPECT_EQ(line->Record().surfaceParams, params);
    line->SetPosition(1, 2, 3);
    const auto* const copy = dynamic_cast<const CPolyline*>(line->Clone(group));
    for (const CPolyline* l : {static_cast<const CPolyline*>(line), copy}) {
        const KstObjectInfo info = InfoOf(l);
        EXPECT_EQ(info.p1.i, 2);
        EXPECT_EQ(info.matrix[7], 2);
        EXPECT_EQ(Take(info.p2.ints, 2), (std::vector<int>{3, 4}));
        EXPECT_EQ(Take(info.p3.floats, 21), vertices);
    }
    line->MoveTo(NewGroup(root.get(), "", true));
    EXPECT_TRUE(collision.members.empty());
}

}  // namespace
