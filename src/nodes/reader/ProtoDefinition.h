#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "nodes/fields/Field.h"

namespace nodes {

/// A PROTO: the text of its node, the fields that it declares, and the values that the instance at
/// hand gives them. An instance is the text with the values in place of each IS.
class ProtoDefinition {
  public:
    ProtoDefinition(std::string name, std::string body, std::string_view interfaceText);

    const std::string& name() const { return m_name; }
    const std::string& body() const { return m_body; }

    void setInstanceValues(std::string_view text);
    void clearInstanceValues() { m_instanceValues.clear(); }
    /// Appends the text of the instance. Where an IS names what has no value, as an event does, the
    /// field before it goes as well.
    void expand(std::string& out) const;

    /// While the text of an instance is read, no other instance may begin in it.
    bool isExpanding() const { return m_isExpanding; }
    void setExpanding(bool isExpanding) { m_isExpanding = isExpanding; }

  private:
    /// Fields by name; of several of a name, the first one counts.
    class FieldList {
      public:
        void add(std::unique_ptr<Field> field);
        const Field* find(std::string_view name) const;
        void clear();

      private:
        std::vector<std::unique_ptr<Field>> m_fields;
        std::unordered_map<std::string_view, const Field*> m_byName;
    };
    class Declarations;
    class Expansion;

    std::string m_name;
    std::string m_body;
    FieldList m_interfaceFields;
    FieldList m_instanceValues;
    bool m_isExpanding = false;
};

}  // namespace nodes
