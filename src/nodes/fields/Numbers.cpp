#include "nodes/fields/Numbers.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace nodes {
namespace {

std::string_view withoutSpace(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    return text.substr(std::min(start, text.size()));
}

/// Takes a sign, if there is one; true if it is a minus.
bool takeSign(std::string_view& text) {
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    return isNegative;
}

/// Whether digits out of the range of a double, the first of which is not 0, are too many and not
/// too small.
bool isTooLarge(std::string_view digits, bool isHex) {
    const std::size_t mark = std::min(digits.find_first_of(isHex ? "pP" : "eE"), digits.size());
    const std::string_view mantissa = digits.substr(0, mark);
    const std::size_t point = std::min(mantissa.find('.'), mark);
    const std::size_t first = mantissa.find_first_not_of("0.");
    const auto places = static_cast<long long>(point) - static_cast<long long>(first);
    std::string_view exponentText = digits.substr(std::min(mark + 1, digits.size()));
    const bool isNegative = takeSign(exponentText);
    int exponent = 0;
    const auto [end, error] =
        std::from_chars(exponentText.data(), exponentText.data() + exponentText.size(), exponent);
    if (error == std::errc::result_out_of_range) {
        return !isNegative;
    }
    return (isHex ? 4 : 1) * places + (isNegative ? -exponent : exponent) > 0;
}

bool isHexDigit(char character) {
    return std::string_view("0123456789abcdefABCDEF").find(character) != std::string_view::npos;
}

/// Without a digit behind "0x", the number is the 0.
bool beginsHex(std::string_view text) {
    if (!text.starts_with("0x") && !text.starts_with("0X")) {
        return false;
    }
    text.remove_prefix(text.substr(2).starts_with('.') ? 3 : 2);
    return !text.empty() && isHexDigit(text.front());
}

template <class T>
bool takeNumberOf(std::string_view& text, T& out) {
    std::string_view rest = withoutSpace(text);
    const bool isNegative = takeSign(rest);
    if (rest.starts_with('-')) {  // from_chars would take it as the sign
        return false;
    }
    const bool isHex = beginsHex(rest);
    rest.remove_prefix(isHex ? 2 : 0);
    T value = 0;
    const auto [end, error] =
        std::from_chars(rest.data(), rest.data() + rest.size(), value,
                        isHex ? std::chars_format::hex : std::chars_format::general);
    if (error == std::errc::invalid_argument) {
        return false;
    }
    const auto length = static_cast<std::size_t>(end - rest.data());
    if (error == std::errc::result_out_of_range) {
        value = isTooLarge(rest.substr(0, length), isHex) ? std::numeric_limits<T>::infinity() : 0;
    }
    out = isNegative ? -value : value;
    text = rest.substr(length);
    return true;
}

constexpr std::uint64_t kPowersOfTen[] = {
    1,         10,         100,         1'000,         10'000,        100'000,
    1'000'000, 10'000'000, 100'000'000, 1'000'000'000, 10'000'000'000};

/// DIGITS by ten to the power of DECIMALS.
struct Decimal {
    std::uint64_t digits;
    unsigned decimals;
};

// What "%g" prints without an exponent.
constexpr float kLeastPlain = 1e-4F;
constexpr float kBeyondPlain = 999999.5F;

/// A number from kLeastPlain to below kBeyondPlain, rounded to six significant digits, ties to
/// even. All of it is exact: 24 bits times ten to the tenth fit 64 bits.
Decimal sixDigits(float number) {
    constexpr std::uint64_t kSixDigits = 1'000'000;
    constexpr int kMantissaBits = 23;
    constexpr int kBias = 127;
    const auto bits = std::bit_cast<std::uint32_t>(number);
    const int exponent = static_cast<int>(bits >> kMantissaBits) - kBias;
    const std::uint64_t mantissa = (bits & ((1U << kMantissaBits) - 1)) | (1U << kMantissaBits);
    const int shift = kMantissaBits - exponent;
    // 1233 / 4096 is the logarithm of 2, near enough here; the number may have one digit more.
    auto decimals = static_cast<unsigned>(5 - ((exponent * 1233) >> 12));
    std::uint64_t scaled = mantissa * kPowersOfTen[decimals];
    if (scaled >> shift >= kSixDigits) {
        scaled = mantissa * kPowersOfTen[--decimals];
    }
    std::uint64_t digits = scaled >> shift;
    const std::uint64_t half = std::uint64_t{1} << (shift - 1);
    const std::uint64_t rest = scaled & (2 * half - 1);
    digits += rest > half || (rest == half && digits % 2 == 1) ? 1 : 0;
    while (decimals > 0 && digits % 10 == 0) {
        digits /= 10;
        --decimals;
    }
    return {digits, decimals};
}

char* putDecimal(char* to, Decimal number) {
    const std::uint64_t whole = number.digits / kPowersOfTen[number.decimals];
    to = std::to_chars(to, to + kInt32Length, static_cast<std::uint32_t>(whole)).ptr;
    if (number.decimals == 0) {
        return to;
    }
    *to = '.';
    for (unsigned i = number.decimals; i > 0; --i) {
        to[i] = static_cast<char>('0' + number.digits % 10);
        number.digits /= 10;
    }
    return to + number.decimals + 1;
}

}  // namespace

bool takeNumber(std::string_view& text, float& out) {
    return takeNumberOf(text, out);
}

bool takeNumber(std::string_view& text, double& out) {
    return takeNumberOf(text, out);
}

double toDouble(std::string_view text) {
    double value = 0;
    takeNumber(text, value);
    return value;
}

std::int32_t toInt32(std::string_view text) {
    using Limits = std::numeric_limits<std::int32_t>;
    std::string_view digits = withoutSpace(text);
    const bool isNegative = takeSign(digits);
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc::result_out_of_range) {
        value = std::numeric_limits<std::int64_t>::max();
    }
    if (digits.starts_with('-')) {
        return 0;
    }
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(isNegative ? -value : value, Limits::min(), Limits::max()));
}

char* putGeneral(char* to, float value) {
    const float size = std::fabs(value);
    if (size != 0 && !(size >= kLeastPlain && size < kBeyondPlain)) {
        return putGeneral(to, static_cast<double>(value));
    }
    if (std::signbit(value)) {
        *to++ = '-';
    }
    if (size == 0) {
        *to++ = '0';
        return to;
    }
    return putDecimal(to, sixDigits(size));
}

char* putGeneral(char* to, double value) {
    constexpr int kDigits = 6;
    return std::to_chars(to, to + kGeneralLength, value, std::chars_format::general, kDigits).ptr;
}

char* putFixed(char* to, double value) {
    constexpr int kDecimals = 6;
    return std::to_chars(to, to + kFixedLength, value, std::chars_format::fixed, kDecimals).ptr;
}

char* putInt32(char* to, std::int32_t value) {
    return std::to_chars(to, to + kInt32Length, value).ptr;
}

}  // namespace nodes
