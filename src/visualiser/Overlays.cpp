#include "visualiser/Overlays.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "platform/maverik/NavigationSteps.h"
#include "platform/maverik/Windows.h"
#include "visualiser/Visualiser.h"

namespace {

using Surface = MAV_surfaceParams;

constexpr Surface SurfaceOf(PaletteColour colour) {
    return mav_surfaceParamsNew(MAV_COLOUR, colour, 0, 0);
}

constexpr Surface kRed = SurfaceOf(kColourRed);
constexpr Surface kGreen = SurfaceOf(kColourGreen);
constexpr Surface kBlue = SurfaceOf(kColourBlue);
constexpr Surface kDarkGrey = SurfaceOf(kColourDarkGrey);
constexpr Surface kLightGrey = SurfaceOf(kColourLightGrey);

/// Of the compass, all at kCompassDistance before the eye: place in shares of the window, lengths.
constexpr float kCompassShare = 0.1F;
constexpr float kCompassDistance = 13.0F;
/// The compass is nearer and farther than its place by less than this factor.
constexpr float kCompassDepth = 1.1F;
constexpr float kArrowLength = 0.5F;
constexpr float kTipPlace = 0.4F;
constexpr float kTipRadius = 0.05F;
constexpr float kTipHeight = 0.25F;
constexpr int kTipSides = 10;

constexpr float kMarkerLength = 2500.0F;

constexpr int kGridLines = 101;      ///< in each direction
constexpr float kGridReach = 50.0F;  ///< in steps, either way
constexpr float kGridStep = 5.0F;
constexpr int kGridEmphasis = 5;  ///< every so many lines a darker one

constexpr float kStatusX = 0.95F;
constexpr float kStatusY = -0.9F;

/// Lines of two points each.
template <int kCount>
struct Lines {
    std::array<MAV_vector, 2 * kCount> vertices = {};
    std::array<int, kCount> counts;
    std::array<const Surface*, kCount> surfaces = {};
    MAV_polyline record;

    Lines() {
        counts.fill(2);
        record = {kCount, counts.data(), vertices.data(), nullptr, MAV_ID_MATRIX, surfaces.data()};
    }
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;

    void Set(int line, const MAV_vector& from, const MAV_vector& to, const Surface* surface) {
        const auto i = static_cast<std::size_t>(line);
        vertices[2 * i] = from;
        vertices[2 * i + 1] = to;
        surfaces[i] = surface;
    }
};

struct ObjectDeleter {
    void operator()(MAV_object* object) const noexcept { mav_objectDelete(object); }
};
using Object = std::unique_ptr<MAV_object, ObjectDeleter>;

/// One red arrow, one green and one blue one along the axes.
void SetAxes(Lines<3>& lines, float length, const std::array<const Surface*, 3>& surfaces) {
    lines.Set(0, {0, 0, 0}, {length, 0, 0}, surfaces[0]);
    lines.Set(1, {0, 0, 0}, {0, length, 0}, surfaces[1]);
    lines.Set(2, {0, 0, 0}, {0, 0, length}, surfaces[2]);
}

void AppendCoordinate(std::string& text, float value) {
    char digits[64];
    const auto [end, error] =
        std::to_chars(std::begin(digits), std::end(digits), value, std::chars_format::fixed, 2);
    text.append(digits, error == std::errc() ? end : digits);
}

}  // namespace

std::string StatusText(const MAV_vector& eye) {
    std::string text;
    AppendCoordinate(text, eye.x);
    text += ", ";
    AppendCoordinate(text, eye.y);
    text += ", ";
    AppendCoordinate(text, eye.z);
    return text;
}

struct COverlays::Compass {
    explicit Compass(CVisView& ofView);

    static void Place(void* compass) { static_cast<Compass*>(compass)->Place(); }
    void Place() noexcept;
    static void DrawStatus(void* compass) { static_cast<Compass*>(compass)->DrawStatus(); }
    void DrawStatus() const;

    CVisView& view;
    Lines<3> lines;
    std::array<MAV_cone, 3> tips;
    std::array<MAV_matrix, 3> tipPlaces;  ///< with lines at the origin and a scale of 1
    std::array<Object, 4> objects;
    bool isShown = false;
    bool isStatusShown = false;
};

COverlays::Compass::Compass(CVisView& ofView) : view(ofView) {
    SetAxes(lines, kArrowLength, {&kRed, &kGreen, &kBlue});
    objects[0].reset(mav_objectNew(mav_class_polyline, &lines.record));
    const MAV_matrix turns[] = {mav_matrixRPYSet(MAV_ID_MATRIX, 0, 0, 90),
                                mav_matrixRPYSet(MAV_ID_MATRIX, 0, 270, 0), MAV_ID_MATRIX};
    constexpr MAV_vector kPlaces[] = {{kTipPlace, 0, 0}, {0, kTipPlace, 0}, {0, 0, kTipPlace}};
    for (std::size_t axis = 0; axis < tips.size(); ++axis) {
        tipPlaces[axis] = mav_matrixXYZSet(turns[axis], kPlaces[axis]);
        tips[axis] = {0, kTipRadius, kTipHeight,           kTipSides,      1,
                      1, 1,          lines.surfaces[axis], tipPlaces[axis]};
        objects[axis + 1].reset(mav_objectNew(mav_class_cone, &tips[axis]));
    }
}

void COverlays::Compass::Place() noexcept {
    if (view.m_window == nullptr) {
        return;
    }
    const MAV_window& window = *view.m_window;
    const auto x =
        static_cast<float>(static_cast<int>(kCompassShare * static_cast<float>(window.width)));
    const auto y =
        static_cast<float>(static_cast<int>(kCompassShare * static_cast<float>(window.height)));
    // Where clipping would cut it, it stands elsewhere and is as much larger or smaller.
    const float distance = std::max(std::min(kCompassDistance, view.m_farClip / kCompassDepth),
                                    view.m_nearClip * kCompassDepth);
    MAV_vector p;
    mav_gfxUnProject(&window, x, y, distance, &p.x, &p.y, &p.z);
    const float scale = distance / kCompassDistance;
    MAV_matrix placed = MAV_ID_MATRIX;
    placed[0] = placed[5] = placed[10] = scale;
    placed = mav_matrixXYZSet(placed, p);
    lines.record.matrix = placed;
    for (std::size_t axis = 0; axis < tips.size(); ++axis) {
        tips[axis].matrix = mav_matrixMult(placed, tipPlaces[axis]);
    }
}

void COverlays::Compass::DrawStatus() const {
    if (view.m_window == nullptr) {
        return;
    }
    mav_stringDisplayRight(view.m_window, StatusText(view.m_viewParams.eye).c_str(), kColourBlack,
                           0, kStatusX, kStatusY);
}

struct COverlays::Grid {
    Lines<2 * kGridLines> lines;
    Object object{mav_objectNew(mav_class_polyline, &lines.record)};
};

struct COverlays::Marker {
    Marker() { SetAxes(lines, kMarkerLength, {&kRed, &kRed, &kRed}); }

    Lines<3> lines;
    Object object{mav_objectNew(mav_class_polyline, &lines.record)};
};

COverlays::COverlays() : m_marker(std::make_unique<Marker>()) {
    for (std::size_t i = 0; i < m_compass.size(); ++i) {
        m_compass[i] = std::make_unique<Compass>(*g_views[i]);
        m_grid[i] = std::make_unique<Grid>();
    }
}

COverlays::~COverlays() {
    for (const auto& compass : m_compass) {
        HideCompass(compass->view);
        HideStatus(compass->view);
    }
}

COverlays::Compass& COverlays::CompassOf(const CVisView& view) const noexcept {
    return *m_compass[static_cast<std::size_t>(view.m_index)];
}

COverlays::Grid& COverlays::GridOf(const CVisView& view) const noexcept {
    return *m_grid[static_cast<std::size_t>(view.m_index)];
}

void COverlays::ShowCompass(CVisView& view) {
    Compass& compass = CompassOf(view);
    if (compass.isShown) {
        return;
    }
    mav_frameFn2Add(Compass::Place, &compass);
    compass.isShown = true;
    for (const Object& object : compass.objects) {
        mav_SMSObjectAdd(view.m_overlaySms, object.get());
    }
}

void COverlays::HideCompass(CVisView& view) noexcept {
    Compass& compass = CompassOf(view);
    if (!compass.isShown) {
        return;
    }
    mav_frameFn2Rmv(Compass::Place, &compass);
    compass.isShown = false;
    for (const Object& object : compass.objects) {
        mav_SMSObjectRmv(view.m_overlaySms, object.get());
    }
}

void COverlays::ShowStatus(CVisView& view) {
    Compass& compass = CompassOf(view);
    if (!compass.isStatusShown) {
        mav_frameFn2Add(Compass::DrawStatus, &compass);
        compass.isStatusShown = true;
    }
}

void COverlays::HideStatus(CVisView& view) noexcept {
    Compass& compass = CompassOf(view);
    if (compass.isStatusShown) {
        mav_frameFn2Rmv(Compass::DrawStatus, &compass);
        compass.isStatusShown = false;
    }
}

void COverlays::BuildGrid(CVisView& view) {
    Grid& grid = GridOf(view);
    const float step = kGridStep * view.m_navigationSpeed;
    const float half = kGridReach * step;
    for (int i = 0; i < kGridLines; ++i) {
        const float at = static_cast<float>(i) * step - half;
        const Surface* const surface = i % kGridEmphasis == 0 ? &kDarkGrey : &kLightGrey;
        grid.lines.Set(i, {at, 0, -half}, {at, 0, half}, surface);
        grid.lines.Set(kGridLines + i, {-half, 0, at}, {half, 0, at}, surface);
    }
    mav_objectChanged(grid.object.get());
}

void COverlays::ShowNavigationOverlay(CVisView& view) {
    mav_SMSObjectAdd(view.m_overlaySms, m_marker->object.get());
    if (view.m_showGrid) {
        mav_SMSObjectAdd(view.m_overlaySms, GridOf(view).object.get());
    }
    PlaceNavigationOverlay(view);
}

void COverlays::HideNavigationOverlay(CVisView& view) noexcept {
    mav_SMSObjectRmv(view.m_overlaySms, m_marker->object.get());
    mav_SMSObjectRmv(view.m_overlaySms, GridOf(view).object.get());
}

void COverlays::PlaceNavigationOverlay(CVisView& view) noexcept {
    m_marker->lines.record.matrix = mav_matrixXYZSet(MAV_ID_MATRIX, mav_nav_center);
    GridOf(view).lines.record.matrix = mav_matrixXYZSet(MAV_ID_MATRIX, {0, view.m_navCenter[1], 0});
}
