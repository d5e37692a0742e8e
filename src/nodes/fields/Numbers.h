#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace nodes {

/// The number at the start of a text, behind white space, as atof reads it in the C locale: what
/// follows it does not matter, no number is 0, too large a number is infinite, too small a one 0.
double numberFromText(std::string_view text);
/// As above, and moves TEXT behind the number; false, with TEXT and OUT as they were, without one.
bool takeNumber(std::string_view& text, double& out);
/// The integer at the start of a text, as atoi reads it; one that does not fit is the nearest that
/// does.
std::int32_t integerFromText(std::string_view text);

/// Room for any number that the functions below write.
constexpr std::size_t kNumberRoom = 340;
/// Writes as "%g" does in the C locale, without a terminating zero; returns the end.
char* writeGeneral(double value, char* out);
/// Writes as "%f" does in the C locale.
char* writeFixed(double value, char* out);
char* writeInteger(std::int32_t value, char* out);

}  // namespace nodes
