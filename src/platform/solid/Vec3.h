#pragma once

/// Vectors, 3 by 3 matrices and affine maps in double precision. Column vectors throughout.

#include <algorithm>
#include <cmath>

namespace solid {

struct Vec3 {
    double x = 0, y = 0, z = 0;

    double operator[](int i) const { return i == 0 ? x : i == 1 ? y : z; }
    double& operator[](int i) { return i == 0 ? x : i == 1 ? y : z; }
    Vec3& operator+=(const Vec3& b) { return x += b.x, y += b.y, z += b.z, *this; }
    Vec3& operator-=(const Vec3& b) { return x -= b.x, y -= b.y, z -= b.z, *this; }
    Vec3& operator*=(double s) { return x *= s, y *= s, z *= s, *this; }
    bool operator==(const Vec3& b) const = default;
};

/// A point as it was given.
struct FloatPoint {
    float x, y, z;
};
inline Vec3 ToVec3(const FloatPoint& p) {
    return {static_cast<double>(p.x), static_cast<double>(p.y), static_cast<double>(p.z)};
}

inline Vec3 operator+(Vec3 a, const Vec3& b) {
    return a += b;
}
inline Vec3 operator-(Vec3 a, const Vec3& b) {
    return a -= b;
}
inline Vec3 operator-(const Vec3& a) {
    return {-a.x, -a.y, -a.z};
}
inline Vec3 operator*(Vec3 a, double s) {
    return a *= s;
}
inline Vec3 operator*(double s, Vec3 a) {
    return a *= s;
}
inline double Dot(const Vec3& a, const Vec3& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec3 Cross(const Vec3& a, const Vec3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double LengthSquared(const Vec3& a) {
    return Dot(a, a);
}
inline double Length(const Vec3& a) {
    return std::sqrt(Dot(a, a));
}
inline double MaxNorm(const Vec3& a) {
    return std::max({std::fabs(a.x), std::fabs(a.y), std::fabs(a.z)});
}
inline Vec3 Abs(const Vec3& a) {
    return {std::fabs(a.x), std::fabs(a.y), std::fabs(a.z)};
}
inline Vec3 Min(const Vec3& a, const Vec3& b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)};
}
inline Vec3 Max(const Vec3& a, const Vec3& b) {
    return {std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)};
}
inline bool IsFinite(const Vec3& a) {
    return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z);
}

/// Three columns.
struct Mat3 {
    Vec3 col[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

    Vec3 operator*(const Vec3& v) const { return col[0] * v.x + col[1] * v.y + col[2] * v.z; }
    /// The transpose times v.
    Vec3 TransposeTimes(const Vec3& v) const {
        return {Dot(col[0], v), Dot(col[1], v), Dot(col[2], v)};
    }
};

/// x -> linear * x + origin.
struct Affine {
    Mat3 linear;
    Vec3 origin;

    Vec3 operator*(const Vec3& p) const { return linear * p + origin; }
};

inline bool IsFinite(const Affine& a) {
    return IsFinite(a.linear.col[0]) && IsFinite(a.linear.col[1]) && IsFinite(a.linear.col[2]) &&
           IsFinite(a.origin);
}

}  // namespace solid
