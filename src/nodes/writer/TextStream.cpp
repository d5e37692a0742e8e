#include "nodes/writer/TextStream.h"

#include <algorithm>
#include <cstring>

#include "nodes/fields/Numbers.h"

namespace nodes {

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
    makeRoom(kGeneralLength);
    m_used = static_cast<std::size_t>(putGeneral(m_buffer + m_used, value) - m_buffer);
}

void TextStream::put(double value) {
    makeRoom(kGeneralLength);
    m_used = static_cast<std::size_t>(putGeneral(m_buffer + m_used, value) - m_buffer);
}

void TextStream::put(std::int32_t value) {
    makeRoom(kInt32Length);
    m_used = static_cast<std::size_t>(putInt32(m_buffer + m_used, value) - m_buffer);
}

void TextStream::putTabs(std::size_t count) {
    while (count > 0) {
        makeRoom(1);
        const std::size_t part = std::min(count, kBufferSize - m_used);
        std::memset(m_buffer + m_used, '\t', part);
        m_used += part;
        count -= part;
    }
}

void TextStream::finish() {
    if (m_used > 0) {
        take(m_buffer, m_used);
        m_used = 0;
    }
}

void FileStream::take(const char* text, std::size_t length) {
    m_failed = m_failed || std::fwrite(text, 1, length, m_file) != length;
}

}  // namespace nodes
