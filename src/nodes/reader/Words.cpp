#include "nodes/reader/Words.h"

#include <algorithm>

namespace nodes {
namespace {

bool contains(std::string_view characters, char character) {
    return characters.find(character) != std::string_view::npos;
}

constexpr std::string_view kBrackets = "{}[]";
constexpr std::string_view kSingles = "{}[]\n";

}  // namespace

bool Words::next() {
    m_rest.remove_prefix(std::min(m_rest.find_first_not_of(m_space), m_rest.size()));
    m_startsInString = m_inString;
    std::size_t length = 0;
    while (length < m_rest.size() && !endsBefore(length)) {
        m_inString ^= m_rest[length] == '"';
        ++length;
        if (length == 1 && !m_inString && contains(kSingles, m_rest[0])) {
            break;
        }
    }
    m_word = m_rest.substr(0, length);
    m_rest.remove_prefix(length);
    return length > 0;
}

bool Words::isBracket() const {
    return !m_startsInString && m_word.size() == 1 && contains(kBrackets, m_word[0]);
}

bool Words::endsBefore(std::size_t length) const {
    const char character = m_rest[length];
    if (contains(m_space, character)) {
        return true;
    }
    return length > 0 && (character == '\n' || (!m_inString && contains(kBrackets, character)));
}

}  // namespace nodes
