#pragma once

#include <array>
#include <cmath>

// The little geometry that the reference scene needs, in double precision and written for clarity
// alone. It shares nothing with the library.

namespace reference {

using Vector = std::array<double, 3>;

/// w, x, y, z.
using Quaternion = std::array<double, 4>;

/// An affine map of column vectors: 3 rows of a linear part and a translation.
using Affine = std::array<std::array<double, 4>, 3>;

constexpr Affine kIdentity = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};

inline Affine operator*(const Affine& a, const Affine& b) {
    Affine product = {};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            product[row][column] = column == 3 ? a[row][3] : 0.0;
            for (std::size_t k = 0; k < 3; ++k) {
                product[row][column] += a[row][k] * b[k][column];
            }
        }
    }
    return product;
}

inline Quaternion operator*(const Quaternion& a, const Quaternion& b) {
    return {a[0] * b[0] - a[1] * b[1] - a[2] * b[2] - a[3] * b[3],
            a[0] * b[1] + a[1] * b[0] + a[2] * b[3] - a[3] * b[2],
            a[0] * b[2] - a[1] * b[3] + a[2] * b[0] + a[3] * b[1],
            a[0] * b[3] + a[1] * b[2] - a[2] * b[1] + a[3] * b[0]};
}

inline double Dot(const Quaternion& a, const Quaternion& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
}

inline Quaternion Normalised(const Quaternion& q) {
    const double length = std::sqrt(Dot(q, q));
    return {q[0] / length, q[1] / length, q[2] / length, q[3] / length};
}

/// Ry(y) Rx(x) Rz(z), radians.
inline Quaternion FromAngles(double x, double y, double z) {
    const Quaternion aboutX = {std::cos(x / 2), std::sin(x / 2), 0, 0};
    const Quaternion aboutY = {std::cos(y / 2), 0, std::sin(y / 2), 0};
    const Quaternion aboutZ = {std::cos(z / 2), 0, 0, std::sin(z / 2)};
    return aboutY * aboutX * aboutZ;
}

/// The shorter of the two great-circle arcs from a to b (Shoemake: Animating Rotation with
/// Quaternion Curves, 1985).
inline Quaternion Slerp(const Quaternion& a, Quaternion b, double s) {
    double cosine = Dot(a, b);
    if (cosine < 0) {
        cosine = -cosine;
        b = {-b[0], -b[1], -b[2], -b[3]};
    }
    const double angle = std::acos(std::fmin(cosine, 1.0));
    if (angle < 1e-9) {
        return b;
    }
    const double from = std::sin((1 - s) * angle) / std::sin(angle);
    const double to = std::sin(s * angle) / std::sin(angle);
    return {from * a[0] + to * b[0], from * a[1] + to * b[1], from * a[2] + to * b[2],
            from * a[3] + to * b[3]};
}

/// Scale first, then turn, then move.
inline Affine Compose(const Vector& position, const Quaternion& turn, const Vector& scale) {
    const auto [w, x, y, z] = turn;
    const Affine rotation = {
        {{1 - 2 * (y * y + z * z), 2 * (x * y - w * z), 2 * (x * z + w * y), 0},
         {2 * (x * y + w * z), 1 - 2 * (x * x + z * z), 2 * (y * z - w * x), 0},
         {2 * (x * z - w * y), 2 * (y * z + w * x), 1 - 2 * (x * x + y * y), 0}}};
    Affine result = rotation;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            result[row][column] *= scale[column];
        }
        result[row][3] = position[row];
    }
    return result;
}

/// The point that `map` carries to `world`; false when the map is flat or nearly so.
inline bool Unmap(const Affine& map, const Vector& world, Vector& local) {
    const auto cofactor = [&map](std::size_t r, std::size_t c) {
        const std::size_t r1 = (r + 1) % 3;
        const std::size_t r2 = (r + 2) % 3;
        const std::size_t c1 = (c + 1) % 3;
        const std::size_t c2 = (c + 2) % 3;
        return map[r1][c1] * map[r2][c2] - map[r1][c2] * map[r2][c1];
    };
    const double determinant =
        map[0][0] * cofactor(0, 0) + map[0][1] * cofactor(0, 1) + map[0][2] * cofactor(0, 2);
    if (std::fabs(determinant) < 1e-3) {
        return false;
    }
    for (std::size_t row = 0; row < 3; ++row) {
        local[row] = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            local[row] += cofactor(k, row) * (world[k] - map[k][3]) / determinant;
        }
    }
    return true;
}

}  // namespace reference
