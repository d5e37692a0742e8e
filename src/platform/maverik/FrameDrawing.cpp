#include "platform/maverik/FrameDrawing.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <cmath>

#include "platform/maverik/TextShape.h"

namespace {

constexpr GLuint kTexCoordAttribute = 2;
constexpr GLuint kFirstRowAttribute = 3;
constexpr GLuint kRowAttributes = 5;
/// Objects that are sorted by what they look like, not by distance.
constexpr std::size_t kSlab = 512;

constexpr const char* kTextVertexSource = R"(#version 330 core
layout(location = 0) in vec2 position;
void main() {
    gl_Position = vec4(position, 0.0, 1.0);
}
)";
constexpr const char* kTextFragmentSource = R"(#version 330 core
uniform vec4 colour;
out vec4 result;
void main() {
    result = colour;
}
)";

/// The rows of the instances from `first` on, one step for each object.
void PointAtInstances(std::size_t first) {
    for (GLuint i = 0; i < kRowAttributes; ++i) {
        const std::size_t offset = first * sizeof(FrameInstance) + i * 4 * sizeof(float);
        glEnableVertexAttribArray(kFirstRowAttribute + i);
        glVertexAttribPointer(kFirstRowAttribute + i, 4, GL_FLOAT, GL_FALSE, sizeof(FrameInstance),
                              BufferOffset(offset));
        glVertexAttribDivisor(kFirstRowAttribute + i, 1);
    }
}

void SetCulling(const BatchKey& batch) {
    glFrontFace(batch.mirrored ? GL_CW : GL_CCW);
    if (batch.hideBack) {
        glEnable(GL_CULL_FACE);
        glCullFace(GL_BACK);
    } else {
        glDisable(GL_CULL_FACE);
    }
}

}  // namespace

FrameDrawing::FrameDrawing()
    : m_textProgram(std::make_unique<ShaderProgram>(kTextVertexSource, kTextFragmentSource)),
      m_garbage(std::make_shared<DrawingGarbage>()) {
    // Fails here, not in a frame, on a machine that cannot do it.
    ProgramKind usual;
    usual.instanced = usual.lit = usual.smooth = usual.textured = usual.fog = true;
    usual.headlight = usual.shining = usual.even = true;
    usual.lights = 13;
    const ShaderProgram check(usual);
    glGenBuffers(1, &m_instanceBuffer);
    glGenBuffers(1, &m_textBuffer);
    glGenVertexArrays(1, &m_textArray);
}

FrameDrawing::~FrameDrawing() {
    CollectGarbage();
    m_garbage->Close();
    glDeleteBuffers(1, &m_instanceBuffer);
    glDeleteBuffers(1, &m_textBuffer);
    glDeleteVertexArrays(1, &m_textArray);
}

void FrameDrawing::CollectGarbage() {
    std::unique_ptr<GraphicsMesh> mesh = m_garbage->TakeAll();
    while (mesh) {
        DeleteMesh(*mesh);
        mesh = std::move(mesh->next);
    }
    m_textures.DropUnused();
    m_shapes.DropUnused(m_frame);
}

void FrameDrawing::Draw(const Contents& contents) {
    ++m_frame;
    m_triangles = 0;
    Clear(contents.setup);
    UploadDrawings(contents);
    m_lights.Take(contents.lights, contents.setup.view);
    glVertexAttrib4f(kTexCoordAttribute, 0, 0, 0, 1);
    glActiveTexture(GL_TEXTURE0);
    DrawOpaque(contents);
    DrawLines(contents);
    DrawTransparent(contents);
    DrawTexts(contents);
    glBindVertexArray(0);
    glUseProgram(0);
}

void FrameDrawing::Clear(const ViewSetup& setup) const {
    for (const GLenum off :
         {GL_SCISSOR_TEST, GL_STENCIL_TEST, GL_BLEND, GL_CULL_FACE, GL_FRAMEBUFFER_SRGB,
          GL_POLYGON_OFFSET_FILL, GL_SAMPLE_ALPHA_TO_COVERAGE, GL_RASTERIZER_DISCARD}) {
        glDisable(off);
    }
    for (const GLenum on : {GL_DEPTH_TEST, GL_MULTISAMPLE}) {
        glEnable(on);
    }
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    glDepthFunc(GL_LEQUAL);
    glDepthRange(0, 1);
    glViewport(0, 0, setup.width, setup.height);
    glClearColor(setup.background.r, setup.background.g, setup.background.b, 1);
    glClearDepth(1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

void FrameDrawing::UploadDrawings(const Contents& contents) {
    for (const std::shared_ptr<MAV_drawing>& drawing : contents.drawings) {
        if (!drawing->geometry) {
            continue;
        }
        const Mesh mesh =
            drawing->isLines
                ? BuildLines(*drawing->geometry, drawing->extent.centre, drawing->firstIndices)
                : BuildPolygons(*drawing->geometry, drawing->extent.centre);
        drawing->garbage = m_garbage;
        drawing->mesh = UploadMesh(mesh);
        drawing->geometry.reset();
    }
}

const GraphicsMesh* FrameDrawing::MeshOf(const Contents& contents, const BatchKey& batch) {
    return batch.isDrawing ? contents.drawings[batch.mesh]->mesh.get()
                           : m_shapes.Get(contents.shapes[batch.mesh], m_frame);
}

void FrameDrawing::DrawMesh(const GraphicsMesh& mesh, std::size_t times) {
    if (times == 1) {
        glDrawElements(GL_TRIANGLES, mesh.indexCount, GL_UNSIGNED_INT, nullptr);
    } else {
        glDrawElementsInstanced(GL_TRIANGLES, mesh.indexCount, GL_UNSIGNED_INT, nullptr,
                                static_cast<GLsizei>(times));
    }
    m_triangles += static_cast<std::size_t>(mesh.indexCount) / 3 * times;
}

ProgramKind FrameDrawing::KindOf(const Contents& contents, const BatchKey& batch,
                                 bool instanced) const {
    constexpr std::array<float, 3> kBlack = {0, 0, 0};
    ProgramKind kind;
    kind.instanced = instanced;
    kind.fog = contents.setup.fog;
    kind.textured = batch.texture > 0;
    if (batch.lit) {
        kind.lit = true;
        kind.smooth = !batch.isDrawing;
        kind.orthogonal = contents.setup.orthogonal;
        kind.headlight = m_lights.headlight;
        kind.lights = m_lights.Count();
        kind.shining = contents.finishes[batch.finish].specular != kBlack &&
                       (m_lights.specularCount > 0 || m_lights.headSpecular != kBlack);
        kind.specularLights = kind.shining ? m_lights.specularCount : 0;
        // Taken for matt where nothing shines, the specular ones may be of another colour.
        kind.even = m_lights.even && kind.specularLights == m_lights.specularCount;
    }
    return kind;
}

ShaderProgram* FrameDrawing::UseProgram(const Contents& contents, const ProgramKind& kind) {
    ShaderProgram* const program = m_programs.Get(kind);
    if (program == nullptr) {
        return nullptr;
    }
    program->Use();
    if (program->frame != m_frame) {
        program->SetFrame(contents.setup, m_lights);
        program->frame = m_frame;
        program->finish = BatchKey::kMostFinishes;
    }
    return program;
}

ShaderProgram* FrameDrawing::Prepare(const Contents& contents, const BatchKey& batch,
                                     bool instanced) {
    BatchKey drawn = batch;
    if (batch.texture > 0) {
        const unsigned int texture = m_textures.Get(contents.images[batch.texture - 1]);
        glBindTexture(GL_TEXTURE_2D, texture);
        drawn.texture = texture != 0 ? batch.texture : 0;
    }
    ShaderProgram* const program = UseProgram(contents, KindOf(contents, drawn, instanced));
    if (program != nullptr && batch.lit && program->finish != batch.finish) {
        program->SetFinish(contents.finishes[batch.finish], m_lights.ambient);
        program->finish = batch.finish;
    }
    return program;
}

void FrameDrawing::SortOpaque(const Contents& contents) {
    m_sorted = contents.opaque;
    std::sort(m_sorted.begin(), m_sorted.end(), [](const FrameItem& a, const FrameItem& b) {
        return a.depth != b.depth ? a.depth < b.depth : a.instance < b.instance;
    });
    // What is near comes first, so that what it hides need not be lit; but only from slab to slab,
    // so that one call can draw many.
    for (std::size_t begin = 0; begin < m_sorted.size(); begin += kSlab) {
        const auto first = m_sorted.begin() + static_cast<std::ptrdiff_t>(begin);
        const auto count = std::min(kSlab, m_sorted.size() - begin);
        std::stable_sort(first, first + static_cast<std::ptrdiff_t>(count),
                         [](const FrameItem& a, const FrameItem& b) { return a.key < b.key; });
    }
    m_runs.clear();
    m_instances.clear();
    std::size_t begin = 0;
    while (begin < m_sorted.size()) {
        std::size_t end = begin + 1;
        while (end < m_sorted.size() && m_sorted[end].key == m_sorted[begin].key) {
            ++end;
        }
        m_runs.push_back({begin, end, m_instances.size()});
        // One program for all unit shapes, however many look the same.
        if (!BatchKey::Unpack(m_sorted[begin].key).isDrawing) {
            for (std::size_t i = begin; i < end; ++i) {
                m_instances.push_back(contents.instances[m_sorted[i].instance]);
            }
        }
        begin = end;
    }
}

void FrameDrawing::DrawOpaque(const Contents& contents) {
    SortOpaque(contents);
    glBindBuffer(GL_ARRAY_BUFFER, m_instanceBuffer);
    glBufferData(GL_ARRAY_BUFFER,
                 static_cast<GLsizeiptr>(m_instances.size() * sizeof(FrameInstance)),
                 m_instances.data(), GL_STREAM_DRAW);
    for (const Run& run : m_runs) {
        const BatchKey batch = BatchKey::Unpack(m_sorted[run.begin].key);
        const bool instanced = !batch.isDrawing;
        const GraphicsMesh* const mesh = MeshOf(contents, batch);
        if (mesh == nullptr) {
            continue;
        }
        const ShaderProgram* const program = Prepare(contents, batch, instanced);
        if (program == nullptr) {
            continue;
        }
        SetCulling(batch);
        glBindVertexArray(mesh->vertexArray);
        if (!instanced) {
            program->SetInstance(contents.instances[m_sorted[run.begin].instance]);
            DrawMesh(*mesh, 1);
            continue;
        }
        glBindBuffer(GL_ARRAY_BUFFER, m_instanceBuffer);
        PointAtInstances(run.firstInstance);
        DrawMesh(*mesh, run.end - run.begin);
    }
}

void FrameDrawing::DrawLines(const Contents& contents) {
    glDisable(GL_CULL_FACE);
    ProgramKind kind;
    kind.fog = contents.setup.fog;
    const ShaderProgram* const program =
        contents.lines.empty() ? nullptr : UseProgram(contents, kind);
    if (program == nullptr) {
        return;
    }
    for (const FrameLines& lines : contents.lines) {
        const MAV_drawing& drawing = *contents.drawings[lines.drawing];
        if (!drawing.mesh) {
            continue;
        }
        const int first = drawing.firstIndices[static_cast<std::size_t>(lines.firstLine)];
        const int end = drawing.firstIndices[static_cast<std::size_t>(lines.endLine)];
        glBindVertexArray(drawing.mesh->vertexArray);
        program->SetInstance(contents.instances[lines.instance]);
        glDrawElements(GL_LINES, end - first, GL_UNSIGNED_INT,
                       BufferOffset(static_cast<std::size_t>(first) * sizeof(std::uint32_t)));
    }
}

void FrameDrawing::DrawTransparent(const Contents& contents) {
    if (contents.transparent.empty()) {
        return;
    }
    m_sorted = contents.transparent;
    std::sort(m_sorted.begin(), m_sorted.end(), [](const FrameItem& a, const FrameItem& b) {
        return a.depth != b.depth ? a.depth > b.depth : a.instance < b.instance;
    });
    glEnable(GL_BLEND);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
    glDepthMask(GL_FALSE);
    for (const FrameItem& item : m_sorted) {
        const BatchKey batch = BatchKey::Unpack(item.key);
        const GraphicsMesh* const mesh = MeshOf(contents, batch);
        const ShaderProgram* const program =
            mesh != nullptr ? Prepare(contents, batch, false) : nullptr;
        if (program == nullptr) {
            continue;
        }
        SetCulling(batch);
        glBindVertexArray(mesh->vertexArray);
        program->SetInstance(contents.instances[item.instance]);
        if (!batch.isDrawing && !batch.hideBack) {
            // A convex shape: its far side first.
            glEnable(GL_CULL_FACE);
            glCullFace(GL_FRONT);
            DrawMesh(*mesh, 1);
            glCullFace(GL_BACK);
        }
        DrawMesh(*mesh, 1);
    }
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
}

void FrameDrawing::DrawTexts(const Contents& contents) {
    if (contents.texts.empty()) {
        return;
    }
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glBindVertexArray(m_textArray);
    glBindBuffer(GL_ARRAY_BUFFER, m_textBuffer);
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, nullptr);
    m_textProgram->Use();
    const float xPixel = 2.0f / static_cast<float>(contents.setup.width);
    const float yPixel = 2.0f / static_cast<float>(contents.setup.height);
    for (const FrameText& text : contents.texts) {
        std::vector<float> corners = TextTriangles(text.text, contents.setup.textScale);
        // Onto whole pixels, so that the letters are as sharp as they can be.
        const auto place = [](float at, float pixel) {
            return std::round((at + 1) / pixel) * pixel - 1;
        };
        const float x = place(text.x, xPixel), y = place(text.y, yPixel);
        for (std::size_t i = 0; i < corners.size(); i += 2) {
            corners[i] = x + corners[i] * xPixel;
            corners[i + 1] = y + corners[i + 1] * yPixel;
        }
        glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(corners.size() * sizeof(float)),
                     corners.data(), GL_STREAM_DRAW);
        m_textProgram->SetColour(text.colour);
        glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(corners.size() / 2));
    }
    glEnable(GL_DEPTH_TEST);
}
