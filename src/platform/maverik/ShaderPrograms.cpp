#include "platform/maverik/ShaderPrograms.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <functional>

namespace {

constexpr const char* kVertexSource = R"(
layout(location = 0) in vec3 position;
#ifdef INSTANCED
layout(location = 3) in vec4 row0;
layout(location = 4) in vec4 row1;
layout(location = 5) in vec4 row2;
layout(location = 6) in vec4 instanceColour;
layout(location = 7) in vec4 tiles;
#else
uniform vec4 instance[5];
#define row0 instance[0]
#define row1 instance[1]
#define row2 instance[2]
#define instanceColour instance[3]
#define tiles instance[4]
#endif
uniform mat4 projection;
flat out vec4 colour;
#ifdef NEEDS_EYE
out vec3 eyePosition;
#endif
#ifdef SMOOTH
layout(location = 1) in vec3 normal;
out vec3 eyeNormal;
#endif
#ifdef TEXTURED
layout(location = 2) in vec2 texCoord;
out vec2 texel;
#endif

void main() {
    vec4 p = vec4(position, 1.0);
    vec3 eye = vec3(dot(row0, p), dot(row1, p), dot(row2, p));
    gl_Position = projection * vec4(eye, 1.0);
    colour = instanceColour;
#ifdef NEEDS_EYE
    eyePosition = eye;
#endif
#ifdef SMOOTH
    // The cofactors are the inverse transpose but for a factor, and exist where that does not.
    vec3 x = row0.xyz * tiles.z, y = row1.xyz * tiles.z, z = row2.xyz * tiles.z;
    vec3 n = vec3(dot(cross(y, z), normal), dot(cross(z, x), normal), dot(cross(x, y), normal));
    eyeNormal = n * (tiles.w * inversesqrt(max(dot(n, n), 1e-30)));
#endif
#ifdef TEXTURED
    // The rows of images go downwards.
    texel = vec2(texCoord.x * tiles.x, 1.0 - texCoord.y * tiles.y);
#endif
}
)";

constexpr const char* kFragmentSource = R"(
flat in vec4 colour;
out vec4 result;
#ifdef NEEDS_EYE
in vec3 eyePosition;
#endif
#ifdef FOG
uniform vec3 fogColour;
uniform vec2 fogRange;
#endif
#ifdef TEXTURED
uniform sampler2D image;
in vec2 texel;
#endif

vec3 Unit(vec3 v) {
    return v * inversesqrt(max(dot(v, v), 1e-30));
}

#ifdef LIT
uniform vec3 ambient;
#ifdef SMOOTH
in vec3 eyeNormal;
#endif
#ifdef HEADLIGHT
uniform vec3 headDiffuse;
uniform vec3 headSpecular;
#endif
#if LIGHTS > 0
uniform vec3 lightPosition[LIGHTS];
uniform vec3 lightDiffuse[LIGHTS];
#endif
#if SPECULAR_LIGHTS > 0
uniform vec3 lightSpecular[SPECULAR_LIGHTS];
#endif
#ifdef SHINING
uniform vec3 specular;
uniform float shininess;

float Shine(vec3 n, vec3 between) {
    return pow(max(dot(n, between), 1e-6), shininess);
}
#endif

vec3 Normal() {
#ifdef SMOOTH
    return Unit(gl_FrontFacing ? eyeNormal : -eyeNormal);
#else
    vec3 n = Unit(cross(dFdx(eyePosition), dFdy(eyePosition)));
#ifdef ORTHOGONAL
    return n.z < 0.0 ? -n : n;
#else
    return dot(n, eyePosition) > 0.0 ? -n : n;
#endif
#endif
}

vec3 Lit(vec3 material) {
    vec3 n = Normal();
    vec3 fromEye = Unit(-eyePosition);
#ifdef ORTHOGONAL
    vec3 toEye = vec3(0.0, 0.0, 1.0);
#else
    vec3 toEye = fromEye;
#endif
    vec3 diffuse = vec3(0.0);
    vec3 shine = vec3(0.0);
#ifdef HEADLIGHT
    float ahead = max(dot(n, fromEye), 0.0);
    diffuse += ahead * headDiffuse;
#ifdef SHINING
    shine += (ahead > 0.0 ? Shine(n, Unit(fromEye + toEye)) : 0.0) * headSpecular;
#endif
#endif
#if SPECULAR_LIGHTS > 0
    for (int i = 0; i < SPECULAR_LIGHTS; ++i) {
        vec3 toLight = Unit(lightPosition[i] - eyePosition);
        float facing = dot(n, toLight);
        diffuse += max(facing, 0.0) * lightDiffuse[i];
        shine += (facing > 0.0 ? Shine(n, Unit(toLight + toEye)) : 0.0) * lightSpecular[i];
    }
#endif
#if LIGHTS > SPECULAR_LIGHTS
    float even = 0.0;
    for (int i = SPECULAR_LIGHTS; i < LIGHTS; ++i) {
        vec3 toLight = lightPosition[i] - eyePosition;
        float facing = dot(n, toLight) * inversesqrt(max(dot(toLight, toLight), 1e-30));
#ifdef EVEN
        even += max(facing, 0.0);
#else
        diffuse += max(facing, 0.0) * lightDiffuse[i];
#endif
    }
    diffuse += even * lightDiffuse[SPECULAR_LIGHTS];
#endif
    vec3 sum = ambient + diffuse * material;
#ifdef SHINING
    sum += shine * specular;
#endif
    return min(sum, 1.0);
}
#endif

void main() {
    vec3 rgb = colour.rgb;
#ifdef LIT
    rgb = Lit(rgb);
#endif
#ifdef TEXTURED
    rgb *= texture(image, texel).rgb;
#endif
#ifdef FOG
    float thickness = (length(eyePosition) - fogRange.x) * fogRange.y;
    rgb = mix(rgb, fogColour, clamp(thickness, 0.0, 1.0));
#endif
    result = vec4(rgb, colour.a);
}
)";

std::string Header(const ProgramKind& kind) {
    std::string text = "#version 330 core\n";
    const auto define = [&](bool on, const std::string& name) {
        if (on) {
            text += "#define " + name + "\n";
        }
    };
    define(kind.instanced, "INSTANCED");
    define(kind.lit, "LIT");
    define(kind.lit && kind.smooth, "SMOOTH");
    define(kind.headlight, "HEADLIGHT");
    define(kind.shining, "SHINING");
    define(kind.even, "EVEN");
    define(kind.textured, "TEXTURED");
    define(kind.fog, "FOG");
    define(kind.fog || kind.lit, "NEEDS_EYE");
    define(kind.orthogonal, "ORTHOGONAL");
    define(true, "LIGHTS " + std::to_string(kind.lights));
    define(true, "SPECULAR_LIGHTS " + std::to_string(kind.specularLights));
    return text;
}

/// A shader that lives until the program that it is attached to has been linked.
class Shader {
  public:
    Shader(GLenum type, const std::string& source) : m_name(glCreateShader(type)) {
        const char* const text = source.c_str();
        glShaderSource(m_name, 1, &text, nullptr);
        glCompileShader(m_name);
    }
    ~Shader() { glDeleteShader(m_name); }
    Shader(const Shader&) = delete;
    Shader& operator=(const Shader&) = delete;
    GLuint Name() const noexcept { return m_name; }

  private:
    GLuint m_name;
};

std::string LinkLog(GLuint program) {
    std::string log(1000, '\0');
    GLsizei length = 0;
    glGetProgramInfoLog(program, static_cast<GLsizei>(log.size()), &length, log.data());
    log.resize(static_cast<std::size_t>(std::max(length, 0)));
    return log;
}

GLuint Link(const std::string& vertexSource, const std::string& fragmentSource) {
    const Shader vertex(GL_VERTEX_SHADER, vertexSource);
    const Shader fragment(GL_FRAGMENT_SHADER, fragmentSource);
    const GLuint program = glCreateProgram();
    glAttachShader(program, vertex.Name());
    glAttachShader(program, fragment.Name());
    glLinkProgram(program);
    GLint linked = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (linked != GL_TRUE) {
        const std::string log = LinkLog(program);
        glDeleteProgram(program);
        throw RendererFailure("a shader program was refused: " + log);
    }
    return program;
}

std::array<float, 3> Rgb(const MAV_colour& c) noexcept {
    return {c.r, c.g, c.b};
}

bool IsBlack(const MAV_colour& c) noexcept {
    return c.r == 0 && c.g == 0 && c.b == 0;
}

void SetVectors(GLint location, const std::vector<std::array<float, 3>>& vectors, int count) {
    if (location >= 0 && count > 0) {
        glUniform3fv(location, count, vectors.front().data());
    }
}

}  // namespace

std::uint32_t ProgramKind::Pack() const noexcept {
    std::uint32_t bits = 0;
    for (const bool flag :
         {instanced, lit, smooth, textured, fog, orthogonal, headlight, shining, even}) {
        bits = bits << 1 | (flag ? 1u : 0u);
    }
    return bits << 16 | static_cast<std::uint32_t>(lights) << 8 |
           static_cast<std::uint32_t>(specularLights);
}

void LightSet::Take(const std::vector<MAV_light>& all, const MAV_matrix& view) {
    // What shaders have room for everywhere.
    constexpr std::size_t kMost = 32;
    positions.clear();
    diffuse.clear();
    specular.clear();
    ambient = headDiffuse = headSpecular = {0, 0, 0};
    headlight = even = false;
    specularCount = 0;
    for (const bool shining : {true, false}) {
        for (const MAV_light& light : all) {
            if (IsBlack(light.specular) == shining ||
                (IsBlack(light.specular) && IsBlack(light.diffuse)) || positions.size() == kMost) {
                continue;
            }
            const MAV_vector& p = light.position;
            if (!headlight && light.withEye && p == MAV_vector{0, 0, 0}) {
                headlight = true;
                headDiffuse = Rgb(light.diffuse);
                headSpecular = Rgb(light.specular);
                continue;
            }
            const auto row = [&](std::size_t i) {
                return view[i] * p.x + view[i + 1] * p.y + view[i + 2] * p.z + view[i + 3];
            };
            positions.push_back(light.withEye ? std::array{p.x, p.y, p.z}
                                              : std::array{row(0), row(4), row(8)});
            diffuse.push_back(Rgb(light.diffuse));
            specular.push_back(Rgb(light.specular));
            specularCount += shining ? 1 : 0;
        }
    }
    const auto firstMatt = diffuse.begin() + specularCount;
    even = std::adjacent_find(firstMatt, diffuse.end(), std::not_equal_to<>()) == diffuse.end();
    for (const MAV_light& light : all) {
        const std::array<float, 3> rgb = Rgb(light.ambient);
        for (std::size_t i = 0; i < 3; ++i) {
            ambient[i] += rgb[i];
        }
    }
}

ShaderProgram::ShaderProgram(const ProgramKind& kind)
    : m_kind(kind),
      m_program(Link(Header(kind) + kVertexSource, Header(kind) + kFragmentSource)),
      m_instance(Location("instance")),
      m_ambient(Location("ambient")),
      m_specular(Location("specular")),
      m_shininess(Location("shininess")) {}

ShaderProgram::ShaderProgram(const char* vertexSource, const char* fragmentSource)
    : m_program(Link(vertexSource, fragmentSource)), m_colour(Location("colour")) {}

ShaderProgram::~ShaderProgram() {
    glDeleteProgram(m_program);
}

int ShaderProgram::Location(const char* name) const {
    return glGetUniformLocation(m_program, name);
}

void ShaderProgram::Use() const {
    glUseProgram(m_program);
}

void ShaderProgram::SetFrame(const ViewSetup& setup, const LightSet& lights) const {
    glUniformMatrix4fv(Location("projection"), 1, GL_TRUE, setup.projection.mat.data());
    if (m_kind.lit) {
        glUniform3fv(Location("headDiffuse"), 1, lights.headDiffuse.data());
        glUniform3fv(Location("headSpecular"), 1, lights.headSpecular.data());
        SetVectors(Location("lightPosition"), lights.positions, m_kind.lights);
        SetVectors(Location("lightDiffuse"), lights.diffuse, m_kind.lights);
        SetVectors(Location("lightSpecular"), lights.specular, m_kind.specularLights);
    }
    if (m_kind.fog) {
        constexpr float kAtOnce = 1e30f;
        const float depth = setup.fogEnd - setup.fogStart;
        glUniform3f(Location("fogColour"), setup.fogColour.r, setup.fogColour.g, setup.fogColour.b);
        glUniform2f(Location("fogRange"), setup.fogStart, depth > 0 ? 1 / depth : kAtOnce);
    }
    if (m_kind.textured) {
        glUniform1i(Location("image"), 0);
    }
}

void ShaderProgram::SetFinish(const Finish& of, const std::array<float, 3>& ambient) const {
    if (!m_kind.lit) {
        return;
    }
    std::array<float, 3> constant;
    for (std::size_t i = 0; i < 3; ++i) {
        constant[i] = of.ambient[i] * ambient[i] + of.emission[i];
    }
    glUniform3fv(m_ambient, 1, constant.data());
    glUniform3fv(m_specular, 1, of.specular.data());
    glUniform1f(m_shininess, std::clamp(of.shininess, 0.0f, 1000.0f));
}

void ShaderProgram::SetInstance(const FrameInstance& instance) const {
    glUniform4fv(m_instance, 5, instance.toEye.data());
}

void ShaderProgram::SetColour(const MAV_colour& colour) const {
    glUniform4f(m_colour, colour.r, colour.g, colour.b, colour.a);
}

ShaderProgram* ShaderPrograms::Get(const ProgramKind& kind) {
    const auto [found, isNew] = m_programs.try_emplace(kind.Pack());
    if (isNew) {
        try {
            found->second = std::make_unique<ShaderProgram>(kind);
        } catch (const RendererFailure&) {
            // Stays null: tried once, not in every frame.
        }
    }
    return found->second.get();
}
