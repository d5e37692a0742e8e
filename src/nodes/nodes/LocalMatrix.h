#pragma once

namespace nodes {

class Node;
class SFMatrix;

/// Whether a node's class has a transformation of its own: a Transform or a Billboard.
bool hasLocalMatrix(const Node& node);
/// The own transformation of such a node in OUT, PARENT_WORLD being its parent's worldMatrix(). A
/// walk that carries that matrix along does not climb to the top for each Billboard.
void localMatrixBelow(const Node& node, const SFMatrix& parentWorld, SFMatrix& out);

}  // namespace nodes
