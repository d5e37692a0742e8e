#include "nodes/fields/VectorFields.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "nodes/fields/Matrix.h"
#include "nodes/fields/Numbers.h"
#include "nodes/fields/ValueText.h"

namespace nodes {
namespace {

/// How far from 1 rounding may leave the length of a normalised axis. Such an axis stays as it is,
/// so that copies of a rotation are equal to it.
constexpr float kUnitTolerance = std::numeric_limits<float>::epsilon();

/// Changes OUT only if TEXT has a number for each component.
template <class Value>
bool takeValue(const char* text, Value& out) {
    std::string_view rest = text ? text : "";
    Value value{};
    for (float& component : value) {
        if (!takeNumber(rest, component)) {
            return false;
        }
    }
    out = value;
    return true;
}

}  // namespace

void SFVec2f::get(float out[2]) const {
    std::copy(m_value.begin(), m_value.end(), out);
}

void SFVec2f::fromText(const char* text) {
    takeValue(text, m_value);
}

char* SFVec2f::print(char* buffer, std::size_t capacity) const {
    return printText(ValueText(m_value).view(), buffer, capacity);
}

bool SFVec2f::equals(const Field& other) const {
    const auto* vector = dynamic_cast<const SFVec2f*>(&other);
    return vector && vector->m_value == m_value;
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
    takeValue(text, m_value);
}

char* TripleField::print(char* buffer, std::size_t capacity) const {
    return printText(ValueText(m_value).view(), buffer, capacity);
}

bool TripleField::equals(const Field& other) const {
    const auto* triple = dynamic_cast<const TripleField*>(&other);
    return triple && triple->type() == type() && triple->m_value == m_value;
}

void SFRotation::get(float out[4]) const {
    std::copy(m_value.begin(), m_value.end(), out);
}

void SFRotation::toMatrix(SFMatrix& out) const {
    out.setRotation(m_value.data());
}

void SFRotation::compose(const SFRotation& other) {
    SFMatrix matrix;
    SFMatrix otherMatrix;
    toMatrix(matrix);
    other.toMatrix(otherMatrix);
    matrix.multiply(otherMatrix);
    matrix.toRotation(*this);
}

void SFRotation::rotate(float inout[3]) const {
    SFMatrix matrix;
    toMatrix(matrix);
    matrix.transform(inout);
}

SFRotation::Value SFRotation::normalized(const Value& value) {
    const float length = length3(value.data());
    if (length == 0 || std::fabs(length - 1) <= kUnitTolerance) {
        return value;
    }
    Value result = value;
    normalize3(result.data());
    return result;
}

void SFRotation::fromText(const char* text) {
    Value value;
    if (takeValue(text, value)) {
        setValue(value);
    }
}

char* SFRotation::print(char* buffer, std::size_t capacity) const {
    return printText(ValueText(m_value).view(), buffer, capacity);
}

bool SFRotation::equals(const Field& other) const {
    const auto* rotation = dynamic_cast<const SFRotation*>(&other);
    return rotation && rotation->m_value == m_value;
}

}  // namespace nodes
