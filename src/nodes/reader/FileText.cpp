#include "nodes/reader/FileText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <new>
#include <stdexcept>

namespace nodes {
namespace {

/// Closes a file descriptor at the end of its scope.
class OpenFile {
  public:
    // Not blocking, since to open a pipe waits for one who writes to it.
    explicit OpenFile(const char* path)
        : m_descriptor(path ? open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK) : -1) {}
    ~OpenFile() {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int descriptor() const { return m_descriptor; }

  private:
    int m_descriptor;
};

/// Reads what there is, which may have become more or less than SIZE by now.
bool readAll(int descriptor, std::size_t size, std::string& text) {
    constexpr std::size_t kMore = 64 * 1024;
    std::size_t length = 0;
    text.resize(size + 1);
    for (;;) {
        const ssize_t got = read(descriptor, text.data() + length, text.size() - length);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            text.resize(length);
            return got == 0;
        }
        length += static_cast<std::size_t>(got);
        if (length == text.size()) {
            text.resize(length + kMore);
        }
    }
}

}  // namespace

bool isPlainFile(const char* path) {
    struct stat status {};
    return path && stat(path, &status) == 0 && S_ISREG(status.st_mode);
}

FileStatus readFileText(const char* path, std::string& text) {
    const OpenFile file(path);
    if (file.descriptor() < 0) {
        return FileStatus::kCannotOpen;
    }
    struct stat status {};
    if (fstat(file.descriptor(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return FileStatus::kCannotRead;
    }
    try {
        return readAll(file.descriptor(), static_cast<std::size_t>(status.st_size), text)
                   ? FileStatus::kRead
                   : FileStatus::kCannotRead;
    } catch (const std::bad_alloc&) {
        return FileStatus::kNoMemory;
    } catch (const std::length_error&) {
        return FileStatus::kNoMemory;
    }
}

}  // namespace nodes
