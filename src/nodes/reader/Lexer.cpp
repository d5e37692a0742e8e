#include "nodes/reader/Lexer.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "nodes/reader/Characters.h"

namespace nodes {
namespace {

std::string_view between(const char* from, const char* behind) {
    return {from, static_cast<std::size_t>(behind - from)};
}

}  // namespace

void Lexer::attachText(std::string text, ProgressFn progressFn, void* userData) {
    m_input.attach(std::move(text), progressFn, userData);
    m_rules.reset();
    m_number = {};
    m_text = {};
    m_token = {};
    m_echoed = 0;
    m_inScript = false;
}

void Lexer::close() {
    m_text = {};
    m_token = {};
    m_input.close();
}

Token Lexer::nextToken() {
    const char* at = m_input.at();
    for (Token token;;) {
        switch (classOf(*at)) {
            case CharacterClass::kBlank:
                do {
                    ++at;
                } while (*at == ' ');
                break;
            case CharacterClass::kNumber:
                return scanNumberToken(at);
            case CharacterClass::kPunctuation:
                return scanPunctuation(at);
            case CharacterClass::kLineEnd:
                at = skipLineEnd(at);
                break;
            case CharacterClass::kLetter:
                if (scanWord(at, token)) {
                    return token;
                }
                at = m_input.at();
                break;
            case CharacterClass::kQuote:
                if (scanString(at, token)) {
                    return token;
                }
                at = m_input.at();
                break;
            case CharacterClass::kComment:
                at = skipComment(at);
                break;
            case CharacterClass::kOther:
                if (at == m_input.end()) {
                    return finish(at, at,
                                  {m_input.failure() ? TokenKind::kFailed : TokenKind::kEnd, 0});
                }
                at = echoUnknown(at);
                break;
        }
    }
}

inline Token Lexer::finish(const char* from, const char* behind, Token token) {
    m_token = between(from, behind);
    m_input.moveTo(behind);
    return token;
}

inline Token Lexer::scanNumberToken(const char* from) {
    const char* at = from;
    m_number = scanNumber(at);
    return finish(from, at, {m_number.isInteger ? TokenKind::kInt : TokenKind::kFloat, 0});
}

Token Lexer::scanPunctuation(const char* from) {
    TokenKind kind = TokenKind::kComma;
    switch (*from) {
        case '{':
            kind = TokenKind::kLeftBrace;
            break;
        case '}':
            kind = TokenKind::kRightBrace;
            m_inScript = false;
            break;
        case '[':
            kind = TokenKind::kLeftBracket;
            break;
        case ']':
            kind = TokenKind::kRightBracket;
            break;
        default:
            break;
    }
    return finish(from, from + 1, {kind, 0});
}

bool Lexer::scanWord(const char* from, Token& token) {
    const char* at = from;
    std::uint32_t hash = kWordHashStart;
    for (; isWordCharacter(*at); ++at) {
        hash = hashWord(hash, *at);
    }
    const std::string_view word = between(from, at);
    token = finish(from, at, keywordToken(word, hash, m_inScript));
    switch (token.kind) {
        case TokenKind::kNode:
            m_inScript = token.index == kScript;
            return true;
        case TokenKind::kInt:
            m_number = {static_cast<float>(token.index), token.index, true};
            return true;
        case TokenKind::kUse:
            if (!m_inScript) {
                m_rules.use();
            }
            return true;
        case TokenKind::kDef:
            m_rules.define();
            return false;
        case TokenKind::kRoute:
            m_rules.route();
            return false;
        case TokenKind::kProto:
            m_rules.proto();
            return false;
        case TokenKind::kName:
            m_text = word;
            break;
        default:
            return true;
    }
    ProtoDefinition* proto = m_inScript ? nullptr : m_client.findProto(word);
    if (proto) {
        m_rules.instance(*proto);
    }
    return !proto;
}

bool Lexer::scanString(const char* from, Token& token) {
    const char* const quote = m_input.closingQuote(from + 1);
    if (!quote) {
        echo(between(from, from + 1));
        m_input.moveTo(from + 1);
        return false;
    }
    m_text = between(from + 1, quote);
    token = finish(from, quote + 1, {TokenKind::kString, 0});
    return true;
}

const char* Lexer::skipComment(const char* from) {
    m_input.moveTo(from);
    m_input.takeThrough('\n');
    const char* const behind = m_input.at();
    if (behind[-1] == '\n') {
        m_input.countLine();
    }
    return behind;
}

const char* Lexer::skipLineEnd(const char* from) {
    m_input.startLine(from + 1);
    m_input.countLine();
    return from + 1;
}

const char* Lexer::echoUnknown(const char* from) {
    const char* behind = from;
    while (behind != m_input.end() && classOf(*behind) == CharacterClass::kOther) {
        ++behind;
    }
    echo(between(from, behind));
    return behind;
}

void Lexer::echo(std::string_view text) {
    const std::size_t length = std::min(text.size(), kEchoLimit - m_echoed);
    m_echoed += length;
    std::fwrite(text.data(), 1, length, stdout);
}

}  // namespace nodes
