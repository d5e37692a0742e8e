#pragma once

#include <string>

/// Numbers of the command line, and numbers as they are printed; all independent of the locale.

/// The number that `text` is as a whole, finite and in the range of a float. Throws Failure, which
/// names `what`, for all else.
double ParseNumber(const std::string& text, const std::string& what);
/// The same, at least 0.
double ParseTime(const std::string& text, const std::string& what);

/// Nine significant digits: enough to tell any two floats apart, few enough to hide what summing
/// doubles leaves behind (0.3, not 0.30000000000000004).
std::string TimeText(double time);
/// The double that TimeText shows.
double TimeNumber(double time);

/// Six significant digits.
std::string ShortText(float value);
/// The shortest text that reads back as the same float.
std::string ExactText(float value);
/// The double that ExactText shows.
double ExactNumber(float value);
