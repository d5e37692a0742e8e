#pragma once

#include <string>

namespace nodes {

enum class FileStatus { kRead, kCannotOpen, kCannotRead, kNoMemory };

/// Whether PATH is a regular file, whose opening cannot wait for anybody; false for null.
bool isPlainFile(const char* path);

/// The whole of a regular file. Pipes and devices, which may never end, are not read.
FileStatus readFileText(const char* path, std::string& text);

}  // namespace nodes
