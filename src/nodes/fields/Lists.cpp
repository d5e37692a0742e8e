#include "nodes/fields/Lists.h"

#include <string_view>

#include "nodes/fields/ValueText.h"

namespace nodes {
namespace {

constexpr std::string_view kSeparator = ", ";
constexpr std::string_view kBlanks = " \t\n\v\f\r";

std::string_view withoutBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

/// Takes an item and the comma behind it from the front of TEXT, which begins with no blank.
std::string_view takeItem(std::string_view& text) {
    std::size_t start = 0;
    std::size_t end = text.find(',');
    std::size_t comma = end;
    if (text.starts_with('"')) {
        start = 1;
        end = std::min(text.find('"', start), text.size());
        comma = text.find(',', end);
    }
    std::string_view item = text.substr(start, std::min(end, text.size()) - start);
    if (start == 0) {
        item = item.substr(0, item.find_last_not_of(kBlanks) + 1);
    }
    text = withoutBlanks(text.substr(std::min(comma, text.size() - 1) + 1));
    return item;
}

template <class Value>
void textOfValue(const Value& value, std::string& out) {
    out = ValueText(value).view();
}

void textOfValue(const std::string& value, std::string& out) {
    out = value.c_str();
}

template <class Value>
void writeLines(std::span<const Value> values, TextStream& stream, std::string_view indent) {
    for (std::size_t i = 0; i < values.size() && !stream.full(); ++i) {
        stream.put(indent);
        putValue(stream, values[i]);
        if (i + 1 < values.size()) {
            stream.put(',');
        }
        stream.put('\n');
    }
}

void writePixels(std::span<const std::int32_t> values, TextStream& stream,
                 std::string_view indent) {
    constexpr std::size_t kLine = 33;
    stream.put(indent);
    for (std::size_t i = 0; i < values.size() && !stream.full(); ++i) {
        stream.put(values[i]);
        stream.put(' ');
        if (i % kLine == kLine - 1) {
            stream.put('\n');
            stream.put(indent);
        }
    }
    stream.put('\n');
}

}  // namespace

void MField::writeIndented(TextStream& stream, std::string_view prefix,
                           std::string_view suffix) const {
    std::string indent(prefix);
    indent += suffix;
    write(stream, indent);
}

void MField::fromText(const char* text) {
    if (!text) {
        return;
    }
    // The text may be that of an item of this very list.
    const std::string copy = text;
    clear();
    std::string item;
    for (std::string_view rest = withoutBlanks(copy); !rest.empty();) {
        item = takeItem(rest);
        addFromText(item.c_str());
    }
}

const char* MField::toText(std::string& out) const {
    out.clear();
    std::string text;
    for (int i = 0; i < count(); ++i) {
        if (i > 0) {
            out += kSeparator;
        }
        out += itemText(i, text);
    }
    return out.c_str();
}

char* MField::print(char* buffer, std::size_t capacity) const {
    std::string all;
    std::string text;
    for (int i = 0; i < count(); ++i) {
        const std::string_view separator = i > 0 ? kSeparator : std::string_view();
        const std::string_view item = itemText(i, text);
        if (all.size() + separator.size() + item.size() >= capacity) {
            break;
        }
        all += separator;
        all += item;
    }
    return printText(all, buffer, capacity);
}

template <class Item, FieldType kType>
const typename ListOf<Item, kType>::Value& ListOf<Item, kType>::valueOfItem(int i) const {
    Value& value = m_values[static_cast<std::size_t>(i)];
    const auto found = m_items->find(i);
    if (found != m_items->end()) {
        value = found->second->value();
    }
    return value;
}

template <class Item, FieldType kType>
void ListOf<Item, kType>::takeItemValues() const {
    for (const auto& [i, item] : *m_items) {
        m_values[static_cast<std::size_t>(i)] = item->value();
    }
}

template <class Item, FieldType kType>
void ListOf<Item, kType>::keep(int i, std::unique_ptr<Item> item) {
    if (!m_items) {
        m_items = std::make_unique<std::unordered_map<int, std::unique_ptr<Item>>>();
    }
    m_items->emplace(i, std::move(item));
}

template <class Item, FieldType kType>
void ListOf<Item, kType>::clear() {
    m_items.reset();
    m_values.clear();
}

template <class Item, FieldType kType>
Field* ListOf<Item, kType>::item(int i) {
    if (!holds(i)) {
        return nullptr;
    }
    if (m_items) {
        const auto found = m_items->find(i);
        if (found != m_items->end()) {
            return found->second.get();
        }
    }
    auto made = std::make_unique<Item>();
    made->setValue(m_values[static_cast<std::size_t>(i)]);
    Item* const item = made.get();
    keep(i, std::move(made));
    return item;
}

template <class Item, FieldType kType>
void ListOf<Item, kType>::add(std::unique_ptr<Field> field) {
    auto* const item = dynamic_cast<Item*>(field.get());
    if (item) {
        const int i = count();
        m_values.push_back(item->value());
        static_cast<void>(field.release());
        keep(i, std::unique_ptr<Item>(item));
    }
}

template <class Item, FieldType kType>
void ListOf<Item, kType>::addFromText(const char* text) {
    Item item;
    item.fromText(text);
    m_values.push_back(item.value());
}

template <class Item, FieldType kType>
void ListOf<Item, kType>::assign(const Field& other) {
    const auto* const list = dynamic_cast<const ListOf*>(&other);
    if (list && list != this) {
        const std::span<const Value> values = list->values();
        m_items.reset();
        m_values.assign(values.begin(), values.end());
    }
}

template <class Item, FieldType kType>
void ListOf<Item, kType>::write(TextStream& stream, std::string_view indent) const {
    if constexpr (kType == kSFImage) {
        writePixels(values(), stream, indent);
    } else {
        writeLines(values(), stream, indent);
    }
}

template <class Item, FieldType kType>
const char* ListOf<Item, kType>::itemText(int i, std::string& out) const {
    out.clear();
    if (holds(i)) {
        textOfValue(valueAt(i), out);
    }
    return out.c_str();
}

template class ListOf<SFFloat, kMFFloat>;
template class ListOf<SFInt32, kMFInt32>;
template class ListOf<SFTime, kMFTime>;
template class ListOf<SFString, kMFString>;
template class ListOf<SFVec2f, kMFVec2f>;
template class ListOf<SFVec3f, kMFVec3f>;
template class ListOf<SFColor, kMFColor>;
template class ListOf<SFRotation, kMFRotation>;
template class ListOf<SFInt32, kSFImage>;

}  // namespace nodes
