#pragma once

#include <string>

namespace nodes {

enum class FileStatus { kRead, kCannotOpen, kCannotRead, kNoMemory };

/// The whole of a regular file. Pipes and devices, which may never end, are not read.
FileStatus readFileText(const char* path, std::string& text);

}  // namespace nodes
