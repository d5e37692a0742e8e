#include "nodes/reader/VrmlReader.h"

#include <cstdio>
#include <utility>

#include "nodes/nodes/NodeClasses.h"
#include "nodes/reader/FileText.h"

namespace nodes {

VrmlReader::VrmlReader(std::size_t depthLimit)
    : m_lexer(*this), m_values(m_lexer), m_depthLimit(depthLimit) {}

bool VrmlReader::read(const char* path, ProgressFn progressFn, void* userData) {
    std::string text;
    switch (readFileText(path, text)) {
        case FileStatus::kRead:
            return readText(std::move(text), progressFn, userData);
        case FileStatus::kCannotOpen:
            reset();
            std::fprintf(stderr, "Cannot open data file %s\n", path ? path : "");
            return false;
        case FileStatus::kCannotRead:
            return fail("input in flex scanner failed");
        case FileStatus::kNoMemory:
            break;
    }
    return fail("out of dynamic memory in yy_create_buffer()");
}

bool VrmlReader::readText(std::string text, ProgressFn progressFn, void* userData) {
    reset();
    m_lexer.attachText(std::move(text), progressFn, userData);
    m_succeeded = parse();
    m_lexer.close();
    m_contexts.clear();
    if (!m_succeeded) {
        m_tree.clear();
    }
    return m_succeeded;
}

/// A failure in front of the first token.
bool VrmlReader::fail(const char* message) {
    reset();
    std::fprintf(stderr, "%s\n", message);
    m_error->message = message;
    return false;
}

void VrmlReader::reset() {
    m_tree.clear();
    m_contexts.clear();
    m_protoOfName.clear();
    m_protos.clear();
    m_nodesOfName.clear();
    m_pendingDefName.clear();
    m_succeeded = false;
}

void VrmlReader::reportError(const char* message) {
    m_error->line = m_lexer.line();
    m_error->message = m_lexer.failure() ? m_lexer.failure() : message;
    m_error->token = m_lexer.tokenText();
    m_error->lineText = m_lexer.currentLineText();
}

bool VrmlReader::syntaxError() {
    reportError("syntax error");
    return false;
}

// ---- What the rules of DEF, USE, ROUTE and PROTO tell ----

void VrmlReader::addReference(std::string_view name) {
    const auto named = m_nodesOfName.find(name);
    if (named != m_nodesOfName.end()) {
        addToCurrent(named->second.last->makeReference());
    }
}

void VrmlReader::addRoute(const std::string& fromName, const std::string& fromField,
                          const std::string& toName, const std::string& toField) {
    Node* from = findFirst(fromName);
    Node* to = findFirst(toName);
    if (from && to) {
        m_tree.addRoute(*from, fromField.c_str(), *to, toField.c_str());
    }
}

void VrmlReader::addProto(std::unique_ptr<ProtoDefinition> proto) {
    m_protoOfName[proto->name()] = proto.get();
    m_protos.push_back(std::move(proto));
}

ProtoDefinition* VrmlReader::findProto(std::string_view name) {
    const auto found = m_protoOfName.find(name);
    return found == m_protoOfName.end() ? nullptr : found->second;
}

Node* VrmlReader::findFirst(const std::string& name) const {
    const auto named = m_nodesOfName.find(Node::storedName(name.c_str()));
    return named == m_nodesOfName.end() ? nullptr : named->second.first;
}

// ---- Contexts ----

std::string VrmlReader::takePendingDefName() {
    return std::exchange(m_pendingDefName, std::string());
}

Node& VrmlReader::addToCurrent(std::unique_ptr<Node> node) {
    if (m_contexts.empty()) {
        return m_tree.addNode(std::move(node), false);
    }
    return m_contexts.back().node->addChild(std::move(node), false);
}

bool VrmlReader::pushContext(std::uint8_t code, Node& node) {
    if (m_contexts.size() >= m_depthLimit) {
        reportError("parser stack overflow");
        return false;
    }
    m_contexts.push_back({&node, code, false});
    return true;
}

// ---- Grammar ----

bool VrmlReader::parse() {
    // One comma may stand behind the brace that closes a node.
    bool mayBeComma = false;
    for (;;) {
        const Token token = m_lexer.nextToken();
        if (mayBeComma && token.is(TokenKind::kComma)) {
            mayBeComma = false;
            continue;
        }
        if (m_contexts.empty() && token.is(TokenKind::kEnd)) {
            return true;
        }
        if (!parseIn(token)) {
            return false;
        }
        mayBeComma = token.is(TokenKind::kRightBrace);
    }
}

bool VrmlReader::parseIn(Token token) {
    if (m_contexts.empty()) {
        return openNode(token, kChildTypes, false);
    }
    if (m_contexts.back().code == kNodeList) {
        if (token.is(TokenKind::kRightBracket)) {
            popContext();
            return true;
        }
        return openNode(token, kChildTypes, false);
    }
    return token.is(TokenKind::kRightBrace) ? closeNode() : readItem(token);
}

/// Begins one of the ACCEPTED nodes. A USE is dealt with already.
bool VrmlReader::openNode(Token token, NodeSet accepted, bool acceptsNull) {
    if (token.is(TokenKind::kUse) || (acceptsNull && token.is(TokenKind::kNull))) {
        return true;
    }
    if (!token.is(TokenKind::kNode) || !holds(accepted, token.index)) {
        return syntaxError();
    }
    std::unique_ptr<Node> made = makeNode(token.index);
    made->setName(takePendingDefName().c_str());
    Node& node = addToCurrent(std::move(made));
    if (node.hasName()) {
        m_nodesOfName.try_emplace(node.nameText(), NamedNodes{&node, &node}).first->second.last =
            &node;
    }
    if (!pushContext(token.index, node)) {
        return false;
    }
    return m_lexer.nextToken().is(TokenKind::kLeftBrace) || syntaxError();
}

bool VrmlReader::closeNode() {
    Node& node = *m_contexts.back().node;
    // An Inline reads a file of its own, once this one is done.
    if (!node.isType(kInline)) {
        node.initialise();
    }
    popContext();
    return true;
}

bool VrmlReader::readItem(Token token) {
    ParseContext& context = m_contexts.back();
    const GrammarRow* row = nullptr;
    if (token.is(TokenKind::kField)) {
        row = findGrammarRow(context.code, static_cast<FieldKeyword>(token.index));
    }
    if (!row || (row->isSingle && std::exchange(context.hasSingleItem, true))) {
        return syntaxError();
    }
    Node& node = *context.node;
    switch (row->form) {
        case ValueForm::kNode:
            return openNode(m_lexer.nextToken(), row->accepted, row->acceptsNull);
        case ValueForm::kNodes: {
            const Token value = m_lexer.nextToken();
            return value.is(TokenKind::kLeftBracket)
                       ? pushContext(kNodeList, node)
                       : openNode(value, row->accepted, row->acceptsNull);
        }
        case ValueForm::kScriptField:
            return readScriptField(node);
        case ValueForm::kScriptEventIn:
        case ValueForm::kScriptEventOut:
            return readScriptEvent(node, row->form);
        default:
            break;
    }
    const bool fits =
        row->target ? m_values.read(row->form, row->target(node)) : m_values.drop(row->form);
    return fits || syntaxError();
}

// ---- Scripts ----

bool VrmlReader::readScriptEvent(Node& node, ValueForm form) {
    const Token token = m_lexer.nextToken();
    const ScriptType* type = token.is(TokenKind::kType) ? findScriptType(token.index) : nullptr;
    std::string name;
    if (!type || !readName(name)) {
        return syntaxError();
    }
    if (form == ValueForm::kScriptEventIn) {
        node.addEventIn(name.c_str(), type->make());
    } else {
        node.addEventOut(name.c_str(), type->make());
    }
    return true;
}

bool VrmlReader::readScriptField(Node& node) {
    const Token token = m_lexer.nextToken();
    if (!token.is(TokenKind::kType)) {
        return syntaxError();
    }
    if (token.index == kSFNode) {
        return readScriptNode(node);
    }
    const ScriptType* type = findScriptType(token.index);
    std::string name;
    if (!type || !isSingleValueType(type->type) || !readName(name)) {
        return syntaxError();
    }
    std::unique_ptr<Field> field = type->make();
    if (!m_values.read(type->form, *field)) {
        return syntaxError();
    }
    node.addField(name.c_str(), std::move(field));
    return true;
}

/// A name, and NULL or the USE of a node.
bool VrmlReader::readScriptNode(Node& node) {
    std::string name;
    if (!readName(name)) {
        return syntaxError();
    }
    Node* shown = nullptr;
    const Token token = m_lexer.nextToken();
    if (token.is(TokenKind::kUse)) {
        std::string shownName;
        if (!readName(shownName)) {
            return syntaxError();
        }
        shown = findFirst(shownName);
    } else if (!token.is(TokenKind::kNull)) {
        return syntaxError();
    }
    node.addField(name.c_str(), std::make_unique<SFNode>(shown));
    return true;
}

bool VrmlReader::readName(std::string& name) {
    if (!m_lexer.nextToken().is(TokenKind::kName)) {
        return false;
    }
    name = m_lexer.text();
    return true;
}

}  // namespace nodes
