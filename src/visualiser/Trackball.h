#pragma once

#include <array>

#include "platform/maverik/Maverik.h"

/// A position in a window, both coordinates from -1 to 1, y upwards.
struct CTrackballPoint {
    float x, y;
    friend bool operator==(const CTrackballPoint&, const CTrackballPoint&) = default;
};

/// The rotation of a running drag on a virtual trackball: a sphere in the middle of the window that
/// the mouse turns, and that goes over into a hyperbolic sheet where the mouse is beside it.
///
/// After Gavin Bell's trackball, as in Michael Chen, S. Joy Mountford, Abigail Sellen, "A Study in
/// Interactive 3-D Rotation Using 2-D Control Devices", 1988.
class CTrackball {
  public:
    /// No rotation, for a camera that sees the world as `view` (world to eye coordinates) says.
    void Begin(const MAV_matrix& view) noexcept;
    /// The mouse has moved from `p1` to `p2`.
    void Turn(const CTrackballPoint& p1, const CTrackballPoint& p2) noexcept;
    /// World to eye coordinates now, rotation only.
    MAV_matrix View() const noexcept;

    /// x, y, z and the scalar part.
    using Quaternion = std::array<float, 4>;
    /// The rotation that takes p2 to p1 on the ball.
    static Quaternion Between(const CTrackballPoint& p1, const CTrackballPoint& p2) noexcept;

  private:
    Quaternion m_quaternion = {0, 0, 0, 1};
    MAV_matrix m_start = MAV_ID_MATRIX;
    int m_compositions = 0;
};
