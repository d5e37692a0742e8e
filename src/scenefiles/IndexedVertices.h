#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// Takes the faces or lines that a list of indices makes of a list of points apart into the form
/// that the model takes: how many vertices each has, and all vertices in order. One object serves
/// many lists, and so asks for memory but a few times.
class IndexedVertices {
  public:
    using Points = std::span<const std::array<float, 3>>;
    using TexturePoints = std::span<const std::array<float, 2>>;
    using Indices = std::span<const std::int32_t>;

    /// -1 ends a face; what stands behind the last one is left out. False if an index names no
    /// point: BadIndex().
    bool Read(Indices indices, Points points);
    /// The texture points of the vertices read last: of each, the one that INDICES name at the
    /// place where its own index stands in VERTEXINDICES, the first where INDICES end before. Not
    /// without points. False as above.
    bool ReadTexture(Indices vertexIndices, Indices indices, TexturePoints points);

    std::int32_t BadIndex() const { return m_badIndex; }

    int FaceCount() const { return static_cast<int>(m_counts.size()); }
    const int* Counts() const { return m_counts.data(); }
    const float* Vertices() const { return m_vertices.data()->data(); }
    const float* TextureCoordinates() const { return m_textureCoordinates.data()->data(); }

  private:
    std::vector<int> m_counts;
    // As long as the longest list needed, and never empty: faces without vertices have an array.
    std::vector<std::array<float, 3>> m_vertices{1};
    std::vector<std::array<float, 2>> m_textureCoordinates{1};
    std::int32_t m_badIndex = 0;
};
