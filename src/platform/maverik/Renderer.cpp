#include "platform/maverik/Renderer.h"

#include <epoxy/gl.h>

#include <array>

#include "platform/maverik/FrameContentsData.h"

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

}  // namespace

struct Renderer::Data {
    bool software = false;
};

Renderer::Renderer() : m_data(std::make_unique<Data>()) {
    constexpr int kLeastVersion = 33;
    if (!epoxy_is_desktop_gl() || epoxy_gl_version() < kLeastVersion) {
        throw RendererFailure("OpenGL 3.3 is needed");
    }
    m_data->software = DrawsInSoftware();
}

Renderer::~Renderer() = default;

void Renderer::Draw(const FrameContents& contents, RenderTarget& target) {
    const ViewSetup& setup = contents.Contents().setup;
    target.Bind();
    glDisable(GL_SCISSOR_TEST);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    glViewport(0, 0, setup.width, setup.height);
    glClearColor(setup.background.r, setup.background.g, setup.background.b, 1);
    glClearDepth(1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

void Renderer::CollectGarbage() {}

int Renderer::Samples(bool still) const noexcept {
    return m_data->software && !still ? 1 : 4;
}
