#include "nodes/fields/VectorFields.h"

#include <algorithm>
#include <cmath>

#include "nodes/fields/Matrix.h"
#include "nodes/fields/PrintedText.h"

namespace nodes {

void SFVec2f::get(float out[2]) const {
    std::copy(m_value.begin(), m_value.end(), out);
}

void SFVec2f::fromText(const char* text) {
    takeNumbers(text, m_value);
}

char* SFVec2f::print(char* buffer, std::size_t capacity) const {
    return printNumbers(m_value, buffer, capacity);
}

bool SFVec2f::equals(const Field& other) const {
    return other.type() == kSFVec2f && static_cast<const SFVec2f&>(other).m_value == m_value;
}

void TripleField::get(float out[3]) const {
    std::copy(m_value.begin(), m_value.end(), out);
}

void TripleField::add(const TripleField& other) {
    for (std::size_t i = 0; i < m_value.size(); ++i) {
        m_value[i] += other.m_value[i];
    }
}

void TripleField::subtract(const TripleField& other) {
    for (std::size_t i = 0; i < m_value.size(); ++i) {
        m_value[i] -= other.m_value[i];
    }
}

void TripleField::scale(float factor) {
    for (float& component : m_value) {
        component *= factor;
    }
}

void TripleField::normalize() {
    normalize3(m_value.data());
}

void TripleField::fromText(const char* text) {
    takeNumbers(text, m_value);
}

char* TripleField::print(char* buffer, std::size_t capacity) const {
    return printNumbers(m_value, buffer, capacity);
}

bool TripleField::equals(const Field& other) const {
    return other.type() == type() && static_cast<const TripleField&>(other).m_value == m_value;
}

SFRotation::Value SFRotation::normalized(const Value& value) {
    const float length = length3(value.data());
    if (length == 0 || length == 1 || !std::isfinite(length)) {
        return value;
    }
    return {value[0] / length, value[1] / length, value[2] / length, value[3]};
}

void SFRotation::get(float out[4]) const {
    std::copy(m_value.begin(), m_value.end(), out);
}

void SFRotation::toMatrix(SFMatrix& out) const {
    out.setRotation(m_value.data());
}

void SFRotation::compose(const SFRotation& other) {
    SFMatrix mine;
    SFMatrix others;
    toMatrix(mine);
    other.toMatrix(others);
    mine.multiply(others);
    mine.toRotation(*this);
}

void SFRotation::rotate(float inout[3]) const {
    SFMatrix matrix;
    toMatrix(matrix);
    matrix.transform(inout);
}

void SFRotation::fromText(const char* text) {
    Value value{};
    if (takeNumbers(text, value)) {
        setValue(value);
    }
}

char* SFRotation::print(char* buffer, std::size_t capacity) const {
    return printNumbers(m_value, buffer, capacity);
}

bool SFRotation::equals(const Field& other) const {
    return other.type() == kSFRotation && static_cast<const SFRotation&>(other).m_value == m_value;
}

}  // namespace nodes
