#include "nodes/fields/ScalarFields.h"

#include <string_view>

#include "nodes/fields/Numbers.h"
#include "nodes/fields/ValueText.h"
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
    return printText(ValueText(value()).view(), buffer, capacity);
}

void SFFloat::fromText(const char* text) {
    if (text) {
        setValue(static_cast<float>(toDouble(text)));
    }
}

char* SFFloat::print(char* buffer, std::size_t capacity) const {
    return printText(ValueText(value()).view(), buffer, capacity);
}

void SFInt32::fromText(const char* text) {
    if (text) {
        setValue(toInt32(text));
    }
}

char* SFInt32::print(char* buffer, std::size_t capacity) const {
    return printText(ValueText(value()).view(), buffer, capacity);
}

void SFTime::fromText(const char* text) {
    if (text) {
        setValue(toDouble(text));
    }
}

char* SFTime::print(char* buffer, std::size_t capacity) const {
    return printText(ValueText(value()).view(), buffer, capacity);
}

void SFNode::setValue(Node* value) {
    if (m_value) {
        (m_previous ? m_previous->m_next : m_value->m_firstNamer) = m_next;
        if (m_next) {
            m_next->m_previous = m_previous;
        }
    }
    m_value = value;
    m_previous = nullptr;
    m_next = value ? value->m_firstNamer : nullptr;
    if (m_next) {
        m_next->m_previous = this;
    }
    if (value) {
        value->m_firstNamer = this;
    }
}

void SFNode::fromText(const char*) {}

bool SFNode::equals(const Field& other) const {
    return other.classType() == kSFNode && static_cast<const SFNode&>(other).m_value == m_value;
}

const char* SFNode::toText(std::string& out) const {
    out = value() ? value()->name() : "";
    return out.c_str();
}

char* SFNode::print(char* buffer, std::size_t capacity) const {
    return printText(value() ? value()->name() : "", buffer, capacity);
}

void SFString::fromText(const char* text) {
    if (text) {
        setText(text);
    }
}

const char* SFString::toText(std::string& out) const {
    out = text();
    return out.c_str();
}

char* SFString::print(char* buffer, std::size_t capacity) const {
    return printText(text(), buffer, capacity);
}

bool SFString::equals(const Field& other) const {
    const auto* string = dynamic_cast<const SFString*>(&other);
    return string && string->m_text == m_text;
}

}  // namespace nodes
