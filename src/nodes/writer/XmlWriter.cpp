// The XML form: an element for each node, an attribute for each field that has a text form.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

#include "nodes/Route.h"
#include "nodes/nodes/Node.h"
#include "nodes/writer/TextStream.h"
#include "nodes/writer/XmlField.h"

namespace nodes {
namespace {

/// Lines of deeper nodes stand no further to the right: else the text would grow with the square
/// of the depth, to hundreds of gigabytes for a tree that fits into memory many times over.
constexpr std::size_t kDeepestIndent = 1000;

void indentTo(TextStream& stream, std::size_t depth) {
    stream.putTabs(std::min(depth, kDeepestIndent));
}

std::size_t tabsOf(int depth) {
    return static_cast<std::size_t>(std::max(depth, 0));
}

void putBlanks(TextStream& stream, std::size_t count) {
    for (; count > 0; --count) {
        stream.put(' ');
    }
}

/// Writes the fields of the elements of one tree; keeps the string that their texts pass through.
class FieldWriter {
  public:
    explicit FieldWriter(TextStream& stream) : m_stream(stream) {}

    void write(const Field& field, std::size_t depth, bool oneLine);

  private:
    void writeItems(const MField& list, std::size_t depth, std::size_t nameLength);

    TextStream& m_stream;
    std::string m_text;
};

void FieldWriter::write(const Field& field, std::size_t depth, bool oneLine) {
    const bool isSingle = isSingleValueType(field.classType());
    if (field.classType() == kSFNode || field.classType() == kMFNode ||
        (!isSingle && static_cast<const MField&>(field).count() == 0)) {
        return;
    }
    m_stream.put(oneLine ? ' ' : '\n');
    if (!isSingle || !oneLine) {
        indentTo(m_stream, depth + 1);
    }
    m_stream.put(field.name());
    m_stream.put("=\"");
    if (isSingle) {
        m_stream.put(field.toText(m_text));
    } else {
        writeItems(static_cast<const MField&>(field), depth, std::strlen(field.name()));
    }
    m_stream.put('"');
}

void FieldWriter::writeItems(const MField& list, std::size_t depth, std::size_t nameLength) {
    const int count = list.count();
    for (int i = 0; i < count; ++i) {
        if (count > 1) {
            if (i > 0) {
                m_stream.put('\n');
            }
            indentTo(m_stream, depth + 1);
            putBlanks(m_stream, nameLength + 2);
        }
        m_stream.put(list.itemText(i, m_text));
    }
}

/// An instance has the tag of the node that it shows. The name of a foreign element is its tag.
const char* tagOf(const Node& node) {
    const Node& shown = node.instanceOf() ? *node.instanceOf() : node;
    return shown.isType(kXmlElement) ? shown.name() : shown.typeName();
}

void putAttribute(TextStream& stream, const char* name, const char* value) {
    stream.put(name);
    stream.put("=\"");
    stream.put(value);
    stream.put('"');
}

/// All of an element up to its children; false if it has none, and is complete.
bool openElement(TextStream& stream, FieldWriter& fields, const Node& node, std::size_t depth) {
    indentTo(stream, depth);
    stream.put('<');
    stream.put(tagOf(node));
    if (node.instanceOf()) {
        stream.put(' ');
        putAttribute(stream, "USE", node.name());
        stream.put("/>\n");
        return false;
    }
    const bool isForeign = node.isType(kXmlElement);
    if (node.hasName() && !isForeign) {
        stream.put(' ');
        putAttribute(stream, "DEF", node.name());
    }
    const bool oneLine = isForeign || !node.hasListFields();
    for (const FieldKind kind : {kPlainField, kExposedField, kEventIn, kEventOut}) {
        const int count = node.fieldCountOf(kind);
        for (int i = 0; i < count; ++i) {
            fields.write(*node.fieldOf(kind, i), depth, oneLine);
        }
    }
    stream.put(node.firstChild() ? ">\n" : "/>\n");
    return node.firstChild() != nullptr;
}

void closeElement(TextStream& stream, const Node& node, std::size_t depth) {
    indentTo(stream, depth);
    stream.put("</");
    stream.put(tagOf(node));
    stream.put(">\n");
}

}  // namespace

void writeXmlField(TextStream& stream, const Field& field, int depth, bool oneLine) {
    FieldWriter(stream).write(field, tabsOf(depth), oneLine);
}

void Node::writeXml(TextStream& stream, int depth) const {
    FieldWriter fields(stream);
    std::size_t tabs = tabsOf(depth);
    const Node* node = this;
    while (!stream.full()) {
        if (openElement(stream, fields, *node, tabs)) {
            node = node->m_firstChild;
            ++tabs;
            continue;
        }
        while (node != this && !node->m_next) {
            node = node->m_parent;
            closeElement(stream, *node, --tabs);
            if (stream.full()) {
                return;
            }
        }
        if (node == this) {
            return;
        }
        node = node->m_next;
    }
}

bool Node::hasListFields() const {
    for (const FieldKind kind : {kPlainField, kExposedField, kEventIn, kEventOut, kHiddenField}) {
        const int count = fieldCountOf(kind);
        for (int i = 0; i < count; ++i) {
            if (!fieldOf(kind, i)->isSingleValue()) {
                return true;
            }
        }
    }
    return false;
}

void Route::writeXml(TextStream& stream) const {
    stream.put("<ROUTE ");
    putAttribute(stream, "fromNode", m_fromNode->name());
    stream.put(' ');
    putAttribute(stream, "fromField", m_fromField->name());
    stream.put(' ');
    putAttribute(stream, "toNode", m_toNode->name());
    stream.put(' ');
    putAttribute(stream, "toField", m_toField->name());
    stream.put("/>\n");
}

}  // namespace nodes
