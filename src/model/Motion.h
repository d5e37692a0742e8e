#pragma once

#include "model/KeyTrack.h"
#include "platform/maverik/Maverik.h"

/// A pose and scale that a group or object has at one time.
struct CKeyState {
    float time;
    MAV_vector pos;
    MAV_quaternion quat;
    MAV_vector scale;
};

/// The track of a group or an object.
class CMotion : public CKeyTrack<CKeyState> {
  public:
    /// Appends a key. `pos` and `scale` are three floats each, `orient` three angles in radians or,
    /// if `isQuaternion`, x, y, z, w. What is null is taken from the last key, and where there is
    /// none from the two matrices. Times must not descend. Strong guarantee.
    void AddKeyState(float time, const float* pos, const float* orient, const float* scale,
                     bool isQuaternion, const MAV_matrix& pose, const MAV_matrix& scaleMatrix);
    /// Pose and scale at `time`; of `scaleMatrix` only elements 0, 5 and 10 are written. Needs at
    /// least one key.
    void Evaluate(float time, MAV_matrix& pose, MAV_matrix& scaleMatrix) const noexcept;
};
