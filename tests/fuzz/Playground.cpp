#include "Playground.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

const CPlayground& CPlayground::Get() {
    static const CPlayground playground;
    return playground;
}

CPlayground::CPlayground() {
    std::string pattern = std::filesystem::temp_directory_path() / "kestrane-fuzz-XXXXXX";
    if (!mkdtemp(pattern.data())) {
        std::perror(pattern.c_str());
        std::abort();
    }
    m_folder = pattern;
    setenv("XDG_CONFIG_HOME", m_folder.c_str(), 1);

    const std::filesystem::path example = KESTRANE_EXAMPLE_SCENE;
    for (const auto& file : std::filesystem::directory_iterator(example.parent_path())) {
        if (file.path().extension() == ".xml" || file.path().extension() == ".dtd") {
            std::filesystem::copy_file(file.path(), m_folder / file.path().filename());
        }
    }
    Write("broken.xml", "<?xml version=\"1.0\"?>\n<scene><group></scene>");
    Write("empty.xml", "");
    Write("world.wrl", "#VRML V2.0 utf8\nShape {}\n");
    m_sceneNames = {PathOf(example.filename()), PathOf("broken.xml"),
                    PathOf("empty.xml"),        PathOf("world.wrl"),
                    PathOf("none.xml"),         m_folder,
                    std::string(5000, 'x'),     ""};
}

CPlayground::~CPlayground() {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

void CPlayground::Write(const char* name, const std::string& text) const {
    std::ofstream(m_folder / name, std::ios::binary) << text;
}
