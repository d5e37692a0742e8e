#include "platform/maverik/TextShape.h"

#include <array>
#include <cstring>

#include <stb_easy_font.h>

std::vector<float> TextTriangles(const std::string& text, float scale) {
    // Of the font: rows from the top of a line to its base line, and bytes that a character may
    // take.
    constexpr float kBaseLine = 8;
    constexpr std::size_t kBytesPerCharacter = 1024;
    constexpr std::size_t kLongest = 1000;
    struct Corner {
        float x, y, z;
        std::array<unsigned char, 4> colour;
    };
    std::string shown = text.substr(0, kLongest);
    for (char& c : shown) {
        c = c >= ' ' && c <= '~' ? c : '?';
    }
    std::vector<char> buffer(shown.size() * kBytesPerCharacter);
    const auto width = static_cast<float>(stb_easy_font_width(shown.data()));
    const int quads = stb_easy_font_print(0, 0, shown.data(), nullptr, buffer.data(),
                                          static_cast<int>(buffer.size()));
    std::vector<float> triangles;
    triangles.reserve(static_cast<std::size_t>(quads) * 12);
    for (std::size_t i = 0; i < static_cast<std::size_t>(quads); ++i) {
        std::array<Corner, 4> quad;
        std::memcpy(quad.data(), buffer.data() + i * sizeof quad, sizeof quad);
        for (const std::size_t k : {0u, 1u, 2u, 0u, 2u, 3u}) {
            triangles.push_back((quad[k].x - width) * scale);
            triangles.push_back((kBaseLine - quad[k].y) * scale);
        }
    }
    return triangles;
}
