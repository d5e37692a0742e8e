#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "nodes/reader/InputText.h"
#include "nodes/reader/Keywords.h"
#include "nodes/reader/Number.h"
#include "nodes/reader/TextRules.h"

namespace nodes {

/// Turns the text of a VRML file into tokens. DEF, ROUTE and PROTO leave none behind, USE leaves
/// one. Looks ahead no further than to the end of a token, so that each is dealt with in full
/// before the next one has any effect.
class Lexer {
  public:
    /// So many characters that mean nothing are printed for one file; the rest is skipped.
    static constexpr std::size_t kEchoLimit = 64 * 1024;

    explicit Lexer(LexerClient& client) : m_client(client), m_rules(m_input, client) {}

    /// Starts with a new text, at line 1.
    void attachText(std::string text, ProgressFn progressFn, void* userData);
    /// Gives the text back; line and token go with it.
    void close();

    Token nextToken();
    /// Of the last token: the value of a kInt or kFloat as it is wanted.
    float floatValue() const { return m_number.value; }
    std::int32_t intValue() const { return m_number.integer; }
    /// The text of a kString or kName, good until the next token.
    std::string_view text() const { return m_text; }

    /// The characters of the last token.
    std::string_view tokenText() const { return m_token; }
    std::int32_t line() const { return m_input.line(); }
    /// The line that the last line end led to.
    std::string currentLineText() const { return m_input.lineText(); }
    /// Why the last token was kFailed.
    const char* failure() const { return m_input.failure(); }

  private:
    Token finish(const char* from, const char* behind, Token token);
    Token scanNumberToken(const char* from);
    /// False where there is no token.
    bool scanWord(const char* from, Token& token);
    bool scanString(const char* from, Token& token);
    Token scanPunctuation(const char* from);
    const char* skipComment(const char* from);
    const char* skipLineEnd(const char* from);
    const char* echoUnknown(const char* from);
    void echo(std::string_view text);

    LexerClient& m_client;
    InputText m_input;
    TextRules m_rules;
    Number m_number;
    std::string_view m_text;
    std::string_view m_token;
    std::size_t m_echoed = 0;
    bool m_inScript = false;
};

}  // namespace nodes
