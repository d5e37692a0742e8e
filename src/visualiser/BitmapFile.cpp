#include "visualiser/BitmapFile.h"

#include <filesystem>
#include <fstream>
#include <limits>
#include <system_error>

namespace {

constexpr std::size_t kFileHeaderSize = 14;
constexpr std::size_t kInfoHeaderSize = 40;
constexpr std::size_t kPixelsOffset = kFileHeaderSize + kInfoHeaderSize;
constexpr int kBitsPerPixel = 32;
constexpr std::size_t kBytesPerPixel = 4;
constexpr std::size_t kBytesPerImagePixel = 3;

/// Appends integers of the format's byte order, the lowest byte first.
class LittleEndian {
  public:
    explicit LittleEndian(std::vector<std::uint8_t>& out) : m_out(out) {}
    LittleEndian& Word(std::uint32_t value) { return Bytes(value, 2); }
    LittleEndian& DoubleWord(std::uint32_t value) { return Bytes(value, 4); }

  private:
    LittleEndian& Bytes(std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i) {
            m_out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
        return *this;
    }

    std::vector<std::uint8_t>& m_out;
};

}  // namespace

std::vector<std::uint8_t> EncodeBitmap(const MAV_image& image) {
    const auto width = static_cast<std::size_t>(image.width);
    const auto height = static_cast<std::size_t>(image.height);
    const std::size_t pixelBytes = width * height * kBytesPerPixel;
    const std::size_t fileSize = kPixelsOffset + pixelBytes;
    if (fileSize > std::numeric_limits<std::uint32_t>::max()) {
        return {};
    }
    std::vector<std::uint8_t> out;
    out.reserve(fileSize);
    LittleEndian(out)
        .Word('B' | 'M' << 8)
        .DoubleWord(static_cast<std::uint32_t>(fileSize))
        .Word(0)
        .Word(0)
        .DoubleWord(kPixelsOffset)
        .DoubleWord(kInfoHeaderSize)
        .DoubleWord(static_cast<std::uint32_t>(width))
        .DoubleWord(static_cast<std::uint32_t>(height))
        .Word(1)  // planes
        .Word(kBitsPerPixel)
        .DoubleWord(0)  // not compressed
        .DoubleWord(static_cast<std::uint32_t>(pixelBytes))
        .DoubleWord(0)
        .DoubleWord(0)
        .DoubleWord(0)
        .DoubleWord(0);
    out.resize(fileSize);
    std::uint8_t* to = out.data() + kPixelsOffset;
    for (std::size_t row = height; row-- > 0;) {
        const std::uint8_t* from = image.rgb.data() + row * width * kBytesPerImagePixel;
        for (std::size_t x = 0; x < width; ++x) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
            to[3] = 0;
            to += kBytesPerPixel;
            from += kBytesPerImagePixel;
        }
    }
    return out;
}

bool WriteBitmap(const MAV_image& image, const std::string& path) {
    const std::vector<std::uint8_t> bytes = EncodeBitmap(image);
    if (bytes.empty()) {
        return false;
    }
    std::error_code error;
    if (std::filesystem::is_fifo(path, error)) {
        // Its opening would wait for a reader.
        return false;
    }
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file.is_open()) {
        return false;
    }
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file.good()) {
        // Half a picture is worse than none. What is no regular file stays.
        if (std::filesystem::is_regular_file(path, error)) {
            std::filesystem::remove(path, error);
        }
        return false;
    }
    return true;
}
