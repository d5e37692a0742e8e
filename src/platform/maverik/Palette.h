#pragma once

/// Colours, materials, textures and lights by index, as surfaces name them.
///
/// A palette has no lock: whoever changes or reads it while frames are drawn excludes them (the
/// display does so with its frame lock). Setters with an index out of range change nothing. Nothing
/// here needs a window.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/maverik/Maverik.h"

/// Components in [0, 1].
struct MAV_colour {
    float r = 0, g = 0, b = 0, a = 1;
    friend bool operator==(const MAV_colour&, const MAV_colour&) = default;
};

struct MAV_material {
    MAV_colour ambient, diffuse, specular, emission;
    float shininess = 0;
};

struct MAV_light {
    MAV_colour ambient, diffuse, specular;
    MAV_vector position = {0, 0, 0};  ///< in world coordinates, or in those of the eye
    bool withEye = false;             ///< the light goes with the eye
};

/// 8 bits each of red, green and blue, rows from the top down, without gaps.
struct MAV_image {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;
};

struct MAV_textureSlot {
    std::shared_ptr<const MAV_image> image;  ///< null: never filled
    float alpha = 1;                         ///< opacity of the whole image
};

inline constexpr int kMostColours = 16;
inline constexpr int kMostTextures = 100;

class MAV_palette {
  public:
    MAV_palette(int maxMaterials, int maxLights);

    std::array<MAV_colour, kMostColours> colours;
    std::array<MAV_textureSlot, kMostTextures> textures;
    std::vector<MAV_light> lights;
    std::vector<MAV_material> materials;
};

void mav_paletteColourSet(MAV_palette& palette, int index, float r, float g, float b, float a);
/// An index beyond the last material makes the palette grow. Throws std::bad_alloc.
void mav_paletteMaterialSet(MAV_palette& palette, int index, const MAV_material& material);
/// Diffuse colour and alpha of a material; opaque white for an index that was never set.
void mav_paletteMaterialGet(const MAV_palette& palette, int index, float* r, float* g, float* b,
                            float* a) noexcept;
/// Alpha of all four colours of the material.
void mav_paletteMaterialAlphaSet(MAV_palette& palette, int index, float alpha) noexcept;
/// Puts an image into the slot, opaque. Null, as mav_imageRead gives it for what is no picture,
/// leaves the slot as it was, and false comes back.
bool mav_paletteTextureSet(MAV_palette& palette, int index,
                           std::shared_ptr<const MAV_image> image) noexcept;
void mav_paletteTextureAlphaSet(MAV_palette& palette, int index, float alpha) noexcept;
void mav_paletteLightSet(MAV_palette& palette, int index, const MAV_colour& ambient,
                         const MAV_colour& diffuse, const MAV_colour& specular) noexcept;
void mav_paletteLightPos(MAV_palette& palette, int index, const MAV_vector& position) noexcept;
/// 0: the light goes with the eye, and its position is relative to it; 1: it stands in the world.
void mav_paletteLightPositioning(MAV_palette& palette, int index, int positioning) noexcept;

/// A portable pixmap, plain (P3) or raw (P6), of 8 or 16 bits a sample, with comments. Null if the
/// file cannot be read, is none, is cut short, or holds more than 2^28 pixels.
std::shared_ptr<const MAV_image> mav_imageRead(const std::string& file);
