#pragma once

#include <array>
#include <cstdint>

#include "nodes/fields/Field.h"

namespace nodes {

class SFMatrix;

class SFVec2f final : public Field {
  public:
    using Value = std::array<float, 2>;
    SFVec2f() : SFVec2f(0, 0) {}
    SFVec2f(float x, float y) : Field(kSFVec2f), m_value{x, y} {}
    explicit SFVec2f(const Value& value) : Field(kSFVec2f), m_value(value) {}

    const Value& value() const { return m_value; }
    void setValue(const Value& value) { m_value = value; }
    void get(float out[2]) const;
    void set(float x, float y) { m_value = {x, y}; }
    void set(const float in[2]) { m_value = {in[0], in[1]}; }
    float x() const { return m_value[0]; }
    float y() const { return m_value[1]; }

    void fromText(const char* text) override;
    char* print(char* buffer, std::size_t capacity) const override;
    int componentCount() const override { return 2; }
    bool equals(const Field& other) const override;

  private:
    Value m_value;
};

/// Three floats: a point, a vector, a size, a colour.
class TripleField : public Field {
  public:
    using Value = std::array<float, 3>;
    const Value& value() const { return m_value; }
    void setValue(const Value& value) { m_value = value; }
    void get(float out[3]) const;
    void set(float x, float y, float z) { m_value = {x, y, z}; }
    void set(const float in[3]) { m_value = {in[0], in[1], in[2]}; }
    float x() const { return m_value[0]; }
    float y() const { return m_value[1]; }
    float z() const { return m_value[2]; }
    void setX(float x) { m_value[0] = x; }
    void setY(float y) { m_value[1] = y; }
    void setZ(float z) { m_value[2] = z; }
    void add(const TripleField& other);
    void subtract(const TripleField& other);
    void scale(float factor);
    /// A vector of length 0 becomes 0 0 1.
    void normalize();

    void fromText(const char* text) override;
    char* print(char* buffer, std::size_t capacity) const override;
    int componentCount() const override { return 3; }
    bool equals(const Field& other) const override;

  protected:
    TripleField(FieldType type, const Value& value) : Field(type), m_value(value) {}

  private:
    Value m_value;
};

class SFVec3f final : public TripleField {
  public:
    SFVec3f() : SFVec3f(0, 0, 0) {}
    SFVec3f(float x, float y, float z) : TripleField(kSFVec3f, {x, y, z}) {}
    explicit SFVec3f(const Value& value) : TripleField(kSFVec3f, value) {}
};

/// Red, green and blue, from 0 to 1; white at first.
class SFColor final : public TripleField {
  public:
    SFColor() : SFColor(1, 1, 1) {}
    SFColor(float red, float green, float blue) : TripleField(kSFColor, {red, green, blue}) {}
    explicit SFColor(const Value& value) : TripleField(kSFColor, value) {}
};

/// An axis, stored with length 1 (the zero axis stays zero), and an angle in radians.
class SFRotation final : public Field {
  public:
    using Value = std::array<float, 4>;
    SFRotation() : SFRotation(0, 0, 1, 0) {}
    SFRotation(float x, float y, float z, float angle) : SFRotation(Value{x, y, z, angle}) {}
    explicit SFRotation(const Value& value) : Field(kSFRotation), m_value(normalized(value)) {}

    /// Axis and angle.
    const Value& value() const { return m_value; }
    void setValue(const Value& value) { m_value = normalized(value); }
    void get(float out[4]) const;
    void set(float x, float y, float z, float angle) { setValue({x, y, z, angle}); }
    void set(const float in[4]) { setValue({in[0], in[1], in[2], in[3]}); }
    void set(const float axis[3], float angle) { setValue({axis[0], axis[1], axis[2], angle}); }
    void assign(const SFRotation& other) { m_value = other.m_value; }
    void toMatrix(SFMatrix& out) const;
    /// This rotation, and OTHER before it.
    void compose(const SFRotation& other);
    void rotate(float inout[3]) const;
    static Value normalized(const Value& value);

    void fromText(const char* text) override;
    char* print(char* buffer, std::size_t capacity) const override;
    int componentCount() const override { return 4; }
    bool equals(const Field& other) const override;

  private:
    Value m_value;
};

}  // namespace nodes
