#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace nodes {

enum class TokenKind : std::uint8_t {
    kEnd,
    /// The input cannot be read on.
    kFailed,
    kInt,
    kFloat,
    kString,
    kName,
    kNull,
    kUse,
    kComma,
    kLeftBrace,
    kRightBrace,
    kLeftBracket,
    kRightBracket,
    /// A keyword of a node: the index is the NodeType.
    kNode,
    /// A keyword of a field: the index is the FieldKeyword.
    kField,
    /// The name of a field type in a Script: the index is the FieldType.
    kType,
    // Words that the lexer deals with by itself and never hands out.
    kDef,
    kProto,
    kRoute,
};

struct Token {
    TokenKind kind = TokenKind::kEnd;
    std::uint8_t index = 0;

    bool is(TokenKind other) const { return kind == other; }
};

/// Numbers of the field keywords.
enum class FieldKeyword : std::uint8_t {
#define FIELD(name) name,
#define SCRIPT_FIELD(name) name,
#define BOTH(name) name,
#define TYPE(name)
#include "nodes/reader/Keywords.def"
    kCount,
};
constexpr std::size_t kFieldKeywordCount = static_cast<std::size_t>(FieldKeyword::kCount);

/// The hash of a word, built up character by character while the word is scanned.
constexpr std::uint32_t kWordHashStart = 0;
constexpr std::uint32_t hashWord(std::uint32_t hash, char character) {
    return hash * 31 + static_cast<unsigned char>(character);
}

/// What a word of the HASH given is outside the body of a Script, or inside; kName for a word that
/// is no keyword there.
Token keywordToken(std::string_view word, std::uint32_t hash, bool inScript);

}  // namespace nodes
