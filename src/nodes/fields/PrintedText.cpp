#include "nodes/fields/PrintedText.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "nodes/fields/Numbers.h"

namespace nodes {

char* printText(std::string_view text, char* buffer, std::size_t capacity) {
    if (capacity > 0) {
        buffer[text.copy(buffer, capacity - 1)] = '\0';
    }
    return buffer;
}

char* printNumbers(std::span<const float> values, char* buffer, std::size_t capacity) {
    std::array<char, 4 * kNumberRoom> text;
    char* end = text.data();
    for (const float value : values) {
        if (end != text.data()) {
            *end++ = ' ';
        }
        end = writeGeneral(value, end);
    }
    return printText({text.data(), end}, buffer, capacity);
}

bool takeNumbers(const char* text, std::span<float> values) {
    if (!text) {
        return false;
    }
    std::array<float, 4> taken{};
    std::string_view rest = text;
    for (std::size_t i = 0; i < values.size(); ++i) {
        double number = 0;
        if (!takeNumber(rest, number)) {
            return false;
        }
        taken[i] = static_cast<float>(number);
    }
    std::copy_n(taken.begin(), values.size(), values.begin());
    return true;
}

}  // namespace nodes
