#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// A folder of its own for the process, which goes with it: the per-user store lies there and a few
/// scenes to load.
class CPlayground {
  public:
    static const CPlayground& Get();

    ~CPlayground();
    CPlayground(const CPlayground&) = delete;
    CPlayground& operator=(const CPlayground&) = delete;

    /// Names for KST_LoadScene: whole scenes, broken ones, and what is no scene at all.
    const std::vector<std::string>& SceneNames() const { return m_sceneNames; }

    std::string PathOf(const std::filesystem::path& name) const { return m_folder / name; }

  private:
    CPlayground();
    void Write(const char* name, const std::string& text) const;

    std::filesystem::path m_folder;
    std::vector<std::string> m_sceneNames;
};
