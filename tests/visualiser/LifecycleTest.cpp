#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "Shown.h"

namespace {

using Clock = std::chrono::steady_clock;

TEST_F(Shown, StandsStillWhileSuspended) {
    const int box = Box(0, 0, 0);
    LookFrom(0, 0, 5);
    EXPECT_GT(Capture().Middle().r, 100);
    EXPECT_EQ(KST_OK, KST_SuspendVisualisation());
    EXPECT_EQ(KST_OK, KST_SuspendVisualisation());
    EXPECT_EQ(KST_ERROR_NOT_RENDERING, KST_ScreenCapture(0, "no.bmp"));
    EXPECT_EQ(KST_ERROR_NOT_RENDERING, KST_ShowView(1, "no"));
    EXPECT_EQ(KST_OK, KST_HideView(1));
    EXPECT_EQ(KST_OK, KST_EmptyGroup(m_group));
    int type = 0;
    EXPECT_EQ(KST_ERROR_UNKNOWN_OBJECT, KST_GetObjectType(box, &type));
    EXPECT_EQ(KST_ERROR_NOT_RENDERING, KST_ScreenCapture(0, "no.bmp"));
    EXPECT_EQ(KST_OK, KST_ResumeVisualisation());
    EXPECT_EQ(0, Capture().Middle().r);
    // The end comes also to a display that stands still.
    EXPECT_EQ(KST_OK, KST_SuspendVisualisation());
}

TEST(Display, StartsAgainAndAgainWithIdsFromZero) {
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(KST_OK, KST_Initialisation(true, false, false));
        EXPECT_EQ(KST_OK, KST_Initialisation(true, false, false));
        int group = -1;
        int box = -1;
        EXPECT_EQ(KST_OK, KST_CreateGroup(&group, 0, true, nullptr, false));
        EXPECT_EQ(1, group);
        EXPECT_EQ(KST_OK, KST_CreateBox(group, 1, 1, 1, 0, 0, 0, &box, nullptr));
        EXPECT_EQ(0, box);
        EXPECT_EQ(KST_OK, i % 2 == 0 ? KST_ShowView(3, nullptr) : KST_OK);
        EXPECT_EQ(KST_OK, KST_ResumeVisualisation());
        EXPECT_EQ(KST_OK, KST_End());
        EXPECT_EQ(KST_ERROR_NOT_INITIALISED, KST_ResumeVisualisation());
    }
}

TEST(Display, AnIdleDisplayTakesNoTimeOfTheProcessor) {
    ASSERT_EQ(KST_OK, KST_Initialisation(true, false, false));
    ASSERT_EQ(KST_OK, KST_ShowView(1, nullptr));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const std::clock_t before = std::clock();
    std::this_thread::sleep_for(std::chrono::seconds(2));
    const double share = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC / 2;
    EXPECT_EQ(KST_OK, KST_End());
    // Sanitizers make the wakings dearer.
    EXPECT_LT(share, 0.05);
}

/// In a process of its own: which display there is, is asked once a start, but drivers are not
/// unloaded.
template <class Body>
int InAnotherProcess(Body&& body) {
    const pid_t child = fork();
    if (child == 0) {
        alarm(20);
        _exit(body());
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

TEST(Display, WithoutAnyTheLibraryRunsHeadless) {
    const auto headless = [] {
        setenv("SDL_VIDEODRIVER", "no such driver", 1);
        const Clock::time_point start = Clock::now();
        if (KST_Initialisation(true, false, false) != KST_OK) {
            return 1;
        }
        if (Clock::now() - start > std::chrono::seconds(2)) {
            return 2;
        }
        int group = -1;
        const bool works = KST_ResumeVisualisation() == KST_ERROR_NOT_RENDERING &&
                           KST_ShowView(1, "none") == KST_OK &&
                           KST_CreateGroup(&group, 0, true, nullptr, false) == KST_OK;
        return works && KST_End() == KST_OK ? 0 : 3;
    };
    EXPECT_EQ(0, InAnotherProcess(headless));
}

TEST(Display, WithoutAScreenWindowsExistInMemory) {
    const auto inMemory = [] {
        unsetenv("SDL_VIDEODRIVER");
        unsetenv("DISPLAY");
        unsetenv("WAYLAND_DISPLAY");
        const bool works = KST_Initialisation(true, false, false) == KST_OK &&
                           KST_ShowView(1, "memory") == KST_OK &&
                           KST_ScreenCapture(1, "/dev/null") == KST_OK && KST_End() == KST_OK;
        return works ? 0 : 1;
    };
    EXPECT_EQ(0, InAnotherProcess(inMemory));
}

}  // namespace
