#include "scenefiles/xml/XmlElement.h"

#include <cstring>
#include <utility>

namespace {

/// Copies a text with a NUL behind it and moves the place on.
const char* Append(char*& place, std::string_view text) {
    char* const start = place;
    if (!text.empty()) {
        std::memcpy(start, text.data(), text.size());
    }
    start[text.size()] = '\0';
    place += text.size() + 1;
    return start;
}

}  // namespace

XmlElement::XmlElement(std::string_view name, XmlElement* parent) {
    Store(name, {});
    if (parent != nullptr) {
        parent->AddChild(std::unique_ptr<XmlElement>(this));
    }
}

XmlElement::XmlElement(std::string_view name, std::span<const NameValue> attributes) {
    Store(name, attributes);
}

XmlElement::~XmlElement() {
    // The children go one by one, each after handing its own children to the front of the list, so
    // that the depth of a tree costs no stack.
    std::unique_ptr<XmlElement> next = std::move(m_firstChild);
    while (next) {
        if (next->m_firstChild) {
            next->m_lastChild->m_nextSibling = std::move(next->m_nextSibling);
            next->m_nextSibling = std::move(next->m_firstChild);
        }
        next = std::move(next->m_nextSibling);
    }
}

XmlElement* XmlElement::AddChild(std::unique_ptr<XmlElement> child) {
    if (!child) {
        return nullptr;
    }
    XmlElement* const added = child.get();
    (m_lastChild != nullptr ? m_lastChild->m_nextSibling : m_firstChild) = std::move(child);
    m_lastChild = added;
    return added;
}

std::vector<XmlElement*> XmlElement::GetChildren(std::string_view name) const {
    std::vector<XmlElement*> children;
    for (XmlElement* child = FirstChild(); child != nullptr; child = child->NextSibling()) {
        if (name.empty() || child->GetName() == name) {
            children.push_back(child);
        }
    }
    return children;
}

XmlElement* XmlElement::Find(XmlElement* element, std::string_view name) {
    while (element != nullptr && element->GetName() != name) {
        element = element->NextSibling();
    }
    return element;
}

const XmlAttribute* XmlElement::GetAttribute(std::string_view name) const {
    for (const XmlAttribute& attribute : GetAttributes()) {
        if (name == attribute.name) {
            return &attribute;
        }
    }
    return nullptr;
}

void XmlElement::SetAttribute(std::string_view name, std::string_view value) {
    std::vector<NameValue> all;
    all.reserve(m_attributeCount + size_t{1});
    bool found = false;
    for (const XmlAttribute& attribute : GetAttributes()) {
        const bool same = name == attribute.name;
        all.push_back({attribute.name, same ? value : std::string_view(attribute.value)});
        found = found || same;
    }
    if (!found) {
        all.push_back({name, value});
    }
    Store(GetName(), all);
}

void XmlElement::Store(std::string_view name, std::span<const NameValue> attributes) {
    size_t size = attributes.size() * sizeof(XmlAttribute) + name.size() + 1;
    for (const NameValue& attribute : attributes) {
        size += attribute.name.size() + attribute.value.size() + 2;
    }
    // The old block goes last: the texts may be its own.
    std::unique_ptr<std::byte[]> block(new std::byte[size]);
    std::byte* slot = block.get();
    char* text = reinterpret_cast<char*>(slot + attributes.size() * sizeof(XmlAttribute));
    const char* const storedName = Append(text, name);
    for (const NameValue& attribute : attributes) {
        const char* const attributeName = Append(text, attribute.name);
        const char* const attributeValue = Append(text, attribute.value);
        new (slot) XmlAttribute{attributeName, attributeValue};
        slot += sizeof(XmlAttribute);
    }
    m_nameLength = static_cast<uint32_t>(name.size());
    m_name = storedName;
    m_attributeCount = static_cast<uint32_t>(attributes.size());
    m_block = std::move(block);
}
