#include "visualiser/Trackball.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr float kRadius = 0.8F;
/// From here on outwards, radius / sqrt(2), the sheet.
constexpr float kSheet = 0.56568545F;
/// Compositions after which rounding is taken out.
constexpr int kRenormalisation = 98;

MAV_vector OnBall(const CTrackballPoint& p) {
    const float d = std::hypot(p.x, p.y);
    const float z = d < kSheet ? std::sqrt(kRadius * kRadius - d * d) : kRadius * kRadius / 2 / d;
    return {p.x, p.y, z};
}

CTrackball::Quaternion Product(const CTrackball::Quaternion& a, const CTrackball::Quaternion& b) {
    return {a[3] * b[0] + b[3] * a[0] + a[1] * b[2] - a[2] * b[1],
            a[3] * b[1] + b[3] * a[1] + a[2] * b[0] - a[0] * b[2],
            a[3] * b[2] + b[3] * a[2] + a[0] * b[1] - a[1] * b[0],
            a[3] * b[3] - a[0] * b[0] - a[1] * b[1] - a[2] * b[2]};
}

MAV_matrix Transposed(const MAV_matrix& m) {
    MAV_matrix t = m;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            t[4 * row + column] = m[4 * column + row];
        }
    }
    return t;
}

}  // namespace

CTrackball::Quaternion CTrackball::Between(const CTrackballPoint& p1,
                                           const CTrackballPoint& p2) noexcept {
    if (p1 == p2) {
        return {0, 0, 0, 1};
    }
    const MAV_vector a = OnBall(p1);
    const MAV_vector b = OnBall(p2);
    const MAV_vector axis = mav_vectorNormalize(mav_vectorCrossProduct(b, a));
    const MAV_vector chord = mav_vectorSub(a, b);
    const float half =
        std::clamp(std::hypot(chord.x, chord.y, chord.z) / (2 * kRadius), -1.0F, 1.0F);
    // The half of the angle 2 asin(half) is what a quaternion wants.
    const float angle = std::asin(half);
    const float s = std::sin(angle);
    return {axis.x * s, axis.y * s, axis.z * s, std::cos(angle)};
}

void CTrackball::Begin(const MAV_matrix& view) noexcept {
    m_quaternion = {0, 0, 0, 1};
    m_start = mav_matrixXYZSet(view, {0, 0, 0});
    // The counter of compositions runs on.
}

void CTrackball::Turn(const CTrackballPoint& p1, const CTrackballPoint& p2) noexcept {
    m_quaternion = Product(m_quaternion, Between(p1, p2));
    if (++m_compositions >= kRenormalisation) {
        m_compositions = 0;
        float squares = 0;
        for (const float part : m_quaternion) {
            squares += part * part;
        }
        for (float& part : m_quaternion) {
            part /= squares;
        }
    }
}

MAV_matrix CTrackball::View() const noexcept {
    const auto& [x, y, z, w] = m_quaternion;
    return mav_matrixMult(Transposed(mav_matrixQuaternionConvert({w, x, y, z})), m_start);
}
