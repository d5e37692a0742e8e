#pragma once

#include <memory>
#include <vector>

#include "platform/maverik/GraphicsMemory.h"
#include "platform/maverik/ShaderPrograms.h"

/// Draws the contents of frames with what it keeps of programs, meshes and textures.
class FrameDrawing {
  public:
    /// Throws RendererFailure.
    FrameDrawing();
    ~FrameDrawing();
    FrameDrawing(const FrameDrawing&) = delete;
    FrameDrawing& operator=(const FrameDrawing&) = delete;

    /// Into the framebuffer that is bound.
    void Draw(const FrameContents::Data& contents);
    void CollectGarbage();
    /// In the frame that was drawn last.
    std::size_t Triangles() const noexcept { return m_triangles; }

  private:
    using Contents = FrameContents::Data;
    /// Items of one key that stand side by side in the sorted list.
    struct Run {
        std::size_t begin, end;
        std::size_t firstInstance;  ///< in the buffer
    };

    void Clear(const ViewSetup& setup) const;
    void UploadDrawings(const Contents& contents);
    void DrawOpaque(const Contents& contents);
    void SortOpaque(const Contents& contents);
    void DrawTransparent(const Contents& contents);
    void DrawLines(const Contents& contents);
    void DrawTexts(const Contents& contents);

    void DrawMesh(const GraphicsMesh& mesh, std::size_t times);
    const GraphicsMesh* MeshOf(const Contents& contents, const BatchKey& batch);
    /// Makes all ready for objects of the batch; null if they cannot be drawn.
    ShaderProgram* Prepare(const Contents& contents, const BatchKey& batch, bool instanced);
    ShaderProgram* UseProgram(const Contents& contents, const ProgramKind& kind);
    ProgramKind KindOf(const Contents& contents, const BatchKey& batch, bool instanced) const;

    ShaderPrograms m_programs;
    std::unique_ptr<ShaderProgram> m_textProgram;
    ShapeCache m_shapes;
    TextureCache m_textures;
    std::shared_ptr<DrawingGarbage> m_garbage;
    LightSet m_lights;
    unsigned int m_instanceBuffer = 0;
    unsigned int m_textBuffer = 0;
    unsigned int m_textArray = 0;
    unsigned long m_frame = 0;
    std::size_t m_triangles = 0;
    // Memory used again from frame to frame.
    std::vector<FrameItem> m_sorted;
    std::vector<Run> m_runs;
    std::vector<FrameInstance> m_instances;
};
