#include "nodes/reader/ValueReader.h"

#include <cstdint>
#include <string>
#include <utility>

#include "nodes/fields/Lists.h"
#include "nodes/fields/ScalarFields.h"
#include "nodes/fields/VectorFields.h"

namespace nodes {

bool ValueReader::read(ValueForm form, Field& target) {
    switch (form) {
        case ValueForm::kBool:
            return readBool(target);
        case ValueForm::kInt:
            return readSingle<SFInt32>(target);
        case ValueForm::kFloat:
            return readSingle<SFFloat>(target);
        case ValueForm::kTime:
            return readTime(target);
        case ValueForm::kString:
            return readSingle<SFString>(target);
        case ValueForm::kVec2:
            return readSingle<SFVec2f>(target);
        case ValueForm::kVec3:
            return readSingle<SFVec3f>(target);
        case ValueForm::kColor:
            return readSingle<SFColor>(target);
        case ValueForm::kRotation:
            return readSingle<SFRotation>(target);
        case ValueForm::kInts:
            return readList<MFInt32>(target);
        case ValueForm::kFloats:
            return readList<MFFloat>(target);
        case ValueForm::kStrings:
            return readList<MFString>(target);
        case ValueForm::kVec2s:
            return readList<MFVec2f>(target);
        case ValueForm::kVec3s:
            return readList<MFVec3f>(target);
        case ValueForm::kColors:
            return readList<MFColor>(target);
        case ValueForm::kRotations:
            return readList<MFRotation>(target);
        case ValueForm::kImage:
            return readImage(target);
        default:
            return false;
    }
}

bool ValueReader::drop(ValueForm form) {
    SFVec2f two;
    SFVec3f three;
    SFRotation four;
    switch (form) {
        case ValueForm::kVec2:
            return read(form, two);
        case ValueForm::kVec3:
            return read(form, three);
        case ValueForm::kRotation:
            return read(form, four);
        default:
            return false;
    }
}

// ---- Values, the first token of which is there ----

inline bool ValueReader::readInto(float& out, Token token) {
    out = m_lexer.floatValue();
    return token.is(TokenKind::kFloat) || token.is(TokenKind::kInt);
}

template <std::size_t kCount>
inline bool ValueReader::readInto(std::array<float, kCount>& out, Token token) {
    bool fits = readInto(out[0], token);
    for (std::size_t i = 1; fits && i < kCount; ++i) {
        fits = readInto(out[i], m_lexer.nextToken());
    }
    return fits;
}

inline bool ValueReader::readInto(std::int32_t& out, Token token) {
    out = m_lexer.intValue();
    return token.is(TokenKind::kInt);
}

bool ValueReader::readInto(std::string& out, Token token) {
    if (!token.is(TokenKind::kString)) {
        return false;
    }
    out = m_lexer.text();
    return true;
}

template <class List>
bool ValueReader::addTo(List& list, Token token) {
    typename List::Value value{};
    if (!readInto(value, token)) {
        return false;
    }
    list.add(std::move(value));
    return true;
}

// ---- Whole values ----

template <class Type>
bool ValueReader::readSingle(Field& target) {
    // A copy of the value, which stays as it was where a token does not fit.
    typename Type::Value value{};
    if (!readInto(value, m_lexer.nextToken())) {
        return false;
    }
    static_cast<Type&>(target).setValue(std::move(value));
    return true;
}

bool ValueReader::readBool(Field& target) {
    std::int32_t value = 0;
    if (!readInto(value, m_lexer.nextToken())) {
        return false;
    }
    static_cast<SFBool&>(target).setValue(value != 0);
    return true;
}

bool ValueReader::readTime(Field& target) {
    float value = 0;
    if (!readInto(value, m_lexer.nextToken())) {
        return false;
    }
    static_cast<SFTime&>(target).setValue(static_cast<double>(value));
    return true;
}

template <class List>
bool ValueReader::readList(Field& target) {
    auto& list = static_cast<List&>(target);
    Token token = m_lexer.nextToken();
    if (!token.is(TokenKind::kLeftBracket)) {
        return addTo(list, token);
    }
    for (;;) {
        token = m_lexer.nextToken();
        if (token.is(TokenKind::kRightBracket)) {
            return true;
        }
        if (!token.is(TokenKind::kComma) && !addTo(list, token)) {
            return false;
        }
    }
}

/// Integers between brackets or, without them, as many as width and height announce.
bool ValueReader::readImage(Field& target) {
    auto& image = static_cast<SFImage&>(target);
    Token token = m_lexer.nextToken();
    if (token.is(TokenKind::kLeftBracket)) {
        for (token = m_lexer.nextToken(); !token.is(TokenKind::kRightBracket);
             token = m_lexer.nextToken()) {
            if (!addTo(image, token)) {
                return false;
            }
        }
        return true;
    }
    std::array<std::int32_t, 3> head{};
    for (std::int32_t& number : head) {
        number = m_lexer.intValue();
        if (!addTo(image, token)) {
            return false;
        }
        token = &number == &head.back() ? token : m_lexer.nextToken();
    }
    const bool hasPixels = head[0] > 0 && head[1] > 0;
    std::int64_t pixels = hasPixels ? std::int64_t{head[0]} * head[1] : 0;
    for (; pixels > 0; --pixels) {
        if (!addTo(image, m_lexer.nextToken())) {
            return false;
        }
    }
    return true;
}

}  // namespace nodes
