#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <vector>

/// One attribute. Both texts end with a NUL, are never null, belong to the element, and stay where
/// they are until the next SetAttribute of that element.
struct XmlAttribute {
    const char* name;
    const char* value;
};

/// An element with its attributes and children, in their order. Text and comments are childless
/// elements too, named "#text", "#cdata-section" and "#comment"; what they say is not kept.
///
/// A scene has hundreds of thousands of these, so an element is small: one block of memory holds
/// its name and all its attributes, and the children form a list through their own fields.
class XmlElement {
  public:
    /// A name and value to be copied.
    struct NameValue {
        std::string_view name;
        std::string_view value;
    };

    /// With a parent, the element must be on the heap and belongs to the parent from here on,
    /// behind the parent's other children.
    explicit XmlElement(std::string_view name, XmlElement* parent = nullptr);
    /// All attributes at once; their names must differ.
    XmlElement(std::string_view name, std::span<const NameValue> attributes);
    virtual ~XmlElement();
    XmlElement(const XmlElement&) = delete;
    XmlElement& operator=(const XmlElement&) = delete;

    std::string_view GetName() const { return {m_name, m_nameLength}; }

    /// Appends the child and returns it. A null child is ignored and gives null.
    XmlElement* AddChild(std::unique_ptr<XmlElement> child);

    /// The children of that name, or all of them for an empty name, in order. They stay owned by
    /// this element.
    std::vector<XmlElement*> GetChildren(std::string_view name) const;

    // The same children without a copy of the list; null at the end.
    XmlElement* FirstChild() const { return m_firstChild.get(); }
    XmlElement* FirstChild(std::string_view name) const { return Find(m_firstChild.get(), name); }
    XmlElement* NextSibling() const { return m_nextSibling.get(); }
    XmlElement* NextSibling(std::string_view name) const { return Find(m_nextSibling.get(), name); }

    /// The attribute of that name, or null.
    const XmlAttribute* GetAttribute(std::string_view name) const;
    /// In the order in which their names were first set.
    std::span<const XmlAttribute> GetAttributes() const {
        return {std::launder(reinterpret_cast<const XmlAttribute*>(m_block.get())),
                m_attributeCount};
    }
    /// Gives an attribute a new value at its old place, or appends it. A value ends at its first
    /// NUL.
    void SetAttribute(std::string_view name, std::string_view value);

  private:
    static XmlElement* Find(XmlElement* element, std::string_view name);
    void Store(std::string_view name, std::span<const NameValue> attributes);

    // The block: the array of attributes, then the element's name, then the attributes' texts.
    std::unique_ptr<std::byte[]> m_block;
    const char* m_name = nullptr;
    uint32_t m_attributeCount = 0;
    uint32_t m_nameLength = 0;

    std::unique_ptr<XmlElement> m_firstChild;
    XmlElement* m_lastChild = nullptr;
    std::unique_ptr<XmlElement> m_nextSibling;
};
