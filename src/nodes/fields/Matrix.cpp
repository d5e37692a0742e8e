#include "nodes/fields/Matrix.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "nodes/fields/ValueText.h"
#include "nodes/fields/VectorFields.h"

namespace nodes {
namespace {

// Sums and products are formed in double, so that only what is stored is rounded.
using Triple = std::array<double, 3>;

constexpr std::array<float, 16> kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
/// Below this square of the cosine of half the angle, its sine tells the axis better.
constexpr double kLeastCosine2 = 0.25;

Triple toDoubles(const float in[3]) {
    return {in[0], in[1], in[2]};
}

Triple difference(const float a[3], const float b[3]) {
    const Triple from = toDoubles(b);
    return {a[0] - from[0], a[1] - from[1], a[2] - from[2]};
}

Triple cross(const Triple& a, const Triple& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double dot(const Triple& a, const Triple& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

double length(const Triple& in) {
    return std::sqrt(dot(in, in));
}

void storeNormalized(const Triple& in, float out[3]) {
    const double size = length(in);
    for (std::size_t i = 0; i < 3; ++i) {
        out[i] = size == 0 ? kIdentity[8 + i] : static_cast<float>(in[i] / size);
    }
}

}  // namespace

SFMatrix::SFMatrix() : Field(kNoField), m_value(kIdentity) {}

void SFMatrix::identity() {
    m_value = kIdentity;
}

void SFMatrix::assign(const SFMatrix& other) {
    m_value = other.m_value;
}

void SFMatrix::multiply(const SFMatrix& other) {
    std::array<float, 16> product;
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            double sum = 0;
            for (std::size_t i = 0; i < 4; ++i) {
                sum += static_cast<double>(other.m_value[4 * row + i]) * m_value[4 * i + column];
            }
            product[4 * row + column] = static_cast<float>(sum);
        }
    }
    m_value = product;
}

void SFMatrix::transform(float inout[3]) const {
    const Triple in = toDoubles(inout);
    for (std::size_t i = 0; i < 3; ++i) {
        inout[i] = static_cast<float>(m_value[i] * in[0] + m_value[4 + i] * in[1] +
                                      m_value[8 + i] * in[2] + m_value[12 + i]);
    }
}

void SFMatrix::setScale(float x, float y, float z) {
    m_value = {x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1};
}

void SFMatrix::setScale(const float in[3]) {
    setScale(in[0], in[1], in[2]);
}

void SFMatrix::setTranslation(float x, float y, float z) {
    m_value = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1};
}

void SFMatrix::setTranslation(const float in[3]) {
    setTranslation(in[0], in[1], in[2]);
}

void SFMatrix::setRotation(float x, float y, float z, float angle) {
    identity();
    if (x == 0 && y == 0 && z == 0) {
        return;
    }
    const double c = std::cos(static_cast<double>(angle));
    const double s = std::sin(static_cast<double>(angle));
    const double t = 1 - c;
    const Triple axis = {x, y, z};
    const Triple bySine = {x * s, y * s, z * s};
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t j = (i + 1) % 3;
        const std::size_t k = (i + 2) % 3;
        m_value[4 * i + i] = static_cast<float>(axis[i] * axis[i] * t + c);
        m_value[4 * i + j] = static_cast<float>(axis[i] * axis[j] * t + bySine[k]);
        m_value[4 * i + k] = static_cast<float>(axis[i] * axis[k] * t - bySine[j]);
    }
}

void SFMatrix::setRotation(const float in[4]) {
    setRotation(in[0], in[1], in[2], in[3]);
}

// S. W. Shepperd, "Quaternion from rotation matrix" (1978): from the largest component of the
// quaternion, so that nothing is divided by what rounding has left of a zero.
void SFMatrix::toRotation(SFRotation& out) const {
    const auto at = [this](std::size_t row, std::size_t column) {
        return static_cast<double>(m_value[4 * row + column]);
    };
    double w = 0;
    Triple axis{};
    const double cosine2 = (at(0, 0) + at(1, 1) + at(2, 2) + 1) / 4;
    if (cosine2 >= kLeastCosine2) {
        w = std::sqrt(cosine2);
        axis = {at(1, 2) - at(2, 1), at(2, 0) - at(0, 2), at(0, 1) - at(1, 0)};
        for (double& component : axis) {
            component /= 4 * w;
        }
    } else {
        std::size_t i = at(1, 1) > at(0, 0) ? 1 : 0;
        i = at(2, 2) > at(i, i) ? 2 : i;
        const std::size_t j = (i + 1) % 3;
        const std::size_t k = (i + 2) % 3;
        // Not 0 for a rotation: its four squares have the sum 1.
        const double size = std::sqrt(std::max(at(i, i) - at(j, j) - at(k, k) + 1, 0.0)) / 2;
        if (size == 0) {
            return out.set(0, 0, 1, 0);
        }
        axis[i] = size;
        axis[j] = (at(i, j) + at(j, i)) / (4 * size);
        axis[k] = (at(i, k) + at(k, i)) / (4 * size);
        w = (at(j, k) - at(k, j)) / (4 * size);
    }
    const double sine = length(axis);
    if (sine == 0) {
        return out.set(0, 0, 1, 0);
    }
    // Angles up to a half turn.
    const double sign = w < 0 ? -1 : 1;
    SFRotation::Value value;
    for (std::size_t i = 0; i < 3; ++i) {
        value[i] = static_cast<float>(sign * axis[i] / sine);
    }
    value[3] = static_cast<float>(2 * std::atan2(sine, sign * w));
    out.setValue(value);
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
    storeNormalized(toDoubles(inout), inout);
}

float length3(const float in[3]) {
    return static_cast<float>(length(toDoubles(in)));
}

void negate3(float inout[3]) {
    for (std::size_t i = 0; i < 3; ++i) {
        inout[i] = -inout[i];
    }
}

float angleBetween(const float a[3], const float b[3]) {
    const Triple from = toDoubles(a);
    const Triple to = toDoubles(b);
    const double lengths = length(from) * length(to);
    if (lengths == 0) {
        return 0;
    }
    return static_cast<float>(std::acos(std::clamp(dot(from, to) / lengths, -1.0, 1.0)));
}

void triangleNormal(const float a[3], const float b[3], const float c[3], float out[3]) {
    storeNormalized(cross(difference(b, a), difference(c, b)), out);
}

void crossNormalized(const float a[3], const float b[3], float out[3]) {
    storeNormalized(cross(toDoubles(a), toDoubles(b)), out);
}

}  // namespace nodes
