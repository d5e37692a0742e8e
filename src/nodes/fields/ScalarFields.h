#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "nodes/fields/Field.h"

namespace nodes {

class Node;

/// A field of one plain value.
template <class T, FieldType kType>
class ScalarField : public Field {
  public:
    using Value = T;
    explicit ScalarField(T value) : Field(kType), m_value(value) {}

    T value() const { return m_value; }
    void setValue(T value) { m_value = value; }
    void set(T value) { m_value = value; }
    bool equals(const Field& other) const override {
        return other.classType() == kType &&
               static_cast<const ScalarField&>(other).m_value == m_value;
    }

  private:
    T m_value;
};

/// TRUE unless told otherwise. Its texts are TRUE, true, FALSE and false; others change nothing.
class SFBool final : public ScalarField<bool, kSFBool> {
  public:
    explicit SFBool(bool value = true) : ScalarField(value) {}
    void fromText(const char* text) override;
    char* print(char* buffer, std::size_t capacity) const override;
};

class SFFloat final : public ScalarField<float, kSFFloat> {
  public:
    explicit SFFloat(float value = 0) : ScalarField(value) {}
    void fromText(const char* text) override;
    char* print(char* buffer, std::size_t capacity) const override;
};

class SFInt32 final : public ScalarField<std::int32_t, kSFInt32> {
  public:
    explicit SFInt32(std::int32_t value = 0) : ScalarField(value) {}
    void fromText(const char* text) override;
    char* print(char* buffer, std::size_t capacity) const override;
};

/// Seconds.
class SFTime final : public ScalarField<double, kSFTime> {
  public:
    explicit SFTime(double value = -1.0) : ScalarField(value) {}
    void fromText(const char* text) override;
    char* print(char* buffer, std::size_t capacity) const override;
};

/// A node, which is not owned; null at first, and again once the node leaves its tree or ends. As
/// text, the node's name.
class SFNode final : public Field {
  public:
    using Value = Node*;
    explicit SFNode(Node* value = nullptr) : Field(kSFNode) { setValue(value); }
    ~SFNode() override { setValue(nullptr); }

    Node* value() const { return m_value; }
    void setValue(Node* value);
    void set(Node* value) { setValue(value); }

    void fromText(const char* text) override;
    const char* toText(std::string& out) const override;
    char* print(char* buffer, std::size_t capacity) const override;
    bool equals(const Field& other) const override;

  private:
    Node* m_value = nullptr;
    // The ring of the fields that name the node.
    SFNode* m_previous = nullptr;
    SFNode* m_next = nullptr;
};

class SFString final : public Field {
  public:
    using Value = std::string;
    explicit SFString(std::string text = {}) : Field(kSFString), m_text(std::move(text)) {}

    const char* text() const { return m_text.c_str(); }
    const std::string& value() const { return m_text; }
    /// Null gives the empty text.
    void setText(const char* text) { m_text = text ? text : ""; }
    void set(std::string text) { m_text = std::move(text); }
    void setValue(std::string text) { m_text = std::move(text); }

    void fromText(const char* text) override;
    const char* toText(std::string& out) const override;
    char* print(char* buffer, std::size_t capacity) const override;
    bool equals(const Field& other) const override;

  private:
    std::string m_text;
};

}  // namespace nodes
