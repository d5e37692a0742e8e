#include "scenefiles/xml/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace xml {

namespace {

// A pipe without a writer must not hold up the open, nor a terminal become the host's.
constexpr int kOpenFlags = O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;

std::string SystemReason(int code) {
    return "The file cannot be read (" + std::generic_category().message(code) + ").";
}

bool IsPlainName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of("/\\:") == std::string::npos;
}

}  // namespace

std::string InputFile::Open(const std::string& path) {
    Close();
    m_descriptor = open(path.c_str(), kOpenFlags);
    return Check();
}

std::string InputFile::OpenBeside(const std::string& neighbour, const std::string& name) {
    Close();
    if (!IsPlainName(name)) {
        return "The name is not that of a file in the document's own folder.";
    }
    const std::string folder = neighbour.substr(0, neighbour.find_last_of('/') + 1);
    m_descriptor = open((folder + name).c_str(), kOpenFlags | O_NOFOLLOW);
    if (m_descriptor < 0 && errno == ELOOP) {
        return "The file is a symbolic link.";
    }
    return Check();
}

std::string InputFile::Check() {
    if (m_descriptor < 0) {
        return SystemReason(errno);
    }
    struct stat status = {};
    if (fstat(m_descriptor, &status) != 0) {
        return SystemReason(errno);
    }
    return S_ISREG(status.st_mode) ? "" : "It is not a regular file.";
}

void InputFile::Close() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
        m_descriptor = -1;
    }
}

long InputFile::Read(char* buffer, size_t size) {
    ssize_t got = -1;
    do {
        got = read(m_descriptor, buffer, size);
    } while (got < 0 && errno == EINTR);
    return static_cast<long>(got);
}

}  // namespace xml
