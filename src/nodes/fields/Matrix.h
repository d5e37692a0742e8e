#pragma once

#include <array>

#include "nodes/fields/Field.h"

namespace nodes {

class SFRotation;

/// Sixteen floats, row by row. A point is a row vector: x' = m[0]x + m[4]y + m[8]z + m[12] and so
/// on, so that the translation stands in m[12] to m[14]; the last column takes no part. No file can
/// hold one. Each set... starts from the identity.
class SFMatrix final : public Field {
  public:
    SFMatrix();

    void identity();
    void assign(const SFMatrix& other);
    /// OTHER x this, row-major: of a sequence of calls, the last one acts first on a point.
    void multiply(const SFMatrix& other);
    void transform(float inout[3]) const;
    void setScale(float x, float y, float z);
    void setScale(const float in[3]);
    void setTranslation(float x, float y, float z);
    void setTranslation(const float in[3]);
    /// About an axis of length 1; the zero axis turns nothing.
    void setRotation(float x, float y, float z, float angle);
    void setRotation(const float in[4]);
    /// Of a rotation's matrix, with an angle from 0 to a half turn.
    void toRotation(SFRotation& out) const;
    void toFloats(float out[16]) const;
    void fromFloats(const float in[16]);

    void fromText(const char* text) override;
    char* print(char* buffer, std::size_t capacity) const override;
    int componentCount() const override { return 16; }

  private:
    std::array<float, 16> m_value;
};

/// A vector of length 0 becomes 0 0 1.
void normalize3(float inout[3]);
float length3(const float in[3]);
void negate3(float inout[3]);
/// acos of the dot product over the product of the lengths, in radians; 0 if a length is 0.
float angleBetween(const float a[3], const float b[3]);
/// The normalised cross product of b - a and c - b.
void triangleNormal(const float a[3], const float b[3], const float c[3], float out[3]);
void crossNormalized(const float a[3], const float b[3], float out[3]);

}  // namespace nodes
