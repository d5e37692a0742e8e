#pragma once

#include <string>

/// A file that gets its name only once it is whole: until then it stands beside it under a name of
/// its own, and goes with this object.
class OutputFile {
  public:
    /// Throws Failure if no file can be made in the folder of `name`, or if `name` is taken by what
    /// is no file.
    explicit OutputFile(const std::string& name);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// The file to write to; it is there, and empty.
    const std::string& TemporaryName() const { return m_temporaryName; }
    /// Gives the file its name, in place of what has it now.
    void Keep();

  private:
    std::string m_name;
    std::string m_temporaryName;
    bool m_kept = false;
};
