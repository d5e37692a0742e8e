#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "nodes/SceneGraph.h"
#include "nodes/nodes/ReadScope.h"
#include "nodes/reader/FileText.h"
#include "nodes/reader/VrmlReader.h"
#include "nodes/writer/GzFile.h"

namespace nodes {
namespace {

constexpr const char* kTooMuchText = "the files of the Inlines hold too much text";

}  // namespace

std::int32_t detectFileType(const char* path) {
    std::array<char, 5> bytes{};
    std::FILE* file = isPlainFile(path) ? std::fopen(path, "rb") : nullptr;
    if (!file) {
        return kUnknownFile;
    }
    const std::size_t length = std::fread(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    if (length < bytes.size()) {
        return kUnknownFile;
    }
    const std::string_view start(bytes.data(), bytes.size());
    if (start.substr(1, 3) == "PNG") {
        return kPngFile;
    }
    if (start.starts_with("\x1F\x8B")) {
        return kGzipFile;
    }
    if (start.starts_with("\xFF\xD8")) {
        return kJpegFile;
    }
    if (start.starts_with("GIF")) {
        return kGifFile;
    }
    if (start == "<?xml") {
        return kXmlFile;
    }
    return start == "#VRML" ? kVrmlFile : kUnknownFile;
}

bool SceneGraph::load(const char* path, bool callInitialise, ProgressFn progressFn,
                      void* userData) {
    clear();
    return read(path, callInitialise, progressFn, userData);
}

bool SceneGraph::read(const char* path, bool callInitialise, ProgressFn progressFn,
                      void* userData) {
    m_error = {};
    m_loaded = false;
    const std::int32_t type = detectFileType(path);
    if (type != kVrmlFile && type != kGzipFile) {
        return false;
    }
    const ReadScope scope(path);
    VrmlReader reader;
    reader.setErrorTarget(m_error);
    if (type == kVrmlFile) {
        std::error_code error;
        if (!ReadScope::addText(std::filesystem::file_size(path, error))) {
            m_error.message = kTooMuchText;
            return false;
        }
        m_loaded = reader.read(path, progressFn, userData);
    } else {
        GzFile file;
        std::string text;
        if (!file.open(path, GzFile::kRead) || !file.readText(text)) {
            m_error.message = "the compressed file cannot be unpacked";
            return false;
        }
        file.close();
        if (!ReadScope::addText(text.size())) {
            m_error.message = kTooMuchText;
            return false;
        }
        m_loaded = reader.readText(std::move(text), progressFn, userData);
    }
    m_loaded = m_loaded && add(reader.tree(), callInitialise);
    return m_loaded;
}

bool SceneGraph::add(NodeTree& tree, bool callInitialise) {
    ReadScope::allowInstances(tree);
    takeNodes(tree);
    takeRoutes(tree);
    if (callInitialise) {
        initialiseNodes(nullptr, nullptr);
        if (!makeInstances()) {
            m_error.message = "the nodes that USE asks for are too many";
            clear();
            return false;
        }
    }
    for (const std::int32_t type : {kBackground, kFog, kNavigationInfo, kViewpoint}) {
        if (Node* node = findNodeOfType(type)) {
            setBound(*node, true);
        }
    }
    return true;
}

}  // namespace nodes
