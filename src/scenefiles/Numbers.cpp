#include "scenefiles/Numbers.h"

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>

#if defined(__APPLE__)
#include <xlocale.h>
#elif !defined(_WIN32)
#include <locale.h>
#endif

namespace {

// isspace() of the "C" locale.
bool IsBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

const char* SkipBlanks(const char* text) {
    while (IsBlank(*text)) {
        ++text;
    }
    return text;
}

/// strtod in the "C" locale.
double ParseDouble(const char* text) {
#if defined(_WIN32)
    static const _locale_t locale = _create_locale(LC_ALL, "C");
    return _strtod_l(text, nullptr, locale);
#else
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(text, nullptr, locale);
#endif
}

}  // namespace

float ParseFloat(const char* text) {
    static_assert(std::numeric_limits<float>::is_iec559, "a double too large becomes infinite");
    // The usual numbers the fast way, which rounds as strtod does, but knows no hexadecimal numbers
    // and gives none for those beyond the range of a double.
    const char* digits = SkipBlanks(text);
    const bool negative = *digits == '-';
    digits += negative || *digits == '+' ? 1 : 0;
    if (IsDigit(*digits) && digits[1] != 'x' && digits[1] != 'X') {
        double value = 0.0;
        if (std::from_chars(digits, digits + std::strlen(digits), value).ec == std::errc()) {
            return static_cast<float>(negative ? -value : value);
        }
    }
    return static_cast<float>(ParseDouble(text));
}

int ParseInteger(const char* text) {
    const char* digit = SkipBlanks(text);
    const bool negative = *digit == '-';
    digit += negative || *digit == '+' ? 1 : 0;
    int64_t value = 0;
    for (; IsDigit(*digit); ++digit) {
        value = std::min<int64_t>(value * 10 + (*digit - '0'), int64_t{1} << 40);
    }
    value = std::clamp<int64_t>(negative ? -value : value, std::numeric_limits<int>::min(),
                                std::numeric_limits<int>::max());
    return static_cast<int>(value);
}
