#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <memory>
#include <string>
#include <thread>

#include "Camera.h"
#include "Commands.h"
#include "Failure.h"
#include "Numbers.h"
#include "Output.h"
#include "Scene.h"
#include "frame/CheckerApp.h"
#include "model/Registries.h"
#include "visualiser/Display.h"
#include "visualiser/VisView.h"

namespace {

struct ViewOptions {
    std::string file;
    std::string views = "1";
    std::string time = "0";
    bool play = false;
};

std::atomic<bool> isInterrupted{false};

void Interrupt(int /*signal*/) {
    isInterrupted = true;
}

/// What the program changes for a scene, and what is not to become the user's setting.
class ViewSettings {
  public:
    ViewSettings() {
        for (std::size_t i = 0; i < m_kept.size(); ++i)
            m_kept[i] = {g_views[i]->m_fogStart, g_views[i]->m_nearClip, g_views[i]->m_farClip,
                         g_views[i]->m_navigationSpeed};
    }
    ~ViewSettings() {
        // What is queued comes before, or not any more.
        KST_SuspendVisualisation();
        g_visualiser->LockFrame();
        for (std::size_t i = 0; i < m_kept.size(); ++i) {
            const auto& [fogStart, nearClip, farClip, speed] = m_kept[i];
            g_views[i]->m_fogStart = fogStart;
            g_views[i]->m_nearClip = nearClip;
            g_views[i]->m_farClip = farClip;
            g_views[i]->m_navigationSpeed = speed;
        }
        g_visualiser->UnlockFrame();
    }
    ViewSettings(const ViewSettings&) = delete;
    ViewSettings& operator=(const ViewSettings&) = delete;

  private:
    std::array<std::array<float, 4>, kViewCount> m_kept;
};

struct Place {
    int left, top, width, height;
    std::array<float, 3> direction;  ///< from the scene to the camera
    std::array<float, 3> up;
};

/// Where windows open that the user has not put anywhere yet, and how they see the scene: from a
/// corner, from the front, from above, from the right.
/// All four stand on a screen of 1280 x 1024.
constexpr Place kPlaces[kViewCount] = {{20, 40, 780, 640, {2, 1, 2}, {0, 1, 0}},
                                       {840, 40, 400, 270, {0, 0, 1}, {0, 1, 0}},
                                       {840, 360, 400, 270, {0, 1, 0}, {0, 0, -1}},
                                       {840, 680, 400, 270, {1, 0, 0}, {0, 1, 0}}};

bool IsUnplaced(const CVisView& view) {
    return view.m_left == 0 && view.m_top == 0 && view.m_width == 300 && view.m_height == 300;
}

void OpenView(int index) {
    const Place& place = kPlaces[index];
    CVisView& view = *g_views[static_cast<std::size_t>(index)];
    CDisplay& display = *Application().Display();
    const bool ofFile = HasCameraOfFile(index);
    if (index > 0) {
        if (IsUnplaced(view)) {
            view.m_left = place.left;
            view.m_top = place.top;
            view.m_width = place.width;
            view.m_height = place.height;
        }
        Require(KST_ShowView(index, nullptr), "view " + std::to_string(index));
        ShowSceneIn(index);
    } else if (IsUnplaced(view)) {
        display.SetWindowSize(0, place.width, place.height);
    }
    TintBackground(index);
    if (ofFile) {
        display.FitClipping(index);
        return;
    }
    const auto& [x, y, z] = place.direction;
    const auto& [upX, upY, upZ] = place.up;
    KST_SetViewParams(index, x, y, z, 0, 0, 0, upX, upY, upZ);
    display.ShowAll(index);
}

/// Until the user closes the main window or interrupts the program, or the screen is lost.
void Watch(Scene& scene, double begin, bool play) {
    using Clock = std::chrono::steady_clock;
    std::signal(SIGINT, Interrupt);
    std::signal(SIGTERM, Interrupt);
    const CDisplay& display = *Application().Display();
    const Clock::time_point start = Clock::now();
    while (!isInterrupted && !display.IsCloseWanted() && !display.IsStandingStill()) {
        if (play && g_timeScaleMax > 0) {
            const double passed = std::chrono::duration<double>(Clock::now() - start).count();
            scene.SetTime(std::fmod(begin + passed, static_cast<double>(g_timeScaleMax)));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(15));
    }
}

int RunView(const ViewOptions& options) {
    const double time = ParseTime(options.time, "--time");
    if (options.views.size() != 1 || options.views[0] < '1' || options.views[0] > '4')
        throw Failure("--views: " + Quoted(options.views) + " is not a number of views; 1 to 4");
    Scene scene(options.file, Showing::kOnScreen);
    const ViewSettings settings;
    scene.SetTime(time);
    for (int view = 0; view < options.views[0] - '0'; ++view)
        OpenView(view);
    Watch(scene, time, options.play);
    return kFree;
}

}  // namespace

void AddViewCommand(CLI::App& program, Action& action) {
    CLI::App& command =
        *program.add_subcommand("view", "Show a scene in windows, until the main one is closed.");
    command.footer(
        "Drag with the left button to turn, with the middle one to come nearer, with the right one "
        "to\n"
        "move across; the wheel comes nearer in steps. w s a d r f or the arrows move, Tab looks "
        "around,\n"
        "z flies to what the mouse points at.\n"
        "\nExamples:\n"
        "  kestrane view robot_cell.xml --play\n"
        "  kestrane view robot_cell.xml --views 4 --time 7.7\n"
        "\nExit status: 0, or 2 error (with one line on the standard error stream).");
    auto options = std::make_shared<ViewOptions>();
    command.add_option("FILE", options->file, "Scene file (.xml, .wrl)")->required();
    command.add_option("--views", options->views, "Number of views, 1 to 4; 1 by default")
        ->option_text("N");
    command.add_option("--time", options->time, "Time; 0 by default")->option_text("T");
    command.add_flag("--play", options->play,
                     "Let the time run from there, a unit a second, over and over");
    command.callback([options, &action] { action = [options] { return RunView(*options); }; });
}
