#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
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
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    // They make the wakings dearer.
    constexpr double kMost = 0.05;
#else
    constexpr double kMost = 0.01;
#endif
    EXPECT_LT(share, kMost);
}

/// In a process of its own, that begins anew: drivers do not outlive a fork.
template <class Body>
void ExpectSuccessInAnotherProcess(Body&& body) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto run = [&body] {
        alarm(20);
        const int status = body();
#if defined(__SANITIZE_ADDRESS__)
        // What a driver leaves behind that was loaded for this one start cannot be told by its
        // name.
        std::_Exit(status);
#else
        std::exit(status);
#endif
    };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
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
    ExpectSuccessInAnotherProcess(headless);
}

/// An X server of its own, without a window manager.
class XServer {
  public:
    XServer() {
        int ends[2];
        if (pipe(ends) != 0) {
            return;
        }
        m_process = fork();
        if (m_process == 0) {
            const std::string end = std::to_string(ends[1]);
            // Goes with this process, whatever ends it, and keeps nothing of its output open.
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            const int nowhere = open("/dev/null", O_WRONLY);
            dup2(nowhere, STDOUT_FILENO);
            dup2(nowhere, STDERR_FILENO);
            execlp("Xvfb", "Xvfb", "-displayfd", end.c_str(), "-nolisten", "tcp", nullptr);
            _exit(1);
        }
        close(ends[1]);
        // The number comes in pieces, and ends with the line.
        m_display = ":";
        for (char digit = 0; read(ends[0], &digit, 1) == 1 && digit != '\n';) {
            m_display += digit;
        }
        close(ends[0]);
    }
    ~XServer() { Kill(); }
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    const std::string& Display() const { return m_display; }
    void Kill() {
        if (m_process > 0) {
            kill(m_process, SIGKILL);
            waitpid(m_process, nullptr, 0);
            m_process = -1;
        }
    }

  private:
    pid_t m_process = -1;
    std::string m_display;
};

TEST(Display, ALostScreenEndsTheDisplayAndNothingElse) {
    const auto lose = [] {
        XServer server;
        unsetenv("SDL_VIDEODRIVER");
        unsetenv("WAYLAND_DISPLAY");
        unsetenv("XAUTHORITY");
        setenv("DISPLAY", server.Display().c_str(), 1);
        int group = -1;
        int box = -1;
        if (KST_Initialisation(true, false, false) != KST_OK ||
            KST_ShowView(1, nullptr) != KST_OK ||
            KST_CreateGroup(&group, 0, true, nullptr, false) != KST_OK ||
            KST_CreateBox(group, 1, 1, 1, 0, 0, 0, &box, nullptr) != KST_OK) {
            return 1;
        }
        server.Kill();
        // Until the loss is noticed pictures may still be drawn, but nobody waits for one for ever.
        bool noticed = false;
        for (int i = 0; i < 500 && !noticed; ++i) {
            KST_SetObjectPosition(box, static_cast<float>(i), 0, 0);
            KST_ScreenCapture(1, "/dev/null");
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            noticed = KST_ResumeVisualisation() == KST_ERROR_NOT_RENDERING;
        }
        if (!noticed) {
            return 2;
        }
        int count = 0;
        const bool goesOn = KST_SetObjectColor(box, 1, 1, 0, 1, 0) == KST_OK &&
                            KST_ShowView(2, nullptr) == KST_ERROR_NOT_RENDERING &&
                            KST_CheckPointCollision(group, 0, 0, 0, true, &count) == KST_OK &&
                            KST_EmptyGroup(group) == KST_OK && KST_End() == KST_OK;
        if (!goesOn) {
            return 3;
        }
        // What the driver had locked stays so: from now on there is no display in this process.
        return KST_Initialisation(true, false, false) == KST_OK &&
                       KST_ResumeVisualisation() == KST_ERROR_NOT_RENDERING && KST_End() == KST_OK
                   ? 0
                   : 4;
    };
    ExpectSuccessInAnotherProcess(lose);
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
    ExpectSuccessInAnotherProcess(inMemory);
}

}  // namespace
