#include "nodes/writer/TextStream.h"

#include <algorithm>
#include <cstring>

#include "nodes/fields/Numbers.h"

namespace nodes {

void TextStream::makeRoom(std::size_t length) {
    if (kBufferSize - m_used < length) {
        finish();
    }
}

void TextStream::put(char character) {
    makeRoom(1);
    m_buffer[m_used++] = character;
}

void TextStream::put(std::string_view text) {
    if (text.size() > kBufferSize) {
        finish();
        take(text.data(), text.size());
        return;
    }
    makeRoom(text.size());
    std::copy(text.begin(), text.end(), m_buffer + m_used);
    m_used += text.size();
}

void TextStream::put(float value) {
    put(static_cast<double>(value));
}

void TextStream::put(double value) {
    makeRoom(kNumberRoom);
    m_used = static_cast<std::size_t>(writeGeneral(value, m_buffer + m_used) - m_buffer);
}

void TextStream::put(std::int32_t value) {
    makeRoom(kNumberRoom);
    m_used = static_cast<std::size_t>(writeInteger(value, m_buffer + m_used) - m_buffer);
}

void TextStream::putTabs(std::size_t count) {
    while (count > 0) {
        makeRoom(1);
        const std::size_t length = std::min(count, kBufferSize - m_used);
        std::memset(m_buffer + m_used, '\t', length);
        m_used += length;
        count -= length;
    }
}

void TextStream::finish() {
    take(m_buffer, m_used);
    m_used = 0;
}

void FileStream::take(const char* text, std::size_t length) {
    m_failed = std::fwrite(text, 1, length, m_file) != length || m_failed;
}

}  // namespace nodes
