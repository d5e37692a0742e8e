#pragma once

#include <string>
#include <type_traits>

#include "nodes/fields/Lists.h"
#include "nodes/nodes/Bounds.h"
#include "nodes/nodes/Node.h"

namespace nodes {

/// How an accessor hands out a field: plain values and texts as values, others as the field.
template <class Type>
decltype(auto) fieldValue(const Type& field) {
    using Value = typename Type::Value;
    if constexpr (std::is_scalar_v<Value> || std::is_same_v<Value, std::string>) {
        return field.value();
    } else {
        return (field);
    }
}

template <class Type, class Out>
concept HasComponents = requires(const Type& field, Out* out) {
    field.get(out);
};

template <class Type, class Out>
void getComponents(const Type& field, Out* out) {
    field.get(out);
}

/// A node with children to which a file may give a box.
class NodeWithBounds : public Node, public BoundsInterface {
  protected:
    using Node::Node;
};

// The classes of the table. For a field F of one value: fField(), f(), setF(...) in every form in
// which the field can be set; for a list: f(), addF(...), fCount(), fAt(i).

#define ABSTRACT(Class, BaseClass)   \
    class Class : public BaseClass { \
        using Self = Class;          \
                                     \
      protected:                     \
        explicit Class(std::int32_t type) : BaseClass(type) {}

#define NODE(number, Name, text, BaseClass)                \
    class Name##Node final : public BaseClass {            \
        using Self = Name##Node;                           \
                                                           \
      public:                                              \
        Name##Node() : BaseClass(number) { nameFields(); } \
        ~Name##Node() override { retire(); }

#define VALUE_ACCESS(kind, Type, id, Id, text, ...)  \
    const Type& id##Field() const {                  \
        return const_cast<Self*>(this)->id##Field(); \
    }                                                \
    decltype(auto) id() const {                      \
        return fieldValue<Type>(id##Field());        \
    }                                                \
    template <class Out>                             \
    requires HasComponents<Type, Out>                \
    void id(Out* out) const {                        \
        getComponents(id##Field(), out);             \
    }                                                \
    template <class... Part>                         \
    void set##Id(Part... parts) {                    \
        id##Field().set(parts...);                   \
    }                                                \
                                                     \
  private:                                           \
    Type m_##id{__VA_ARGS__};

#define VALUE(kind, Type, id, Id, text, ...)    \
  public:                                       \
    Type& id##Field() {                         \
        return held(&Self::m_##id, kind, text); \
    }                                           \
    VALUE_ACCESS(kind, Type, id, Id, text, __VA_ARGS__)

#define OVERRIDING_VALUE(kind, Type, id, Id, text, ...) \
  public:                                               \
    Type& id##Field() override {                        \
        return held(&Self::m_##id, kind, text);         \
    }                                                   \
    VALUE_ACCESS(kind, Type, id, Id, text, __VA_ARGS__)

#define LIST(kind, Type, id, Id, text)          \
  public:                                       \
    Type& id() {                                \
        return held(&Self::m_##id, kind, text); \
    }                                           \
    const Type& id() const {                    \
        return const_cast<Self*>(this)->id();   \
    }                                           \
    Type& id##Field() {                         \
        return id();                            \
    }                                           \
    template <class... Part>                    \
    void add##Id(Part... parts) {               \
        id().add(parts...);                     \
    }                                           \
    int id##Count() const {                     \
        return id().count();                    \
    }                                           \
    auto id##At(int i) const {                  \
        return id().get(i);                     \
    }                                           \
                                                \
  private:                                      \
    Type m_##id;

#define OWN(...) \
  public:        \
    __VA_ARGS__
#define END(Class) \
    }              \
    ;

#include "nodes/nodes/NodeTable.def"

#undef VALUE_ACCESS

}  // namespace nodes
