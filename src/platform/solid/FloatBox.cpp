#include "platform/solid/FloatBox.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace solid {

namespace {

constexpr float kFloatMax = std::numeric_limits<float>::max();

/// Beyond this, products of coordinates with a direction come near the range of float.
constexpr double kLargestSlant = 1e30;

#if defined(__SSE2__)

/// For each component the largest float of finite value that is not above it, and -kFloatMax for
/// what is below all and for NaN. The last component stands twice.
__m128 RoundDown(__m128d xy, __m128d z) {
    const __m128d most = _mm_set1_pd(static_cast<double>(kFloatMax));
    const __m128d least = _mm_set1_pd(-static_cast<double>(kFloatMax));
    // Of NaN and a number, these operations give the second.
    xy = _mm_min_pd(_mm_max_pd(xy, least), most);
    z = _mm_min_pd(_mm_max_pd(z, least), most);
    const __m128 nearest = _mm_movelh_ps(_mm_cvtpd_ps(xy), _mm_cvtpd_ps(z));
    const __m128d aboveXy = _mm_cmpgt_pd(_mm_cvtps_pd(nearest), xy);
    const __m128d aboveZ = _mm_cmpgt_pd(_mm_cvtps_pd(_mm_movehl_ps(nearest, nearest)), z);
    const __m128 above =
        _mm_shuffle_ps(_mm_castpd_ps(aboveXy), _mm_castpd_ps(aboveZ), _MM_SHUFFLE(2, 0, 2, 0));
    // What lies below 0 becomes at most -0, so that the sign bit tells which way is down.
    const __m128i bits = _mm_castps_si128(nearest);
    const __m128i step = _mm_or_si128(_mm_srai_epi32(bits, 31), _mm_set1_epi32(1));
    return _mm_castsi128_ps(_mm_sub_epi32(bits, _mm_and_si128(step, _mm_castps_si128(above))));
}

void Store(__m128 v, float to[3]) {
    _mm_storel_pi(reinterpret_cast<__m64*>(to), v);
    _mm_store_ss(to + 2, _mm_movehl_ps(v, v));
}

#else

/// The largest float of finite value that is not above `d`, and -kFloatMax for what is below all;
/// without a branch, which would be foretold wrongly every other time.
float RoundDown(double d) {
    constexpr double kMost = static_cast<double>(kFloatMax);
    const double inRange = d > -kMost ? std::min(d, kMost) : -kMost;  // NaN becomes -kMost
    const float f = static_cast<float>(inRange);
    const std::uint32_t above = static_cast<double>(f) > inRange ? 1 : 0;
    // What lies below 0 becomes at most -0, so that the sign bit tells which way is down.
    auto bits = std::bit_cast<std::uint32_t>(f);
    bits += (bits >> 31) != 0 ? above : 0 - above;
    return std::bit_cast<float>(bits);
}

float RoundUp(double d) {
    return -RoundDown(-d);
}

#endif

double Edge(const FloatBox& b, int axis) {
    return static_cast<double>(b.upper[axis]) - static_cast<double>(b.lower[axis]);
}

}  // namespace

FloatBox FloatBox::Around(const Aabb& box) {
#if defined(__SSE2__)
    const __m128d sign = _mm_set1_pd(-0.0);
    FloatBox around;
    Store(RoundDown(_mm_loadu_pd(&box.lower.x), _mm_load1_pd(&box.lower.z)), around.lower);
    const __m128 upper = RoundDown(_mm_xor_pd(_mm_loadu_pd(&box.upper.x), sign),
                                   _mm_xor_pd(_mm_load1_pd(&box.upper.z), sign));
    Store(_mm_xor_ps(upper, _mm_set1_ps(-0.0f)), around.upper);
    return around;
#else
    return {{RoundDown(box.lower.x), RoundDown(box.lower.y), RoundDown(box.lower.z)},
            {RoundUp(box.upper.x), RoundUp(box.upper.y), RoundUp(box.upper.z)}};
#endif
}

FloatBox FloatBox::Grown(float fraction) const {
    float longest = 0;
    for (int i = 0; i < 3; ++i) {
        longest = std::max(longest, upper[i] - lower[i]);
    }
    const float by = longest * fraction;
    FloatBox grown;
    for (int i = 0; i < 3; ++i) {
        grown.lower[i] = std::max(lower[i] - by, -kFloatMax);
        grown.upper[i] = std::min(upper[i] + by, kFloatMax);
    }
    return grown;
}

double PadFor(const FloatBox& b) {
    double longest = 0;
    for (int i = 0; i < 3; ++i) {
        longest = std::max(longest, Edge(b, i));
    }
    return longest * 1e-4;
}

double Measure(const FloatBox& b, double pad) {
    const double x = Edge(b, 0) + pad;
    const double y = Edge(b, 1) + pad;
    const double z = Edge(b, 2) + pad;
    return x * y + y * z + z * x;
}

void QueryVolume::Narrow(const Vec3& middle, const Vec3& half, double radius) {
    const double length = MaxNorm(half);
    slanted = length > 0 && MaxNorm(middle) + length + radius < kLargestSlant;
    if (!slanted) {
        return;
    }
    // Twice: the inverse of a length near the smallest would not be finite.
    const double scale = length < 1 ? 0x1p900 : 1;
    const Vec3 direction = half * scale * (1 / (length * scale));
    for (int i = 0; i < 3; ++i) {
        slant.middle[i] = static_cast<float>(middle[i]);
        slant.direction[i] = static_cast<float>(direction[i]);
    }
    slant.radius = static_cast<float>(radius);
}

}  // namespace solid
