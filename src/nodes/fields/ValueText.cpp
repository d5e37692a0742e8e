#include "nodes/fields/ValueText.h"

#include <algorithm>

namespace nodes {

ValueText::ValueText(bool value) {
    const std::string_view text = value ? "TRUE" : "FALSE";
    endAt(std::copy(text.begin(), text.end(), m_text));
}

ValueText::ValueText(float value) {
    endAt(putGeneral(m_text, value));
}

ValueText::ValueText(double value) {
    endAt(putFixed(m_text, value));
}

ValueText::ValueText(std::int32_t value) {
    endAt(putInt32(m_text, value));
}

char* printText(std::string_view text, char* buffer, std::size_t capacity) {
    if (capacity > 0) {
        const std::size_t length = std::min(text.size(), capacity - 1);
        std::copy_n(text.data(), length, buffer);
        buffer[length] = '\0';
    }
    return buffer;
}

}  // namespace nodes
