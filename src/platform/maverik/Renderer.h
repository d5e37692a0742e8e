#pragma once

/// Drawing with OpenGL 3.3 core: the boundary between the windows, which say what is to be seen
/// from where, and the code that turns lists of objects into pixels. Private to this folder.
///
/// A frame of a window has two halves: FrameContents takes over what the objects look like while
/// the scene is locked, and calls no OpenGL; Renderer::Draw draws it when the lock is free again.

#include <memory>
#include <stdexcept>
#include <string>

#include "platform/maverik/Objects.h"
#include "platform/maverik/Palette.h"

/// OpenGL cannot do what is needed; what() says what.
class RendererFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// How a window looks at the world. Both matrices as MAV_matrix has it; `projection` maps eye
/// coordinates (x right, y up, looking along -z) to clip coordinates of OpenGL.
struct ViewSetup {
    int width = 1, height = 1;  ///< pixels
    MAV_matrix view = MAV_ID_MATRIX;
    MAV_matrix projection = MAV_ID_MATRIX;
    bool orthogonal = false;
    MAV_colour background = {1, 1, 1, 1};
    bool cullBackfaces = false;
    bool fog = false;
    float fogStart = 0, fogEnd = 1;  ///< distance from the eye
    MAV_colour fogColour = {1, 1, 1, 1};
    float textScale = 1;  ///< pixels of the drawing area for one of an ordinary screen
};

/// What one window shows in one frame. Kept from frame to frame, so that its memory is used again.
class FrameContents {
  public:
    FrameContents();
    ~FrameContents();
    FrameContents(const FrameContents&) = delete;
    FrameContents& operator=(const FrameContents&) = delete;

    /// Forgets the last frame. Takes over lights and colours.
    void Begin(const ViewSetup& setup, const MAV_palette& palette);
    /// Takes over the objects of the list that may be seen, with what their records and surfaces
    /// say now. Overlays come as lists of their own, after the scene.
    void Collect(const MAV_SMS& sms, const MAV_palette& palette, bool transparency);
    /// Text whose right end, on its base line, is at x, y in the range -1 to 1.
    void AddText(const std::string& text, const MAV_colour& colour, float x, float y);

    struct Data;
    Data& Contents() const noexcept { return *m_data; }

  private:
    std::unique_ptr<Data> m_data;
};

/// Picture that a window's frames are drawn into, apart from the window itself, so that it can be
/// read whole. OpenGL's context must be current in all calls, the destructor too.
class RenderTarget {
  public:
    RenderTarget();
    ~RenderTarget();
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

    /// Brings the picture to this size, and this number of samples a pixel (1: none beyond the
    /// pixel; more than the machine has: as many as it has).
    void Resize(int width, int height, int samples);
    /// Makes it the one that is drawn into.
    void Bind();
    /// Copies it to the window of the current context.
    void ShowInWindow(int width, int height);
    /// The picture, 8 bits each of red, green, blue, rows from the top down. Throws std::bad_alloc.
    std::shared_ptr<const MAV_image> Read();

  private:
    struct Data;
    std::unique_ptr<Data> m_data;
};

/// Programs, buffers and textures of one context. The context must be current in all calls, the
/// destructor too.
class Renderer {
  public:
    /// Throws RendererFailure.
    Renderer();
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    /// Draws the contents into the target, whose size is that of the contents' view.
    void Draw(const FrameContents& contents, RenderTarget& target);
    /// Gives back the graphics memory of objects that have gone.
    void CollectGarbage();
    /// Samples a pixel that a frame should have on this machine: more where a graphics processor
    /// draws, 1 where the processor itself does and frames follow each other, `still` for a frame
    /// that will stand.
    int Samples(bool still) const noexcept;

  private:
    struct Data;
    std::unique_ptr<Data> m_data;
};
