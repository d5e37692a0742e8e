/// W12: frames of 10,000 shapes and of a mesh of 1,000,000 triangles, beside OpenSceneGraph.
///
/// Benchmarks: "W12/SCENE/LIBRARY"; one iteration is one frame of 1000 x 800 pixels, shown, and
/// waited for by reading a pixel back. Both libraries draw with the context that SDL makes for
/// them. The counter "covered" is the part of the picture that is not background, "processor" the
/// time of all threads for a frame, in seconds.

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#include <SDL2/SDL.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "platform/maverik/MeshBuilder.h"
#include "platform/maverik/Windows.h"

#ifdef BENCH_OSG
#include <osg/Geometry>
#include <osg/LightSource>
#include <osg/Material>
#include <osg/MatrixTransform>
#include <osgViewer/Viewer>
#endif

namespace {

constexpr int kWidth = 1000, kHeight = 800;
constexpr double kDistance = 95, kFieldOfView = 60;
constexpr int kColumns = 125, kRows = 80;
constexpr float kSize = 0.5F;  // of the shapes beside the unit shapes
constexpr int kSides = 25;
constexpr int kMeshAround = 1000, kMeshAcross = 500;
constexpr int kLightsOfOurs = 14, kLightsOfPeer = 8;

constexpr std::array<UnitShape, 4> kShapes = {{
    {mav_class_sphere, kSides, kSides, false, 0, 0},
    {mav_class_cylinder, kSides, 0, true, 1, 1},
    {mav_class_cone, kSides, 0, true, 0, 1},
    {mav_class_box, 0, 0, false, 0, 0},
}};
constexpr std::array<MAV_colour, 4> kDiffuse = {{
    {0.8F, 0.2F, 0.2F, 1},
    {0.2F, 0.8F, 0.2F, 1},
    {0.2F, 0.2F, 0.8F, 1},
    {0.8F, 0.8F, 0.2F, 1},
}};
constexpr MAV_colour kBlack = {0, 0, 0, 1}, kWhite = {1, 1, 1, 1}, kDim = {0.1F, 0.1F, 0.1F, 1};

/// Light 0 goes with the eye; the others stand around the scene and do not shine.
MAV_vector LightPosition(int index) {
    const double angle = 2 * std::numbers::pi * index / kLightsOfOurs;
    return {static_cast<float>(150 * std::cos(angle)), index % 2 == 0 ? 80.0F : -80.0F,
            static_cast<float>(150 * std::sin(angle))};
}

/// The camera goes to and fro on an arc about the middle of the scene.
double CameraAngle(int frame) {
    return 0.3 * std::sin(0.05 * frame);
}

/// Placements of the shapes: turned at random, in rows.
const std::vector<MAV_matrix>& Placements() {
    static const std::vector<MAV_matrix> placements = [] {
        std::vector<MAV_matrix> made;
        std::mt19937 random(12);
        std::uniform_real_distribution<float> turn(-180, 180), depth(-5, 5);
        for (int i = 0; i < kColumns * kRows; ++i) {
            const float roll = turn(random), pitch = turn(random), yaw = turn(random);
            const auto x = static_cast<float>(i % kColumns) - 0.5F * (kColumns - 1);
            const auto y = static_cast<float>(i / kColumns) - 0.5F * (kRows - 1);
            made.push_back(mav_matrixXYZSet(mav_matrixRPYSet(MAV_ID_MATRIX, roll, pitch, yaw),
                                            {x, y, depth(random)}));
        }
        return made;
    }();
    return placements;
}

/// A torus, three vertices and one normal for each triangle.
struct Torus {
    std::vector<MAV_vector> vertices, normals;

    Torus() {
        for (int i = 0; i < kMeshAround; ++i) {
            for (int j = 0; j < kMeshAcross; ++j) {
                Add(At(i, j), At(i + 1, j), At(i + 1, j + 1));
                Add(At(i, j), At(i + 1, j + 1), At(i, j + 1));
            }
        }
    }

  private:
    static MAV_vector At(int i, int j) {
        const double u = 2 * std::numbers::pi * (i % kMeshAround) / kMeshAround;
        const double v = 2 * std::numbers::pi * (j % kMeshAcross) / kMeshAcross;
        const double radius = 30 + 12 * std::cos(v);
        return {static_cast<float>(radius * std::cos(u)), static_cast<float>(radius * std::sin(u)),
                static_cast<float>(12 * std::sin(v))};
    }

    void Add(const MAV_vector& a, const MAV_vector& b, const MAV_vector& c) {
        vertices.insert(vertices.end(), {a, b, c});
        normals.push_back(
            mav_vectorNormalize(mav_vectorCrossProduct(mav_vectorSub(b, a), mav_vectorSub(c, a))));
    }
};

const Torus& TheTorus() {
    static const Torus torus;
    return torus;
}

/// Waits until the frame is drawn.
void Await() {
    std::array<GLubyte, 4> pixel{};
    glReadPixels(kWidth / 2, kHeight / 2, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel.data());
    glFinish();
    benchmark::DoNotOptimize(pixel);
}

double Covered(const std::vector<std::uint8_t>& rgb) {
    std::size_t count = 0;
    for (std::size_t i = 0; i + 2 < rgb.size(); i += 3) {
        count += rgb[i] != 255 || rgb[i + 1] != 0 || rgb[i + 2] != 255 ? 1 : 0;
    }
    return static_cast<double>(count) / (kWidth * kHeight);
}

/// A library that shows one of the scenes.
class Viewer {
  public:
    Viewer() = default;
    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;
    virtual ~Viewer() = default;
    /// What is in the way, or nothing.
    virtual std::string Start(bool mesh) = 0;
    virtual void Frame(double angle) = 0;
    virtual std::vector<std::uint8_t> Picture() = 0;
    /// What there is to object to in the frames that were drawn.
    virtual std::string Fault() { return {}; }
};

class Ours : public Viewer {
  public:
    ~Ours() override {
        for (MAV_object* const object : m_objects) {
            mav_objectDelete(object);
        }
        if (m_list != nullptr) {
            mav_SMSDelete(m_list);
        }
        if (m_started) {
            mav_shutdown();
        }
    }

    std::string Start(bool mesh) override {
        mav_opt_width = kWidth;
        mav_opt_height = kHeight;
        mav_opt_maxLights = kLightsOfOurs;
        int argc = 1;
        std::array<char, 6> name = {"bench"};
        std::array<char*, 2> argv = {name.data(), nullptr};
        m_started = mav_initialise(&argc, argv.data()) != MAV_start::kNone;
        if (!m_started) {
            return "no window";
        }
        mav_windowBackgroundColourSet(mav_win_current, 1, 0, 1);
        mav_windowViewParamsSet(mav_win_current, &m_camera);
        mav_windowPerspectiveSet(mav_win_current, 1, 1000, static_cast<float>(kFieldOfView),
                                 static_cast<float>(kWidth) / kHeight);
        SetPalette();
        m_list = mav_SMSObjListNew();
        mesh ? AddMesh() : AddShapes();
        return {};
    }

    void Frame(double angle) override {
        const auto s = static_cast<float>(std::sin(angle)), c = static_cast<float>(std::cos(angle));
        const auto distance = static_cast<float>(kDistance);
        m_camera = {{distance * s, 0, distance * c},
                    {-s, 0, -c},
                    {0, 1, 0},
                    {0, 1, 0},
                    {c, 0, -s},
                    nullptr};
        mav_frameBegin();
        mav_SMSDisplay(mav_win_current, m_list);
        mav_frameEnd();
        Await();
    }

    std::vector<std::uint8_t> Picture() override {
        Frame(0);
        return mav_windowImage(mav_win_current)->rgb;
    }

    /// Only frames of one sample a pixel are like those of the peer.
    std::string Fault() override {
        GLint most = 0;
        for (GLuint name = 1; name < 16; ++name) {
            if (glIsFramebuffer(name) == GL_TRUE) {
                GLint samples = 0;
                glBindFramebuffer(GL_FRAMEBUFFER, name);
                glGetIntegerv(GL_SAMPLES, &samples);
                most = std::max(most, samples);
            }
        }
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        return most > 1 ? "frames of several samples a pixel" : "";
    }

  private:
    void SetPalette() {
        MAV_palette& palette = *mav_palette_default;
        for (int i = 0; i < 4; ++i) {
            const MAV_colour& diffuse = kDiffuse[static_cast<std::size_t>(i)];
            mav_paletteMaterialSet(palette, i, {diffuse, diffuse, kWhite, kBlack, 30});
            m_surfaces[static_cast<std::size_t>(i)] = mav_surfaceParamsNew(MAV_MATERIAL, 0, i, 0);
        }
        mav_paletteLightSet(palette, 0, kBlack, kWhite, kWhite);
        mav_paletteLightPos(palette, 0, {0, 0, 0});
        mav_paletteLightPositioning(palette, 0, 0);
        for (int i = 1; i < kLightsOfOurs; ++i) {
            mav_paletteLightSet(palette, i, kBlack, kDim, kBlack);
            mav_paletteLightPos(palette, i, LightPosition(i));
            mav_paletteLightPositioning(palette, i, 1);
        }
    }

    void AddShapes() {
        const std::size_t each = Placements().size() / kShapes.size();
        m_spheres.reserve(each);
        m_cylinders.reserve(each);
        m_cones.reserve(each);
        m_boxes.reserve(each);
        for (std::size_t i = 0; i < Placements().size(); ++i) {
            const MAV_matrix& matrix = Placements()[i];
            const MAV_surfaceParams* const surface = &m_surfaces[i % 4];
            switch (kShapes[i % 4].shape) {
                case mav_class_sphere:
                    m_spheres.push_back({kSize, kSides, kSides, 1, 1, surface, matrix});
                    Add(mav_class_sphere, &m_spheres.back());
                    break;
                case mav_class_cylinder:
                    m_cylinders.push_back({kSize, kSize, kSides, 1, 1, 1, surface, matrix});
                    Add(mav_class_cylinder, &m_cylinders.back());
                    break;
                case mav_class_cone:
                    m_cones.push_back({0, kSize, kSize, kSides, 1, 1, 1, surface, matrix});
                    Add(mav_class_cone, &m_cones.back());
                    break;
                default:
                    m_boxes.push_back({kSize, kSize, kSize, 1, 1, surface, matrix});
                    Add(mav_class_box, &m_boxes.back());
            }
        }
    }

    void AddMesh() {
        const Torus& torus = TheTorus();
        m_mesh = {static_cast<int>(torus.normals.size()),
                  nullptr,
                  torus.normals.data(),
                  nullptr,
                  torus.vertices.data(),
                  m_surfaces.data(),
                  MAV_ID_MATRIX};
        Add(mav_class_polygonGrp, &m_mesh);
    }

    void Add(MAV_class shape, const void* record) {
        m_objects.push_back(mav_objectNew(shape, record));
        mav_SMSObjectAdd(m_list, m_objects.back());
    }

    bool m_started = false;
    MAV_viewParams m_camera{};
    std::array<MAV_surfaceParams, 4> m_surfaces{};
    std::vector<MAV_sphere> m_spheres;
    std::vector<MAV_cylinder> m_cylinders;
    std::vector<MAV_cone> m_cones;
    std::vector<MAV_box> m_boxes;
    MAV_polygonGrp m_mesh{};
    std::vector<MAV_object*> m_objects;
    MAV_SMS* m_list = nullptr;
};

#ifdef BENCH_OSG
osg::Vec4 ToOsg(const MAV_colour& c) {
    return {c.r, c.g, c.b, c.a};
}

class OpenSceneGraph : public Viewer {
  public:
    ~OpenSceneGraph() override {
        if (m_context != nullptr) {
            m_viewer->releaseGLObjects();
            m_viewer.reset();
            SDL_GL_DeleteContext(m_context);
            SDL_DestroyWindow(m_window);
        }
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
    }

    std::string Start(bool mesh) override {
        SDL_InitSubSystem(SDL_INIT_VIDEO);
        SDL_GL_ResetAttributes();
        SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, 24);
        m_window = SDL_CreateWindow("bench", 0, 0, kWidth, kHeight, SDL_WINDOW_OPENGL);
        m_context = m_window != nullptr ? SDL_GL_CreateContext(m_window) : nullptr;
        if (m_context == nullptr) {
            return SDL_GetError();
        }
        SDL_GL_SetSwapInterval(0);
        m_viewer = std::make_unique<osgViewer::Viewer>();
        m_viewer->setUpViewerAsEmbeddedInWindow(0, 0, kWidth, kHeight);
        m_viewer->setLightingMode(osg::View::NO_LIGHT);
        m_viewer->getCamera()->setClearColor({1, 0, 1, 1});
        m_viewer->getCamera()->setProjectionMatrixAsPerspective(
            kFieldOfView, static_cast<double>(kWidth) / kHeight, 1, 1000);
        const osg::ref_ptr<osg::Group> root = new osg::Group;
        AddLights(*root);
        mesh ? AddMesh(*root) : AddShapes(*root);
        m_viewer->setSceneData(root);
        return {};
    }

    void Frame(double angle) override {
        Draw(angle);
        SDL_GL_SwapWindow(m_window);
        Await();
    }

    std::vector<std::uint8_t> Picture() override {
        Draw(0);
        std::vector<std::uint8_t> rgb(std::size_t{kWidth} * kHeight * 3);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, kWidth, kHeight, GL_RGB, GL_UNSIGNED_BYTE, rgb.data());
        return rgb;
    }

  private:
    void Draw(double angle) {
        m_viewer->getCamera()->setViewMatrixAsLookAt(
            {kDistance * std::sin(angle), 0, kDistance * std::cos(angle)}, {0, 0, 0}, {0, 1, 0});
        m_viewer->frame();
    }

    static void AddLights(osg::Group& root) {
        for (int i = 0; i < kLightsOfPeer; ++i) {
            const osg::ref_ptr<osg::Light> light = new osg::Light(static_cast<unsigned int>(i));
            const MAV_vector at = i == 0 ? MAV_vector{0, 0, 0} : LightPosition(i);
            light->setPosition({at.x, at.y, at.z, 1});
            light->setAmbient(ToOsg(kBlack));
            light->setDiffuse(ToOsg(i == 0 ? kWhite : kDim));
            light->setSpecular(ToOsg(i == 0 ? kWhite : kBlack));
            const osg::ref_ptr<osg::LightSource> source = new osg::LightSource;
            source->setReferenceFrame(i == 0 ? osg::LightSource::ABSOLUTE_RF
                                             : osg::LightSource::RELATIVE_RF);
            source->setLight(light);
            source->setStateSetModes(*root.getOrCreateStateSet(), osg::StateAttribute::ON);
            root.addChild(source);
        }
        root.getOrCreateStateSet()->setMode(GL_LIGHTING, osg::StateAttribute::ON);
    }

    static osg::ref_ptr<osg::Geometry> NewGeometry(osg::Vec3Array* vertices,
                                                   osg::Vec3Array* normals,
                                                   osg::PrimitiveSet* primitives,
                                                   const MAV_colour& diffuse) {
        const osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
        geometry->setUseDisplayList(false);
        geometry->setUseVertexBufferObjects(true);
        geometry->setVertexArray(vertices);
        geometry->setNormalArray(normals, osg::Array::BIND_PER_VERTEX);
        geometry->addPrimitiveSet(primitives);
        const osg::ref_ptr<osg::Material> material = new osg::Material;
        material->setAmbient(osg::Material::FRONT_AND_BACK, ToOsg(diffuse));
        material->setDiffuse(osg::Material::FRONT_AND_BACK, ToOsg(diffuse));
        material->setSpecular(osg::Material::FRONT_AND_BACK, ToOsg(kWhite));
        material->setShininess(osg::Material::FRONT_AND_BACK, 30);
        geometry->getOrCreateStateSet()->setAttributeAndModes(material);
        return geometry;
    }

    static osg::ref_ptr<osg::Geometry> NewShape(const UnitShape& shape, const MAV_colour& diffuse) {
        const Mesh mesh = BuildUnitShape(shape);
        const osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
        const osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array;
        for (std::size_t i = 0; i < mesh.vertices.size(); i += mesh.Stride()) {
            const float* const v = &mesh.vertices[i];
            vertices->push_back(osg::Vec3(v[0], v[1], v[2]) * kSize);
            normals->push_back({v[3], v[4], v[5]});
        }
        return NewGeometry(
            vertices, normals,
            new osg::DrawElementsUShort(GL_TRIANGLES, mesh.indices.begin(), mesh.indices.end()),
            diffuse);
    }

    static void AddShapes(osg::Group& root) {
        std::array<osg::ref_ptr<osg::Geometry>, 4> shapes;
        for (std::size_t i = 0; i < shapes.size(); ++i) {
            shapes[i] = NewShape(kShapes[i], kDiffuse[i]);
        }
        for (std::size_t i = 0; i < Placements().size(); ++i) {
            osg::Matrixf matrix;
            for (int row = 0; row < 4; ++row) {
                for (int column = 0; column < 4; ++column) {
                    matrix(column, row) =
                        Placements()[i][static_cast<std::size_t>(4 * row + column)];
                }
            }
            const osg::ref_ptr<osg::MatrixTransform> place = new osg::MatrixTransform(matrix);
            place->addChild(shapes[i % shapes.size()]);
            root.addChild(place);
        }
    }

    static void AddMesh(osg::Group& root) {
        const Torus& torus = TheTorus();
        const osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
        const osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array;
        for (std::size_t i = 0; i < torus.vertices.size(); ++i) {
            const MAV_vector& v = torus.vertices[i];
            const MAV_vector& n = torus.normals[i / 3];
            vertices->push_back({v.x, v.y, v.z});
            normals->push_back({n.x, n.y, n.z});
        }
        const auto count = static_cast<GLsizei>(vertices->size());
        root.addChild(NewGeometry(vertices, normals, new osg::DrawArrays(GL_TRIANGLES, 0, count),
                                  kDiffuse[0]));
    }

    SDL_Window* m_window = nullptr;
    SDL_GLContext m_context = nullptr;
    std::unique_ptr<osgViewer::Viewer> m_viewer;
};
#endif

template <class Library>
void Measure(benchmark::State& state, bool mesh) {
    Library library;
    std::string fault = library.Start(mesh);
    if (fault.empty()) {
        int frame = 0;
        for (; frame < 3; ++frame) {
            library.Frame(CameraAngle(frame));
        }
        const std::clock_t start = std::clock();
        for (auto _ : state) {
            library.Frame(CameraAngle(frame++));
        }
        state.counters["processor"] =
            benchmark::Counter(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC,
                               benchmark::Counter::kAvgIterations);
        fault = library.Fault();
        state.counters["covered"] = Covered(library.Picture());
    }
    if (!fault.empty()) {
        state.SkipWithError(fault.c_str());
    }
}

void Register(const std::string& name, void (*measure)(benchmark::State&, bool), bool mesh) {
    benchmark::RegisterBenchmark(name.c_str(), measure, mesh)->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
    // Unless another one is named: no window system in between.
    setenv("SDL_VIDEODRIVER", "offscreen", 0);
    for (const bool mesh : {false, true}) {
        const std::string scene = mesh ? "W12/mesh/" : "W12/shapes/";
        Register(scene + "ours", Measure<Ours>, mesh);
#ifdef BENCH_OSG
        Register(scene + "osg", Measure<OpenSceneGraph>, mesh);
#endif
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
