#pragma once

#include <cstddef>
#include <string>

namespace nodes {

/// Files below each other that one read may open: the file itself, its Inlines, theirs.
constexpr std::size_t kInlineDepth = 64;
/// Files that the Inlines of one read may load in all.
constexpr std::size_t kInlineFiles = 4096;

/// Stands while a file is read or a tree is initialised, so that Inlines that load each other, or
/// more than any memory holds, come to an end.
class ReadScope {
  public:
    /// PATH is the file that is read; null for what reads none itself.
    explicit ReadScope(const char* path);
    ~ReadScope();
    ReadScope(const ReadScope&) = delete;
    ReadScope& operator=(const ReadScope&) = delete;

    /// Whether an Inline may load PATH: a plain file that is not being read already, within the
    /// limits. A file that it may load is counted.
    static bool mayInline(const char* path);

  private:
    bool m_named = false;
};

}  // namespace nodes
