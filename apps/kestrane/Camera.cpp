#include "Camera.h"

#include <charconv>
#include <filesystem>
#include <mutex>
#include <system_error>

#include "Failure.h"
#include "Names.h"
#include "Numbers.h"
#include "Output.h"
#include "OutputFile.h"
#include "frame/CheckerApp.h"
#include "kestrane.h"
#include "model/Group.h"
#include "model/ModelLock.h"
#include "model/Registries.h"
#include "visualiser/Display.h"
#include "visualiser/VisView.h"

namespace {

constexpr int kLargestSide = 8192;

/// A whole number of digits alone in [least, most].
bool ReadWhole(std::string_view text, int least, int most, int& number) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && number >= least && number <= most;
}

std::array<float, 3> ParsePoint(const std::vector<std::string>& texts, const char* option) {
    std::array<float, 3> point{};
    for (std::size_t i = 0; i < point.size(); ++i)
        point[i] = static_cast<float>(ParseNumber(texts[i], option));
    return point;
}

}  // namespace

void Camera::AddTo(CLI::App& command, CLI::Option* pictures) {
    CLI::Option* const view =
        command.add_option("--view", m_viewText, "The view, 0 to 3; 0, the main view, by default")
            ->option_text("N");
    CLI::Option* const size =
        command
            .add_option("--size", m_sizeText,
                        "Size of the picture in pixels, up to 8192x8192; 1000x800 by default")
            ->option_text("WxH");
    const auto addPoint = [&command](const char* option, std::vector<std::string>& texts,
                                     const char* help) {
        return command.add_option(option, texts, help)->expected(3)->option_text("X Y Z");
    };
    CLI::Option* const eye = addPoint("--eye", m_eyeText, "Where the camera is");
    CLI::Option* const point = addPoint("--point", m_pointText, "Where it looks");
    addPoint("--up", m_upText, "What is up in the picture; 0 1 0 by default")
        ->needs(eye)
        ->needs(point);
    eye->needs(point);
    point->needs(eye);
    for (CLI::Option* const option : {view, size, eye}) {
        if (pictures != nullptr)
            option->needs(pictures);
    }
}

void Camera::Parse() {
    if (!ReadWhole(m_viewText, 0, 3, m_view))
        throw Failure("--view: " + Quoted(m_viewText) + " is not a view; they are 0 to 3");
    const std::size_t cross = m_sizeText.find('x');
    const std::string_view size = m_sizeText;
    if (cross == std::string::npos || !ReadWhole(size.substr(0, cross), 1, kLargestSide, m_width) ||
        !ReadWhole(size.substr(cross + 1), 1, kLargestSide, m_height))
        throw Failure("--size: " + Quoted(m_sizeText) +
                      " is not a size; it is width x height, as in 1000x800, of up to " +
                      std::to_string(kLargestSide) + " pixels");
    m_given = !m_eyeText.empty();
    if (!m_given)
        return;
    m_eye = ParsePoint(m_eyeText, "--eye");
    m_point = ParsePoint(m_pointText, "--point");
    if (!m_upText.empty())
        m_up = ParsePoint(m_upText, "--up");
    if (m_eye == m_point)
        throw Failure("--point: the camera cannot look at the place where it is");
    if (m_up == std::array<float, 3>{})
        throw Failure("--up: this direction has no length");
}

void Camera::Apply() const {
    CDisplay& display = *Application().Display();
    const bool ofFile = HasCameraOfFile(m_view);
    if (m_view != 0) {
        Require(KST_ShowView(m_view, nullptr), "view " + std::to_string(m_view));
        ShowSceneIn(m_view);
    }
    TintBackground(m_view);
    display.SetWindowSize(m_view, m_width, m_height);
    if (m_given) {
        // A flight of the file would go on from here.
        KST_ClearViewKeyStates(m_view);
        Require(KST_SetViewParams(m_view, m_eye[0], m_eye[1], m_eye[2], m_point[0], m_point[1],
                                  m_point[2], m_up[0], m_up[1], m_up[2]),
                "camera");
    }
    if (m_given || ofFile)
        display.FitClipping(m_view);
    else
        display.ShowAll(m_view);
    display.WaitForFrame();
}

bool HasCameraOfFile(int view) {
    std::array<float, 9> start = {20, 10, 20, 0, 0, 0, 0, 1, 0};
    std::array<float, 9> now{};
    Application().Display()->GetViewParams(view, now.data(), now.data() + 3, now.data() + 6);
    return now != start;
}

void ShowSceneIn(int view) {
    for (const auto& [id, group] : g_groups) {
        if (group->IsVisibleInView(view))
            return;
    }
    const std::lock_guard lock(g_modelLock);
    g_visualiser->ShowGroup(g_groups.at(0), view);
}

void TintBackground(int view) {
    constexpr std::array<float, 3> kWhite = {1, 1, 1};
    if (g_views[static_cast<std::size_t>(view)]->m_background == kWhite)
        Require(KST_SetBackgroundColor(view, 0.8f, 0.85f, 0.9f), "background");
}

void RequirePictureName(const std::string& file) {
    if (!HasSuffix(file, ".bmp"))
        throw Failure("OUT: " + Quoted(file) + " is no picture; its name ends in .bmp");
}

void WritePicture(int view, const std::string& file) {
    OutputFile output(file);
    // The camera may have flown since the last picture.
    Application().Display()->FitClipping(view);
    Require(KST_ScreenCapture(view, output.TemporaryName().c_str()), file);
    std::error_code error;
    if (std::filesystem::file_size(output.TemporaryName(), error) == 0 || error)
        throw Failure(file + ": cannot be written");
    output.Keep();
}
