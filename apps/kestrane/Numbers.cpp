#include "Numbers.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "Failure.h"
#include "Output.h"

namespace {

template <class... Format>
std::string ToText(Format... format) {
    char buffer[64];
    const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, format...);
    return error == std::errc() ? std::string(buffer, end) : std::string("?");
}

double FromText(const std::string& text) {
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

}  // namespace

double ParseNumber(const std::string& text, const std::string& what) {
    const char* begin = text.data();
    const char* const end = begin + text.size();
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        ++begin;
    double value = 0;
    const auto [stop, error] = std::from_chars(begin, end, value);
    if (error == std::errc::invalid_argument || stop != end || std::isnan(value))
        throw Failure(what + ": " + Quoted(text) + " is not a number");
    if (error != std::errc() || std::abs(value) > std::numeric_limits<float>::max())
        throw Failure(what + ": " + Quoted(text) + " is out of range");
    return value;
}

double ParseTime(const std::string& text, const std::string& what) {
    const double time = ParseNumber(text, what);
    if (time < 0)
        throw Failure(what + ": a time below 0 is not possible");
    return time;
}

std::string TimeText(double time) {
    return ToText(time, std::chars_format::general, 9);
}

double TimeNumber(double time) {
    return FromText(TimeText(time));
}

std::string ShortText(float value) {
    return ToText(static_cast<double>(value), std::chars_format::general, 6);
}

std::string ExactText(float value) {
    return ToText(value);
}

double ExactNumber(float value) {
    return std::isfinite(value) ? FromText(ToText(value)) : static_cast<double>(value);
}
