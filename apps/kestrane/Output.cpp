#include "Output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Failure.h"

namespace {

[[noreturn]] void FailToWrite() {
    throw Failure(std::string("cannot write the output: ") + std::strerror(errno));
}

}  // namespace

std::string JsonText(const Json& json, int indent) {
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

void Write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
        FailToWrite();
}

void FlushOutput() {
    if (std::fflush(stdout) != 0)
        FailToWrite();
}

std::string OneLine(std::string_view text) {
    std::string line;
    for (const char c : text) {
        const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
        if (!control)
            line += c;
        else if (!line.empty() && line.back() != ' ')
            line += ' ';
    }
    while (!line.empty() && line.back() == ' ')
        line.pop_back();
    return line;
}

std::string Quoted(std::string_view text) {
    std::string quoted(1, '"');
    quoted += OneLine(text);
    quoted += '"';
    return quoted;
}

bool HasSuffix(std::string_view name, std::string_view suffix) {
    if (name.size() < suffix.size())
        return false;
    const std::string_view end = name.substr(name.size() - suffix.size());
    return std::equal(end.begin(), end.end(), suffix.begin(), [](char c, char lower) {
        return (c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) == lower;
    });
}

std::string CsvField(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos)
        return std::string(text);
    std::string field = "\"";
    for (const char c : text) {
        field += c;
        if (c == '"')
            field += '"';
    }
    return field + '"';
}
