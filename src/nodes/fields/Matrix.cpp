#include "nodes/fields/Matrix.h"

#include <algorithm>
#include <cmath>

#include "nodes/fields/PrintedText.h"
#include "nodes/fields/VectorFields.h"

namespace nodes {
namespace {

constexpr std::array<float, 16> kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

}  // namespace

SFMatrix::SFMatrix() : Field(kNoField), m_value(kIdentity) {}

void SFMatrix::identity() {
    m_value = kIdentity;
}

void SFMatrix::assign(const SFMatrix& other) {
    m_value = other.m_value;
}

void SFMatrix::multiply(const SFMatrix& other) {
    std::array<float, 16> product{};
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            float sum = 0;
            for (std::size_t i = 0; i < 4; ++i) {
                sum += other.m_value[4 * row + i] * m_value[4 * i + column];
            }
            product[4 * row + column] = sum;
        }
    }
    m_value = product;
}

void SFMatrix::transform(float inout[3]) const {
    const std::array<float, 3> v = {inout[0], inout[1], inout[2]};
    for (std::size_t i = 0; i < v.size(); ++i) {
        inout[i] =
            m_value[i] * v[0] + m_value[4 + i] * v[1] + m_value[8 + i] * v[2] + m_value[12 + i];
    }
}

void SFMatrix::setScale(float x, float y, float z) {
    identity();
    m_value[0] = x;
    m_value[5] = y;
    m_value[10] = z;
}

void SFMatrix::setScale(const float in[3]) {
    setScale(in[0], in[1], in[2]);
}

void SFMatrix::setTranslation(float x, float y, float z) {
    identity();
    m_value[12] = x;
    m_value[13] = y;
    m_value[14] = z;
}

void SFMatrix::setTranslation(const float in[3]) {
    setTranslation(in[0], in[1], in[2]);
}

void SFMatrix::setRotation(float x, float y, float z, float angle) {
    const float c = std::cos(angle);
    const float s = std::sin(angle);
    const float t = 1 - c;
    // clang-format off
    m_value = {x * x * t + c,     x * y * t + z * s, x * z * t - y * s, 0,
               x * y * t - z * s, y * y * t + c,     y * z * t + x * s, 0,
               x * z * t + y * s, y * z * t - x * s, z * z * t + c,     0,
               0,                 0,                 0,                 1};
    // clang-format on
}

void SFMatrix::setRotation(const float in[4]) {
    setRotation(in[0], in[1], in[2], in[3]);
}

void SFMatrix::toRotation(SFRotation& out) const {
    const auto& m = m_value;
    const float squared = (m[0] + m[5] + m[10] + 1) / 4;
    float w = 0;
    float x = 0;
    float y = 0;
    float z = 0;
    if (squared > 0) {
        w = std::sqrt(squared);
        x = (m[6] - m[9]) / (4 * w);
        y = (m[8] - m[2]) / (4 * w);
        z = (m[1] - m[4]) / (4 * w);
    } else if (const float d = m[5] + m[10]; d != 0 && -1 / (2 * d) > 0) {
        x = std::sqrt(-1 / (2 * d));
        y = m[1] / (2 * x);
        z = m[2] / (2 * x);
    } else if (const float e = 1 - m[10]; e != 0 && 1 / (2 * e) > 0) {
        y = std::sqrt(1 / (2 * e));
        z = m[6] / (2 * y);
    } else {
        z = 1;
    }
    // Rounding may bring the cosine past 1.
    const float angle = std::acos(std::clamp(2 * w * w - 1, -1.0F, 1.0F));
    if (angle == 0) {
        out.set(0, 0, 1, 0);
        return;
    }
    const float sine = std::sin(angle);
    out.set(x / sine, y / sine, z / sine, angle);
}

void SFMatrix::toFloats(float out[16]) const {
    std::copy(m_value.begin(), m_value.end(), out);
}

void SFMatrix::fromFloats(const float in[16]) {
    std::copy_n(in, m_value.size(), m_value.begin());
}

void SFMatrix::fromText(const char*) {}

char* SFMatrix::print(char* buffer, std::size_t capacity) const {
    return printText("", buffer, capacity);
}

void normalize3(float inout[3]) {
    const float length = length3(inout);
    if (length == 0) {
        inout[0] = inout[1] = 0;
        inout[2] = 1;
        return;
    }
    for (int i = 0; i < 3; ++i) {
        inout[i] /= length;
    }
}

float length3(const float in[3]) {
    // The square of a float fits a double, however large or small it is.
    const double x = in[0];
    const double y = in[1];
    const double z = in[2];
    return static_cast<float>(std::sqrt(x * x + y * y + z * z));
}

void negate3(float inout[3]) {
    for (int i = 0; i < 3; ++i) {
        inout[i] = -inout[i];
    }
}

float angleBetween(const float a[3], const float b[3]) {
    const float dot = a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
    return std::acos(std::clamp(dot / (length3(a) * length3(b)), -1.0F, 1.0F));
}

void triangleNormal(const float a[3], const float b[3], const float c[3], float out[3]) {
    const float first[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
    const float second[3] = {c[0] - b[0], c[1] - b[1], c[2] - b[2]};
    crossNormalized(first, second, out);
}

void crossNormalized(const float a[3], const float b[3], float out[3]) {
    float product[3] = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
                        a[0] * b[1] - a[1] * b[0]};
    normalize3(product);
    std::copy_n(product, 3, out);
}

}  // namespace nodes
