// Loads each input as a scene file with the DTD beside it. What must hold: no crash, no leak, a
// code of the table, a text where the file is at fault, and a library that can be ended and started
// again.

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "kestrane.h"

namespace {

/// A folder in memory, if the system has one for that, with a copy of the DTD.
class SceneFolder {
  public:
    SceneFolder() {
        std::error_code error;
        const std::filesystem::path memory = "/dev/shm";
        std::string pattern = ((std::filesystem::is_directory(memory, error)
                                    ? memory
                                    : std::filesystem::temp_directory_path()) /
                               "fuzz_xml_XXXXXX")
                                  .string();
        if (mkdtemp(pattern.data()) == nullptr) {
            std::abort();
        }
        m_folder = pattern;
        const std::filesystem::path sources =
            std::filesystem::path(__FILE__).parent_path() / "../..";
        std::filesystem::copy_file(sources / "src/scenefiles/kestrane.dtd",
                                   m_folder / "kestrane.dtd");
    }
    ~SceneFolder() {
        std::error_code error;
        std::filesystem::remove_all(m_folder, error);
    }
    SceneFolder(const SceneFolder&) = delete;
    SceneFolder& operator=(const SceneFolder&) = delete;

    std::string Write(const uint8_t* data, size_t size) const {
        std::string path = (m_folder / "scene.xml").string();
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size)) {
            std::abort();
        }
        close(file);
        return path;
    }

  private:
    std::filesystem::path m_folder;
};

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const SceneFolder folder;
    const std::string path = folder.Write(data, size);
    Require(KST_Initialisation(false, false, false) == KST_OK);
    int group = -1;
    Require(KST_CreateGroup(&group, 0, true, "fuzz", true) == KST_OK);
    char* text = nullptr;
    const int status = KST_LoadScene(path.c_str(), group, &text);
    Require(status <= KST_OK && status >= KST_ERROR_ANIMATED);
    Require(text != nullptr && (status != KST_ERROR_FILE || text[0] != '\0'));
    KST_SetTime(1.5f);
    int count = 0;
    KST_CheckPointCollision(group, 0.0f, 0.0f, 0.0f, true, &count);
    Require(KST_End() == KST_OK);
    return 0;
}
