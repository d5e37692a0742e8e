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

bool SceneGraph::saveVrml(const char* path, ProgressFn, void*) {
    prepareSave();
    GzFile file;
    m_saveFault = SaveFault::kNotCreated;
    if (file.open(path, GzFile::kWrite)) {
        const bool hasHeader = file.writeText("#VRML V2.0 utf8\n");
        GzStream stream(file);
        for (const Node* node = firstNode(); node && !stream.full(); node = node->nextSibling()) {
            node->writeNode(stream, 0);
        }
        for (const Route& route : routes()) {
            route.write(stream);
        }
        stream.finish();
        const bool isWritten = file.close() && hasHeader && !stream.failed();
        m_saveFault = !isWritten     ? SaveFault::kNotWritten
                      : stream.cut() ? SaveFault::kCut
                                     : SaveFault::kNone;
    }
    initialise(nullptr, nullptr);
    return true;
}

bool SceneGraph::saveXml(const char* path, ProgressFn progressFn, void* userData) {
    m_saveFault = SaveFault::kNotCreated;
    std::unique_ptr<std::FILE, Close> file(path ? std::fopen(path, "w") : nullptr);
    if (!file) {
        return false;
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
    m_saveFault = isClosed && !stream.failed() ? SaveFault::kNone : SaveFault::kNotWritten;
    initialise(nullptr, nullptr);
    return true;
}

}  // namespace nodes
