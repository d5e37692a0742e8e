#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "nodes/nodes/Node.h"

namespace nodes {
namespace {

/// The names of fields that TEXT may mean: itself, and what it is an event of. The others are
/// empty.
using Names = std::array<std::string_view, 3>;

Names fieldNames(std::string_view text, bool in, bool out) {
    constexpr std::string_view kSet = "set_";
    constexpr std::string_view kChanged = "_changed";
    Names names{text};
    if (in && text.starts_with(kSet)) {
        names[1] = text.substr(kSet.size());
    }
    if (out && text.ends_with(kChanged)) {
        names[2] = text.substr(0, text.size() - kChanged.size());
    }
    return names;
}

bool isOneOf(std::string_view name, const Names& names) {
    return name == names[0] ||
           (!name.empty() && std::find(names.begin() + 1, names.end(), name) != names.end());
}

}  // namespace

void Node::nameFields() {
    for (const auto& rows : nodeClass(m_type).fields) {
        for (const FieldSpec& row : rows) {
            row.of(*this).setNameOfTable(row.name);
        }
    }
}

int Node::fieldCountOf(FieldKind kind) const {
    const Node& node = holder();
    std::size_t count = nodeClass(node.m_type).fields[kind].size();
    if (node.m_extras) {
        count += node.m_extras->fields[kind].size();
    }
    return static_cast<int>(count);
}

Field* Node::fieldOf(FieldKind kind, int i) const {
    if (i < 0) {
        return nullptr;
    }
    const auto& node = holder();
    const auto& rows = nodeClass(node.m_type).fields[kind];
    auto index = static_cast<std::size_t>(i);
    if (index < rows.size()) {
        return &rows[index].of(const_cast<Node&>(node));
    }
    index -= rows.size();
    if (!node.m_extras || index >= node.m_extras->fields[kind].size()) {
        return nullptr;
    }
    return node.m_extras->fields[kind][index].get();
}

Field* Node::findEvent(FieldKind kind, const char* text, bool in, bool out) const {
    if (!text) {
        return nullptr;
    }
    auto& node = const_cast<Node&>(holder());
    const Names names = fieldNames(text, in, out);
    for (const FieldSpec& row : nodeClass(node.m_type).fields[kind]) {
        if (Field& field = row.of(node); isOneOf(field.name(), names)) {
            return &field;
        }
    }
    return node.m_extras ? node.m_extras->find(kind, names) : nullptr;
}

Field* Node::Extras::find(FieldKind kind, std::span<const std::string_view> names) const {
    Field* found = nullptr;
    std::size_t first = fields[kind].size();
    for (const std::string_view name : names) {
        const auto place = placeOfName[kind].find(std::string(name));
        if (place != placeOfName[kind].end() && place->second < first &&
            (!name.empty() || &name == names.data())) {
            first = place->second;
            found = fields[kind][first].get();
        }
    }
    return found;
}

Field* Node::fieldNamed(FieldKind kind, const char* name) const {
    return findEvent(kind, name, false, false);
}

Field* Node::findExposedField(const char* text) const {
    return findEvent(kExposedField, text, true, true);
}

Field* Node::findEventIn(const char* text) const {
    return findEvent(kEventIn, text, true, false);
}

Field* Node::findEventOut(const char* text) const {
    return findEvent(kEventOut, text, false, true);
}

Field* Node::findField(const char* text) const {
    return fieldNamed(kPlainField, text);
}

Field* Node::findHiddenField(const char* text) const {
    return fieldNamed(kHiddenField, text);
}

Field& Node::addFieldOf(FieldKind kind, std::unique_ptr<Field> field) {
    Node& node = holder();
    if (!node.m_extras) {
        node.m_extras = std::make_unique<Extras>();
    }
    auto& fields = node.m_extras->fields[kind];
    node.m_extras->placeOfName[kind].try_emplace(field->name(), fields.size());
    return *fields.emplace_back(std::move(field));
}

Field& Node::addFieldOf(FieldKind kind, const char* text, std::unique_ptr<Field> field) {
    field->setName(text);
    return addFieldOf(kind, std::move(field));
}

Field& Node::addExposedField(std::unique_ptr<Field> field) {
    return addFieldOf(kExposedField, std::move(field));
}

Field& Node::addExposedField(const char* text, std::unique_ptr<Field> field) {
    return addFieldOf(kExposedField, text, std::move(field));
}

Field& Node::addEventIn(std::unique_ptr<Field> field) {
    return addFieldOf(kEventIn, std::move(field));
}

Field& Node::addEventIn(const char* text, std::unique_ptr<Field> field) {
    return addFieldOf(kEventIn, text, std::move(field));
}

Field& Node::addEventOut(std::unique_ptr<Field> field) {
    return addFieldOf(kEventOut, std::move(field));
}

Field& Node::addEventOut(const char* text, std::unique_ptr<Field> field) {
    return addFieldOf(kEventOut, text, std::move(field));
}

Field& Node::addField(std::unique_ptr<Field> field) {
    return addFieldOf(kPlainField, std::move(field));
}

Field& Node::addField(const char* text, std::unique_ptr<Field> field) {
    return addFieldOf(kPlainField, text, std::move(field));
}

Field& Node::addHiddenField(std::unique_ptr<Field> field) {
    return addFieldOf(kHiddenField, std::move(field));
}

Field& Node::addHiddenField(const char* text, std::unique_ptr<Field> field) {
    return addFieldOf(kHiddenField, text, std::move(field));
}

}  // namespace nodes
