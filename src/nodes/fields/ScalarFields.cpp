#include "nodes/fields/ScalarFields.h"

#include <array>
#include <string>
#include <string_view>

#include "nodes/fields/Numbers.h"
#include "nodes/fields/PrintedText.h"
#include "nodes/nodes/Node.h"

namespace nodes {

void SFBool::fromText(const char* text) {
    const std::string_view word = text ? text : "";
    if (word == "TRUE" || word == "true") {
        setValue(true);
    } else if (word == "FALSE" || word == "false") {
        setValue(false);
    }
}

char* SFBool::print(char* buffer, std::size_t capacity) const {
    return printText(value() ? "TRUE" : "FALSE", buffer, capacity);
}

void SFFloat::fromText(const char* text) {
    if (text) {
        setValue(static_cast<float>(numberFromText(text)));
    }
}

char* SFFloat::print(char* buffer, std::size_t capacity) const {
    const float number = value();
    return printNumbers({&number, 1}, buffer, capacity);
}

void SFInt32::fromText(const char* text) {
    if (text) {
        setValue(integerFromText(text));
    }
}

char* SFInt32::print(char* buffer, std::size_t capacity) const {
    std::array<char, kNumberRoom> text;
    return printText({text.data(), writeInteger(value(), text.data())}, buffer, capacity);
}

void SFTime::fromText(const char* text) {
    if (text) {
        setValue(numberFromText(text));
    }
}

char* SFTime::print(char* buffer, std::size_t capacity) const {
    std::array<char, kNumberRoom> text;
    return printText({text.data(), writeFixed(value(), text.data())}, buffer, capacity);
}

void SFNode::fromText(const char*) {}

const char* SFNode::toText(std::string& out) const {
    out = value() ? value()->name() : "";
    return out.c_str();
}

char* SFNode::print(char* buffer, std::size_t capacity) const {
    return printText(value() ? value()->name() : "", buffer, capacity);
}

void SFString::fromText(const char* text) {
    if (text) {
        m_text = text;
    }
}

const char* SFString::toText(std::string& out) const {
    out = m_text;
    return out.c_str();
}

char* SFString::print(char* buffer, std::size_t capacity) const {
    return printText(m_text, buffer, capacity);
}

bool SFString::equals(const Field& other) const {
    return other.type() == kSFString && static_cast<const SFString&>(other).m_text == m_text;
}

}  // namespace nodes
