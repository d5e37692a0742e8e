#include "Stage.h"

#include <SDL.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numbers>
#include <stdexcept>

namespace {

MAV_matrix Zero() {
    MAV_matrix matrix;
    matrix.mat.fill(0);
    return matrix;
}

}  // namespace

Stage::Stage(int width, int height) {
    SDL_SetMainReady();
    SDL_SetHint(SDL_HINT_VIDEODRIVER, "offscreen");
    if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
        throw std::runtime_error(SDL_GetError());
    }
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_MAJOR_VERSION, 3);
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_MINOR_VERSION, 3);
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_PROFILE_MASK, SDL_GL_CONTEXT_PROFILE_CORE);
    m_window = SDL_CreateWindow("stage", 0, 0, width, height, SDL_WINDOW_OPENGL);
    m_context = m_window != nullptr ? SDL_GL_CreateContext(m_window) : nullptr;
    if (m_context == nullptr) {
        throw std::runtime_error(SDL_GetError());
    }
    renderer = std::make_unique<Renderer>();
    target = std::make_unique<RenderTarget>();
    list = mav_SMSObjListNew();
    view.width = width;
    view.height = height;
    Perspective(0.1f, 1000, 60);
}

Stage::~Stage() {
    for (MAV_object* const object : m_objects) {
        mav_objectDelete(object);
    }
    mav_SMSDelete(list);
    target.reset();
    renderer.reset();
    SDL_GL_DeleteContext(m_context);
    SDL_DestroyWindow(m_window);
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
}

MAV_object* Stage::Add(MAV_class shape, const void* record) {
    m_objects.push_back(mav_objectNew(shape, record));
    mav_SMSObjectAdd(list, m_objects.back());
    return m_objects.back();
}

void Stage::Remove(MAV_object* object) {
    std::erase(m_objects, object);
    mav_objectDelete(object);
}

void Stage::LookFrom(const MAV_vector& eye) {
    view.view = mav_matrixXYZSet(MAV_ID_MATRIX, {-eye.x, -eye.y, -eye.z});
}

void Stage::Perspective(float near, float far, float fov) {
    const float f = 1 / std::tan(fov * std::numbers::pi_v<float> / 360);
    view.projection = Zero();
    view.projection[0] = f * static_cast<float>(view.height) / static_cast<float>(view.width);
    view.projection[5] = f;
    view.projection[10] = (far + near) / (near - far);
    view.projection[11] = 2 * far * near / (near - far);
    view.projection[14] = -1;
    view.orthogonal = false;
}

void Stage::Orthogonal(float near, float far, float height) {
    view.projection = Zero();
    view.projection[0] =
        2 / height * static_cast<float>(view.height) / static_cast<float>(view.width);
    view.projection[5] = 2 / height;
    view.projection[10] = 2 / (near - far);
    view.projection[11] = (far + near) / (near - far);
    view.projection[15] = 1;
    view.orthogonal = true;
}

const MAV_image& Stage::Draw() {
    contents.Begin(view, palette);
    contents.Collect(*list, palette, transparency);
    for (const auto& [text, place] : texts) {
        contents.AddText(text, palette.colours[0], place[0], place[1]);
    }
    target->Resize(view.width, view.height, samples);
    renderer->Draw(contents, *target);
    renderer->CollectGarbage();
    m_picture = target->Read();
    if (const char* const file = std::getenv("KESTRANE_STAGE_PICTURE")) {
        std::ofstream out(file, std::ios::binary);
        out << "P6 " << m_picture->width << ' ' << m_picture->height << " 255\n";
        out.write(reinterpret_cast<const char*>(m_picture->rgb.data()),
                  static_cast<std::streamsize>(m_picture->rgb.size()));
    }
    return *m_picture;
}

std::array<double, 2> Stage::Project(const MAV_vector& point) const {
    const MAV_matrix all = mav_matrixMult(view.projection, view.view);
    const auto row = [&](std::size_t i) {
        return static_cast<double>(all[i] * point.x + all[i + 1] * point.y + all[i + 2] * point.z +
                                   all[i + 3]);
    };
    return {(row(0) / row(12) + 1) / 2 * view.width, (1 - row(4) / row(12)) / 2 * view.height};
}

std::array<int, 3> Stage::Pixel(int x, int y) const {
    if (x < 0 || y < 0 || x >= m_picture->width || y >= m_picture->height) {
        return {0, 0, 0};
    }
    const std::size_t at = 3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(view.width) +
                                static_cast<std::size_t>(x));
    return {m_picture->rgb[at], m_picture->rgb[at + 1], m_picture->rgb[at + 2]};
}

std::array<int, 3> Stage::PixelAt(const MAV_vector& point) const {
    const auto [x, y] = Project(point);
    return Pixel(static_cast<int>(std::floor(x)), static_cast<int>(std::floor(y)));
}

int Stage::Covered() const {
    const auto byte = [](float c) { return static_cast<int>(std::lround(c * 255)); };
    const std::array<int, 3> empty = {byte(view.background.r), byte(view.background.g),
                                      byte(view.background.b)};
    int covered = 0;
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x)
            covered += Pixel(x, y) != empty ? 1 : 0;
    }
    return covered;
}
