#include "platform/maverik/MeshBuilder.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "platform/maverik/Triangulation.h"

namespace {

constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

/// Numbers vertices, the same number for equal ones: a table of numbers with linear probing.
class Welder {
  public:
    Welder(const Geometry& geometry, const MAV_vector& centre, std::size_t most, Mesh& mesh)
        : m_geometry(geometry),
          m_centre(centre),
          m_mesh(mesh),
          m_table(std::bit_ceil(most + most / 2 + 1), kNone) {}

    std::uint32_t Number(std::uint32_t vertex) {
        std::size_t place = Hash(vertex) & (m_table.size() - 1);
        while (m_table[place] != kNone) {
            if (Equal(m_sources[m_table[place]], vertex)) {
                return m_table[place];
            }
            place = (place + 1) & (m_table.size() - 1);
        }
        m_table[place] = static_cast<std::uint32_t>(m_sources.size());
        m_sources.push_back(vertex);
        Append(vertex);
        return m_table[place];
    }

  private:
    static std::uint32_t Bits(float x) noexcept { return std::bit_cast<std::uint32_t>(x); }

    bool Equal(std::uint32_t a, std::uint32_t b) const noexcept {
        const auto& t = m_geometry.texCoords;
        return m_geometry.vertices[a] == m_geometry.vertices[b] &&
               (t.empty() || (Bits(t[a].u) == Bits(t[b].u) && Bits(t[a].v) == Bits(t[b].v)));
    }

    std::size_t Hash(std::uint32_t vertex) const noexcept {
        constexpr std::uint64_t kFactor = 0x9e3779b97f4a7c15;
        const MAV_vector& p = m_geometry.vertices[vertex];
        // Adding 0 makes one of the two zeros.
        std::uint64_t hash = Bits(p.x + 0.0f);
        const auto mix = [&](std::uint32_t bits) { hash = (hash ^ (hash >> 29)) * kFactor + bits; };
        mix(Bits(p.y + 0.0f));
        mix(Bits(p.z + 0.0f));
        if (m_mesh.hasTexCoords) {
            mix(Bits(m_geometry.texCoords[vertex].u));
            mix(Bits(m_geometry.texCoords[vertex].v));
        }
        hash *= kFactor;
        return hash ^ (hash >> 32);
    }

    void Append(std::uint32_t vertex) {
        const MAV_vector& p = m_geometry.vertices[vertex];
        m_mesh.vertices.insert(m_mesh.vertices.end(),
                               {p.x - m_centre.x, p.y - m_centre.y, p.z - m_centre.z});
        if (m_mesh.hasTexCoords) {
            const MAV_texCoord& t = m_geometry.texCoords[vertex];
            m_mesh.vertices.insert(m_mesh.vertices.end(), {t.u, t.v});
        }
    }

    const Geometry& m_geometry;
    const MAV_vector m_centre;
    Mesh& m_mesh;
    std::vector<std::uint32_t> m_table;
    std::vector<std::uint32_t> m_sources;  ///< the first vertex with each number
};

}  // namespace

Mesh BuildPolygons(const Geometry& geometry, const MAV_vector& centre) {
    Mesh mesh;
    mesh.hasTexCoords = !geometry.texCoords.empty();
    mesh.indices.reserve(3 * geometry.pieces);
    Triangulator triangulator;
    std::size_t first = 0;
    for (std::size_t i = 0; i < geometry.pieces; ++i) {
        const auto count = static_cast<std::size_t>(std::max(geometry.Count(i), 0));
        const MAV_vector normal =
            geometry.normals.empty() ? MAV_vector{0, 0, 0} : geometry.normals[i];
        triangulator.Add(geometry.vertices.data() + first, count, normal,
                         static_cast<std::uint32_t>(first), mesh.indices);
        first += count;
    }
    Welder welder(geometry, centre, geometry.vertices.size(), mesh);
    for (std::uint32_t& index : mesh.indices) {
        index = welder.Number(index);
    }
    return mesh;
}

Mesh BuildLines(const Geometry& geometry, const MAV_vector& centre,
                std::vector<int>& firstIndices) {
    Mesh mesh;
    mesh.vertices.reserve(3 * geometry.vertices.size());
    for (const MAV_vector& v : geometry.vertices) {
        mesh.vertices.insert(mesh.vertices.end(), {v.x - centre.x, v.y - centre.y, v.z - centre.z});
    }
    const auto isFinite = [&](std::uint32_t i) {
        const MAV_vector& v = geometry.vertices[i];
        return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
    };
    firstIndices.clear();
    firstIndices.reserve(geometry.pieces + 1);
    std::uint32_t first = 0;
    for (std::size_t i = 0; i < geometry.pieces; ++i) {
        firstIndices.push_back(static_cast<int>(mesh.indices.size()));
        const auto count = static_cast<std::uint32_t>(std::max(geometry.Count(i), 0));
        for (std::uint32_t j = first; j + 1 < first + count; ++j) {
            if (isFinite(j) && isFinite(j + 1)) {
                mesh.indices.insert(mesh.indices.end(), {j, j + 1});
            }
        }
        first += count;
    }
    firstIndices.push_back(static_cast<int>(mesh.indices.size()));
    return mesh;
}
