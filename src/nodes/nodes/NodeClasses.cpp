#include "nodes/nodes/NodeClasses.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>

#include "nodes/nodes/FieldSpec.h"

namespace nodes {
namespace {

void addRow(NodeClass& table, FieldKind kind, const char* name, Field& (*of)(Node&)) {
    table.fields[kind].push_back({kind, name, of});
}

/// Appends the rows of a class behind those of its bases.
template <class Class>
struct RowsOf {
    static void append(NodeClass&) {}
};

#define ABSTRACT(Class, BaseClass)             \
    template <>                                \
    struct RowsOf<Class> {                     \
        using Self = Class;                    \
        static void append(NodeClass& table) { \
            RowsOf<BaseClass>::append(table);
#define NODE(number, Name, text, BaseClass) ABSTRACT(Name##Node, BaseClass)
#define VALUE(kind, Type, id, Id, text, ...) LIST(kind, Type, id, Id, text)
#define OVERRIDING_VALUE(kind, Type, id, Id, text, ...) LIST(kind, Type, id, Id, text)
#define LIST(kind, Type, id, Id, text) \
    addRow(table, kind, text,          \
           [](Node& node) -> Field& { return static_cast<Self&>(node).id##Field(); });
#define OWN(...)
#define END(Class) \
    }              \
    }              \
    ;
#include "nodes/nodes/NodeTable.def"

template <class Class>
void fillClass(NodeClass& table, std::int32_t type) {
    table.type = type;
    table.make = []() -> std::unique_ptr<Node> { return std::make_unique<Class>(); };
    RowsOf<Class>::append(table);
}

using ClassTable = std::array<NodeClass, kNodeClassCount>;

ClassTable makeClasses() {
    ClassTable classes;
#define ABSTRACT(Class, BaseClass)
#define NODE(number, Name, text, BaseClass) fillClass<Name##Node>(classes[number], number);
#define VALUE(kind, Type, id, Id, text, ...)
#define OVERRIDING_VALUE(kind, Type, id, Id, text, ...)
#define LIST(kind, Type, id, Id, text)
#define OWN(...)
#define END(Class)
#include "nodes/nodes/NodeTable.def"
    return classes;
}

}  // namespace

const FieldSpec* NodeClass::find(FieldKind kind, const char* name) const {
    for (const FieldSpec& row : fields[kind]) {
        if (std::strcmp(row.name, name) == 0) {
            return &row;
        }
    }
    return nullptr;
}

const NodeClass& nodeClass(std::int32_t type) {
    static const ClassTable classes = makeClasses();
    static const NodeClass none;
    return type >= 0 && type < kNodeClassCount ? classes[static_cast<std::size_t>(type)] : none;
}

std::unique_ptr<Node> makeNode(std::int32_t type) {
    return type >= 0 && type < kNodeClassCount ? nodeClass(type).make() : nullptr;
}

}  // namespace nodes
