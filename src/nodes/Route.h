#pragma once

#include <cstdint>

namespace nodes {

class Field;
class Node;
class NodeTree;

/// Carries the values of one node's field to another's. It belongs to its tree; a node that leaves
/// the tree takes its routes with it.
class Route {
  public:
    Route(Node& fromNode, Field& fromField, Node& toNode, Field& toField)
        : m_fromNode(&fromNode), m_toNode(&toNode), m_fromField(&fromField), m_toField(&toField) {}
    Route(const Route&) = delete;
    Route& operator=(const Route&) = delete;

    Node* fromNode() const { return m_fromNode; }
    Node* toNode() const { return m_toNode; }
    Field* fromField() const { return m_fromField; }
    Field* toField() const { return m_toField; }

    /// Copies the value, if the types are the same, unless the two are equal and the route has
    /// delivered before; binds the target if it is its set_bind.
    void deliver();
    /// The next delivery goes through, whatever the values are.
    void clearDelivered() { m_delivered = false; }
    bool delivered() const { return m_delivered; }

    void write(class TextStream& stream) const;
    void writeXml(class TextStream& stream) const;

  private:
    friend class NodeTree;

    Node* m_fromNode;
    Node* m_toNode;
    Field* m_fromField;
    Field* m_toField;
    // Ascending in the order in which the routes of a tree were added.
    std::uint64_t m_number = 0;
    bool m_delivered = false;
    bool m_delivering = false;
};

}  // namespace nodes
