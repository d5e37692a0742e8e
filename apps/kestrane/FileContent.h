#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// What the elements of a scene file, and of all files that it includes, ask for.
struct FileContent {
    std::size_t objects = 0;
    /// Of groups and of the shapes that take motion from a file.
    std::size_t keyStates = 0;
};

/// Of an XML scene that loads; nothing if that cannot be told, as where it includes a VRML file.
std::optional<FileContent> CountFileContent(const std::string& file);
