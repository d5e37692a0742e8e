#include "platform/maverik/Palette.h"

namespace {

constexpr MAV_colour kOpaqueWhite = {1, 1, 1, 1};

/// The entry at the index; null outside.
template <class Entries>
auto* EntryAt(Entries& entries, int index) noexcept {
    const auto i = static_cast<std::size_t>(index);
    return index >= 0 && i < entries.size() ? &entries[i] : nullptr;
}

}  // namespace

MAV_palette::MAV_palette(int maxMaterials, int maxLights)
    : lights(static_cast<std::size_t>(maxLights)) {
    // What is asked for is what the palette is opened for; materials take memory as they come.
    materials.reserve(static_cast<std::size_t>(maxMaterials) / 100);
}

void mav_paletteColourSet(MAV_palette& palette, int index, float r, float g, float b, float a) {
    if (MAV_colour* const colour = EntryAt(palette.colours, index)) {
        *colour = {r, g, b, a};
    }
}

void mav_paletteMaterialSet(MAV_palette& palette, int index, const MAV_material& material) {
    if (index < 0) {
        return;
    }
    const auto i = static_cast<std::size_t>(index);
    if (i >= palette.materials.size()) {
        palette.materials.resize(
            i + 1, {kOpaqueWhite, kOpaqueWhite, kOpaqueWhite, {0, 0, 0, 1}, /*shininess*/ 0});
    }
    palette.materials[i] = material;
}

void mav_paletteMaterialGet(const MAV_palette& palette, int index, float* r, float* g, float* b,
                            float* a) noexcept {
    const MAV_material* const material = EntryAt(palette.materials, index);
    const MAV_colour& colour = material != nullptr ? material->diffuse : kOpaqueWhite;
    *r = colour.r;
    *g = colour.g;
    *b = colour.b;
    *a = colour.a;
}

void mav_paletteMaterialAlphaSet(MAV_palette& palette, int index, float alpha) noexcept {
    if (MAV_material* const material = EntryAt(palette.materials, index)) {
        for (MAV_colour* colour :
             {&material->ambient, &material->diffuse, &material->specular, &material->emission}) {
            colour->a = alpha;
        }
    }
}

void mav_paletteTextureAlphaSet(MAV_palette& palette, int index, float alpha) noexcept {
    if (MAV_textureSlot* const slot = EntryAt(palette.textures, index)) {
        slot->alpha = alpha;
    }
}

void mav_paletteLightSet(MAV_palette& palette, int index, const MAV_colour& ambient,
                         const MAV_colour& diffuse, const MAV_colour& specular) noexcept {
    if (MAV_light* const light = EntryAt(palette.lights, index)) {
        light->ambient = ambient;
        light->diffuse = diffuse;
        light->specular = specular;
    }
}

void mav_paletteLightPos(MAV_palette& palette, int index, const MAV_vector& position) noexcept {
    if (MAV_light* const light = EntryAt(palette.lights, index)) {
        light->position = position;
    }
}

void mav_paletteLightPositioning(MAV_palette& palette, int index, int positioning) noexcept {
    if (MAV_light* const light = EntryAt(palette.lights, index)) {
        light->withEye = positioning == 0;
    }
}
