#include <epoxy/gl.h>

#include <algorithm>
#include <cstring>

#include "platform/maverik/Renderer.h"

namespace {

/// A framebuffer with a picture in a renderbuffer, and with depth where it is to be drawn into.
class Framebuffer {
  public:
    Framebuffer() = default;
    ~Framebuffer() { Release(); }
    Framebuffer(const Framebuffer&) = delete;
    Framebuffer& operator=(const Framebuffer&) = delete;

    GLuint Name() const noexcept { return m_framebuffer; }

    void Allocate(int width, int height, int samples, bool depth) {
        Release();
        glGenFramebuffers(1, &m_framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
        m_colour = Attach(GL_COLOR_ATTACHMENT0, GL_RGBA8, width, height, samples);
        if (depth) {
            m_depth = Attach(GL_DEPTH_ATTACHMENT, GL_DEPTH_COMPONENT24, width, height, samples);
        }
    }

    void Release() noexcept {
        if (m_framebuffer == 0) {
            return;
        }
        glDeleteFramebuffers(1, &m_framebuffer);
        glDeleteRenderbuffers(1, &m_colour);
        glDeleteRenderbuffers(1, &m_depth);
        m_framebuffer = m_colour = m_depth = 0;
    }

  private:
    static GLuint Attach(GLenum attachment, GLenum format, int width, int height, int samples) {
        GLuint name = 0;
        glGenRenderbuffers(1, &name);
        glBindRenderbuffer(GL_RENDERBUFFER, name);
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples > 1 ? samples : 0, format, width,
                                         height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, attachment, GL_RENDERBUFFER, name);
        return name;
    }

    GLuint m_framebuffer = 0;
    GLuint m_colour = 0;
    GLuint m_depth = 0;
};

}  // namespace

struct RenderTarget::Data {
    int width = 0, height = 0, samples = 0;
    Framebuffer drawn;
    Framebuffer resolved;  ///< one sample a pixel; empty where `drawn` has no more

    /// The framebuffer with one sample a pixel, up to date.
    GLuint Resolve() {
        if (samples <= 1) {
            return drawn.Name();
        }
        if (resolved.Name() == 0) {
            resolved.Allocate(width, height, 1, false);
        }
        Copy(drawn.Name(), resolved.Name(), width, height);
        return resolved.Name();
    }

    static void Copy(GLuint from, GLuint to, int width, int height) {
        glDisable(GL_SCISSOR_TEST);
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        glBindFramebuffer(GL_READ_FRAMEBUFFER, from);
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, to);
        glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT,
                          GL_NEAREST);
    }
};

RenderTarget::RenderTarget() : m_data(std::make_unique<Data>()) {}

RenderTarget::~RenderTarget() = default;

void RenderTarget::Resize(int width, int height, int samples) {
    GLint mostSamples = 1, greatestSize = 1;
    glGetIntegerv(GL_MAX_SAMPLES, &mostSamples);
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &greatestSize);
    width = std::clamp(width, 1, greatestSize);
    height = std::clamp(height, 1, greatestSize);
    samples = std::clamp(samples, 1, std::max(mostSamples, 1));
    Data& data = *m_data;
    if (width == data.width && height == data.height && samples == data.samples) {
        return;
    }
    data.width = width;
    data.height = height;
    data.samples = samples;
    data.resolved.Release();
    data.drawn.Allocate(width, height, samples, true);
}

void RenderTarget::Bind() {
    glBindFramebuffer(GL_FRAMEBUFFER, m_data->drawn.Name());
}

void RenderTarget::ShowInWindow(int width, int height) {
    if (m_data->drawn.Name() == 0) {
        return;
    }
    const GLuint picture = m_data->Resolve();
    Data::Copy(picture, 0, std::min(width, m_data->width), std::min(height, m_data->height));
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

std::shared_ptr<const MAV_image> RenderTarget::Read() {
    auto image = std::make_shared<MAV_image>();
    Data& data = *m_data;
    if (data.drawn.Name() == 0) {
        return image;
    }
    const auto row = static_cast<std::size_t>(data.width) * 3;
    const auto rows = static_cast<std::size_t>(data.height);
    image->rgb.resize(row * rows);
    image->width = data.width;
    image->height = data.height;

    glBindFramebuffer(GL_READ_FRAMEBUFFER, data.Resolve());
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, data.width, data.height, GL_RGB, GL_UNSIGNED_BYTE, image->rgb.data());
    // OpenGL's rows go upwards.
    std::uint8_t* const pixels = image->rgb.data();
    for (std::size_t i = 0; i < rows / 2; ++i) {
        std::swap_ranges(pixels + i * row, pixels + (i + 1) * row, pixels + (rows - 1 - i) * row);
    }
    return image;
}
