#include "VrmlFile.h"

#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <numbers>

#include "tests/solid/accuracy/Random.h"

namespace bench {

namespace {

constexpr int kAssemblies = 50;
constexpr int kParts = 25;   // of an assembly, each a mesh of its own
constexpr int kScrews = 14;  // of an assembly, all the same
constexpr int kMaterials = 12;
// A part is a dented ball of so many rings around it, open at its ends.
constexpr int kRings = 20;
constexpr int kSegments = 20;

static_assert(kAssemblies * (1 + kParts + kScrews) == VrmlFile::kTransforms);
static_assert(kAssemblies * kParts * kRings * kSegments == VrmlFile::kPoints);
static_assert(kAssemblies * kParts * (kRings - 1) * kSegments * 2 == VrmlFile::kTriangles);

class Writer {
  public:
    explicit Writer(const std::string& path) : m_out(path, std::ios::binary) {}

    void WriteWorld() {
        m_out << "#VRML V2.0 utf8\n# Exported assembly, millimetres\n"
                 "WorldInfo { title \"Assembly\" }\n"
                 "NavigationInfo { type [ \"EXAMINE\", \"ANY\" ] }\n"
                 "Viewpoint { position 0 0 5000 description \"Front\" }\n";
        for (int assembly = 0; assembly < kAssemblies; ++assembly) {
            m_out << "DEF Assembly_" << assembly << " Transform {\n";
            WritePlace("\t", 2000);
            m_out << "\tchildren [\n";
            for (int part = 0; part < kParts; ++part) {
                WritePart(assembly * kParts + part);
            }
            for (int screw = 0; screw < kScrews; ++screw) {
                WriteScrew(assembly * kScrews + screw);
            }
            m_out << "\t]\n}\n";
        }
    }

  private:
    using Numbers = std::array<double, 3>;

    double Between(double least, double most) { return m_random.Uniform(least, most); }
    Numbers ThreeBetween(double least, double most) {
        Numbers numbers{};
        for (double& number : numbers) {
            number = Between(least, most);
        }
        return numbers;
    }

    void WritePlace(const char* indent, double reach) {
        const Numbers at = ThreeBetween(-reach, reach);
        const Numbers axis = ThreeBetween(-1, 1);
        Print("%stranslation %.6g %.6g %.6g\n", indent, at[0], at[1], at[2]);
        Print("%srotation %.6g %.6g %.6g %.6g\n", indent, axis[0], axis[1], axis[2],
              Between(0, 2 * std::numbers::pi));
    }

    void WriteAppearance(int material) {
        if (material >= m_materials) {
            m_materials = material + 1;
            Print("\t\t\t\tappearance DEF Paint_%d Appearance {\n", material);
            const Numbers color = ThreeBetween(0, 1);
            Print("\t\t\t\t\tmaterial Material { diffuseColor %.3f %.3f %.3f shininess 0.5 }\n",
                  color[0], color[1], color[2]);
            m_out << "\t\t\t\t}\n";
        } else {
            Print("\t\t\t\tappearance USE Paint_%d\n", material);
        }
    }

    void WritePart(int part) {
        Print("\t\tDEF Part_%d Transform {\n", part);
        WritePlace("\t\t\t", 500);
        m_out << "\t\t\tchildren Shape {\n";
        WriteAppearance(part % kMaterials);
        m_out << "\t\t\t\tgeometry IndexedFaceSet {\n\t\t\t\t\tcreaseAngle 0.5\n"
                 "\t\t\t\t\tcoord Coordinate {\n\t\t\t\t\t\tpoint [\n";
        const double size = Between(10, 200);
        for (int ring = 0; ring < kRings; ++ring) {
            const double polar = std::numbers::pi * (ring + 0.5) / kRings;
            for (int segment = 0; segment < kSegments; ++segment) {
                const double around = 2 * std::numbers::pi * segment / kSegments;
                const double radius = size * Between(0.97, 1.03);
                Print("\t\t\t\t\t\t\t%.11g %.11g %.11g,\n",
                      radius * std::sin(polar) * std::cos(around), radius * std::cos(polar),
                      radius * std::sin(polar) * std::sin(around));
            }
        }
        m_out << "\t\t\t\t\t\t]\n\t\t\t\t\t}\n\t\t\t\t\tcoordIndex [\n";
        for (int ring = 0; ring + 1 < kRings; ++ring) {
            for (int segment = 0; segment < kSegments; ++segment) {
                const int a = ring * kSegments + segment;
                const int b = ring * kSegments + (segment + 1) % kSegments;
                Print("\t\t\t\t\t\t\t\t%d, %d, %d, -1,\n", a, b, a + kSegments);
                Print("\t\t\t\t\t\t\t\t%d, %d, %d, -1,\n", b, b + kSegments, a + kSegments);
            }
        }
        m_out << "\t\t\t\t\t]\n\t\t\t\t}\n\t\t\t}\n\t\t}\n";
    }

    void WriteScrew(int screw) {
        Print("\t\tDEF Screw_%d Transform {\n", screw);
        WritePlace("\t\t\t", 500);
        if (screw == 0) {
            m_out << "\t\t\tchildren DEF M8 Shape {\n";
            WriteAppearance(0);
            m_out << "\t\t\t\tgeometry Cylinder { radius 4 height 25 }\n\t\t\t}\n";
        } else {
            m_out << "\t\t\tchildren USE M8\n";
        }
        m_out << "\t\t}\n";
    }

    template <class... Value>
    void Print(const char* format, Value... values) {
        const int length = std::snprintf(m_line.data(), m_line.size(), format, values...);
        m_out.write(m_line.data(), length);
    }

    std::ofstream m_out;
    oracle::Random m_random{97};
    std::array<char, 256> m_line{};
    int m_materials = 0;
};

}  // namespace

VrmlFile::VrmlFile()
    : m_folder(std::filesystem::temp_directory_path() /
               ("kestrane_bench_vrml_" + std::to_string(getpid()))),
      m_path((m_folder / "assembly.wrl").string()) {
    std::filesystem::create_directories(m_folder);
    Writer(m_path).WriteWorld();
    m_size = std::filesystem::file_size(m_path);
}

VrmlFile::~VrmlFile() {
    std::error_code error;
    std::filesystem::remove_all(m_folder, error);
}

}  // namespace bench
