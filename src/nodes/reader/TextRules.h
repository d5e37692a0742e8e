#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "nodes/reader/InputText.h"
#include "nodes/reader/ProtoDefinition.h"

namespace nodes {

/// What the rules of DEF, USE, ROUTE and PROTO tell the reader.
class LexerClient {
  public:
    LexerClient() = default;
    LexerClient(const LexerClient&) = delete;
    LexerClient& operator=(const LexerClient&) = delete;
    virtual ~LexerClient() = default;

    /// The node that opens next takes the name.
    virtual void setPendingDefName(std::string name) = 0;
    /// The last node of a name stands here once more.
    virtual void addReference(std::string_view name) = 0;
    virtual void addRoute(const std::string& fromName, const std::string& fromField,
                          const std::string& toName, const std::string& toField) = 0;
    virtual void addProto(std::unique_ptr<ProtoDefinition> proto) = 0;
    /// The PROTO of a name; null if there is none.
    virtual ProtoDefinition* findProto(std::string_view name) = 0;
};

/// The words that are dealt with as text, in front of the grammar. Each rule begins behind its
/// word.
class TextRules {
  public:
    /// So many instances may be read inside each other; more count as growth without end.
    static constexpr std::size_t kExpansionDepth = 1000;

    TextRules(InputText& input, LexerClient& client) : m_input(input), m_client(client) {}

    /// For the start of a file.
    void reset();
    /// DEF NAME TYPE {: the name goes to the client, type and brace go back to the input.
    void define();
    /// USE NAME.
    void use();
    /// ROUTE NAME.FIELD TO NAME.FIELD, up to the end of the line.
    void route();
    /// PROTO NAME [ interface ] { body }.
    void proto();
    /// NAME { values }, of a PROTO: its text goes back to the input.
    void instance(ProtoDefinition& proto);

  private:
    /// An instance whose text ends so many characters before the end of the input.
    struct OpenExpansion {
        ProtoDefinition* proto;
        std::size_t behind;
    };

    void collect(char stop, char nested, std::string* out);
    void collectString(std::string* out);
    void closeExpansions();
    bool isRecursive(const ProtoDefinition& proto);
    bool reachesItself(const ProtoDefinition& proto);

    InputText& m_input;
    LexerClient& m_client;
    std::vector<OpenExpansion> m_expansions;
    // What is known of the PROTOs that there are so far.
    std::unordered_map<const ProtoDefinition*, bool> m_recursive;
};

}  // namespace nodes
