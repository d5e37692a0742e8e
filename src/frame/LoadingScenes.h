#pragma once

#include <string>
#include <vector>

/// The scene files that are being loaded, outermost first: a file that includes others is still
/// open while they are read.
class LoadingScenes {
  public:
    /// Includes within includes, below the file that the host named.
    static constexpr std::size_t kDeepestInclude = 64;
    /// Files opened by one load of the host. A chain of files, each of which includes the next one
    /// twice, would otherwise take for ever without ever nesting deep.
    static constexpr int kMostFiles = 4096;

    /// Null if the file may be opened, else the text that says why not.
    const char* Refusal(const std::string& file) const;

    /// One file, as long as it is being read.
    class Entry {
      public:
        Entry(LoadingScenes& scenes, const std::string& file);
        ~Entry();
        Entry(const Entry&) = delete;
        Entry& operator=(const Entry&) = delete;

      private:
        LoadingScenes& m_scenes;
    };

    /// One name for a file however it is written: absolute, without links and dots.
    static std::string Identity(const char* fileName);

  private:
    std::vector<std::string> m_open;
    int m_fileCount = 0;
};
