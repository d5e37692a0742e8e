#pragma once

#include <cstdint>
#include <vector>

#include "nodes/fields/Field.h"

namespace nodes {

class Node;

/// How a line of a node's body stands in a VRML file.
enum class LineForm : std::uint8_t {
    kSingle,    // a value, whatever it is
    kList,      // a list, unless it is empty
    kImage,     // an image, unless it is empty, without brackets
    kChild,     // the first child of a type
    kTexture,   // the first child that is a texture
    kGeometry,  // the first child that is a geometry
};

/// One line of a class's body: the value of a field, or a child with its own lines.
struct FieldLine {
    LineForm form;
    const char* keyword;
    /// The field of a node of the class; null for a child.
    Field& (*field)(Node&) = nullptr;
    /// The type of a kChild.
    std::int32_t childType = -1;
};

/// How the nodes of a class are printed.
struct NodeForm {
    /// In the order in which they are printed.
    std::vector<FieldLine> lines;
    /// Children stand in lines of their own keywords, and not in one list.
    bool hasChildLines = false;
    /// The keyword of the list of children.
    const char* childrenKeyword = "children";
};

/// One without lines for a type without a class.
const NodeForm& nodeForm(std::int32_t type);

}  // namespace nodes
