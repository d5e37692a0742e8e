#pragma once

#include <cstddef>
#include <string>

/// What the elements of a scene file, and of all files that it includes, ask for.
struct FileContent {
    std::size_t objects = 0;
    /// Of groups and of the shapes that take motion from a file.
    std::size_t keyStates = 0;
};

/// Throws Failure, which names the element, where the library does not read an XML scene as it is
/// written: numbers that are none or out of range, includes that it passes over.
FileContent ReadFileContent(const std::string& file);

/// The library passes over a name with another suffix without a word. Throws Failure with `context`
/// in front.
void RequireSceneSuffix(const std::string& file, const std::string& context);
