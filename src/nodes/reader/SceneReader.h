#pragma once

#include "nodes/NodeTree.h"

namespace nodes {

/// Reads a file of some format into a tree.
class SceneReader {
  public:
    SceneReader() = default;
    SceneReader(const SceneReader&) = delete;
    SceneReader& operator=(const SceneReader&) = delete;
    virtual ~SceneReader() = default;

    /// Tells PROGRESSFN of each line.
    virtual bool read(const char* path, ProgressFn progressFn, void* userData) = 0;
};

}  // namespace nodes
