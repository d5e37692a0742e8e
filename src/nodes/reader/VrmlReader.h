#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "nodes/NodeTree.h"
#include "nodes/reader/Grammar.h"
#include "nodes/reader/Lexer.h"
#include "nodes/reader/ProtoDefinition.h"
#include "nodes/reader/ReadError.h"
#include "nodes/reader/SceneReader.h"
#include "nodes/reader/ValueReader.h"

namespace nodes {

/// Reads VRML97 into a tree. A field that the grammar does not list for a node is an error, and the
/// first error ends the reading, with nothing in the tree. A reader may be used again and again.
class VrmlReader final : public SceneReader, private LexerClient {
  public:
    /// So many nodes and lists of nodes may be open at once.
    static constexpr std::size_t kDepthLimit = 4'194'304;

    explicit VrmlReader(std::size_t depthLimit = kDepthLimit);

    bool read(const char* path, ProgressFn progressFn, void* userData) override;
    /// As read(), of the text of a file.
    bool readText(std::string text, ProgressFn progressFn, void* userData);
    /// Where the reason of a failure goes.
    void setErrorTarget(ReadError& target) { m_error = &target; }
    /// What the last read brought.
    NodeTree& tree() { return m_tree; }
    bool succeeded() const { return m_succeeded; }

  private:
    /// A node whose items are read, or a list of nodes that become its children.
    struct ParseContext {
        Node* node;
        std::uint8_t code;
        // The item that may not stand twice is there.
        bool hasSingleItem;
    };
    /// A context code that is no node type.
    static constexpr std::uint8_t kNodeList = 0xFF;

    /// The first and the last node of a name. Both are needed while more of the tree is to come.
    struct NamedNodes {
        Node* first;
        Node* last;
    };
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>()(text);
        }
    };
    template <class Value>
    using TextMap = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

    void setPendingDefName(std::string name) override { m_pendingDefName = std::move(name); }
    void addReference(std::string_view name) override;
    void addRoute(const std::string& fromName, const std::string& fromField,
                  const std::string& toName, const std::string& toField) override;
    void addProto(std::unique_ptr<ProtoDefinition> proto) override;
    ProtoDefinition* findProto(std::string_view name) override;

    std::string takePendingDefName();
    Node& addToCurrent(std::unique_ptr<Node> node);
    bool pushContext(std::uint8_t code, Node& node);
    void popContext() { m_contexts.pop_back(); }
    Node* findFirst(const std::string& name) const;

    bool fail(const char* message);
    void reset();
    void reportError(const char* message);
    /// Always false.
    bool syntaxError();
    bool parse();
    bool parseIn(Token token);
    bool openNode(Token token, NodeSet accepted, bool acceptsNull);
    bool closeNode();
    bool readItem(Token token);
    bool readScriptEvent(Node& node, ValueForm form);
    bool readScriptField(Node& node);
    bool readScriptNode(Node& node);
    bool readName(std::string& name);

    NodeTree m_tree;
    Lexer m_lexer;
    ValueReader m_values;
    std::vector<ParseContext> m_contexts;
    std::vector<std::unique_ptr<ProtoDefinition>> m_protos;
    TextMap<ProtoDefinition*> m_protoOfName;
    TextMap<NamedNodes> m_nodesOfName;
    std::string m_pendingDefName;
    ReadError m_ownError;
    ReadError* m_error = &m_ownError;
    const std::size_t m_depthLimit;
    bool m_succeeded = false;
};

}  // namespace nodes
