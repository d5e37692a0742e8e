#pragma once

#include <cstdint>

namespace nodes {

/// Type numbers of the node classes, the index into the table of their names.
enum NodeType : std::int32_t {
    kNoType = -1,
#define ABSTRACT(Class, BaseClass)
#define NODE(number, Name, text, BaseClass) k##Name = number,
#define VALUE(kind, Type, id, Id, text, ...)
#define OVERRIDING_VALUE(kind, Type, id, Id, text, ...)
#define LIST(kind, Type, id, Id, text)
#define OWN(...)
#define END(Class)
#include "nodes/nodes/NodeTable.def"
    kNodeClassCount,
    // Names without a class, which matter to the writers and to takeNodes() alone.
    kXmlElement = 56,
    kXmlScene = 92,
};

/// The name of a type number from 0 to 226, null for any other. The numbers from 56 on have no
/// class; those from 94 on are the names of fields.
const char* nodeTypeName(std::int32_t type);

/// The groups of node types.
bool isGroupingType(std::int32_t type);
bool isGeometryType(std::int32_t type);
bool isBindableType(std::int32_t type);
bool isSensorType(std::int32_t type);
bool isInterpolatorType(std::int32_t type);
bool isTextureType(std::int32_t type);
bool isChildLeafType(std::int32_t type);
bool isDynamicGroupType(std::int32_t type);
bool isPlaceholderType(std::int32_t type);

}  // namespace nodes
