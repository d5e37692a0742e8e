#pragma once

/// Vectors, matrices, quaternions and camera records.
///
/// All types are plain values of single precision; the arithmetic inside is double. No function
/// throws, allocates, or looks at shared state. Values that are not finite go through: the result
/// is then not finite either, and nothing else happens.

#include <array>
#include <cstddef>

/// 4 by 4, row-major, acting on column vectors: the translation stands at 3, 7, 11, the factors of
/// a pure scaling at 0, 5, 10.
struct MAV_matrix {
    std::array<float, 16> mat;

    float& operator[](std::size_t i) { return mat[i]; }
    float operator[](std::size_t i) const { return mat[i]; }
    friend bool operator==(const MAV_matrix&, const MAV_matrix&) = default;
};

struct MAV_vector {
    float x, y, z;
    friend bool operator==(const MAV_vector&, const MAV_vector&) = default;
};

/// w is the scalar part. Need not be of unit length; one of length zero stands for no rotation.
struct MAV_quaternion {
    float w, x, y, z;
    friend bool operator==(const MAV_quaternion&, const MAV_quaternion&) = default;
};

struct MAV_viewParams;
/// Changes a camera between its being set and its being used.
using MAV_viewModifier = void (*)(MAV_viewParams& params);

/// The camera of a window, in world coordinates. `view`, `up` and `right` are unit vectors.
struct MAV_viewParams {
    MAV_vector eye;
    MAV_vector view;
    MAV_vector up;
    MAV_vector fixed_up;  ///< the direction that navigation takes for upwards
    MAV_vector right;
    MAV_viewModifier mod;  ///< may be null
};

inline constexpr MAV_matrix MAV_ID_MATRIX{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

/// a·b: the map that applies b first.
MAV_matrix mav_matrixMult(const MAV_matrix& a, const MAV_matrix& b);
/// m with its translation replaced by v.
MAV_matrix mav_matrixXYZSet(const MAV_matrix& m, const MAV_vector& v);
MAV_vector mav_matrixXYZGet(const MAV_matrix& m);
/// m with its 3 by 3 part replaced by Ry(yaw)·Rx(pitch)·Rz(roll), right-handed, in degrees; exact
/// for multiples of 90. Translation and last row stay.
MAV_matrix mav_matrixRPYSet(const MAV_matrix& m, float roll, float pitch, float yaw);
/// The rotation of q, with no translation.
MAV_matrix mav_matrixQuaternionConvert(const MAV_quaternion& q);
/// The unit quaternion, w not below 0, of the rotation part of m, which must be orthonormal within
/// rounding.
MAV_quaternion mav_quaternionMatrixConvert(const MAV_matrix& m);
/// Spherical interpolation the shorter way round; s = 0 gives a and s = 1 gives b, bit for bit.
MAV_quaternion mav_quaternionInterpolate(const MAV_quaternion& a, const MAV_quaternion& b, float s);

MAV_vector mav_vectorSet(float x, float y, float z);
MAV_vector mav_vectorAdd(const MAV_vector& a, const MAV_vector& b);
MAV_vector mav_vectorSub(const MAV_vector& a, const MAV_vector& b);
MAV_vector mav_vectorScalar(const MAV_vector& a, float s);
MAV_vector mav_vectorCrossProduct(const MAV_vector& a, const MAV_vector& b);
float mav_vectorDotProduct(const MAV_vector& a, const MAV_vector& b);
/// a scaled to length 1; the zero vector stays as it is.
MAV_vector mav_vectorNormalize(const MAV_vector& a);
/// The same, but `otherwise` for what has no direction: no length, or one that is not finite.
MAV_vector mav_vectorDirection(const MAV_vector& a, const MAV_vector& otherwise) noexcept;
/// Some unit vector at a right angle to `view`, level where y is up.
MAV_vector mav_vectorAcross(const MAV_vector& view) noexcept;

/// The camera at s between a (s = 0) and b (s = 1): the eye moves on a straight line, the frame of
/// view, up and right turns about one axis at constant speed, the shorter way round. At 0 and 1 the
/// whole record of that end; between them view, up and right are unit vectors at right angles, and
/// the modifier is that of a.
MAV_viewParams mav_viewParamsInterpolate(const MAV_viewParams& a, const MAV_viewParams& b, float s);
