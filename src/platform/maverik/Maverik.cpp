#include "platform/maverik/Maverik.h"

#include <cmath>
#include <glm/gtc/quaternion.hpp>
#include <glm/mat3x3.hpp>
#include <glm/vec3.hpp>

namespace {

glm::dvec3 ToDouble(const MAV_vector& v) {
    return {v.x, v.y, v.z};
}

MAV_vector ToFloat(const glm::dvec3& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

/// Length 1, and for length zero the identity.
glm::dquat ToUnit(const MAV_quaternion& q) {
    const glm::dquat d(q.w, q.x, q.y, q.z);
    const double length = std::sqrt(glm::dot(d, d));
    return length == 0 ? glm::dquat(1, 0, 0, 0) : d / length;
}

MAV_quaternion ToFloat(const glm::dquat& q) {
    return {static_cast<float>(q.w), static_cast<float>(q.x), static_cast<float>(q.y),
            static_cast<float>(q.z)};
}

glm::dvec3 UnitOr(const glm::dvec3& v, const glm::dvec3& fallback) {
    const double length = std::sqrt(glm::dot(v, v));
    return length > 0 ? v / length : fallback;
}

/// m with its 3 by 3 part replaced; glm's matrices are indexed by column first.
MAV_matrix WithRotation(MAV_matrix m, const glm::dmat3& rotation) {
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            m[static_cast<std::size_t>(4 * row + column)] =
                static_cast<float>(rotation[column][row]);
    }
    return m;
}

struct SinCos {
    double sin;
    double cos;
};

/// The quadrant is split off in degrees, where it is exact, so that quarter turns come out exact.
SinCos SinCosDegrees(float degrees) {
    constexpr double kRadiansPerDegree = 3.14159265358979323846 / 180.0;
    int quadrant = 0;
    const double rest = std::remquo(static_cast<double>(degrees), 90.0, &quadrant);
    const double s = std::sin(rest * kRadiansPerDegree);
    const double c = std::cos(rest * kRadiansPerDegree);
    switch (quadrant & 3) {
        case 0:
            return {s, c};
        case 1:
            return {c, -s};
        case 2:
            return {-s, -c};
        default:
            return {-c, s};
    }
}

/// The rotation that carries x, y, z onto right, up, -view. `up` is turned until it stands at right
/// angles to `view`; if the two are parallel, an axis takes its place.
glm::dquat CameraFrame(const MAV_viewParams& params) {
    const glm::dvec3 view = UnitOr(ToDouble(params.view), {0, 0, -1});
    const glm::dvec3 axis = std::abs(view.y) < 0.5 ? glm::dvec3(0, 1, 0) : glm::dvec3(0, 0, 1);
    const glm::dvec3 right =
        UnitOr(glm::cross(view, ToDouble(params.up)), glm::normalize(glm::cross(view, axis)));
    return glm::quat_cast(glm::dmat3(right, glm::cross(right, view), -view));
}

}  // namespace

MAV_matrix mav_matrixMult(const MAV_matrix& a, const MAV_matrix& b) {
    MAV_matrix product;
    for (std::size_t row = 0; row < 16; row += 4) {
        for (std::size_t column = 0; column < 4; ++column) {
            double sum = 0;
            for (std::size_t k = 0; k < 4; ++k)
                sum += static_cast<double>(a[row + k]) * static_cast<double>(b[4 * k + column]);
            product[row + column] = static_cast<float>(sum);
        }
    }
    return product;
}

MAV_matrix mav_matrixXYZSet(const MAV_matrix& m, const MAV_vector& v) {
    MAV_matrix result = m;
    result[3] = v.x;
    result[7] = v.y;
    result[11] = v.z;
    return result;
}

MAV_vector mav_matrixXYZGet(const MAV_matrix& m) {
    return {m[3], m[7], m[11]};
}

MAV_matrix mav_matrixRPYSet(const MAV_matrix& m, float roll, float pitch, float yaw) {
    const SinCos r = SinCosDegrees(roll);
    const SinCos p = SinCosDegrees(pitch);
    const SinCos y = SinCosDegrees(yaw);
    const glm::dmat3 aboutZ(r.cos, r.sin, 0, -r.sin, r.cos, 0, 0, 0, 1);
    const glm::dmat3 aboutX(1, 0, 0, 0, p.cos, p.sin, 0, -p.sin, p.cos);
    const glm::dmat3 aboutY(y.cos, 0, -y.sin, 0, 1, 0, y.sin, 0, y.cos);
    return WithRotation(m, aboutY * aboutX * aboutZ);
}

MAV_matrix mav_matrixQuaternionConvert(const MAV_quaternion& q) {
    return WithRotation(MAV_ID_MATRIX, glm::mat3_cast(ToUnit(q)));
}

MAV_quaternion mav_quaternionMatrixConvert(const MAV_matrix& m) {
    glm::dmat3 rotation;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            rotation[column][row] = m[static_cast<std::size_t>(4 * row + column)];
    }
    // Takes the largest of the four components as its pivot, so that half turns are exact too.
    const glm::dquat q = glm::normalize(glm::quat_cast(rotation));
    return ToFloat(q.w < 0 ? -q : q);
}

MAV_quaternion mav_quaternionInterpolate(const MAV_quaternion& a, const MAV_quaternion& b,
                                         float s) {
    if (s == 0.0f)
        return a;
    if (s == 1.0f)
        return b;
    return ToFloat(glm::slerp(ToUnit(a), ToUnit(b), static_cast<double>(s)));
}

MAV_vector mav_vectorSet(float x, float y, float z) {
    return {x, y, z};
}

MAV_vector mav_vectorAdd(const MAV_vector& a, const MAV_vector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

MAV_vector mav_vectorSub(const MAV_vector& a, const MAV_vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

MAV_vector mav_vectorScalar(const MAV_vector& a, float s) {
    return {a.x * s, a.y * s, a.z * s};
}

MAV_vector mav_vectorCrossProduct(const MAV_vector& a, const MAV_vector& b) {
    return ToFloat(glm::cross(ToDouble(a), ToDouble(b)));
}

float mav_vectorDotProduct(const MAV_vector& a, const MAV_vector& b) {
    return static_cast<float>(glm::dot(ToDouble(a), ToDouble(b)));
}

MAV_vector mav_vectorNormalize(const MAV_vector& a) {
    const glm::dvec3 v = ToDouble(a);
    const double length = std::sqrt(glm::dot(v, v));
    return length == 0 ? a : ToFloat(v / length);
}

MAV_vector mav_vectorDirection(const MAV_vector& a, const MAV_vector& otherwise) noexcept {
    const MAV_vector unit = mav_vectorNormalize(a);
    const float length = mav_vectorDotProduct(unit, unit);
    return length > 0.5F && length < 1.5F ? unit : otherwise;
}

MAV_vector mav_vectorAcross(const MAV_vector& view) noexcept {
    return mav_vectorDirection({-view.z, 0, view.x}, {1, 0, 0});
}

MAV_viewParams mav_viewParamsInterpolate(const MAV_viewParams& a, const MAV_viewParams& b,
                                         float s) {
    if (s == 0.0f)
        return a;
    if (s == 1.0f)
        return b;
    const double t = s;
    const glm::dmat3 frame = glm::mat3_cast(glm::slerp(CameraFrame(a), CameraFrame(b), t));
    MAV_viewParams result = a;
    result.eye = ToFloat((1 - t) * ToDouble(a.eye) + t * ToDouble(b.eye));
    result.right = ToFloat(frame[0]);
    result.up = ToFloat(frame[1]);
    result.view = ToFloat(-frame[2]);
    result.fixed_up =
        ToFloat(UnitOr((1 - t) * ToDouble(a.fixed_up) + t * ToDouble(b.fixed_up), frame[1]));
    return result;
}
