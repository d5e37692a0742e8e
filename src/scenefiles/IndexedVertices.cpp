#include "scenefiles/IndexedVertices.h"

#include <algorithm>

namespace {

constexpr std::int32_t kEndOfFace = -1;

/// Up to the last end of a face.
IndexedVertices::Indices WholeFaces(IndexedVertices::Indices indices) {
    const auto last = std::find(indices.rbegin(), indices.rend(), kEndOfFace);
    return indices.first(static_cast<std::size_t>(indices.rend() - last));
}

/// Negative ones become too large for any list.
std::size_t PlaceOf(std::int32_t index) {
    return static_cast<std::uint32_t>(index);
}

template <class Value>
void MakeRoom(std::vector<Value>& values, std::size_t count) {
    if (values.size() < count) {
        values.resize(count);
    }
}

}  // namespace

bool IndexedVertices::Read(Indices indices, Points points) {
    m_counts.clear();
    const Indices faces = WholeFaces(indices);
    MakeRoom(m_vertices, faces.size());
    auto vertex = m_vertices.begin();
    auto face = vertex;
    for (const std::int32_t index : faces) {
        if (PlaceOf(index) < points.size()) {
            *vertex++ = points[PlaceOf(index)];
        } else if (index == kEndOfFace) {
            m_counts.push_back(static_cast<int>(vertex - face));
            face = vertex;
        } else {
            m_badIndex = index;
            return false;
        }
    }
    return true;
}

bool IndexedVertices::ReadTexture(Indices vertexIndices, Indices indices, TexturePoints points) {
    const Indices faces = WholeFaces(vertexIndices);
    MakeRoom(m_textureCoordinates, faces.size());
    auto coordinate = m_textureCoordinates.begin();
    for (std::size_t i = 0; i < faces.size(); ++i) {
        if (faces[i] == kEndOfFace) {
            continue;
        }
        const std::int32_t index = i < indices.size() ? indices[i] : 0;
        if (PlaceOf(index) >= points.size()) {
            m_badIndex = index;
            return false;
        }
        *coordinate++ = points[PlaceOf(index)];
    }
    return true;
}
