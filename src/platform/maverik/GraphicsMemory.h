#pragma once

/// Meshes and images in graphics memory.

#include <memory>
#include <unordered_map>
#include <vector>

#include "platform/maverik/FrameContentsData.h"

/// A place in the buffer that is bound, in bytes, in the form that OpenGL takes it in.
inline const void* BufferOffset(std::size_t bytes) noexcept {
    return reinterpret_cast<const void*>(bytes);  // NOLINT(performance-no-int-to-ptr)
}

/// Null if there is nothing to be drawn, or no memory for it.
std::unique_ptr<GraphicsMesh> UploadMesh(const Mesh& mesh);
void DeleteMesh(const GraphicsMesh& mesh) noexcept;

/// Unit shapes, made when first asked for; those that have not been for a while are dropped when
/// there are many.
class ShapeCache {
  public:
    ShapeCache() = default;
    ~ShapeCache();
    ShapeCache(const ShapeCache&) = delete;
    ShapeCache& operator=(const ShapeCache&) = delete;

    const GraphicsMesh* Get(const UnitShape& shape, unsigned long frame);
    void DropUnused(unsigned long frame);

  private:
    struct Entry {
        std::unique_ptr<GraphicsMesh> mesh;
        unsigned long lastFrame = 0;
    };
    std::unordered_map<UnitShape, Entry, UnitShapeHash> m_entries;
};

/// Textures of images, each as long as somebody else holds the image.
class TextureCache {
  public:
    TextureCache() = default;
    ~TextureCache();
    TextureCache(const TextureCache&) = delete;
    TextureCache& operator=(const TextureCache&) = delete;

    /// 0 if there is no memory for it.
    unsigned int Get(const std::shared_ptr<const MAV_image>& image);
    void DropUnused();

  private:
    struct Entry {
        std::weak_ptr<const MAV_image> image;
        unsigned int name = 0;
    };
    std::unordered_map<const MAV_image*, Entry> m_entries;
};

/// The image with sides at most so long, each pixel the mean of those that it stands for.
MAV_image ScaledDown(const MAV_image& image, int longest);
