#include "nodes/fields/Lists.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "nodes/fields/PrintedText.h"
#include "nodes/writer/TextStream.h"

namespace nodes {
namespace {

constexpr std::string_view kSeparator = ", ";
constexpr int kPixelsOfLine = 33;

}  // namespace

void MField::writeIndented(TextStream& stream, std::string_view prefix,
                           std::string_view suffix) const {
    write(stream, std::string(prefix).append(suffix));
}

void MField::fromText(const char* text) {
    if (!text) {
        return;
    }
    clear();
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::size_t end = rest.find(',');
        const std::string item(rest.substr(0, end));
        if (item.find_first_not_of(" \t\r\n") != std::string::npos) {
            addFromText(item.c_str());
        }
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
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
        const std::string_view item = itemText(i, text);
        const std::size_t separator = i > 0 ? kSeparator.size() : 0;
        if (all.size() + separator + item.size() >= capacity) {
            break;
        }
        all += kSeparator.substr(0, separator);
        all += item;
    }
    return printText(all, buffer, capacity);
}

template <class Item, FieldType kType>
const typename Item::Value& ListOf<Item, kType>::valueAt(int i) const {
    if (m_items) [[unlikely]] {
        if (const auto item = m_items->find(i); item != m_items->end()) {
            return m_values[static_cast<std::size_t>(i)] = item->second->value();
        }
    }
    return m_values[static_cast<std::size_t>(i)];
}

template <class Item, FieldType kType>
std::span<const typename Item::Value> ListOf<Item, kType>::values() const {
    if (m_items) {
        for (const auto& [i, item] : *m_items) {
            m_values[static_cast<std::size_t>(i)] = item->value();
        }
    }
    return m_values;
}

template <class Item, FieldType kType>
void ListOf<Item, kType>::clear() {
    m_values.clear();
    m_items.reset();
}

template <class Item, FieldType kType>
Field* ListOf<Item, kType>::item(int i) {
    if (!holds(i)) {
        return nullptr;
    }
    if (!m_items) {
        m_items = std::make_unique<ItemMap>();
    }
    std::unique_ptr<Item>& item = (*m_items)[i];
    if (!item) {
        item = std::make_unique<Item>(m_values[static_cast<std::size_t>(i)]);
    }
    return item.get();
}

template <class Item, FieldType kType>
void ListOf<Item, kType>::add(std::unique_ptr<Field> field) {
    if (!field || field->type() != Item().type()) {
        return;
    }
    if (!m_items) {
        m_items = std::make_unique<ItemMap>();
    }
    std::unique_ptr<Item> item(static_cast<Item*>(field.release()));
    m_values.push_back(item->value());
    m_items->emplace(count() - 1, std::move(item));
}

template <class Item, FieldType kType>
void ListOf<Item, kType>::addFromText(const char* text) {
    Item item;
    item.fromText(text);
    add(item.value());
}

template <class Item, FieldType kType>
void ListOf<Item, kType>::assign(const Field& other) {
    if (other.type() != type() || &other == this) {
        return;
    }
    const auto values = static_cast<const ListOf&>(other).values();
    clear();
    m_values.assign(values.begin(), values.end());
}

template <class Item, FieldType kType>
void ListOf<Item, kType>::write(TextStream& stream, std::string_view indent) const {
    const auto all = values();
    if constexpr (kType == kSFImage) {
        stream.put(indent);
        for (std::size_t i = 0; i < all.size(); ++i) {
            stream.put(all[i]);
            stream.put(' ');
            if ((i + 1) % kPixelsOfLine == 0) {
                stream.put('\n');
                stream.put(indent);
            }
        }
        stream.put('\n');
        return;
    }
    Item item;
    for (std::size_t i = 0; i < all.size(); ++i) {
        stream.put(indent);
        item.setValue(all[i]);
        writeValue(stream, item);
        stream.put(std::string_view(i + 1 < all.size() ? ",\n" : "\n"));
    }
}

template <class Item, FieldType kType>
const char* ListOf<Item, kType>::itemText(int i, std::string& out) const {
    return Item(valueAt(i)).toText(out);
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
