#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>

#include "platform/maverik/Palette.h"

namespace {

constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 28;
constexpr int kGreatestMaxval = 65535;

/// A file read through a buffer of its own, one byte at a time.
class ByteReader {
  public:
    explicit ByteReader(const std::string& file) {
        // Opening a pipe would wait for whoever writes into it.
        std::error_code error;
        if (std::filesystem::is_regular_file(file, error)) {
            m_file.reset(std::fopen(file.c_str(), "rb"));
            m_size = std::filesystem::file_size(file, error);
            m_size = error ? 0 : m_size;
        }
    }

    bool IsOpen() const noexcept { return m_file != nullptr; }
    std::uintmax_t Size() const noexcept { return m_size; }
    /// The next byte; -1 at the end.
    int Next() noexcept {
        if (m_at == m_end) {
            m_end = std::fread(m_buffer.data(), 1, m_buffer.size(), m_file.get());
            m_at = 0;
            if (m_end == 0) {
                return -1;
            }
        }
        return m_buffer[m_at++];
    }

  private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Closer> m_file;
    std::uintmax_t m_size = 0;
    std::array<std::uint8_t, 1 << 14> m_buffer;
    std::size_t m_at = 0;
    std::size_t m_end = 0;
};

bool IsSpace(int c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Portable pixmap as the manual page ppm(5) of Netpbm describes it.
class PixmapReader {
  public:
    explicit PixmapReader(const std::string& file) : m_bytes(file) {}

    std::shared_ptr<const MAV_image> Read() {
        if (!m_bytes.IsOpen() || m_bytes.Next() != 'P') {
            return nullptr;
        }
        const int kind = m_bytes.Next();
        if (kind != '3' && kind != '6') {
            return nullptr;
        }
        m_last = m_bytes.Next();
        const std::optional<int> width = Number();
        const std::optional<int> height = Number();
        const std::optional<int> maxval = Number();
        if (!width || !height || !maxval || *width < 1 || *height < 1 || *maxval < 1 ||
            *maxval > kGreatestMaxval || !IsSpace(m_last)) {
            return nullptr;
        }
        const std::uint64_t pixels =
            static_cast<std::uint64_t>(*width) * static_cast<std::uint64_t>(*height);
        if (pixels > kMostPixels) {
            return nullptr;
        }
        auto image = std::make_shared<MAV_image>();
        image->width = *width;
        image->height = *height;
        m_maxval = *maxval;
        // As much memory as the file can fill, whatever its header says.
        image->rgb.reserve(
            static_cast<std::size_t>(std::min<std::uintmax_t>(3 * pixels, m_bytes.Size())));
        for (std::uint64_t i = 0; i < 3 * pixels; ++i) {
            const int sample = kind == '3' ? Plain() : Raw();
            if (sample < 0 || sample > m_maxval) {
                return nullptr;
            }
            image->rgb.push_back(
                static_cast<std::uint8_t>((sample * 255 + m_maxval / 2) / m_maxval));
        }
        return image;
    }

  private:
    /// The next byte, with a comment taken for the end of its line.
    int NextOutsideComments() noexcept {
        int c = m_bytes.Next();
        if (c == '#') {
            while (c != '\n' && c != '\r' && c >= 0) {
                c = m_bytes.Next();
            }
        }
        return c;
    }

    /// Whitespace, then a decimal number below 10^9. What follows it is then in m_last.
    std::optional<int> Number() noexcept {
        if (m_last == '#') {
            while (m_last != '\n' && m_last != '\r' && m_last >= 0) {
                m_last = m_bytes.Next();
            }
        }
        if (!IsSpace(m_last)) {
            return std::nullopt;
        }
        while (IsSpace(m_last)) {
            m_last = NextOutsideComments();
        }
        if (m_last < '0' || m_last > '9') {
            return std::nullopt;
        }
        int number = 0;
        while (m_last >= '0' && m_last <= '9') {
            if (number >= 100'000'000) {
                return std::nullopt;
            }
            number = 10 * number + (m_last - '0');
            m_last = NextOutsideComments();
        }
        return number;
    }

    int Plain() noexcept { return Number().value_or(-1); }

    int Raw() noexcept {
        const int first = m_bytes.Next();
        if (m_maxval < 256 || first < 0) {
            return first;
        }
        const int second = m_bytes.Next();
        return second < 0 ? -1 : 256 * first + second;
    }

    ByteReader m_bytes;
    int m_last = -1;
    int m_maxval = 255;
};

}  // namespace

std::shared_ptr<const MAV_image> mav_imageRead(const std::string& file) {
    return PixmapReader(file).Read();
}

bool mav_paletteTextureSet(MAV_palette& palette, int index,
                           std::shared_ptr<const MAV_image> image) noexcept {
    if (index < 0 || index >= kMostTextures || !image) {
        return false;
    }
    palette.textures[static_cast<std::size_t>(index)] = {std::move(image), 1};
    return true;
}
