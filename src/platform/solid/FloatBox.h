#pragma once

/// Boxes as trees hold them: in single precision, rounded outwards.

#include <algorithm>
#include <limits>

#include "platform/solid/Aabb.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace solid {

/// Closed box in single precision. All bounds are finite: what lies beyond the range of float is
/// moved to its end, which keeps together whatever overlaps.
struct FloatBox {
    float lower[3] = {0, 0, 0};
    float upper[3] = {0, 0, 0};

    /// The smallest such box around `box`, which must not be empty. A NaN bound counts as infinite.
    static FloatBox Around(const Aabb& box);
    /// Larger on all sides by `fraction` of the longest edge.
    FloatBox Grown(float fraction) const;
    bool Contains(const FloatBox& b) const {
        return lower[0] <= b.lower[0] && lower[1] <= b.lower[1] && lower[2] <= b.lower[2] &&
               upper[0] >= b.upper[0] && upper[1] >= b.upper[1] && upper[2] >= b.upper[2];
    }
    bool Overlaps(const FloatBox& b) const {
        return lower[0] <= b.upper[0] && lower[1] <= b.upper[1] && lower[2] <= b.upper[2] &&
               upper[0] >= b.lower[0] && upper[1] >= b.lower[1] && upper[2] >= b.lower[2];
    }
};

inline FloatBox Union(const FloatBox& a, const FloatBox& b) {
    FloatBox both;
    for (int i = 0; i < 3; ++i) {
        both.lower[i] = std::min(a.lower[i], b.lower[i]);
        both.upper[i] = std::max(a.upper[i], b.upper[i]);
    }
    return both;
}

/// A ten-thousandth of the longest edge: what boxes are made larger by before they are measured, so
/// that flat ones and points still differ.
double PadFor(const FloatBox& box);
/// How likely a query is to meet a box: half its surface. (J. Goldsmith, J. Salmon, "Automatic
/// Creation of Object Hierarchies for Ray Tracing", 1987.)
double Measure(const FloatBox& box, double pad);

/// A segment within its box, for queries that the box alone would make too large. `direction` has a
/// largest component of 1 in amount; `radius` is that of what lies around the segment.
struct Slant {
    float middle[3];
    float direction[3];
    float radius;
};

/// What is asked of a tree.
struct QueryVolume {
    FloatBox box;
    bool slanted = false;  ///< `slant` narrows the box
    Slant slant;

    /// Leaves `slanted` false where a test along the slant says nothing: coordinates so large that
    /// single precision may overflow, or a segment of no length.
    void Narrow(const Vec3& middle, const Vec3& half, double radius);
};

/// One box against many: the same answers as FloatBox::Overlaps, in two comparisons of four floats
/// where the machine has them.
class BoxProbe {
  public:
#if defined(__SSE2__)
    explicit BoxProbe(const FloatBox& box)
        : m_upper(_mm_setr_ps(box.upper[0], box.upper[1], box.upper[2], kMost)),
          m_lower(_mm_setr_ps(-kMost, box.lower[0], box.lower[1], box.lower[2])) {}
    bool Overlaps(const FloatBox& box) const {
        // Elements 0 to 3 and 2 to 5 of the box: the middle ones meet bounds that always hold.
        const __m128 first = _mm_loadu_ps(box.lower);
        const __m128 last = _mm_loadu_ps(box.lower + 2);
        const __m128 both = _mm_and_ps(_mm_cmple_ps(first, m_upper), _mm_cmple_ps(m_lower, last));
        return _mm_movemask_ps(both) == 15;
    }

  private:
    static constexpr float kMost = std::numeric_limits<float>::max();
    __m128 m_upper;
    __m128 m_lower;
#else
    explicit BoxProbe(const FloatBox& box) : m_box(box) {}
    bool Overlaps(const FloatBox& box) const {
        return m_box.Overlaps(box);
    }

  private:
    FloatBox m_box;
#endif
};

}  // namespace solid
