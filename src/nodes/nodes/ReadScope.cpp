#include "nodes/nodes/ReadScope.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "nodes/SceneGraph.h"

namespace nodes {
namespace {

struct Reading {
    /// The files that are being read, by their canonical paths.
    std::vector<std::string> paths;
    int scopes = 0;
    /// Counts the outermost scopes.
    std::uint64_t pass = 0;
    /// Loaded by Inlines since the outermost scope began.
    std::size_t files = 0;
    std::size_t text = 0;
    std::size_t nodes = 0;
    std::size_t instances = 0;
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
    if (path) {
        t_reading.paths.push_back(canonicalPath(path));
        m_named = true;
    }
    if (t_reading.scopes++ == 0) {
        ++t_reading.pass;
        t_reading.files = 0;
        t_reading.text = 0;
        t_reading.nodes = 0;
        t_reading.instances = SceneGraph::kInstanceNodes;
    }
}

ReadScope::~ReadScope() {
    if (m_named) {
        t_reading.paths.pop_back();
    }
    --t_reading.scopes;
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

bool ReadScope::addText(std::size_t size) {
    Reading& reading = t_reading;
    if (reading.scopes == 1) {
        return true;
    }
    if (size > kInlineText - reading.text) {
        return false;
    }
    reading.text += size;
    return true;
}

bool ReadScope::addNodes(int count) {
    const auto added = static_cast<std::size_t>(count);
    if (added > kInlineNodes - t_reading.nodes) {
        return false;
    }
    t_reading.nodes += added;
    return true;
}

void ReadScope::allowInstances(const NodeTree& tree) {
    std::size_t count = 0;
    for (const Node* node = tree.firstNode(); node; node = node->next()) {
        count += node->instanceOf() ? 0 : 1;
    }
    t_reading.instances += SceneGraph::kInstanceNodesEach * count;
}

std::uint64_t ReadScope::pass() {
    return t_reading.scopes > 0 ? t_reading.pass : 0;
}

std::size_t& ReadScope::instanceBudget() {
    return t_reading.instances;
}

}  // namespace nodes
