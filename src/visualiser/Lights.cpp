#include "visualiser/Lights.h"

#include "visualiser/Visualiser.h"

namespace {

constexpr MAV_colour kNoLight = {0, 0, 0, 0};
constexpr MAV_colour kBlack = {0, 0, 0, 1};
constexpr MAV_colour kWhite = {1, 1, 1, 1};
constexpr MAV_colour kDim = {0.4F, 0.4F, 0.4F, 1};

/// Lights 1 to 13: seven corners of a cube, and the middles of its faces. The eighth corner is left
/// to the headlight of a camera that looks at the scene from where views start.
constexpr MAV_vector kFixedLights[] = {
    {1000, 1000, -1000},  {-1000, 1000, -1000},  {-1000, 1000, 1000},  {1000, -1000, 1000},
    {1000, -1000, -1000}, {-1000, -1000, -1000}, {-1000, -1000, 1000}, {0, 1000, 0},
    {0, -1000, 0},        {1000, 0, 0},          {-1000, 0, 0},        {0, 0, 1000},
    {0, 0, -1000}};

struct NamedColour {
    PaletteColour index;
    float r, g, b;
};

constexpr NamedColour kColours[] = {{kColourBlack, 0, 0, 0},
                                    {kColourRed, 1, 0, 0},
                                    {kColourDarkGrey, 0.4F, 0.4F, 0.4F},
                                    {kColourBlue, 0, 0, 1},
                                    {kColourLightGrey, 0.85F, 0.85F, 0.85F},
                                    {kColourGreen, 0, 1, 0}};

}  // namespace

void SetUpColours(MAV_palette& palette) {
    for (const auto& [index, r, g, b] : kColours) {
        mav_paletteColourSet(palette, index, r, g, b, 1);
    }
}

void SetUpLights(MAV_palette& palette) noexcept {
    mav_paletteLightPos(palette, 0, {0, 0, 0});
    mav_paletteLightPositioning(palette, 0, 0);
    SetUpHeadlight(palette, true);
    int index = 0;
    for (const MAV_vector& position : kFixedLights) {
        ++index;
        mav_paletteLightSet(palette, index, kBlack, kDim, kNoLight);
        mav_paletteLightPos(palette, index, position);
        mav_paletteLightPositioning(palette, index, 1);
    }
    static_assert(std::size(kFixedLights) + 1 == kLightCount);
}

void SetUpHeadlight(MAV_palette& palette, bool on) noexcept {
    mav_paletteLightSet(palette, 0, kBlack, kWhite, on ? kWhite : kNoLight);
}
