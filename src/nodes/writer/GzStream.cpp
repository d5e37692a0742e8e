#include "nodes/writer/GzStream.h"

#include <algorithm>

#include "nodes/writer/GzFile.h"

namespace nodes {

void GzStream::take(const char* text, std::size_t length) {
    m_cut = m_cut || length > m_room;
    const std::size_t part = std::min(length, m_room);
    m_room -= part;
    m_failed = m_failed || !m_file.write(text, part);
}

}  // namespace nodes
