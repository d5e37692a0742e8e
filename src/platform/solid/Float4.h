#pragma once

/// Four floats at once: SSE2 where the compiler has it, as always on x86-64, else one by one, with
/// the same results. For filters whose answers do not hang on rounding.

#if defined(__SSE2__)
#include <emmintrin.h>
#else
#include <algorithm>
#include <cmath>
#endif

namespace solid {

#if defined(__SSE2__)

class Float4 {
  public:
    Float4() = default;
    Float4(__m128 v) : m_v(v) {}
    explicit Float4(float all) : m_v(_mm_set1_ps(all)) {}
    Float4(float x, float y, float z, float w) : m_v(_mm_setr_ps(x, y, z, w)) {}
    /// From four floats at any address.
    static Float4 Load(const float* p) { return _mm_loadu_ps(p); }
    void Store(float* p) const { _mm_storeu_ps(p, m_v); }

    template <int kLane>
    Float4 Spread() const {
        return _mm_shuffle_ps(m_v, m_v, _MM_SHUFFLE(kLane, kLane, kLane, kLane));
    }
    template <int kLane>
    float Get() const {
        return _mm_cvtss_f32(Spread<kLane>().m_v);
    }
    /// (y, z, x, w) and (z, x, y, w).
    Float4 Next() const { return _mm_shuffle_ps(m_v, m_v, _MM_SHUFFLE(3, 0, 2, 1)); }
    Float4 AfterNext() const { return _mm_shuffle_ps(m_v, m_v, _MM_SHUFFLE(3, 1, 0, 2)); }
    /// Whether one of the first three, or each of them, is larger than that of b. NaN is not.
    bool AnyAbove(Float4 b) const { return (Above(b) & 7) != 0; }
    bool AllAbove(Float4 b) const { return (Above(b) & 7) == 7; }
    /// One bit for each of the four that is larger than that of b.
    unsigned MaskAbove(Float4 b) const { return static_cast<unsigned>(Above(b)); }

    friend Float4 operator+(Float4 a, Float4 b) { return _mm_add_ps(a.m_v, b.m_v); }
    friend Float4 operator-(Float4 a, Float4 b) { return _mm_sub_ps(a.m_v, b.m_v); }
    friend Float4 operator*(Float4 a, Float4 b) { return _mm_mul_ps(a.m_v, b.m_v); }
    friend Float4 operator/(Float4 a, Float4 b) { return _mm_div_ps(a.m_v, b.m_v); }
    friend Float4 Sqrt(Float4 a) { return _mm_sqrt_ps(a.m_v); }
    friend Float4 Abs(Float4 a) { return _mm_andnot_ps(_mm_set1_ps(-0.0F), a.m_v); }
    /// If one of the two is NaN, so is the result or it is b.
    friend Float4 Max(Float4 a, Float4 b) { return _mm_max_ps(a.m_v, b.m_v); }
    friend void Transpose(Float4& a, Float4& b, Float4& c, Float4& d) {
        _MM_TRANSPOSE4_PS(a.m_v, b.m_v, c.m_v, d.m_v);
    }

  private:
    int Above(Float4 b) const { return _mm_movemask_ps(_mm_cmpgt_ps(m_v, b.m_v)); }

    __m128 m_v;
};

#else

class Float4 {
  public:
    Float4() = default;
    explicit Float4(float all) : m_v{all, all, all, all} {}
    Float4(float x, float y, float z, float w) : m_v{x, y, z, w} {}
    static Float4 Load(const float* p) { return {p[0], p[1], p[2], p[3]}; }
    void Store(float* p) const { std::copy_n(m_v, 4, p); }

    template <int kLane>
    Float4 Spread() const {
        return Float4(m_v[kLane]);
    }
    template <int kLane>
    float Get() const {
        return m_v[kLane];
    }
    Float4 Next() const { return {m_v[1], m_v[2], m_v[0], m_v[3]}; }
    Float4 AfterNext() const { return {m_v[2], m_v[0], m_v[1], m_v[3]}; }
    bool AnyAbove(Float4 b) const {
        return m_v[0] > b.m_v[0] || m_v[1] > b.m_v[1] || m_v[2] > b.m_v[2];
    }
    bool AllAbove(Float4 b) const {
        return m_v[0] > b.m_v[0] && m_v[1] > b.m_v[1] && m_v[2] > b.m_v[2];
    }
    unsigned MaskAbove(Float4 b) const {
        unsigned mask = 0;
        for (unsigned i = 0; i < 4; ++i)
            mask |= m_v[i] > b.m_v[i] ? 1U << i : 0U;
        return mask;
    }

    friend Float4 operator+(Float4 a, Float4 b) {
        return Each(a, b, [](float x, float y) { return x + y; });
    }
    friend Float4 operator-(Float4 a, Float4 b) {
        return Each(a, b, [](float x, float y) { return x - y; });
    }
    friend Float4 operator*(Float4 a, Float4 b) {
        return Each(a, b, [](float x, float y) { return x * y; });
    }
    friend Float4 operator/(Float4 a, Float4 b) {
        return Each(a, b, [](float x, float y) { return x / y; });
    }
    friend Float4 Sqrt(Float4 a) {
        return Each(a, a, [](float x, float) { return std::sqrt(x); });
    }
    friend Float4 Abs(Float4 a) {
        return Each(a, a, [](float x, float) { return std::fabs(x); });
    }
    friend Float4 Max(Float4 a, Float4 b) {
        return Each(a, b, [](float x, float y) { return x > y ? x : y; });
    }
    friend void Transpose(Float4& a, Float4& b, Float4& c, Float4& d) {
        Float4* const rows[4] = {&a, &b, &c, &d};
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < i; ++j)
                std::swap(rows[i]->m_v[j], rows[j]->m_v[i]);
        }
    }

  private:
    template <class Operation>
    static Float4 Each(Float4 a, Float4 b, Operation operation) {
        return {operation(a.m_v[0], b.m_v[0]), operation(a.m_v[1], b.m_v[1]),
                operation(a.m_v[2], b.m_v[2]), operation(a.m_v[3], b.m_v[3])};
    }

    float m_v[4];
};

#endif

}  // namespace solid
