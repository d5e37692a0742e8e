#pragma once

#include <cstddef>
#include <string>

namespace xml {

/// A regular file, read as it stands: never unpacked, and never a pipe or device, which could keep
/// the reader waiting. The one place of this folder that knows the operating system.
class InputFile {
  public:
    InputFile() = default;
    ~InputFile() { Close(); }
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// Empty on success, else the reason.
    std::string Open(const std::string& path);
    /// Opens a file of the folder that holds `neighbour`. `name` must be a plain file name, and the
    /// file may not be a symbolic link.
    std::string OpenBeside(const std::string& neighbour, const std::string& name);
    void Close();

    /// The number of bytes read, 0 at the end, -1 on failure.
    long Read(char* buffer, size_t size);

  private:
    std::string Check();

    int m_descriptor = -1;
};

}  // namespace xml
