#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace nodes {

/// What a character may begin.
enum class CharacterClass : std::uint8_t {
    kOther,
    kBlank,
    kLineEnd,
    kComment,
    kQuote,
    kNumber,
    kLetter,
    kPunctuation,
};

struct CharacterTable {
    std::array<CharacterClass, 256> classes{};
    std::array<bool, 256> inWord{};

    constexpr CharacterTable() {
        set(" \t", CharacterClass::kBlank);
        set("\n", CharacterClass::kLineEnd);
        set("#", CharacterClass::kComment);
        set("\"", CharacterClass::kQuote);
        set("0123456789-.", CharacterClass::kNumber);
        set(",{}[]", CharacterClass::kPunctuation);
        set("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_", CharacterClass::kLetter);
        for (std::size_t i = 0; i < classes.size(); ++i) {
            inWord[i] = classes[i] == CharacterClass::kLetter || (i >= '0' && i <= '9') ||
                        i == '+' || i == '-';
        }
    }

  private:
    constexpr void set(std::string_view characters, CharacterClass value) {
        for (const char character : characters) {
            classes[static_cast<unsigned char>(character)] = value;
        }
    }
};

inline constexpr CharacterTable kCharacters;

constexpr CharacterClass classOf(char character) {
    return kCharacters.classes[static_cast<unsigned char>(character)];
}

/// Letters, digits, "_", "+" and "-": what a word goes on with.
constexpr bool isWordCharacter(char character) {
    return kCharacters.inWord[static_cast<unsigned char>(character)];
}

}  // namespace nodes
