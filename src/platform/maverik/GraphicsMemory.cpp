#include "platform/maverik/GraphicsMemory.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <limits>

namespace {

/// OpenGL says only so whether there was enough memory.
void ForgetErrors() noexcept {
    for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i) {
    }
}

GLuint MakeBuffer(GLenum target, const void* data, std::size_t bytes) {
    GLuint name = 0;
    glGenBuffers(1, &name);
    glBindBuffer(target, name);
    glBufferData(target, static_cast<GLsizeiptr>(bytes), data, GL_STATIC_DRAW);
    return name;
}

}  // namespace

std::unique_ptr<GraphicsMesh> UploadMesh(const Mesh& mesh) {
    if (mesh.indices.empty() ||
        mesh.indices.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        return nullptr;
    }
    auto uploaded = std::make_unique<GraphicsMesh>();
    ForgetErrors();
    glGenVertexArrays(1, &uploaded->vertexArray);
    glBindVertexArray(uploaded->vertexArray);
    uploaded->vertices =
        MakeBuffer(GL_ARRAY_BUFFER, mesh.vertices.data(), mesh.vertices.size() * sizeof(float));
    uploaded->indices = MakeBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh.indices.data(),
                                   mesh.indices.size() * sizeof(std::uint32_t));
    uploaded->indexCount = static_cast<int>(mesh.indices.size());
    const auto stride = static_cast<GLsizei>(mesh.Stride() * sizeof(float));
    std::size_t offset = 0;
    const auto attribute = [&](GLuint location, int size) {
        glEnableVertexAttribArray(location);
        glVertexAttribPointer(location, size, GL_FLOAT, GL_FALSE, stride, BufferOffset(offset));
        offset += static_cast<std::size_t>(size) * sizeof(float);
    };
    attribute(0, 3);
    if (mesh.hasNormals) {
        attribute(1, 3);
    }
    if (mesh.hasTexCoords) {
        attribute(2, 2);
    }
    glBindVertexArray(0);
    if (glGetError() != GL_NO_ERROR) {
        DeleteMesh(*uploaded);
        return nullptr;
    }
    return uploaded;
}

void DeleteMesh(const GraphicsMesh& mesh) noexcept {
    const GLuint buffers[] = {mesh.vertices, mesh.indices};
    glDeleteVertexArrays(1, &mesh.vertexArray);
    glDeleteBuffers(2, buffers);
}

ShapeCache::~ShapeCache() {
    for (const auto& [shape, entry] : m_entries) {
        if (entry.mesh) {
            DeleteMesh(*entry.mesh);
        }
    }
}

const GraphicsMesh* ShapeCache::Get(const UnitShape& shape, unsigned long frame) {
    const auto [found, isNew] = m_entries.try_emplace(shape);
    if (!found->second.mesh && (isNew || found->second.lastFrame != frame)) {
        found->second.mesh = UploadMesh(BuildUnitShape(shape));
    }
    found->second.lastFrame = frame;
    return found->second.mesh.get();
}

void ShapeCache::DropUnused(unsigned long frame) {
    constexpr std::size_t kMany = 256;
    constexpr unsigned long kAWhile = 100;
    if (m_entries.size() <= kMany) {
        return;
    }
    std::erase_if(m_entries, [&](const auto& item) {
        const bool old = item.second.lastFrame + kAWhile < frame;
        if (old && item.second.mesh) {
            DeleteMesh(*item.second.mesh);
        }
        return old;
    });
}

TextureCache::~TextureCache() {
    for (const auto& [image, entry] : m_entries) {
        glDeleteTextures(1, &entry.name);
    }
}

unsigned int TextureCache::Get(const std::shared_ptr<const MAV_image>& image) {
    Entry& entry = m_entries[image.get()];
    if (entry.image.lock() == image) {
        return entry.name;
    }
    glDeleteTextures(1, &entry.name);
    entry = {};

    GLint longest = 1;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &longest);
    MAV_image smaller;
    const MAV_image* pixels = image.get();
    if (std::max(image->width, image->height) > longest) {
        smaller = ScaledDown(*image, longest);
        pixels = &smaller;
    }
    ForgetErrors();
    glGenTextures(1, &entry.name);
    glBindTexture(GL_TEXTURE_2D, entry.name);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB8, pixels->width, pixels->height, 0, GL_RGB,
                 GL_UNSIGNED_BYTE, pixels->rgb.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glGenerateMipmap(GL_TEXTURE_2D);
    if (glGetError() != GL_NO_ERROR) {
        glDeleteTextures(1, &entry.name);
        entry.name = 0;
    }
    // At last: what ran out of memory is tried again.
    entry.image = image;
    return entry.name;
}

void TextureCache::DropUnused() {
    std::erase_if(m_entries, [](const auto& item) {
        const bool unused = item.second.image.expired();
        if (unused) {
            glDeleteTextures(1, &item.second.name);
        }
        return unused;
    });
}

MAV_image ScaledDown(const MAV_image& image, int longest) {
    MAV_image scaled;
    scaled.width = std::clamp(image.width, 1, longest);
    scaled.height = std::clamp(image.height, 1, longest);
    scaled.rgb.resize(static_cast<std::size_t>(scaled.width) *
                      static_cast<std::size_t>(scaled.height) * 3);
    // First pixel, of so many, that the i-th of the smaller side stands for.
    const auto start = [](int i, int many, int few) {
        return static_cast<std::size_t>(static_cast<long long>(i) * many / few);
    };
    std::uint8_t* out = scaled.rgb.data();
    for (int y = 0; y < scaled.height; ++y) {
        const std::size_t top = start(y, image.height, scaled.height);
        const std::size_t bottom = start(y + 1, image.height, scaled.height);
        for (int x = 0; x < scaled.width; ++x) {
            const std::size_t left = start(x, image.width, scaled.width);
            const std::size_t right = start(x + 1, image.width, scaled.width);
            std::array<std::size_t, 3> sum = {0, 0, 0};
            for (std::size_t j = top; j < bottom; ++j) {
                for (std::size_t i = left; i < right; ++i) {
                    const std::size_t at = 3 * (j * static_cast<std::size_t>(image.width) + i);
                    for (std::size_t k = 0; k < 3; ++k) {
                        sum[k] += image.rgb[at + k];
                    }
                }
            }
            const std::size_t pixels = (bottom - top) * (right - left);
            for (std::size_t k = 0; k < 3; ++k) {
                *out++ = static_cast<std::uint8_t>((sum[k] + pixels / 2) / pixels);
            }
        }
    }
    return scaled;
}
