#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "platform/maverik/Renderer.h"

struct SDL_Window;

/// Something to look at objects with: a context without a screen, a palette, a list, and a view
/// from `eye` along -z. Throws std::runtime_error where there is no OpenGL.
class Stage {
  public:
    Stage(int width, int height);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// The record must stay.
    MAV_object* Add(MAV_class shape, const void* record);
    void Remove(MAV_object* object);

    void LookFrom(const MAV_vector& eye);
    /// `fov` is the whole vertical angle in degrees.
    void Perspective(float near, float far, float fov);
    void Orthogonal(float near, float far, float height);

    /// Draws a frame. The picture is kept for the functions below.
    const MAV_image& Draw();
    /// Where a point of the world stands in the picture, rows from the top down.
    std::array<double, 2> Project(const MAV_vector& point) const;
    /// Red, green and blue of the pixel; black outside the picture.
    std::array<int, 3> Pixel(int x, int y) const;
    std::array<int, 3> PixelAt(const MAV_vector& point) const;
    /// Pixels that are not of the background.
    int Covered() const;

    ViewSetup view;
    MAV_palette palette{100, 14};
    MAV_SMS* list = nullptr;
    FrameContents contents;
    bool transparency = true;
    int samples = 1;
    std::vector<std::pair<std::string, std::array<float, 2>>> texts;
    std::unique_ptr<Renderer> renderer;
    std::unique_ptr<RenderTarget> target;

  private:
    void* m_context = nullptr;
    SDL_Window* m_window = nullptr;
    std::vector<MAV_object*> m_objects;
    std::shared_ptr<const MAV_image> m_picture;
};
