#include "nodes/fields/Numbers.h"

#include <charconv>
#include <limits>
#include <system_error>

namespace nodes {
namespace {

/// TEXT behind white space and one "+".
std::string_view numberStart(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    text.remove_prefix(start == std::string_view::npos ? text.size() : start);
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    return text;
}

/// What from_chars leaves open: too large a number is infinite, too small a one 0.
double beyondRange(std::string_view digits) {
    const std::size_t exponent = digits.find_first_of("eE");
    const bool small = exponent != std::string_view::npos
                           ? digits.substr(exponent + 1).starts_with('-')
                           : digits.find_first_of("123456789") > digits.find('.');
    const double value = small ? 0.0 : std::numeric_limits<double>::infinity();
    return digits.starts_with('-') ? -value : value;
}

}  // namespace

bool takeNumber(std::string_view& text, double& out) {
    const std::string_view digits = numberStart(text);
    double value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (result.ec == std::errc::invalid_argument) {
        return false;
    }
    const auto length = static_cast<std::size_t>(result.ptr - digits.data());
    out = result.ec == std::errc() ? value : beyondRange(digits.substr(0, length));
    text = digits.substr(length);
    return true;
}

double numberFromText(std::string_view text) {
    double value = 0;
    takeNumber(text, value);
    return value;
}

std::int32_t integerFromText(std::string_view text) {
    const std::string_view digits = numberStart(text);
    std::int32_t value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        return digits.starts_with('-') ? std::numeric_limits<std::int32_t>::min()
                                       : std::numeric_limits<std::int32_t>::max();
    }
    return value;
}

char* writeGeneral(double value, char* out) {
    constexpr int kDigits = 6;
    return std::to_chars(out, out + kNumberRoom, value, std::chars_format::general, kDigits).ptr;
}

char* writeFixed(double value, char* out) {
    constexpr int kDecimals = 6;
    return std::to_chars(out, out + kNumberRoom, value, std::chars_format::fixed, kDecimals).ptr;
}

char* writeInteger(std::int32_t value, char* out) {
    return std::to_chars(out, out + kNumberRoom, value).ptr;
}

}  // namespace nodes
