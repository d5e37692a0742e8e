// The VRML97 form: a hand-picked set of lines for each class, one line for each value.

#include <cstddef>
#include <string>
#include <string_view>

#include "nodes/Route.h"
#include "nodes/nodes/NodeClasses.h"
#include "nodes/writer/FieldLines.h"
#include "nodes/writer/TextStream.h"

namespace nodes {
namespace {

/// What a node, or the node that it stands for, is.
const Node& shown(const Node& node) {
    return node.instanceOf() ? *node.instanceOf() : node;
}

const Node* findChild(const Node& node, const FieldLine& line) {
    if (line.form == LineForm::kChild) {
        return node.childOfType(line.childType);
    }
    const Node* child = node.firstChild();
    while (child && !(line.form == LineForm::kTexture ? shown(*child).isTexture()
                                                      : shown(*child).isGeometry())) {
        child = child->nextSibling();
    }
    return child;
}

/// Begins a line at INDENT and one tab.
void begin(TextStream& stream, std::string_view indent, std::string_view keyword) {
    stream.put(indent);
    stream.put('\t');
    stream.put(keyword);
}

void end(TextStream& stream, std::string_view indent, std::string_view bracket) {
    begin(stream, indent, bracket);
    stream.put('\n');
}

void putName(TextStream& stream, const Node& node) {
    if (node.hasName()) {
        stream.put("DEF ");
        stream.put(node.nameText());
        stream.put(' ');
    }
    stream.put(node.typeName());
    stream.put(" {\n");
}

void writeSingle(TextStream& stream, std::string_view indent, const char* keyword,
                 const Field& value) {
    begin(stream, indent, keyword);
    stream.put(' ');
    writeValue(stream, value);
    stream.put('\n');
}

void writeList(TextStream& stream, std::string_view indent, const char* keyword,
               const MField& list) {
    if (list.count() > 0) {
        begin(stream, indent, keyword);
        stream.put(" [\n");
        list.writeIndented(stream, indent, "\t\t");
        end(stream, indent, "]");
    }
}

void writeImage(TextStream& stream, std::string_view indent, const char* keyword,
                const MField& image) {
    if (image.count() > 0) {
        begin(stream, indent, keyword);
        stream.put(" \n");
        image.writeIndented(stream, indent, "\t\t");
        end(stream, indent, "");
    }
}

void writeChild(TextStream& stream, std::string_view indent, const char* keyword,
                const Node* child) {
    if (!child) {
        return;
    }
    begin(stream, indent, keyword);
    stream.put(' ');
    if (child->instanceOf()) {
        stream.put("USE ");
        stream.put(child->nameText());
        stream.put('\n');
        return;
    }
    putName(stream, *child);
    child->writeChildFields(stream, indent, "\t");
    end(stream, indent, "}");
}

/// One declaration of a Script, up to the name.
void declare(TextStream& stream, std::string_view indent, std::string_view kind,
             const Field& field) {
    begin(stream, indent, kind);
    stream.put(' ');
    stream.put(field.typeName() ? field.typeName() : "");
    stream.put(' ');
    stream.put(*field.name() ? field.name() : "NONE");
}

bool listsChildren(const Node& node) {
    return node.firstChild() && !nodeForm(node.type()).hasChildLines;
}

/// Tabs for any depth.
class Indent {
  public:
    std::string_view operator()(std::size_t depth) {
        if (depth > m_tabs.size()) {
            m_tabs.append(depth, '\t');
        }
        return std::string_view(m_tabs).substr(0, depth);
    }

  private:
    std::string m_tabs;
};

/// All of a node up to its children; false if it has none to list, and is complete.
bool openNode(TextStream& stream, const Node& node, std::string_view indent) {
    if (node.isType(kXmlElement)) {
        return false;
    }
    if (node.instanceOf()) {
        stream.put(indent);
        stream.put("USE ");
        stream.put(node.nameText());
        stream.put('\n');
        return false;
    }
    node.writeHeader(stream, indent);
    node.writeFields(stream, indent);
    if (listsChildren(node)) {
        begin(stream, indent, nodeForm(node.type()).childrenKeyword);
        stream.put(" [\n");
        return true;
    }
    stream.put(indent);
    stream.put("}\n");
    return false;
}

void closeNode(TextStream& stream, std::string_view indent) {
    end(stream, indent, "]");
    stream.put(indent);
    stream.put("}\n");
}

}  // namespace

void Node::writeNode(TextStream& stream, int depth) const {
    Indent indent;
    auto tabs = static_cast<std::size_t>(depth > 0 ? depth : 0);
    const Node* node = this;
    while (!stream.full()) {
        if (openNode(stream, *node, indent(tabs))) {
            node = node->m_firstChild;
            tabs += 2;
            continue;
        }
        while (node != this && !node->m_next) {
            node = node->m_parent;
            tabs -= 2;
            closeNode(stream, indent(tabs));
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

void Node::writeHeader(TextStream& stream, std::string_view indent) const {
    stream.put(indent);
    putName(stream, *this);
}

void Node::writeFields(TextStream& stream, std::string_view indent) const {
    // An accessor leads to the node that an instance shows, and changes nothing.
    auto& node = const_cast<Node&>(*this);
    for (const FieldLine& line : nodeForm(m_type).lines) {
        switch (line.form) {
            case LineForm::kSingle:
                writeSingle(stream, indent, line.keyword, line.field(node));
                break;
            case LineForm::kList:
                writeList(stream, indent, line.keyword,
                          static_cast<const MField&>(line.field(node)));
                break;
            case LineForm::kImage:
                writeImage(stream, indent, line.keyword,
                           static_cast<const MField&>(line.field(node)));
                break;
            default:
                writeChild(stream, indent, line.keyword, findChild(*this, line));
        }
    }
}

void Node::writeChildFields(TextStream& stream, std::string_view indent,
                            std::string_view extra) const {
    std::string joined(indent);
    joined += extra;
    writeFields(stream, joined);
}

void ScriptNode::writeFields(TextStream& stream, std::string_view indent) const {
    Node::writeFields(stream, indent);
    for (int i = 0; i < eventInCount(); ++i) {
        declare(stream, indent, "eventIn", *eventInAt(i));
        stream.put('\n');
    }
    for (int i = 0; i < fieldCount(); ++i) {
        const Field& field = *fieldAt(i);
        const std::string_view name = field.name();
        if (name == "directOutput" || name == "mustEvaluate") {
            continue;
        }
        declare(stream, indent, "field", field);
        stream.put(' ');
        if (field.classType() != kSFNode) {
            writeValue(stream, field);
        } else if (const Node* node = static_cast<const SFNode&>(field).value();
                   node && node->hasName()) {
            stream.put("USE ");
            stream.put(node->nameText());
        } else {
            stream.put("NULL");
        }
        stream.put('\n');
    }
    for (int i = 0; i < eventOutCount(); ++i) {
        declare(stream, indent, "eventOut", *eventOutAt(i));
        stream.put('\n');
    }
}

void Route::write(TextStream& stream) const {
    stream.put("ROUTE ");
    stream.put(m_fromNode->nameText());
    stream.put('.');
    stream.put(m_fromField->name());
    stream.put(" TO ");
    stream.put(m_toNode->nameText());
    stream.put('.');
    stream.put(m_toField->name());
    stream.put('\n');
}

}  // namespace nodes
