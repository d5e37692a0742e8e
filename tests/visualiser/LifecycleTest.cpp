#include <dlfcn.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include "Shown.h"
#include "visualiser/RenderThread.h"

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

TEST(Display, AHostMayLeaveWhileItDraws) {
    ExpectSuccessInAnotherProcess([] {
        if (KST_Initialisation(true, false, false) != KST_OK ||
            KST_SuspendVisualisation() != KST_OK || KST_ResumeVisualisation() != KST_OK) {
            return 1;
        }
        // Frames without a pause, in one of which the process ends.
        g_activeInteractions = 1;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        return 0;
    });
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

/// Has a socket listen at this address; nobody will ever answer there.
template <class Address>
int Silent(Address& address, socklen_t size) {
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    const int listener = socket(general->sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool listens = bind(listener, general, size) == 0 && listen(listener, 5) == 0 &&
                         getsockname(listener, general, &size) == 0;
    return listens ? listener : -1;
}

/// What the first that connected there has said.
std::string HeardBy(int listener) {
    char text[100] = "";
    const ssize_t size = read(accept(listener, nullptr, nullptr), text, sizeof text);
    return {text, static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

TEST(Display, AServerThatNeverAnswersHoldsUpNobody) {
    const auto run = [] {
        const TemporaryFolder folder;
        sockaddr_in remote = {AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
        const int remoteListener = Silent(remote, sizeof remote);
        const std::string number = ":" + std::to_string(ntohs(remote.sin_port) - 6000);
        sockaddr_un local = {AF_UNIX, ""}, wayland = {AF_UNIX, ""};
        const std::string name = "/tmp/.X11-unix/X" + number.substr(1);
        const std::string path = (folder / "wayland").string();
        name.copy(local.sun_path + 1, name.size());
        path.copy(wayland.sun_path, path.size());
        if (remoteListener < 0 || Silent(wayland, sizeof wayland) < 0 ||
            Silent(local, static_cast<socklen_t>(sizeof(sa_family_t) + 1 + name.size())) < 0) {
            return 1;
        }
        // For any server: a family that stands for all, no address, no number.
        const std::string cookie("\377\377\0\0\0\0\0\022MIT-MAGIC-COOKIE-1\0\5crumb", 33);
        setenv("XAUTHORITY", folder.Write("cookies", cookie).c_str(), 1);
        setenv("WAYLAND_DISPLAY", path.c_str(), 1);
        const struct {
            const char* drivers;
            std::string display;
            int status;
        } cases[] = {{"x11", "127.0.0.1" + number, KST_ERROR_NOT_RENDERING},
                     {"x11", "localhost" + number, KST_ERROR_NOT_RENDERING},
                     {"x11", "192.0.2.1:0", KST_ERROR_NOT_RENDERING},
                     {"wayland,X11", "unix" + number, KST_ERROR_NOT_RENDERING},
                     {"", number, KST_OK}};
        int failed = 2;
        for (const auto& [drivers, display, status] : cases) {
            setenv("SDL_VIDEODRIVER", drivers, 1);
            setenv("DISPLAY", display.c_str(), 1);
            const Clock::time_point start = Clock::now();
            if (KST_Initialisation(true, false, false) != KST_OK ||
                Clock::now() - start > std::chrono::seconds(2) ||
                KST_ResumeVisualisation() != status || KST_End() != KST_OK) {
                return failed;
            }
            ++failed;
        }
        const std::string heard = HeardBy(remoteListener);
        return heard.find("crumb") == 32 ? 0 : failed;
    };
    ExpectSuccessInAnotherProcess(run);
}

TEST(Display, ErrorHandlersOfXAreTheHostsAgainAfterwards) {
    using Handler = int (*)(void*, void*);
    const auto run = [] {
        XServer server;
        unsetenv("SDL_VIDEODRIVER");
        unsetenv("XAUTHORITY");
        setenv("DISPLAY", server.Display().c_str(), 1);
        void* const x = dlopen("libX11.so.6", RTLD_NOW);
        const Handler before = [](void*, void*) { return 1; };
        const Handler meanwhile = [](void*, void*) { return 2; };
        for (const char* name : {"XSetErrorHandler", "XSetIOErrorHandler"}) {
            const auto set = reinterpret_cast<Handler (*)(Handler)>(dlsym(x, name));
            for (const bool hostSetsOne : {false, true}) {
                set(before);
                if (KST_Initialisation(true, false, false) != KST_OK) {
                    return 1;
                }
                const Handler ours = set(meanwhile);
                if (!hostSetsOne) {
                    set(ours);
                }
                if (KST_End() != KST_OK || ours == before ||
                    set(nullptr) != (hostSetsOne ? meanwhile : before)) {
                    return 2;
                }
            }
        }
        return 0;
    };
    ExpectSuccessInAnotherProcess(run);
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
