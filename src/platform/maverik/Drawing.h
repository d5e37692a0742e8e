#pragma once

/// What is kept of an object's geometry from frame to frame. Knows no OpenGL: collecting a frame
/// makes it, the renderer fills in the graphics side, and any thread may destroy it.

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/maverik/Objects.h"

/// Geometry in graphics memory: names of the context's vertex array and buffers. A link of the list
/// in DrawingGarbage, so that giving it back takes no memory.
struct GraphicsMesh {
    unsigned int vertexArray = 0;
    unsigned int vertices = 0;
    unsigned int indices = 0;
    int indexCount = 0;
    std::unique_ptr<GraphicsMesh> next;
};

/// Meshes of objects that have gone. The renderer deletes them on its thread; once it is gone
/// itself, its context takes them along.
class DrawingGarbage {
  public:
    DrawingGarbage() = default;
    ~DrawingGarbage();
    DrawingGarbage(const DrawingGarbage&) = delete;
    DrawingGarbage& operator=(const DrawingGarbage&) = delete;

    void Add(std::unique_ptr<GraphicsMesh> mesh) noexcept;
    std::unique_ptr<GraphicsMesh> TakeAll() noexcept;
    /// The renderer goes: what comes now is dropped.
    void Close() noexcept;
    bool IsClosed() const noexcept;

  private:
    mutable std::mutex m_mutex;
    std::unique_ptr<GraphicsMesh> m_first;
    bool m_closed = false;
};

/// Copy of what the record of an object points at.
struct Geometry {
    std::vector<int> counts;  ///< vertices of each polygon or line; empty: `uniformCount` each
    int uniformCount = 3;
    std::size_t pieces = 0;  ///< polygons or lines
    std::vector<MAV_vector> normals;
    std::vector<MAV_vector> vertices;
    std::vector<MAV_texCoord> texCoords;  ///< empty: all 0

    int Count(std::size_t piece) const { return counts.empty() ? uniformCount : counts[piece]; }
};

/// Extent of vertices in the object's own coordinates: a box along the axes, and the distance from
/// its middle to the farthest of them. Radius below 0: there is none.
struct LocalExtent {
    MAV_vector centre = {0, 0, 0};
    MAV_vector half = {0, 0, 0};
    float radius = -1;
};

/// Where the arrays of a record stand; another address or count is another geometry.
struct GeometrySource {
    const void* vertices = nullptr;
    const void* counts = nullptr;
    const void* texCoords = nullptr;
    int pieces = 0;
    int firstCount = 0;
    friend bool operator==(const GeometrySource&, const GeometrySource&) = default;
};

struct MAV_drawing {
    MAV_drawing() = default;
    ~MAV_drawing();
    MAV_drawing(const MAV_drawing&) = delete;
    MAV_drawing& operator=(const MAV_drawing&) = delete;

    /// The mesh went with a renderer that is no more.
    bool IsLost() const noexcept { return garbage && garbage->IsClosed(); }

    GeometrySource source;
    LocalExtent extent;
    bool isLines = false;
    /// What is to be brought into graphics memory; the renderer takes it. Both belong to the render
    /// thread as long as the drawing lives.
    std::unique_ptr<Geometry> geometry;
    std::unique_ptr<GraphicsMesh> mesh;
    std::shared_ptr<DrawingGarbage> garbage;  ///< where the mesh goes
    /// In lines: number of the first index of each, and one more.
    std::vector<int> firstIndices;
};
