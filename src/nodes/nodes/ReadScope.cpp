#include "nodes/nodes/ReadScope.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace nodes {
namespace {

struct Reading {
    /// The files that are being read, by their canonical paths.
    std::vector<std::string> paths;
    int scopes = 0;
    /// Loaded by Inlines since the outermost scope began.
    std::size_t files = 0;
};

thread_local Reading t_reading;

/// "" if there is no such file.
std::string canonicalPath(const char* path) {
    std::error_code error;
    const std::filesystem::path canonical = std::filesystem::canonical(path, error);
    return error ? std::string() : canonical.native();
}

}  // namespace

ReadScope::ReadScope(const char* path) {
    if (path != nullptr) {
        t_reading.paths.push_back(canonicalPath(path));
        m_named = true;
    }
    ++t_reading.scopes;
}

ReadScope::~ReadScope() {
    if (m_named) {
        t_reading.paths.pop_back();
    }
    if (--t_reading.scopes == 0) {
        t_reading.files = 0;
    }
}

bool ReadScope::mayInline(const char* path) {
    Reading& reading = t_reading;
    if (reading.paths.size() >= kInlineDepth || reading.files >= kInlineFiles) {
        return false;
    }
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return false;
    }
    const std::string canonical = canonicalPath(path);
    const auto& open = reading.paths;
    if (canonical.empty() || std::find(open.begin(), open.end(), canonical) != open.end()) {
        return false;
    }
    ++reading.files;
    return true;
}

}  // namespace nodes
