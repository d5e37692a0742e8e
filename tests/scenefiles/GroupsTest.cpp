#include "SceneFiles.h"

namespace {

using GroupsTest = SceneFiles;

constexpr const char* kSphere = "<sphere label='s' radius='1'/>";

TEST_F(GroupsTest, LabelCapabilityAndNesting) {
    EXPECT_EQ(KST_OK,
              Load("<group label='a' colCheck='true'><group label='b' colCheck='TRUE'/>"
                   "<group label='c' colCheck='1'><group label='d' colCheck='true'/></group>"
                   "</group><group/>"));
    EXPECT_EQ(2, Info(m_group).childCount);
    EXPECT_TRUE(Info(IdOf("a")).colCheck);
    EXPECT_FALSE(Info(IdOf("b")).colCheck);
    EXPECT_FALSE(Info(IdOf("c")).colCheck);
    EXPECT_TRUE(Info(IdOf("d")).colCheck);
    EXPECT_EQ(IdOf("d"), Child(IdOf("c")));
    EXPECT_EQ(2, Info(IdOf("a")).childCount);
    // Once more: the labels of groups are made unique.
    EXPECT_EQ(KST_OK, Load("<group label='a'/>"));
    EXPECT_EQ(3, Info(m_group).childCount);
}

TEST_F(GroupsTest, PoseIsInPlaceWithQuaternionAfterAngles) {
    // Half a turn about y as a quaternion, whatever the angles were.
    EXPECT_EQ(KST_OK, Load(std::string("<group>") + kSphere +
                           "<scale x='2' y='3' z='4'/><quat x='0' y='1' z='0' w='0'/>"
                           "<or x='1' y='1' z='1'/><pos x='1' y='2' z='3'/><pos x='9' y='9' z='9'/>"
                           "</group>"));
    EXPECT_EQ((Vector{1, 2, 3}), Place(IdOf("s")));
    EXPECT_EQ((Vector{-1, 5, -1}), Place(IdOf("s"), 1, 1, 1));
}

TEST_F(GroupsTest, FailureOfThePoseStopsTheLoad) {
    const auto load = [this](const std::string& pose) {
        return Load("<group>" + pose + "<group label='inner'/></group><group label='later'/>");
    };
    EXPECT_EQ(KST_ERROR_ARGUMENT, load("<or x='6.3' y='0' z='0'/>"));
    EXPECT_EQ(KST_ERROR_ARGUMENT, load("<or x='0' y='-0.1' z='0'/>"));
    EXPECT_EQ(KST_ERROR_ARGUMENT, load("<scale x='1' y='-1' z='1'/>"));
    EXPECT_EQ(-1, IdOf("inner"));
    EXPECT_EQ(-1, IdOf("later"));
    EXPECT_EQ(3, Info(m_group).childCount);
    EXPECT_EQ(KST_OK, load("<or x='6.2831855' y='0' z='0'/><scale x='0' y='0' z='0'/>"));
    EXPECT_NE(-1, IdOf("later"));
}

TEST_F(GroupsTest, FailuresOfSurfacesAndMotionAreDropped) {
    EXPECT_EQ(KST_OK, Load("<group><color red='2' green='0' blue='0'/><texture ID='-1'/>"
                           "<motion><keyState time='5'/><keyState time='4'/></motion></group>"));
}

TEST_F(GroupsTest, Motion) {
    EXPECT_EQ(KST_OK,
              Load(std::string("<group>") + kSphere +
                   "<motion cyclic='true'><keyState time='0'/><keyState time='2'>"
                   "<pos x='4' y='x' z='0'/><or x='9' y='9' z='9'/><quat x='0' y='0' z='1' w='0'/>"
                   "</keyState></motion><motion><keyState time='0'/></motion></group>"));
    EXPECT_EQ(KST_OK, KST_SetTime(1));
    EXPECT_EQ((Vector{2, 0, 0}), Place(IdOf("s")));
    EXPECT_EQ((Vector{2, 1, 0}), Place(IdOf("s"), 1, 0, 0));
    EXPECT_EQ(KST_OK, KST_SetTime(3));  // cyclic
    EXPECT_EQ((Vector{2, 0, 0}), Place(IdOf("s")));
}

}  // namespace
