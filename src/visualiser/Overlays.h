#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "model/Group.h"
#include "platform/maverik/Objects.h"
#include "visualiser/VisView.h"

/// The three coordinates with two decimals, whatever the locale.
std::string StatusText(const MAV_vector& eye);

/// What views show beside the scene: compass, status text, and, while the user navigates, a marker
/// at the navigation centre and a grid at its height. Everything here wants the frame lock held,
/// and the views' lists made. Colours are those of the default palette (PaletteColour).
class COverlays {
  public:
    COverlays();
    ~COverlays();
    COverlays(const COverlays&) = delete;
    COverlays& operator=(const COverlays&) = delete;

    /// The three arrows in the corner of the window.
    void ShowCompass(CVisView& view);
    void HideCompass(CVisView& view) noexcept;
    /// The eye's position as text.
    void ShowStatus(CVisView& view);
    void HideStatus(CVisView& view) noexcept;
    /// Lines of the view's grid for its navigation speed s: 5 s apart, over 250 s either way.
    void BuildGrid(CVisView& view);
    /// The marker, and the grid if the view has it on, at the centre of navigation.
    void ShowNavigationOverlay(CVisView& view);
    void HideNavigationOverlay(CVisView& view) noexcept;
    /// Marker to mav_nav_center, grid to the height of the view's centre.
    void PlaceNavigationOverlay(CVisView& view) noexcept;

  private:
    struct Compass;
    struct Grid;
    struct Marker;

    Compass& CompassOf(const CVisView& view) const noexcept;
    Grid& GridOf(const CVisView& view) const noexcept;

    std::unique_ptr<Marker> m_marker;
    std::array<std::unique_ptr<Compass>, kViewCount> m_compass;
    std::array<std::unique_ptr<Grid>, kViewCount> m_grid;
};
