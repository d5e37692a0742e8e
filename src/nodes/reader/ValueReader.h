#pragma once

#include <array>
#include <cstddef>

#include "nodes/reader/Grammar.h"
#include "nodes/reader/Lexer.h"

namespace nodes {

/// Reads the values of fields, each as it comes, in the forms of the grammar.
class ValueReader {
  public:
    explicit ValueReader(Lexer& lexer) : m_lexer(lexer) {}

    /// Reads a value of a FORM into TARGET, a field of the class that has that form. False if a
    /// token fits nowhere; it is the lexer's last one then.
    bool read(ValueForm form, Field& target);
    /// As read(), of a vector or rotation that goes nowhere.
    bool drop(ValueForm form);

  private:
    bool readInto(float& out, Token token);
    template <std::size_t kCount>
    bool readInto(std::array<float, kCount>& out, Token token);
    bool readInto(std::int32_t& out, Token token);
    bool readInto(std::string& out, Token token);

    bool readBool(Field& target);
    bool readTime(Field& target);
    bool readImage(Field& target);
    template <class Type>
    bool readSingle(Field& target);
    template <class List>
    bool readList(Field& target);
    template <class List>
    bool addTo(List& list, Token token);

    Lexer& m_lexer;
};

}  // namespace nodes
