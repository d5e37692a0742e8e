#include "nodes/reader/Keywords.h"

#include <array>

#include "nodes/fields/Field.h"
#include "nodes/nodes/NodeType.h"

namespace nodes {
namespace {

struct Keyword {
    std::string_view text;
    Token outside;
    Token inside;
};

constexpr Token kNoKeyword{TokenKind::kName, 0};

constexpr Token fieldToken(FieldKeyword keyword) {
    return {TokenKind::kField, static_cast<std::uint8_t>(keyword)};
}

/// A file can name all types but the root's; DEF is a word of its own.
constexpr Token nodeToken(NodeType type) {
    switch (type) {
        case kRoot:
            return kNoKeyword;
        case kDef:
            return {TokenKind::kDef, 0};
        default:
            return {TokenKind::kNode, static_cast<std::uint8_t>(type)};
    }
}

constexpr Keyword kKeywords[] = {
#define ABSTRACT(Class, BaseClass)
#define NODE(number, Name, text, BaseClass) {text, nodeToken(k##Name), kNoKeyword},
#define VALUE(kind, Type, id, Id, text, ...)
#define OVERRIDING_VALUE(kind, Type, id, Id, text, ...)
#define LIST(kind, Type, id, Id, text)
#define OWN(...)
#define END(Class)
#include "nodes/nodes/NodeTable.def"
#define FIELD(name) {#name, fieldToken(FieldKeyword::name), kNoKeyword},
#define SCRIPT_FIELD(name) {#name, kNoKeyword, fieldToken(FieldKeyword::name)},
#define BOTH(name) {#name, fieldToken(FieldKeyword::name), fieldToken(FieldKeyword::name)},
#define TYPE(name) {#name, kNoKeyword, {TokenKind::kType, k##name}},
#include "nodes/reader/Keywords.def"
    {"TRUE", {TokenKind::kInt, 1}, {TokenKind::kInt, 1}},
    {"FALSE", {TokenKind::kInt, 0}, {TokenKind::kInt, 0}},
    // The opposite of TRUE and FALSE.
    {"ON", {TokenKind::kInt, 0}, kNoKeyword},
    {"OFF", {TokenKind::kInt, 1}, kNoKeyword},
    {"NULL", {TokenKind::kNull, 0}, {TokenKind::kNull, 0}},
    {"USE", {TokenKind::kUse, 0}, {TokenKind::kUse, 0}},
    {"PROTO", {TokenKind::kProto, 0}, kNoKeyword},
    {"ROUTE", {TokenKind::kRoute, 0}, kNoKeyword},
};

/// Open addressing with linear steps; an empty slot ends a search.
class KeywordTable {
  public:
    constexpr KeywordTable() {
        for (const Keyword& keyword : kKeywords) {
            std::uint32_t hash = kWordHashStart;
            for (const char character : keyword.text) {
                hash = hashWord(hash, character);
            }
            std::size_t slot = slotOf(hash);
            while (!m_slots[slot].text.empty()) {
                slot = (slot + 1) % kSlots;
            }
            m_slots[slot] = keyword;
        }
    }

    constexpr const Keyword* find(std::string_view word, std::uint32_t hash) const {
        for (std::size_t slot = slotOf(hash); !m_slots[slot].text.empty();
             slot = (slot + 1) % kSlots) {
            if (m_slots[slot].text == word) {
                return &m_slots[slot];
            }
        }
        return nullptr;
    }

  private:
    static constexpr std::size_t kSlots = 1024;
    static constexpr std::size_t slotOf(std::uint32_t hash) {
        return (hash * 0x9E3779B1U >> 16) % kSlots;
    }

    std::array<Keyword, kSlots> m_slots;
};

constexpr KeywordTable kTable;

}  // namespace

Token keywordToken(std::string_view word, std::uint32_t hash, bool inScript) {
    const Keyword* keyword = kTable.find(word, hash);
    if (!keyword) {
        return kNoKeyword;
    }
    return inScript ? keyword->inside : keyword->outside;
}

}  // namespace nodes
