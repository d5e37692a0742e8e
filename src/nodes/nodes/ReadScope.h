#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace nodes {

class NodeTree;

/// Files below each other that one read may open: the file itself, its Inlines, theirs.
constexpr std::size_t kInlineDepth = 64;
/// Files that the Inlines of one read may load in all.
constexpr std::size_t kInlineFiles = 4096;

/// Characters in all of those files together.
constexpr std::size_t kInlineText = std::size_t{1} << 30;

/// Nodes in all of those files together.
constexpr std::size_t kInlineNodes = std::size_t{1} << 21;

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
    /// Counts the text of a file before it is parsed. False if an Inline asked for it and the
    /// Inlines would have more than kInlineText.
    static bool addText(std::size_t size);
    /// Counts the nodes of a world that an Inline has loaded. False if they would be more than
    /// kInlineNodes in all.
    static bool addNodes(int count);
    /// Nodes that instances may still add, in all files of one read together: so many for each node
    /// of the trees that were named here, beside those that are always allowed.
    static void allowInstances(const NodeTree& tree);
    static std::size_t& instanceBudget();
    /// The number of the outermost scope that stands, in which values change only as they are read;
    /// 0 if none stands.
    static std::uint64_t pass();

  private:
    bool m_named = false;
};

}  // namespace nodes
