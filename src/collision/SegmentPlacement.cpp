#include "collision/SegmentPlacement.h"

#include <cmath>

namespace {

/// The sine of 3.14159: between that angle and half a turn, the cross product with +y no longer
/// tells the axis.
constexpr double kHalfTurnSine = 2.6535897933527e-6;

struct Axes {
    std::array<double, 3> x = {1.0, 0.0, 0.0};
    std::array<double, 3> z = {0.0, 0.0, 1.0};
};

/// The images of the x and z axes under the turn of +y onto the unit vector n.
Axes TurnedAxes(const std::array<double, 3>& n) {
    Axes axes;
    // Axis (0, 1, 0) x n, which lies in the plane of x and z; its length is the sine of the angle.
    const double sine = std::sqrt(n[2] * n[2] + n[0] * n[0]);
    const double cosine = n[1];
    if (cosine < 0.0 && sine < kHalfTurnSine) {
        axes.x = {-1.0, 0.0, 0.0};
        return axes;
    }
    if (sine == 0.0) {
        return axes;
    }
    const double u = n[2] / sine;
    const double w = -n[0] / sine;
    // Rodrigues' rotation formula for the axis (u, 0, w).
    axes.x = {cosine + u * u * (1.0 - cosine), w * sine, u * w * (1.0 - cosine)};
    axes.z = {u * w * (1.0 - cosine), -u * sine, cosine + w * w * (1.0 - cosine)};
    return axes;
}

}  // namespace

std::array<float, 16> PlaceUnitSegment(const std::array<float, 3>& start,
                                       const std::array<float, 3>& end) noexcept {
    const std::array<double, 3> d = {static_cast<double>(end[0]) - static_cast<double>(start[0]),
                                     static_cast<double>(end[1]) - static_cast<double>(start[1]),
                                     static_cast<double>(end[2]) - static_cast<double>(start[2])};
    // Differences of floats have squares well within the range of a double.
    const double length = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    Axes axes;
    if (length > 0.0) {
        axes = TurnedAxes({d[0] / length, d[1] / length, d[2] / length});
    }
    std::array<float, 16> matrix = {};
    for (std::size_t i = 0; i < 3; ++i) {
        matrix[i] = static_cast<float>(axes.x[i]);
        matrix[4 + i] = static_cast<float>(d[i]);
        matrix[8 + i] = static_cast<float>(axes.z[i]);
        matrix[12 + i] = start[i];
    }
    matrix[15] = 1.0F;
    return matrix;
}
