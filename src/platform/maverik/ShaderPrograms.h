#pragma once

/// The programs of the renderer, one for each combination of what it has to do, so that none does
/// more; compiled when first used.

#include <array>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/maverik/FrameContentsData.h"

/// What a program has to do. Its vertices are at attribute 0, normals at 1, texture coordinates at
/// 2, and the rows of a FrameInstance from 3 on.
struct ProgramKind {
    bool instanced = false;  ///< the FrameInstance comes from a buffer, else from a uniform
    bool lit = false;
    bool smooth = false;  ///< the normals are those of the vertices, else those of the triangles
    bool textured = false;
    bool fog = false;
    bool orthogonal = false;
    bool headlight = false;  ///< there is a light at the eye, beside the others
    bool shining = false;    ///< there is a specular term at all
    bool even = false;       ///< the lights that are not specular are of one colour
    int lights = 0;
    int specularLights = 0;  ///< the first of the lights

    std::uint32_t Pack() const noexcept;
};

/// Lights as the shaders take them, in eye coordinates; those that shine specularly come first, and
/// those that only add to the ambient light are not there.
struct LightSet {
    std::vector<std::array<float, 3>> positions, diffuse, specular;
    std::array<float, 3> ambient = {0, 0, 0};
    int specularCount = 0;
    /// The first light at the eye itself needs no vector of its own, and is not among the others.
    bool headlight = false;
    std::array<float, 3> headDiffuse = {0, 0, 0}, headSpecular = {0, 0, 0};
    bool even = false;  ///< those behind the specular ones are of one colour

    int Count() const noexcept { return static_cast<int>(positions.size()); }
    void Take(const std::vector<MAV_light>& lights, const MAV_matrix& view);
};

class ShaderProgram {
  public:
    /// Throws RendererFailure.
    explicit ShaderProgram(const ProgramKind& kind);
    ShaderProgram(const char* vertexSource, const char* fragmentSource);
    ~ShaderProgram();
    ShaderProgram(const ShaderProgram&) = delete;
    ShaderProgram& operator=(const ShaderProgram&) = delete;

    void Use() const;
    /// What holds for a whole frame; the program is in use.
    void SetFrame(const ViewSetup& setup, const LightSet& lights) const;
    void SetFinish(const Finish& of, const std::array<float, 3>& ambient) const;
    void SetInstance(const FrameInstance& instance) const;
    void SetColour(const MAV_colour& colour) const;

    /// The frame, and finish, that were set last.
    unsigned long frame = 0;
    std::uint32_t finish = 0;

  private:
    int Location(const char* name) const;

    ProgramKind m_kind;
    unsigned int m_program = 0;
    int m_instance = -1, m_ambient = -1, m_specular = -1, m_shininess = -1, m_colour = -1;
};

/// The programs by what they do.
class ShaderPrograms {
  public:
    /// Null if the driver does not take the program.
    ShaderProgram* Get(const ProgramKind& kind);

  private:
    std::unordered_map<std::uint32_t, std::unique_ptr<ShaderProgram>> m_programs;
};
