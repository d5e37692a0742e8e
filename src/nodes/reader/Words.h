#pragma once

#include <cstddef>
#include <string_view>

namespace nodes {

/// Splits the texts of a PROTO at white space. Brackets and braces are words by themselves, but in
/// a string.
class Words {
  public:
    /// Line ends are white space, or words as well.
    Words(std::string_view text, bool lineEndsAreWords)
        : m_rest(text), m_space(lineEndsAreWords ? " \t" : " \t\n") {}

    /// False at the end, where word() is empty.
    bool next();
    std::string_view word() const { return m_word; }
    /// Whether the word stands outside of strings and is TEXT.
    bool is(std::string_view text) const { return !m_startsInString && m_word == text; }
    bool isBracket() const;
    /// Whether a string is open in front of the word, or behind it.
    bool startsInString() const { return m_startsInString; }
    bool endsInString() const { return m_inString; }

  private:
    bool endsBefore(std::size_t length) const;

    std::string_view m_rest;
    std::string_view m_space;
    std::string_view m_word;
    bool m_inString = false;
    bool m_startsInString = false;
};

}  // namespace nodes
