// Reads each input as a world, once as plain text and once packed by gzip, writes what was read in
// both forms, and reads that again. What must hold: no crash, no leak, the same answer for both
// files, and a reason where it is no.

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "nodes/SceneGraph.h"
#include "nodes/reader/VrmlReader.h"
#include "nodes/writer/GzFile.h"

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// A file in memory that has a path.
class MemoryFile {
  public:
    MemoryFile() : m_descriptor(memfd_create("world", MFD_CLOEXEC)) {
        require(m_descriptor >= 0);
        m_path = "/proc/self/fd/" + std::to_string(m_descriptor);
    }
    ~MemoryFile() { close(m_descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    const char* path() const { return m_path.c_str(); }
    void write(std::string_view text) {
        require(ftruncate(m_descriptor, 0) == 0);
        const auto length = static_cast<ssize_t>(text.size());
        require(pwrite(m_descriptor, text.data(), text.size(), 0) == length);
    }
    void pack(std::string_view text) {
        nodes::GzFile file;
        file.level = 1;
        require(file.open(path(), nodes::GzFile::kWrite) && file.writeText(text) && file.close());
    }

  private:
    int m_descriptor;
    std::string m_path;
};

/// The world in FILE, and what becomes of it on the way out and in again.
bool readAndWrite(const MemoryFile& file, bool callInitialise) {
    nodes::SceneGraph world;
    if (!world.read(file.path(), callInitialise, nullptr, nullptr)) {
        require(world.firstNode() == nullptr && !world.loaded());
        return false;
    }
    const MemoryFile written;
    require(world.saveXml(written.path(), nullptr, nullptr));
    require(world.saveVrml(written.path(), nullptr, nullptr));
    world.load(written.path(), true, nullptr, nullptr);
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    nodes::ReadError error;
    nodes::VrmlReader reader;
    reader.setErrorTarget(error);
    const bool isRead = reader.readText(std::string(text), nullptr, nullptr);
    require(isRead == error.message.empty());
    require(isRead || reader.tree().firstNode() == nullptr);

    MemoryFile file;
    file.write(text);
    const bool isFileRead = readAndWrite(file, size % 2 == 0);
    // A file that is packed already is no world by its text.
    if (text.starts_with("#VRML")) {
        require(isFileRead || !isRead || size % 2 == 0);
        file.pack(text);
        require(readAndWrite(file, size % 2 == 0) == isFileRead);
    }
    return 0;
}
