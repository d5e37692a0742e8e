#pragma once

#include <CLI/CLI.hpp>
#include <array>
#include <string>
#include <vector>

/// From where a picture is taken and how large it is, as given on the command line.
class Camera {
  public:
    /// --view, --size, --eye, --point, --up; these need the option `pictures`, unless it is null.
    void AddTo(CLI::App& command, CLI::Option* pictures = nullptr);
    /// Throws Failure if an argument makes no sense. Needs no scene.
    void Parse();
    /// Opens the view, if it is not the main one, and puts its camera to its place: the one that
    /// was given, else that of the scene file, else where all of the scene is seen.
    void Apply() const;

    int View() const { return m_view; }
    int Width() const { return m_width; }
    int Height() const { return m_height; }

  private:
    std::string m_viewText = "0";
    std::string m_sizeText = "1000x800";
    std::vector<std::string> m_eyeText;
    std::vector<std::string> m_pointText;
    std::vector<std::string> m_upText;

    int m_view = 0;
    int m_width = 0;
    int m_height = 0;
    bool m_given = false;
    std::array<float, 3> m_eye = {};
    std::array<float, 3> m_point = {};
    std::array<float, 3> m_up = {0, 1, 0};
};

/// The scene file has put the camera of the view somewhere.
bool HasCameraOfFile(int view);

/// Shows all of the scene in a view in which nothing of it is shown: groups are visible in the main
/// view alone unless somebody says otherwise.
void ShowSceneIn(int view);

/// Gives a view whose background is white, as it is unless the scene file says otherwise, one
/// before which white things are seen.
void TintBackground(int view);

/// Throws Failure unless the name is that of a BMP file.
void RequirePictureName(const std::string& file);

/// Writes what the view shows now as a BMP file, whole or not at all. Throws Failure.
void WritePicture(int view, const std::string& file);
