#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "nodes/fields/Numbers.h"
#include "nodes/writer/TextStream.h"

namespace nodes {

/// The text form of a value that is no string.
class ValueText {
  public:
    explicit ValueText(bool value);
    explicit ValueText(float value);
    explicit ValueText(double value);
    explicit ValueText(std::int32_t value);
    template <std::size_t kCount>
    explicit ValueText(const std::array<float, kCount>& value) {
        static_assert(kCount * (kGeneralLength + 1) <= kFixedLength);
        char* end = m_text;
        for (const float component : value) {
            if (end != m_text) {
                *end++ = ' ';
            }
            end = putGeneral(end, component);
        }
        endAt(end);
    }
    std::string_view view() const { return {m_text, m_length}; }

  private:
    void endAt(const char* end) { m_length = static_cast<std::size_t>(end - m_text); }

    char m_text[kFixedLength];
    std::size_t m_length = 0;
};

/// TEXT in BUFFER, cut off to CAPACITY characters with the terminating zero.
char* printText(std::string_view text, char* buffer, std::size_t capacity);

// The form in which the VRML writers print a value.

inline void putValue(TextStream& stream, bool value) {
    stream.put(value ? std::string_view("TRUE") : std::string_view("FALSE"));
}
inline void putValue(TextStream& stream, float value) {
    stream.put(value);
}
inline void putValue(TextStream& stream, double value) {
    stream.put(value);
}
inline void putValue(TextStream& stream, std::int32_t value) {
    stream.put(value);
}
inline void putValue(TextStream& stream, const std::string& value) {
    stream.put('"');
    stream.put(std::string_view(value));
    stream.put('"');
}
template <std::size_t kCount>
void putValue(TextStream& stream, const std::array<float, kCount>& value) {
    stream.put(value[0]);
    for (std::size_t i = 1; i < kCount; ++i) {
        stream.put(' ');
        stream.put(value[i]);
    }
}

}  // namespace nodes
