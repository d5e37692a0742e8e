// Random calls from two host threads while the display draws, for a number of seconds: objects
// come, move, change colour and go, scenes are loaded, views open and close, pictures are taken,
// drawing is suspended and resumed, the library ends and starts again. Fails if a call returns a
// code that cannot be, or if nothing goes on for a minute.
//
//   display_soak SECONDS SEED

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "../driver/SanitizedDriver.h"
#include "../frame/TemporaryFolder.h"
#include "kestrane.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kSilence = std::chrono::seconds(60);
constexpr int kMostIds = 4000;

std::atomic<long> calls{0};
std::atomic<long> faults{0};

class Host {
  public:
    Host(unsigned seed, const TemporaryFolder& folder)
        : m_random(seed),
          m_scene((folder / "scene.xml").string()),
          m_texture((folder / "texture.ppm").string()),
          m_picture((folder / ("picture" + std::to_string(seed) + ".bmp")).string()) {}

    void Call() {
        ++calls;
        switch (Below(24)) {
            case 0:
                Check(KST_CreateGroup(&m_id, Group(), Flip(), nullptr, false));
                break;
            case 1:
                Check(KST_CreateBox(Group(), 1, 2, 1, At(), At(), At(), nullptr, nullptr));
                break;
            case 2:
                Check(KST_CreateSphere(Group(), 1, At(), At(), At(), nullptr, nullptr));
                break;
            case 3:
                Check(KST_CreateCone(Group(), 1, 2, At(), At(), At(), nullptr, nullptr));
                break;
            case 4:
                Mesh();
                break;
            case 5:
                Check(KST_SetGroupPosition(Group(), At(), At(), At()));
                break;
            case 6:
                Check(KST_SetObjectPosition(Object(), At(), At(), At()));
                break;
            case 7:
                Check(KST_SetObjectColor(Object(), Part(), Part(), Part(), Part(), Below(2)));
                break;
            case 8:
                Check(KST_SetGroupColor(Group(), Part(), Part(), Part(), 1, Flip(), Below(2)));
                break;
            case 9:
                Check(KST_SetObjectActiveSurface(Object(), Below(2)));
                break;
            case 10:
                Check(KST_SetObjectTexture(Object(), Below(4), 1, 2, 0));
                break;
            case 11:
                Check(KST_LoadTexture(Below(4), m_texture.c_str(), Flip() ? 1.0F : 0.5F));
                break;
            case 12:
                Check(KST_DestroyObject(Object()));
                break;
            case 13:
                Rarely([this] { Check(KST_DestroyGroup(Group())); });
                break;
            case 14:
                Check(KST_SetGroupVisibility(Group(), Below(4), Flip()));
                break;
            case 15:
                Check(KST_MoveObject(Object(), Group()));
                break;
            case 16:
                Check(KST_MoveGroup(Group(), Group()));
                break;
            case 17:
                Check(KST_SetViewOptions(Below(4), Below(1024)));
                break;
            case 18:
                Check(KST_SetViewParams(Below(4), At(), At(), At(), At(), 0, 0, 0, 1, 0));
                break;
            case 19:
                Animate();
                break;
            case 20:
                Query();
                break;
            case 21:
                Rarely([this] { Check(KST_LoadScene(m_scene.c_str(), Group(), nullptr)); });
                break;
            case 22:
                Windows();
                break;
            default:
                Rarely([this] { StartAndEnd(); });
                break;
        }
    }

  private:
    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    bool Flip() { return Below(2) == 0; }
    float Part() { return static_cast<float>(Below(101)) / 100; }
    float At() { return static_cast<float>(Below(2001) - 1000) / 100; }
    int Group() { return Below(12); }
    int Object() { return Below(kMostIds); }

    template <class Body>
    void Rarely(Body&& body) {
        if (Below(20) == 0) {
            body();
        }
    }

    /// Any code of the table may come: ids are guessed, and the other thread changes everything.
    static void Check(int code) {
        const bool known = code <= KST_OK && code >= KST_ERROR_ANIMATED && code != -15;
        faults += known ? 0 : 1;
    }

    void Mesh() {
        float corners[90];
        for (float& c : corners) {
            c = At() / 4;
        }
        Check(KST_CreateTriangles(Group(), 10, corners, nullptr, nullptr));
        const int counts[] = {5, 7};
        Check(KST_CreatePolygonGroup(Group(), 2, counts, corners, nullptr, nullptr));
        Check(KST_CreatePolyline(Group(), 2, counts, corners, nullptr, nullptr));
    }

    void Animate() {
        const float eye[] = {At(), At(), At()};
        const float point[] = {0, 0, 0};
        Check(KST_AddViewKeyState(Below(4), Part() * 10, eye, point, nullptr));
        Check(KST_SetTime(Part() * 10));
        Rarely([this] { Check(KST_ClearViewKeyStates(Below(4))); });
        Check(KST_SetBackgroundColor(Below(4), Part(), Part(), Part()));
    }

    void Query() {
        int count = 0;
        float f[9];
        Check(KST_CheckGroupCollision(Group(), Group(), true, &count));
        Check(
            KST_GetViewParams(Below(4), f, f + 1, f + 2, f + 3, f + 4, f + 5, f + 6, f + 7, f + 8));
    }

    void Windows() {
        switch (Below(8)) {
            case 0:
                Check(KST_ShowView(1 + Below(3), "soak"));
                break;
            case 1:
                Check(KST_HideView(1 + Below(3)));
                break;
            case 2:
                Check(KST_ScreenCapture(Below(4), m_picture.c_str()));
                break;
            case 3:
                Check(KST_SuspendVisualisation());
                Check(KST_EmptyGroup(Group()));
                Check(KST_ResumeVisualisation());
                break;
            default:
                break;
        }
    }

    void StartAndEnd() {
        if (Below(10) == 0) {
            Check(KST_End());
            Check(KST_Initialisation(true, false, false));
        }
    }

    std::minstd_rand m_random;
    std::string m_scene;
    std::string m_texture;
    std::string m_picture;
    int m_id = 0;
};

constexpr const char* kScene = R"(<?xml version="1.0"?>
<!DOCTYPE scene SYSTEM "kestrane.dtd">
<scene>
  <group colCheck="true">
    <box width="1" height="1" depth="1"><pos x="1" y="0" z="0"/></box>
    <sphere radius="1"><pos x="2" y="0" z="1"/></sphere>
  </group>
</scene>
)";

}  // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 5;
    const unsigned seed = argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 1;
    const TemporaryFolder folder;
    folder.MakeConfigHome();
    folder.Write("scene.xml", kScene);
    folder.Write("texture.ppm", "P3\n2 2\n255\n255 0 0 0 255 0 0 0 255 255 255 255\n");
    std::filesystem::copy_file(KESTRANE_DTD, folder / "kestrane.dtd");

    if (KST_Initialisation(true, false, false) != KST_OK || KST_ResumeVisualisation() != KST_OK) {
        std::puts("there is no display");
        return 1;
    }
    KeepLoadedDrivers();
    std::atomic<bool> stop{false};
    std::vector<std::thread> hosts;
    for (unsigned i = 0; i < 2; ++i) {
        hosts.emplace_back([&stop, &folder, host = Host(seed + i, folder)]() mutable {
            while (!stop) {
                host.Call();
            }
        });
    }
    const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
    long seen = -1;
    Clock::time_point moved = Clock::now();
    while (Clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (calls != seen) {
            seen = calls;
            moved = Clock::now();
        } else if (Clock::now() - moved > kSilence) {
            std::puts("nothing goes on any more");
            std::abort();
        }
    }
    stop = true;
    for (std::thread& host : hosts) {
        host.join();
    }
    const int ended = KST_End();
    std::printf("%ld calls, %ld codes that cannot be\n", calls.load(), faults.load());
    return faults == 0 && ended == KST_OK ? 0 : 1;
}
