#include "frame/LoadingScenes.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

const char* LoadingScenes::Refusal(const std::string& file) const {
    if (std::find(m_open.begin(), m_open.end(), file) != m_open.end()) {
        return "The scene includes itself: ";
    }
    if (m_open.size() > kDeepestInclude) {
        return "Includes are nested more than 64 deep: ";
    }
    if (m_fileCount >= kMostFiles) {
        return "The scene includes more than 4096 files: ";
    }
    return nullptr;
}

LoadingScenes::Entry::Entry(LoadingScenes& scenes, const std::string& file) : m_scenes(scenes) {
    m_scenes.m_open.push_back(file);
    ++m_scenes.m_fileCount;
}

LoadingScenes::Entry::~Entry() {
    m_scenes.m_open.pop_back();
    if (m_scenes.m_open.empty()) {
        m_scenes.m_fileCount = 0;
    }
}

std::string LoadingScenes::Identity(const char* fileName) {
    std::error_code error;
    const std::filesystem::path name(fileName);
    std::filesystem::path path = std::filesystem::canonical(name, error);
    if (error) {
        path = std::filesystem::absolute(name, error).lexically_normal();
    }
    return error ? name.string() : path.string();
}
