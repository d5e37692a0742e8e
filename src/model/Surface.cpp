#include "model/Surface.h"

#include "model/neighbours.h"

CSurface::CSurface(float r, float g, float b, float a)
    : m_paletteIndex(g_visualiser ? g_visualiser->NewMaterial(r, g, b, a) : 0),
      m_ownsMaterial(g_visualiser != nullptr) {
    m_mavSurface = mav_surfaceParamsNew(MAV_MATERIAL, 0, m_paletteIndex, 0);
}

CSurface::CSurface(int texture, float xTile, float yTile)
    : m_mavSurface(mav_surfaceParamsNew(MAV_TEXTURE, 0, 0, texture)),
      m_xTile(xTile),
      m_yTile(yTile),
      m_paletteIndex(texture),
      m_textured(true) {}

CSurface::~CSurface() {
    // The display goes before the scene does, and its palette with it.
    if (m_ownsMaterial && g_visualiser)
        g_visualiser->ReleaseMaterial(m_paletteIndex);
}

std::unique_ptr<CSurface> CSurface::Clone() const {
    if (m_textured)
        return std::make_unique<CSurface>(m_paletteIndex, m_xTile, m_yTile);
    float r, g, b, a;
    GetColor(&r, &g, &b, &a);
    return std::make_unique<CSurface>(r, g, b, a);
}

void CSurface::GetColor(float* r, float* g, float* b, float* a) const {
    float alpha = 1;
    if (g_visualiser) {
        g_visualiser->GetMaterial(m_paletteIndex, r, g, b, &alpha);
    } else {
        *r = 1;
        *g = 0;
        *b = 0;
    }
    if (a)
        *a = alpha;
}

void CSurface::SetAlpha(float alpha) {
    if (!g_visualiser)
        return;
    if (m_textured)
        g_visualiser->SetTextureAlpha(m_paletteIndex, alpha);
    else
        g_visualiser->SetMaterialAlpha(m_paletteIndex, alpha);
    m_alpha = alpha;
}
