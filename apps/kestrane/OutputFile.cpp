#include "OutputFile.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "Failure.h"

namespace {

[[noreturn]] void FailToWrite(const std::string& name, const std::string& reason) {
    throw Failure("cannot write " + name + ": " + reason);
}

/// The permissions of the file that is replaced, or those of any new file.
mode_t ModeFor(const std::string& name) {
    struct stat status = {};
    if (stat(name.c_str(), &status) == 0)
        return status.st_mode & 0777U;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666U & ~mask;
}

}  // namespace

OutputFile::OutputFile(const std::string& name) : m_name(name) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(name, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        FailToWrite(name, "it is there and is no regular file");
    // A link stays, and the file it leads to is replaced.
    if (std::filesystem::is_symlink(name, error)) {
        m_name = std::filesystem::weakly_canonical(name, error).string();
        if (error)
            FailToWrite(name, error.message());
    }
    m_temporaryName = m_name + ".XXXXXX";
    const int file = mkstemp(m_temporaryName.data());
    if (file < 0)
        FailToWrite(name, std::strerror(errno));
    fchmod(file, ModeFor(m_name));
    close(file);
}

OutputFile::~OutputFile() {
    if (!m_kept)
        std::remove(m_temporaryName.c_str());
}

void OutputFile::Keep() {
    if (std::rename(m_temporaryName.c_str(), m_name.c_str()) != 0)
        FailToWrite(m_name, std::strerror(errno));
    m_kept = true;
}
