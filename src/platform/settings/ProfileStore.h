#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace settings {

/// The per-user store: named sections of named values, kept in one text file.
///
/// The file is read once, at construction. Values that are written go to memory and reach the file
/// at Flush. A store that cannot be read gives the defaults; a failure to write is ignored. No
/// function throws except std::bad_alloc from the constructor and from GetProfileString.
///
/// Numbers are read and written independently of the locale. Section and key are compared without
/// regard to case, and must be non-empty and free of line breaks, '=' and brackets, as here they
/// are always literals of this program.
class ProfileStore {
  public:
    /// An empty path stands for no store: defaults only, nothing is ever written.
    explicit ProfileStore(std::filesystem::path file);
    ~ProfileStore();
    ProfileStore(const ProfileStore&) = delete;
    ProfileStore& operator=(const ProfileStore&) = delete;

    /// `kestrane.ini` in the folder `Tamsfield Institute` of the user's configuration folder:
    /// XDG_CONFIG_HOME if that is an absolute path, else `~/.config`. Empty when HOME gives none.
    static std::filesystem::path UserFile();
    /// From now on UserFile is empty: for a process that is to leave no trace with the user.
    static void UseNoUserFile() noexcept;

    /// The leading whole number of the value; the default when there is none or it exceeds an int.
    int GetProfileInt(const char* section, const char* key, int defaultValue) const noexcept;
    std::string GetProfileString(const char* section, const char* key,
                                 const std::string& defaultValue) const;
    void WriteProfileInt(const char* section, const char* key, int value) noexcept;
    /// Leading and trailing blanks are not kept. A value with a line break is not stored.
    void WriteProfileString(const char* section, const char* key,
                            const std::string& value) noexcept;

    /// Brings the written values into the file: reads it again, so that what others wrote meanwhile
    /// survives, and replaces it in one step if a value differs. A file that is there but cannot be
    /// read is left alone.
    void Flush() noexcept;

  private:
    using Address = std::pair<std::string, std::string>;

    class Ini;

    const std::filesystem::path m_file;
    std::unique_ptr<Ini> m_ini;
    std::map<Address, std::string> m_written;
};

/// A float as the store keeps it: six decimals, with a point.
std::string FormatStoredFloat(float value);
/// The leading number of a text; 0 when there is none or it exceeds a double.
float ParseStoredFloat(const std::string& text) noexcept;

}  // namespace settings
