#include <cmath>
#include <limits>
#include <tuple>
#include <vector>

#include "random_scene.h"

using namespace scene_tests;

namespace {

struct Answer {
    float value = 0;
    float point1[3] = {0, 0, 0};
    float point2[3] = {0, 0, 0};
};

Answer Closest(const Body& a, const Body& b) {
    Answer answer;
    answer.value = DT_GetClosestPair(a.object, b.object, answer.point1, answer.point2);
    return answer;
}

float DistanceOf(const Body& a, const Body& b) {
    return Closest(a, b).value;
}

bool Touch(const Body& a, const Body& b) {
    return DistanceOf(a, b) == 0;
}

TEST(TwoObjects, SwappingThemSwapsTheAnswer) {
    Random random(5);
    int touching = 0;
    for (int i = 0; i < 3000; ++i) {
        const Body a(RandomShape(random));
        const Body b(RandomShape(random));
        a.Place(RandomPlacement(random, 1));
        b.Place(RandomPlacement(random, 1));
        const Answer ab = Closest(a, b);
        const Answer ba = Closest(b, a);
        EXPECT_EQ(ab.value, ba.value);
        Answer in, out;
        const bool hit = DT_GetPenDepth(a.object, b.object, in.point1, in.point2);
        EXPECT_EQ(hit, DT_GetPenDepth(b.object, a.object, out.point1, out.point2));
        EXPECT_EQ(hit, ab.value == 0);
        EXPECT_EQ(hit, DT_InContact(a.object, b.object));
        EXPECT_EQ(hit, DT_InContact(b.object, a.object));
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(ab.point1[k], ba.point2[k]);
            EXPECT_EQ(ab.point2[k], ba.point1[k]);
            EXPECT_EQ(in.point1[k], out.point2[k]);
            EXPECT_EQ(in.point2[k], out.point1[k]);
        }
        touching += hit ? 1 : 0;
    }
    EXPECT_GT(touching, 600);
    EXPECT_LT(touching, 2700);
}

TEST(TwoObjects, OnlyContactIsAtDistanceZero) {
    constexpr float kLeast = std::numeric_limits<float>::denorm_min();
    const Body thin(DT_NewBox(kLeast, 0, 0));
    const Body point(DT_NewBox(0, 0, 0));
    point.Place(At(kLeast, 0, 0));
    // Half of the least float apart.
    EXPECT_EQ(DistanceOf(thin, point), kLeast);
    const Body wide(DT_NewBox(2 * kLeast, 0, 0));
    EXPECT_EQ(DistanceOf(wide, point), 0);
}

TEST(TwoObjects, FiniteObjectsHaveAFiniteDistance) {
    const Body a(DT_NewSphere(1));
    const Body b(DT_NewSphere(1));
    a.Place(At(3e38f, 3e38f, 0));
    b.Place(At(-3e38f, -3e38f, 0));
    const Answer answer = Closest(a, b);
    EXPECT_EQ(answer.value, std::numeric_limits<float>::max());
    EXPECT_FLOAT_EQ(answer.point1[0], 3e38f);
    EXPECT_FLOAT_EQ(answer.point2[1], -3e38f);
}

TEST(TwoObjects, AnObjectTouchesItself) {
    const auto cube = NewCube();
    EXPECT_TRUE(Touch(*cube, *cube));
}

DT_ShapeHandle Tetrahedron() {
    const DT_ShapeHandle shape = DT_NewPolytope(nullptr);
    DT_Begin();
    DT_Vertex(0, 0, 0);
    DT_Vertex(1, 0, 0);
    DT_Vertex(0, 1, 0);
    DT_Vertex(0, 0, 1);
    DT_End();
    DT_EndPolytope();
    return shape;
}

void Triangle(float z) {
    DT_Begin();
    DT_Vertex(-1, -1, z);
    DT_Vertex(1, -1, z);
    DT_Vertex(0, 1, z);
    DT_End();
}

TEST(ShapeBuilding, PolytopesAreSolidAndComplexShapesAreSurfaces) {
    const Body solid(Tetrahedron());
    const DT_ShapeHandle complex = DT_NewComplexShape(nullptr);
    Triangle(0);
    Triangle(2);
    DT_EndComplexShape();
    const Body sheets(complex);
    const Body probe(DT_NewSphere(0));
    probe.Place(At(0.2f, 0.2f, 0.2f));
    EXPECT_TRUE(Touch(solid, probe));
    EXPECT_NEAR(DistanceOf(sheets, probe), 0.2f, 1e-6f);
    probe.Place(At(0, 0, 2));
    EXPECT_TRUE(Touch(sheets, probe));
    EXPECT_FALSE(Touch(solid, probe));
}

/// Of polygons, a degenerate and an empty one among them, and one that is not finite.
TEST(ShapeBuilding, AMeshInOneCallIsTheComplexShapeOfItsPolygons) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float vertices[][3] = {{-1, -1, 1}, {1, -1, 1}, {1, 1, 1},  {-1, 1, 1}, {9, 9, nan},
                                 {9, 9, 9},   {9, 8, 9},  {0, 0, -3}, {1, 0, -3}};
    const std::vector<int> counts = {4, 0, 3, 2};
    const DT_ShapeHandle complex = DT_NewComplexShape(nullptr);
    const auto* vertex = &vertices[0];
    for (const int count : counts) {
        DT_Begin();
        for (int i = 0; i < count; ++i, ++vertex) {
            DT_Vertex((*vertex)[0], (*vertex)[1], (*vertex)[2]);
        }
        DT_End();
    }
    DT_EndComplexShape();
    const Body sheets(complex);
    const Body mesh(DT_NewMesh(vertices[0], std::size(vertices), counts.data(), counts.size()));
    const Body triangles(DT_NewMesh(vertices[0], 3, nullptr, 1));
    const Body probe(DT_NewSphere(0));
    for (const auto& [x, y, z] : {std::tuple(0.3f, -0.2f, 1.0f), std::tuple(8.0f, 8.0f, 8.0f),
                                  std::tuple(0.5f, 0.0f, -4.0f), std::tuple(0.5f, -0.5f, 2.0f)}) {
        probe.Place(At(x, y, z));
        EXPECT_EQ(DistanceOf(mesh, probe), DistanceOf(sheets, probe));
    }
    EXPECT_FLOAT_EQ(DistanceOf(mesh, probe), 1.0f);
    EXPECT_FLOAT_EQ(DistanceOf(triangles, probe), 1.0f);
}

TEST(ShapeBuilding, CallsOutOfPlaceAreIgnored) {
    DT_Begin();
    DT_Vertex(9, 9, 9);
    DT_End();
    DT_EndPolytope();
    DT_EndComplexShape();
    const DT_ShapeHandle shape = DT_NewPolytope(nullptr);
    DT_Vertex(9, 9, 9);  // before DT_Begin
    DT_EndComplexShape();
    DT_Begin();
    DT_Vertex(0, 0, 0);
    DT_Begin();
    DT_Vertex(1, 0, 0);
    DT_End();
    DT_Vertex(9, 9, 9);  // after DT_End
    DT_End();
    DT_Begin();
    DT_Vertex(0, 1, 0);  // left open
    DT_EndPolytope();
    DT_Begin();
    DT_Vertex(9, 9, 9);  // after the end
    DT_End();
    DT_EndPolytope();
    const Body triangle(shape);
    const Body probe(DT_NewSphere(0));
    for (const auto& [x, y] :
         {std::pair(0.0f, 0.0f), std::pair(1.0f, 0.0f), std::pair(0.0f, 1.0f)}) {
        probe.Place(At(x, y, 0));
        EXPECT_TRUE(Touch(triangle, probe));
    }
    probe.Place(At(1, 1, 0));
    EXPECT_NEAR(DistanceOf(triangle, probe), std::sqrt(0.5f), 1e-6f);
}

TEST(ShapeBuilding, AShapeLeftOpenEndsWithTheNextOne) {
    const DT_ShapeHandle open = DT_NewComplexShape(nullptr);
    Triangle(0);
    const Body solid(Tetrahedron());
    const Body first(open);
    const Body probe(DT_NewSphere(0));
    EXPECT_TRUE(Touch(first, probe));
    EXPECT_TRUE(Touch(solid, probe));
}

TEST(ShapeBuilding, DeletingTheShapeEndsItsBuilding) {
    DT_ShapeHandle shape = DT_NewPolytope(nullptr);
    DT_Begin();
    DT_Vertex(9, 9, 9);
    DT_DeleteShape(shape);
    DT_Vertex(9, 9, 9);
    DT_End();
    DT_EndPolytope();
    const Body solid(Tetrahedron());
    const Body probe(DT_NewSphere(0));
    probe.Place(At(9, 9, 9));
    EXPECT_GT(DistanceOf(solid, probe), 10);
}

TEST(ShapeBuilding, ShapesWithoutVerticesTakeNoPart) {
    const DT_ShapeHandle polytope = DT_NewPolytope(nullptr);
    DT_Begin();
    DT_Vertex(std::numeric_limits<float>::quiet_NaN(), 0, 0);
    DT_End();
    DT_EndPolytope();
    const DT_ShapeHandle complex = DT_NewComplexShape(nullptr);
    DT_Begin();
    DT_End();
    DT_EndComplexShape();
    const Body a(polytope);
    const Body b(complex);
    const Body none(nullptr);
    const auto cube = NewCube();
    const ScenePtr scene(DT_CreateScene());
    const TablePtr table(DT_CreateRespTable());
    DT_GenResponseClass(table.get());
    Recorder recorder;
    Client client{&recorder};
    DT_AddPairResponse(table.get(), 0, 0, Record, DT_SIMPLE_RESPONSE, &client);
    for (const Body* body : {&a, &b, &none, &std::as_const(*cube)}) {
        DT_AddObject(scene.get(), body->object);
        DT_SetResponseClass(table.get(), body->object, 0);
        DT_SetMargin(body->object, 1);
        if (body != cube.get()) {
            EXPECT_EQ(DistanceOf(*body, *cube), std::numeric_limits<float>::infinity());
        }
    }
    EXPECT_EQ(DT_Test(scene.get(), table.get()), 0u);
}

}  // namespace
