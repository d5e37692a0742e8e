#pragma once

#include <string>

#include "scenefiles/Numbers.h"
#include "scenefiles/xml/XmlElement.h"

/// Reads the attributes of one element and remembers whether one that must be there was not.
class AttributeReader {
  public:
    explicit AttributeReader(const XmlElement& element) : m_element(element) {}

    float Float(const char* name) { return ParseFloat(Required(name)); }
    float Float(const char* name, float byDefault) const {
        const XmlAttribute* const attribute = m_element.GetAttribute(name);
        return attribute != nullptr ? ParseFloat(attribute->value) : byDefault;
    }
    int Integer(const char* name) { return ParseInteger(Required(name)); }
    int Integer(const char* name, int byDefault) const {
        const XmlAttribute* const attribute = m_element.GetAttribute(name);
        return attribute != nullptr ? ParseInteger(attribute->value) : byDefault;
    }
    /// True only for "true".
    bool Bool(const char* name) { return Required(name) == std::string_view("true"); }
    std::string Text(const char* name) { return Required(name); }
    /// Empty if there is none.
    std::string Label() const {
        const XmlAttribute* const attribute = m_element.GetAttribute("label");
        return attribute != nullptr ? attribute->value : "";
    }

    bool IsComplete() const { return m_complete; }

  private:
    const char* Required(const char* name) {
        const XmlAttribute* const attribute = m_element.GetAttribute(name);
        m_complete = m_complete && attribute != nullptr;
        return attribute != nullptr ? attribute->value : "";
    }

    const XmlElement& m_element;
    bool m_complete = true;
};

/// The attributes x, y and z. True if all are there.
inline bool ReadVector(const XmlElement& element, float* vector) {
    AttributeReader reader(element);
    vector[0] = reader.Float("x");
    vector[1] = reader.Float("y");
    vector[2] = reader.Float("z");
    return reader.IsComplete();
}

/// The attributes x, y, z and w, in this order.
inline bool ReadQuaternion(const XmlElement& element, float* quaternion) {
    AttributeReader reader(element);
    quaternion[3] = reader.Float("w");
    return ReadVector(element, quaternion) && reader.IsComplete();
}
