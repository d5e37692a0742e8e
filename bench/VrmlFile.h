#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace bench {

/// A VRML97 world of about 50 MB as CAD programs export them: 50 assemblies of parts that are
/// triangulated, 500,000 points and 950,000 triangles in all, in 2,000 Transforms with names;
/// materials and screws are defined once and used. The same file each time, in a folder of its own
/// for as long as the object stands.
class VrmlFile {
  public:
    static constexpr int kTransforms = 2000;
    static constexpr int kPoints = 500000;
    static constexpr int kTriangles = 950000;

    VrmlFile();
    ~VrmlFile();
    VrmlFile(const VrmlFile&) = delete;
    VrmlFile& operator=(const VrmlFile&) = delete;

    const std::string& Path() const { return m_path; }
    std::size_t Size() const { return m_size; }

  private:
    std::filesystem::path m_folder;
    std::string m_path;
    std::size_t m_size;
};

}  // namespace bench
