#include "platform/maverik/Renderer.h"

#include <epoxy/gl.h>

#include <array>

#include "platform/maverik/FrameDrawing.h"

namespace {

/// Names in GL_RENDERER of OpenGL without a graphics processor.
constexpr std::array kSoftwareRenderers = {"llvmpipe", "softpipe", "swrast", "Software Rasterizer"};

bool DrawsInSoftware() {
    const auto* const text = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
    const std::string renderer = text != nullptr ? text : "";
    for (const char* const name : kSoftwareRenderers) {
        if (renderer.find(name) != std::string::npos) {
            return true;
        }
    }
    return false;
}

/// Throws RendererFailure.
void RequireOpenGl() {
    constexpr int kLeastVersion = 33;
    if (!epoxy_is_desktop_gl() || epoxy_gl_version() < kLeastVersion) {
        throw RendererFailure("OpenGL 3.3 is needed");
    }
}

}  // namespace

struct Renderer::Data {
    bool software = false;
    FrameDrawing drawing;
};

Renderer::Renderer() {
    RequireOpenGl();
    m_data = std::make_unique<Data>();
    m_data->software = DrawsInSoftware();
}

Renderer::~Renderer() = default;

void Renderer::Draw(const FrameContents& contents, RenderTarget& target) {
    target.Bind();
    m_data->drawing.Draw(contents.Contents());
}

void Renderer::CollectGarbage() {
    m_data->drawing.CollectGarbage();
}

int Renderer::Samples(bool still) const noexcept {
    // Beyond this a processor takes so long that whoever moves the camera again would notice.
    constexpr std::size_t kManyTriangles = 200'000;
    if (!m_data->software) {
        return 4;
    }
    return still && m_data->drawing.Triangles() < kManyTriangles ? 4 : 1;
}
