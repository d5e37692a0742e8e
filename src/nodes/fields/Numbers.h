#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace nodes {

// Numbers as the C library reads and prints them in the C locale, whatever the host's locale is.

/// Takes a number from the front of TEXT as strtod does: white space before it, a sign, "inf",
/// "nan" and "0x..." are allowed, and what is out of range becomes 0 or infinite. False, and
/// nothing is changed, if there is none.
bool takeNumber(std::string_view& text, float& out);
bool takeNumber(std::string_view& text, double& out);

/// The number at the start of TEXT, 0 if there is none.
double toDouble(std::string_view text);
/// As toDouble, of an integer; beyond 32 bits it is the nearest that there is.
std::int32_t toInt32(std::string_view text);

/// Characters that the longest number may take in each form.
constexpr std::size_t kGeneralLength = 16;
constexpr std::size_t kFixedLength = 320;
constexpr std::size_t kInt32Length = 11;

/// Each writes VALUE at TO, without a terminating zero, and returns the end: as "%g", "%f", "%d".
char* putGeneral(char* to, float value);
char* putGeneral(char* to, double value);
char* putFixed(char* to, double value);
char* putInt32(char* to, std::int32_t value);

}  // namespace nodes
