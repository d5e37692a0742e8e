#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

/// Fields stay in the order in which they are set.
using Json = nlohmann::ordered_json;

/// Text of a JSON value; what is not UTF-8 in it is replaced. On one line if `indent` is -1.
std::string JsonText(const Json& json, int indent = -1);

/// Writes to the standard output. Throws Failure as soon as the system refuses to take it (a full
/// disk), so that no caller takes a cut answer for a whole one.
void Write(std::string_view text);
/// Writes what is still buffered. What a command printed counts only after this.
void FlushOutput();

/// `text` on one line and safe for a terminal: control characters become spaces.
std::string OneLine(std::string_view text);
/// The same in double quotes.
std::string Quoted(std::string_view text);

/// Whether a file name ends in `suffix`, in upper or lower case; `suffix` is in lower case.
bool HasSuffix(std::string_view name, std::string_view suffix);

/// One field of a line of comma-separated values.
std::string CsvField(std::string_view text);
