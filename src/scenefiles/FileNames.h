#pragma once

#include <string>
#include <string_view>

/// Names of files as scene files hold them, with the separators of either system.

bool IsSeparator(char c);
/// Whether the name is to be taken as it stands, and not from the folder of the scene.
bool IsAbsolute(std::string_view name);
/// Compared exactly.
bool EndsWith(std::string_view name, std::string_view suffix);
/// The folder of a file, as a full path with the separator at its end.
std::string FolderOf(const char* fileName);
