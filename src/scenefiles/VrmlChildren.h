#pragma once

#include "nodes/nodes/Node.h"

/// The first child of a type, as the class of that type. Null also for one that has stayed a
/// reference to a node.
template <class Class>
Class* ChildOfType(const nodes::Node& node, nodes::NodeType type) {
    nodes::Node* const child = node.childOfType(type);
    return child != nullptr && child->isType(type) ? static_cast<Class*>(child) : nullptr;
}
