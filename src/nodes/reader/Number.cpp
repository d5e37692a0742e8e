#include "nodes/reader/Number.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <string_view>

#include "nodes/fields/Numbers.h"

namespace nodes {
namespace {

// Both are exact in a double, and so is then each product or quotient but for one rounding
// (W. D. Clinger, "How to read floating point numbers accurately", 1990).
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::uint64_t kExactIntegers = std::uint64_t{1} << 53;
// So many digits fit into 64 bits, whatever they are.
constexpr std::ptrdiff_t kSafeDigits = 19;
// Beyond it, every number with an exponent is 0 or infinite.
constexpr int kLargestExponent = 1'000'000;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

int hexDigit(char character) {
    if (isDigit(character)) {
        return character - '0';
    }
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

Number scanHex(const char*& at) {
    std::uint64_t bits = 0;
    constexpr std::uint64_t kAllBits = 0xFFFFFFFF;
    for (int digit = hexDigit(*at); digit >= 0; digit = hexDigit(*++at)) {
        bits = std::min(bits * 16 + static_cast<std::uint64_t>(digit), kAllBits);
    }
    const auto integer = static_cast<std::int32_t>(static_cast<std::uint32_t>(bits));
    return {static_cast<float>(integer), integer, true};
}

std::int32_t clamped(double value) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp(value, static_cast<double>(Limits::min()), static_cast<double>(Limits::max())));
}

/// MANTISSA times ten to the EXPONENT, if one rounding is enough for that.
bool scale(std::uint64_t mantissa, int exponent, double& value) {
    value = static_cast<double>(mantissa);
    if (mantissa == 0 || exponent == 0) {
        return true;
    }
    if (mantissa > kExactIntegers || std::abs(exponent) >= std::ssize(kPowersOfTen)) {
        return false;
    }
    value = exponent < 0 ? value / kPowersOfTen[-exponent] : value * kPowersOfTen[exponent];
    return true;
}

/// Takes an exponent, if a whole one stands at AT.
int scanExponent(const char*& at) {
    if ((*at | 0x20) != 'e') {
        return 0;
    }
    const char* place = at + 1;
    const bool isNegative = *place == '-';
    if (*place == '-' || *place == '+') {
        ++place;
    }
    if (!isDigit(*place)) {
        return 0;
    }
    int exponent = 0;
    for (; isDigit(*place); ++place) {
        exponent = std::min(exponent * 10 + (*place - '0'), kLargestExponent);
    }
    at = place;
    return isNegative ? -exponent : exponent;
}

}  // namespace

Number scanNumber(const char*& at) {
    const bool isNegative = *at == '-';
    const char* const begin = at + (isNegative ? 1 : 0);
    const char* place = begin;
    std::uint64_t mantissa = 0;
    for (; isDigit(*place); ++place) {
        mantissa = mantissa * 10 + static_cast<std::uint64_t>(*place - '0');
    }
    std::ptrdiff_t digits = place - begin;
    if (digits == 1 && mantissa == 0 && *place == 'x' && !isNegative && hexDigit(place[1]) >= 0) {
        at = place + 1;
        return scanHex(at);
    }
    int exponent = 0;
    bool isInteger = digits > 0;
    if (*place == '.') {
        isInteger = false;
        const char* const fraction = ++place;
        for (; isDigit(*place); ++place) {
            mantissa = mantissa * 10 + static_cast<std::uint64_t>(*place - '0');
        }
        digits += place - fraction;
        exponent = -static_cast<int>(std::min<std::ptrdiff_t>(place - fraction, kLargestExponent));
    }
    const char* const mantissaEnd = place;
    exponent += scanExponent(place);
    isInteger = isInteger && place == mantissaEnd;
    at = place;

    double value = 0;
    if (digits > kSafeDigits || !scale(mantissa, exponent, value)) {
        value = toDouble(std::string_view(begin, static_cast<std::size_t>(place - begin)));
    }
    // A minus alone is no number, and an integer knows no minus zero.
    if (isNegative && digits > 0 && !(isInteger && value == 0)) {
        value = -value;
    }
    return {static_cast<float>(value), isInteger ? clamped(value) : 0, isInteger};
}

}  // namespace nodes
