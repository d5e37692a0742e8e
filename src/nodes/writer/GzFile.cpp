#include "nodes/writer/GzFile.h"

#include <zlib.h>

#include <algorithm>
#include <cstdio>

#include "nodes/reader/FileText.h"

namespace nodes {
namespace {

/// False if the file cannot be opened for reading.
bool measure(const char* path, std::size_t& length) {
    std::FILE* file = isPlainFile(path) ? std::fopen(path, "rb") : nullptr;
    if (!file) {
        return false;
    }
    const long end = std::fseek(file, 0, SEEK_END) == 0 ? std::ftell(file) : 0;
    length = end > 0 ? static_cast<std::size_t>(end) : 0;
    std::fclose(file);
    return true;
}

}  // namespace

GzFile::~GzFile() {
    GzFile::close();
}

bool GzFile::open(const char* path, std::int32_t mode) {
    if (m_file) {
        return false;
    }
    m_mode = kClosed;
    m_fileLength = 0;
    if (!path) {
        return false;
    }
    if (mode == kWrite) {
        m_file = gzopen(path, "wb");
    } else if (mode == kRead && measure(path, m_fileLength)) {
        m_file = gzopen(path, "rb");
    }
    if (!m_file) {
        return false;
    }
    m_mode = mode;
    applyParams();
    return true;
}

bool GzFile::setMode(std::int32_t mode) {
    m_mode = mode;
    return true;
}

bool GzFile::close() {
    if (!m_file) {
        return false;
    }
    const bool isSound = gzclose(m_file) == Z_OK;
    m_file = nullptr;
    m_mode = kClosed;
    return isSound;
}

bool GzFile::isOpen() const {
    return m_file != nullptr;
}

bool GzFile::write(const void* buffer, std::size_t length) {
    if (!m_file || m_mode != kWrite) {
        return false;
    }
    // zlib counts in int.
    constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;
    const char* bytes = static_cast<const char*>(buffer);
    while (length > 0) {
        const auto part = static_cast<unsigned>(std::min(length, kMostAtOnce));
        if (gzwrite(m_file, bytes, part) != static_cast<int>(part)) {
            return false;
        }
        bytes += part;
        length -= part;
    }
    return true;
}

bool GzFile::writeText(std::string_view text) {
    return write(text.data(), text.size());
}

int GzFile::read(void* buffer, unsigned length) {
    return m_file && m_mode == kRead ? gzread(m_file, buffer, length) : 0;
}

bool GzFile::readAll(std::unique_ptr<char[]>& buffer, std::size_t& size) {
    buffer.reset();
    size = 0;
    std::string text;
    if (!readText(text)) {
        return false;
    }
    buffer = std::make_unique<char[]>(text.size());
    size = text.copy(buffer.get(), text.size());
    return true;
}

bool GzFile::readText(std::string& text) {
    text.clear();
    if (!m_file || m_mode != kRead || m_fileLength == 0) {
        return false;
    }
    constexpr std::size_t kLeastAtOnce = std::size_t{1} << 16;
    constexpr std::size_t kMostAtOnce = std::size_t{1} << 24;
    const std::size_t block = std::clamp(m_fileLength, kLeastAtOnce, kMostAtOnce);
    const std::size_t most = std::min(kMostText, std::max(kFreeText, kMostGrowth * m_fileLength));
    std::string all;
    int count = 0;
    do {
        const std::size_t used = all.size();
        all.resize(used + block);
        count = read(all.data() + used, static_cast<unsigned>(block));
        all.resize(used + static_cast<std::size_t>(std::max(count, 0)));
    } while (count > 0 && all.size() <= most);
    // The end of packed data that ends early looks like any other, but for the error that it
    // leaves.
    int error = Z_OK;
    gzerror(m_file, &error);
    if (error != Z_OK || all.empty() || all.size() > most) {
        return false;
    }
    text = std::move(all);
    return true;
}

bool GzFile::applyParams() {
    return m_file && m_mode == kWrite && gzsetparams(m_file, level, strategy) == Z_OK;
}

}  // namespace nodes
