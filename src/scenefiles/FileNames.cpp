#include "scenefiles/FileNames.h"

#include <filesystem>
#include <system_error>

bool IsSeparator(char c) {
    return c == '/' || c == '\\';
}

bool IsAbsolute(std::string_view name) {
    return (!name.empty() && IsSeparator(name[0])) ||
           (name.size() > 2 && name[1] == ':' && IsSeparator(name[2]));
}

bool EndsWith(std::string_view name, std::string_view suffix) {
    return name.size() >= suffix.size() && name.substr(name.size() - suffix.size()) == suffix;
}

std::string FolderOf(const char* fileName) {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(fileName, error);
    std::string folder = path.string();
    folder.resize(folder.size() - path.filename().string().size());
    return folder;
}
