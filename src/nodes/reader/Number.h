#pragma once

#include <cstdint>

namespace nodes {

/// A number of a file. Beyond 32 bits an integer is the nearest that there is, while VALUE keeps
/// the number; that of "0x..." is a pattern of bits.
struct Number {
    float value = 0;
    std::int32_t integer = 0;
    bool isInteger = false;
};

/// The longest number at the start of TEXT, which must begin with a digit, "-" or "."; all digits
/// are optional. AT is left behind it. A character that is no part of a number ends the text.
Number scanNumber(const char*& at);

}  // namespace nodes
