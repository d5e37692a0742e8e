#pragma once

#include <memory>

#include "platform/maverik/Records.h"

/// A look: a colour with a material of its own, or a reference to a texture. Belongs to exactly one
/// group or object. Without a display a colour is not kept.
class CSurface {
  public:
    /// A colour; components in [0, 1].
    CSurface(float r, float g, float b, float a);
    /// A texture of the palette (0 to 99), repeated xTile times in u and yTile times in v.
    CSurface(int texture, float xTile, float yTile);
    ~CSurface();
    CSurface(const CSurface&) = delete;
    CSurface& operator=(const CSurface&) = delete;

    std::unique_ptr<CSurface> Clone() const;
    /// The material's colour; 1, 0, 0, 1 without a display. `a` may be null.
    void GetColor(float* r, float* g, float* b, float* a) const;
    /// Sets the opacity of the material or of the texture; nothing without a display.
    void SetAlpha(float alpha);

    /// What display records point to; the address never changes.
    const MAV_surfaceParams* Params() const noexcept { return &m_mavSurface; }
    float XTile() const noexcept { return m_xTile; }
    float YTile() const noexcept { return m_yTile; }
    bool IsTextured() const noexcept { return m_textured; }
    /// The opacity last given to SetAlpha, 1 before that; does not follow the alpha of a colour.
    float Alpha() const noexcept { return m_alpha; }
    /// Index of the material or of the texture.
    int PaletteIndex() const noexcept { return m_paletteIndex; }

  private:
    MAV_surfaceParams m_mavSurface;
    float m_xTile = 0;
    float m_yTile = 0;
    float m_alpha = 1;
    int m_paletteIndex = 0;
    bool m_textured = false;
    bool m_ownsMaterial = false;
};
