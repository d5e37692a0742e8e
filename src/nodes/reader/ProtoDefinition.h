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
    ProtoDefinition(std::string name, std::string body, std::string interfaceText);

    const std::string& name() const { return m_name; }
    const std::string& body() const { return m_body; }
    /// The characters of its texts, to which the work of using it is in proportion.
    std::size_t size() const { return m_body.size() + m_interfaceText.size(); }
    /// The words of body and defaults, among them the PROTOs of which they have instances.
    std::vector<std::string_view> possibleInstances() const;

    void setInstanceValues(std::string_view text);
    void clearInstanceValues() { m_instanceValues.clear(); }
    /// Appends the text of the instance. Where an IS names what has no value, as an event does, the
    /// field before it goes as well.
    void expand(std::string& out) const;

    /// Whether the text of an instance is being read, of which there may be several in each other.
    bool isExpanding() const { return m_expansions > 0; }
    void beginExpansion() { ++m_expansions; }
    void endExpansion() { --m_expansions; }

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
    std::string m_interfaceText;
    FieldList m_interfaceFields;
    FieldList m_instanceValues;
    std::size_t m_expansions = 0;
};

}  // namespace nodes
