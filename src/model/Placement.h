#pragma once

#include "platform/maverik/Maverik.h"

/// Degrees in a radian, as the model converts angles.
inline constexpr float kDegreesPerRadian = 57.29578f;

/// `pose` with its rotation replaced by that of three angles in radians about x, y and z.
inline MAV_matrix WithAngles(const MAV_matrix& pose, float x, float y, float z) noexcept {
    return mav_matrixRPYSet(pose, z * kDegreesPerRadian, x * kDegreesPerRadian,
                            y * kDegreesPerRadian);
}

/// `pose` with its rotation replaced by that of a quaternion.
inline MAV_matrix WithQuaternion(const MAV_matrix& pose, float x, float y, float z,
                                 float w) noexcept {
    return mav_matrixXYZSet(mav_matrixQuaternionConvert({w, x, y, z}), mav_matrixXYZGet(pose));
}

inline MAV_matrix ScalingMatrix(float x, float y, float z) noexcept {
    MAV_matrix m = MAV_ID_MATRIX;
    m[0] = x;
    m[5] = y;
    m[10] = z;
    return m;
}
