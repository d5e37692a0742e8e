#include <cstdlib>
#include <map>

#include "SceneFiles.h"

namespace {

using ObjectsTest = SceneFiles;

std::string Point(float x, float y, float z) {
    return "<point x='" + std::to_string(x) + "' y='" + std::to_string(y) + "' z='" +
           std::to_string(z) + "'/>";
}

TEST_F(ObjectsTest, EveryKindWithItsSizesAndVertices) {
    const std::string triangle = Point(0, 0, 0) + Point(1, 0, 0) + Point(0, 1, 0);
    EXPECT_EQ(
        KST_OK,
        Load("<box label='1' width='1' height='2' depth='3'/><sphere label='2' radius='4'/>"
             "<cylinder label='3' radius='5' height='6'/><cone label='4' radius='7' height='8'/>"
             "<triangles label='5'><triangle>" +
             triangle + "</triangle><triangle>" + Point(5, 6, 7) +
             triangle.substr(0, triangle.rfind("<point")) +
             "</triangle></triangles><polygon label='6'>" + triangle + Point(0, 2, 0) +
             "</polygon><polygonGroup label='7'><polygon>" + triangle + "</polygon><polygon>" +
             triangle + Point(8, 9, 10) + "</polygon></polygonGroup><polyline label='8'><line>" +
             triangle + "</line><line>" + Point(1, 2, 3) + Point(4, 5, 6) +
             "</line></polyline><tetrahedron label='9'>" + triangle + Point(0, 0, 1) +
             "</tetrahedron>"));
    std::map<int, KstObjectInfo> infos;
    for (int kind = KST_BOX; kind <= KST_TETRAHEDRON; ++kind) {
        const int id = IdOf(std::to_string(kind).c_str());
        int type = 0;
        EXPECT_EQ(KST_OK, KST_GetObjectType(id, &type));
        EXPECT_EQ(kind, type);
        EXPECT_EQ(KST_OK, KST_GetObject(id, &infos[kind]));
        EXPECT_EQ(m_group, infos[kind].groupId);
    }
    EXPECT_EQ(3.0f, infos[KST_BOX].p3.f);
    EXPECT_EQ(4.0f, infos[KST_SPHERE].p1.f);
    EXPECT_EQ(6.0f, infos[KST_CYLINDER].p2.f);
    EXPECT_EQ(7.0f, infos[KST_CONE].p1.f);
    EXPECT_EQ(2, infos[KST_TRIANGLES].p1.i);
    EXPECT_EQ(7.0f, infos[KST_TRIANGLES].p2.floats[11]);
    EXPECT_EQ(4, infos[KST_POLYGON].p1.i);
    EXPECT_EQ(2.0f, infos[KST_POLYGON].p2.floats[10]);
    EXPECT_EQ(2, infos[KST_POLYGON_GROUP].p1.i);
    EXPECT_EQ(4, infos[KST_POLYGON_GROUP].p2.ints[1]);
    EXPECT_EQ(10.0f, infos[KST_POLYGON_GROUP].p3.floats[20]);
    EXPECT_EQ(2, infos[KST_POLYLINE].p2.ints[1]);
    EXPECT_EQ(6.0f, infos[KST_POLYLINE].p3.floats[14]);
    for (const int kind : {KST_TRIANGLES, KST_POLYGON}) {
        std::free(infos[kind].p2.floats);
    }
    for (const int kind : {KST_POLYGON_GROUP, KST_POLYLINE}) {
        std::free(infos[kind].p2.ints);
        std::free(infos[kind].p3.floats);
    }
    std::free(infos[KST_TETRAHEDRON].p1.floats);
}

// Half a turn about y; and a quarter turn of roll, which takes x to y.
constexpr const char* kTurns = "<quat x='0' y='1' z='0' w='0'/><or x='0' y='0' z='1.57079633'/>";

TEST_F(ObjectsTest, WhichRotationWins) {
    EXPECT_EQ(KST_OK, Load(std::string("<sphere label='simple' radius='1'>") + kTurns +
                           "<pos x='1' y='2' z='3'/><scale x='2' y='2' z='2'/></sphere>"
                           "<polygon label='mesh'>" +
                           Point(0, 0, 0) + Point(1, 0, 0) + Point(0, 1, 0) + kTurns +
                           "<pos x='1' y='2' z='3'/><scale x='2' y='2' z='2'/></polygon>"));
    EXPECT_EQ((Vector{-1, 2, 3}), Place(IdOf("simple"), 1, 0, 0));
    EXPECT_EQ((Vector{1, 4, 3}), Place(IdOf("mesh"), 1, 0, 0));
}

TEST_F(ObjectsTest, FailuresOfThePose) {
    const std::string bad = "<or x='7' y='0' z='0'/><scale x='-1' y='1' z='1'/>";
    EXPECT_EQ(KST_OK, Load("<sphere radius='1'>" + bad + "</sphere>"));
    const std::string mesh = Point(0, 0, 0) + Point(1, 0, 0) + Point(0, 1, 0);
    EXPECT_EQ(KST_ERROR_ARGUMENT, Load("<polygon>" + mesh + bad + "</polygon>"));
    EXPECT_EQ(KST_ERROR_ARGUMENT,
              Load("<polyline><line>" + mesh + "</line>" + bad + "</polyline>"));
    EXPECT_EQ(KST_OK, Load("<polygon>" + mesh + "<or x='7' y='0' z='0'/></polygon>"));
    EXPECT_EQ(4u, Objects(m_group).size());
}

TEST_F(ObjectsTest, FailuresOfSurfaces) {
    const std::string color = "<color red='2' green='0' blue='0'/>";
    const std::string mesh = Point(0, 0, 0) + Point(1, 0, 0) + Point(0, 1, 0);
    EXPECT_EQ(KST_OK, Load("<sphere radius='1'>" + color + "</sphere>"));
    EXPECT_EQ(KST_ERROR_ARGUMENT, Load("<sphere radius='1'><texture ID='0' xTile='0'/></sphere>"));
    EXPECT_EQ(KST_OK, Load("<sphere radius='1'><texture ID='0' xTile='0'/>"
                           "<motion><keyState time='0'/></motion></sphere>"));
    EXPECT_EQ(KST_ERROR_ARGUMENT, Load("<polygon>" + mesh + color + "</polygon>"));
    EXPECT_EQ(KST_OK, Load("<polygon>" + mesh + "<texture ID='0' xTile='0'/></polygon>"));
    EXPECT_EQ(KST_OK, Load("<polyline><line>" + mesh + "</line>" + color + "</polyline>"));
    EXPECT_EQ(6u, Objects(m_group).size());
    EXPECT_EQ(KST_ERROR_ARGUMENT,
              Load("<polygon>" + Point(0, 0, 0) + Point(1, 0, 0) + "</polygon>"));
    EXPECT_EQ(6u, Objects(m_group).size());
}

TEST_F(ObjectsTest, AnimatedObjectStartsWhereItsAnimationDoes) {
    const auto load = [this](const std::string& own, const std::string& states) {
        EXPECT_EQ(KST_OK, KST_EmptyGroup(m_group));
        EXPECT_EQ(KST_OK,
                  Load("<sphere radius='1'>" + own + "<motion>" + states + "</motion></sphere>"));
        return Place(Objects(m_group).at(0));
    };
    const std::string own = "<pos x='1' y='1' z='1'/>";
    const std::string first = "<keyState time='0'><pos x='2' y='2' z='2'/></keyState>";
    EXPECT_EQ((Vector{2, 2, 2}), load(own, first));
    EXPECT_EQ((Vector{1, 1, 1}), load(own, "<keyState time='0'/>"));
    // Its turn and scale are those of the first key state too, and the later ones repeat them.
    load(own + "<scale x='9' y='9' z='9'/>",
         "<keyState time='0'><quat x='0' y='1' z='0' w='0'/><scale x='3' y='3' z='3'/></keyState>"
         "<keyState time='1'><pos x='5' y='1' z='1'/></keyState>");
    EXPECT_EQ(KST_OK, KST_SetTime(1));
    EXPECT_EQ((Vector{2, 1, 1}), Place(Objects(m_group).at(0), 1, 0, 0));

    EXPECT_EQ(KST_ERROR_TIME_ORDER,
              Load("<sphere radius='1'><motion><keyState time='2'/><keyState time='2'/>"
                   "<keyState time='1'/></motion></sphere>"));
}

TEST_F(ObjectsTest, MotionWithoutKeyStatesIsRefusedForAnObject) {
    EXPECT_EQ(KST_ERROR_ARGUMENT, Load("<sphere radius='1'><motion/></sphere>"));
    EXPECT_EQ(KST_OK, Load("<group><motion/></group>"));
    EXPECT_TRUE(Objects(m_group).empty());
}

}  // namespace
