#include <cstdio>
#include <memory>

#include "nodes/SceneGraph.h"
#include "nodes/writer/GzFile.h"
#include "nodes/writer/GzStream.h"

namespace nodes {
namespace {

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

void SceneGraph::prepareSave() {
    for (Node* node = firstNode(); node; node = node->next()) {
        node->prepareSave();
    }
}

SaveFault SceneGraph::writeVrml(const char* path) {
    prepareSave();
    GzFile file;
    if (!file.open(path, GzFile::kWrite)) {
        return SaveFault::kNotCreated;
    }
    const bool hasHeader = file.writeText("#VRML V2.0 utf8\n");
    GzStream stream(file);
    for (const Node* node = firstNode(); node && !stream.full(); node = node->nextSibling()) {
        node->writeNode(stream, 0);
    }
    for (const Route& route : routes()) {
        route.write(stream);
    }
    stream.finish();
    if (!file.close() || !hasHeader || stream.failed()) {
        return SaveFault::kNotWritten;
    }
    return stream.cut() ? SaveFault::kCut : SaveFault::kNone;
}

SaveFault SceneGraph::writeXml(const char* path, ProgressFn progressFn, void* userData) {
    std::unique_ptr<std::FILE, Close> file(path ? std::fopen(path, "w") : nullptr);
    if (!file) {
        return SaveFault::kNotCreated;
    }
    prepareSave();
    FileStream stream(file.get());
    stream.put("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    int count = 0;
    for (const Node* node = firstNode(); node; node = node->nextSibling()) {
        node->writeXml(stream, 0);
        if (progressFn) {
            progressFn(++count, userData);
        }
    }
    for (const Route& route : routes()) {
        route.writeXml(stream);
    }
    stream.finish();
    const bool isClosed = std::fclose(file.release()) == 0;
    return isClosed && !stream.failed() ? SaveFault::kNone : SaveFault::kNotWritten;
}

bool SceneGraph::saveVrml(const char* path, ProgressFn, void*) {
    m_savedWhole = writeVrml(path) == SaveFault::kNone;
    initialise(nullptr, nullptr);
    return true;
}

bool SceneGraph::saveXml(const char* path, ProgressFn progressFn, void* userData) {
    const SaveFault fault = writeXml(path, progressFn, userData);
    m_savedWhole = fault == SaveFault::kNone;
    if (fault == SaveFault::kNotCreated) {
        return false;
    }
    initialise(nullptr, nullptr);
    return true;
}

}  // namespace nodes
