#pragma once

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "nodes/fields/Field.h"
#include "nodes/fields/ScalarFields.h"
#include "nodes/fields/VectorFields.h"

namespace nodes {

/// A list of values of one class. The values lie side by side; a Field object stands for an item
/// only once it is asked for, and then for as long as the item stands in the list.
class MField : public Field {
  public:
    /// Appends an item of the default value, set from TEXT.
    virtual void addFromText(const char* text) = 0;
    /// Copies the items of a list of the same type number; does nothing for any other field.
    virtual void assign(const Field& other) = 0;
    /// One item a line: INDENT, the item's stream form, "," behind every item but the last.
    virtual void write(TextStream& stream, std::string_view indent) const = 0;
    void writeIndented(TextStream& stream, std::string_view prefix, std::string_view suffix) const;

    virtual int count() const = 0;
    virtual void clear() = 0;
    /// Item I, which belongs to the list; null if I is negative or past the end. What is set on it
    /// is set in the list.
    virtual Field* item(int i) = 0;
    /// Appends an item, which the list then owns: item(count() - 1) is FIELD itself. One of another
    /// class than the list's items is dropped.
    virtual void add(std::unique_ptr<Field> field) = 0;

    /// Clears the list and adds each item of a text, whose items are separated by commas. One that
    /// begins with a double quote ends with the next one and may hold commas; there is none behind
    /// a comma at the end.
    void fromText(const char* text) override;
    const char* toText(std::string& out) const override;
    /// Stops before the item that would bring the text, with its separator, to CAPACITY characters.
    char* print(char* buffer, std::size_t capacity) const override;
    /// toText() of item I, without an object for it.
    virtual const char* itemText(int i, std::string& out) const = 0;

  protected:
    using Field::Field;
};

/// The list of ITEMs, whose values are of type Item::Value.
///
/// Members that not every list has are templates: clang 14 instantiates all others with the class,
/// whatever they require.
template <class Item, FieldType kType>
class ListOf : public MField {
  public:
    using Value = typename Item::Value;
    static constexpr bool kHasComponents =
        !std::is_scalar_v<Value> && !std::is_same_v<Value, std::string>;

    ListOf() : MField(kType) {}

    using MField::add;
    void add(Value value) {
        if constexpr (std::is_same_v<Item, SFRotation>) {
            value = Item::normalized(value);
        }
        m_values.push_back(std::move(value));
    }
    /// Null adds the empty text.
    template <std::same_as<char> Character>
    requires std::is_same_v<Value, std::string>
    void add(const Character* text) { m_values.emplace_back(text ? text : ""); }
    /// The components of an item.
    template <std::same_as<float> Component>
    requires kHasComponents void add(const Component* in) { addSet(in); }
    /// In every form in which the item can be set, of two parts or more.
    template <class... Part>
    requires(sizeof...(Part) > 1) void add(Part... parts) { addSet(parts...); }
    /// Room for COUNT items in all.
    void reserve(std::size_t count) { m_values.reserve(count); }

    /// The values side by side, good until the list or an item of it changes.
    std::span<const Value> values() const {
        if (m_items) {
            takeItemValues();
        }
        return m_values;
    }
    /// Item I; the value 0, the null text, for an index out of range.
    auto get(int i) const {
        if constexpr (std::is_same_v<Value, std::string>) {
            return holds(i) ? valueAt(i).c_str() : static_cast<const char*>(nullptr);
        } else {
            return holds(i) ? valueAt(i) : Value{};
        }
    }
    /// The components of item I in OUT, which an index out of range leaves as it is.
    template <std::same_as<float> Component>
    requires kHasComponents void get(int i, Component* out) const {
        if (holds(i)) {
            const Value& value = valueAt(i);
            std::copy(value.begin(), value.end(), out);
        }
    }

    /// Items beyond the range of an int are kept, and not counted.
    int count() const override {
        constexpr std::size_t kMost = std::numeric_limits<int>::max();
        return static_cast<int>(std::min(m_values.size(), kMost));
    }
    void clear() override;
    Field* item(int i) override;
    void add(std::unique_ptr<Field> field) override;
    void addFromText(const char* text) override;
    void assign(const Field& other) override;
    void write(TextStream& stream, std::string_view indent) const override;
    int componentCount() const override { return Item().componentCount(); }
    const char* itemText(int i, std::string& out) const override;

  private:
    bool holds(int i) const { return i >= 0 && static_cast<std::size_t>(i) < m_values.size(); }
    const Value& valueAt(int i) const {
        return m_items ? valueOfItem(i) : m_values[static_cast<std::size_t>(i)];
    }
    template <class... Part>
    void addSet(Part... parts) {
        Item item;
        item.set(parts...);
        m_values.push_back(item.value());
    }
    const Value& valueOfItem(int i) const;
    void takeItemValues() const;
    void keep(int i, std::unique_ptr<Item> item);

    // The value of an item that has an object is the object's; values() brings both together.
    mutable std::vector<Value> m_values;
    std::unique_ptr<std::unordered_map<int, std::unique_ptr<Item>>> m_items;
};

using MFFloat = ListOf<SFFloat, kMFFloat>;
using MFInt32 = ListOf<SFInt32, kMFInt32>;
using MFTime = ListOf<SFTime, kMFTime>;
using MFString = ListOf<SFString, kMFString>;
using MFVec2f = ListOf<SFVec2f, kMFVec2f>;
using MFVec3f = ListOf<SFVec3f, kMFVec3f>;
using MFColor = ListOf<SFColor, kMFColor>;
using MFRotation = ListOf<SFRotation, kMFRotation>;
/// Width, height, components and the pixels, row by row from below, one integer each.
using SFImage = ListOf<SFInt32, kSFImage>;

extern template class ListOf<SFFloat, kMFFloat>;
extern template class ListOf<SFInt32, kMFInt32>;
extern template class ListOf<SFTime, kMFTime>;
extern template class ListOf<SFString, kMFString>;
extern template class ListOf<SFVec2f, kMFVec2f>;
extern template class ListOf<SFVec3f, kMFVec3f>;
extern template class ListOf<SFColor, kMFColor>;
extern template class ListOf<SFRotation, kMFRotation>;
extern template class ListOf<SFInt32, kSFImage>;

}  // namespace nodes
