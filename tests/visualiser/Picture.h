#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

struct Colour {
    int r = 0, g = 0, b = 0;

    friend bool operator==(const Colour&, const Colour&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Colour& c) {
        return out << "(" << c.r << ", " << c.g << ", " << c.b << ")";
    }
    int Brightness() const { return r + g + b; }
    /// The colour has this hue, however bright it is lit and even where it shines.
    bool IsRed() const { return r > g + 60 && r > b + 60; }
    bool IsGreen() const { return g > r + 60 && g > b + 60; }
    bool IsBlue() const { return b > r + 60 && b > g + 60; }
};

/// A captured picture, read back from its file with a reader that knows the format alone.
class Picture {
  public:
    explicit Picture(const std::string& file) {
        std::ifstream in(file, std::ios::binary);
        m_bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        if (m_bytes.size() < kPixels || m_bytes[0] != 'B' || m_bytes[1] != 'M') {
            return;
        }
        m_width = Number(18);
        m_height = Number(22);
        m_whole = Number(2) == static_cast<int>(m_bytes.size()) && Number(10) == kPixels &&
                  Number(14) == 40 && Half(26) == 1 && Half(28) == 32 && Number(30) == 0 &&
                  m_bytes.size() == kPixels + 4U * static_cast<unsigned>(m_width * m_height);
    }
    bool IsWhole() const { return m_whole; }
    int Width() const { return m_width; }
    int Height() const { return m_height; }

    /// From the top left.
    Colour At(int x, int y) const {
        if (!m_whole || x < 0 || y < 0 || x >= m_width || y >= m_height) {
            ADD_FAILURE() << "no pixel at " << x << ", " << y;
            return {};
        }
        const std::size_t at =
            kPixels + 4U * static_cast<unsigned>((m_height - 1 - y) * m_width + x);
        return {Byte(at + 2), Byte(at + 1), Byte(at)};
    }
    Colour Middle() const { return At(m_width / 2, m_height / 2); }

    /// Pixels that `is` holds for.
    template <class Test>
    int Count(Test&& is) const {
        int count = 0;
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x < m_width; ++x) {
                count += is(At(x, y)) ? 1 : 0;
            }
        }
        return count;
    }

  private:
    static constexpr int kPixels = 54;

    int Byte(std::size_t at) const { return static_cast<std::uint8_t>(m_bytes[at]); }
    int Half(std::size_t at) const { return Byte(at) | Byte(at + 1) << 8; }
    int Number(std::size_t at) const { return Half(at) | Half(at + 2) << 16; }

    std::string m_bytes;
    int m_width = 0;
    int m_height = 0;
    bool m_whole = false;
};
