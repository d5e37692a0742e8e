#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "nodes/fields/Field.h"
#include "nodes/nodes/NodeType.h"

namespace nodes {

class Node;

/// The list of a node that a field stands in. Hidden fields are the library's own and go into no
/// file.
enum FieldKind : std::uint8_t { kExposedField, kEventIn, kEventOut, kPlainField, kHiddenField };
constexpr int kFieldKinds = 5;

/// One field of a node class: one row of the table of node types.
struct FieldSpec {
    FieldKind kind;
    const char* name;
    /// The field of a node of the class.
    Field& (*of)(Node&);
};

/// What the table tells of a node class.
struct NodeClass {
    std::int32_t type = kNoType;
    std::unique_ptr<Node> (*make)() = nullptr;
    /// The fields of each kind in the order of registration, those of the base classes first.
    std::array<std::vector<FieldSpec>, kFieldKinds> fields;

    /// Null if the class has no such field.
    const FieldSpec* find(FieldKind kind, const char* name) const;
};

/// The class of a type number from 0 to 55; for any other, one without fields.
const NodeClass& nodeClass(std::int32_t type);
/// A new node of a type number from 0 to 55; null for any other.
std::unique_ptr<Node> makeNode(std::int32_t type);

}  // namespace nodes
