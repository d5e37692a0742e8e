#pragma once

#include <stdexcept>
#include <string>

/// Exit statuses of the program. A query that runs answers with one of the first two.
enum ExitStatus : int { kFree = 0, kCollision = 1, kFailed = 2 };

/// What ends the program with kFailed and one line on the standard error stream.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A code of the library in words, without a full stop.
std::string CodeText(int code);

/// Throws what CodeText says, with `context` and a colon in front, unless `code` is KST_OK.
void Require(int code, const std::string& context);
