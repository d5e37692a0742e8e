#pragma once

#include <string>

#include "nodes/NodeTree.h"
#include "nodes/writer/TextStream.h"

namespace nodes {

inline std::string vrmlOf(const Node& node, int depth = 0) {
    std::string text;
    StringStream stream(text);
    node.writeNode(stream, depth);
    stream.finish();
    return text;
}

inline std::string xmlOf(const Node& node, int depth = 0) {
    std::string text;
    StringStream stream(text);
    node.writeXml(stream, depth);
    stream.finish();
    return text;
}

/// Adds a new node below PARENT, with a name if there is one.
template <class Class>
Class& addNew(Node& parent, const char* name = nullptr) {
    auto& node = static_cast<Class&>(parent.addChild(std::make_unique<Class>(), false));
    node.setName(name);
    return node;
}

template <class Class>
Class& addNew(NodeTree& tree, const char* name = nullptr) {
    auto& node = static_cast<Class&>(tree.addNode(std::make_unique<Class>(), false));
    node.setName(name);
    return node;
}

}  // namespace nodes
