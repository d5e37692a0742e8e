#include "platform/solid/BoxFilter.h"

#include "platform/solid/Float4.h"
#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

/// Unit axes of a box as rows: x holds the first coordinates of all three, and so on.
struct UnitAxes {
    Float4 x{0}, y{0}, z{0};
    Float4 half{0};  ///< lengths in the world
    bool sound = false;

    explicit UnitAxes(const FilterBox& box)
        : x(Float4::Load(box.columns[0])),
          y(Float4::Load(box.columns[1])),
          z(Float4::Load(box.columns[2])) {
        // Ones in the last places, so that nothing is divided by 0.
        Float4 unused(1);
        Transpose(x, y, z, unused);
        const Float4 squares = x * x + y * y + z * z;
        sound = squares.AllAbove(Float4(kFilterLeastSquare)) &&
                Float4(1 / kFilterLeastSquare).AllAbove(squares);
        const Float4 lengths = Sqrt(squares);
        const Float4 inverse = Float4(1) / lengths;
        x = x * inverse;
        y = y * inverse;
        z = z * inverse;
        half = lengths * Abs(Float4(static_cast<float>(box.half.x), static_cast<float>(box.half.y),
                                    static_cast<float>(box.half.z), 0));
    }
    /// Of the vector (x, y, z), each coordinate spread over all places.
    Float4 Along(Float4 vx, Float4 vy, Float4 vz) const { return x * vx + y * vy + z * vz; }
    template <int kAxis>
    Float4 Of(const UnitAxes& other) const {
        return Along(other.x.Spread<kAxis>(), other.y.Spread<kAxis>(), other.z.Spread<kAxis>());
    }
};

/// How far the boxes are apart along the axes across edge `kEdge` of a and each edge of b; `r` are
/// the cosines between edges, one row for each edge of a.
template <int kEdge>
Float4 EdgeGaps(const Float4 (&r)[3], const Float4 (&abs)[3], Float4 halfA, Float4 halfB,
                Float4 apart) {
    constexpr int kNext = (kEdge + 1) % 3, kLast = (kEdge + 2) % 3;
    const Float4 distance =
        Abs(apart.Spread<kLast>() * r[kNext] - apart.Spread<kNext>() * r[kLast]);
    const Float4 reachA = halfA.Spread<kNext>() * abs[kLast] + halfA.Spread<kLast>() * abs[kNext];
    const Float4 reachB =
        halfB.Next() * abs[kEdge].AfterNext() + halfB.AfterNext() * abs[kEdge].Next();
    return distance - (reachA + reachB);
}

}  // namespace

/// Separating axes of boxes with right angles (Stefan Gottschalk, "Separating axis theorem", 1996).
BoxAnswer FilterBoxes(const FilterBox& a, const FilterBox& b, double margins) {
    const UnitAxes axesA(a), axesB(b);
    const Vec3 apart = b.centre - a.centre;
    const Float4 dx(static_cast<float>(apart.x)), dy(static_cast<float>(apart.y)),
        dz(static_cast<float>(apart.z));
    const Float4 apartA = axesA.Along(dx, dy, dz), apartB = axesB.Along(dx, dy, dz);

    const Float4 sizes = axesA.half + axesB.half + Abs(apartA);
    const float size = sizes.Get<0>() + sizes.Get<1>() + sizes.Get<2>();
    if (!axesA.sound || !axesB.sound || !(size > kFilterLeastSize))
        return BoxAnswer::kUnknown;
    const float unsure = kFilterRounding * size;
    const Float4 clearly(unsure + static_cast<float>(margins) * (1 + kFilterRounding));

    const Float4 r[3] = {axesB.Of<0>(axesA), axesB.Of<1>(axesA), axesB.Of<2>(axesA)};
    const Float4 abs[3] = {Abs(r[0]), Abs(r[1]), Abs(r[2])};
    const Float4 gapsB =
        Abs(apartB) - (axesB.half + axesA.half.Spread<0>() * abs[0] +
                       axesA.half.Spread<1>() * abs[1] + axesA.half.Spread<2>() * abs[2]);
    if (gapsB.AnyAbove(clearly))
        return BoxAnswer::kApart;
    Float4 t0 = abs[0], t1 = abs[1], t2 = abs[2], unused(0);
    Transpose(t0, t1, t2, unused);
    const Float4 gapsA = Abs(apartA) - (axesA.half + axesB.half.Spread<0>() * t0 +
                                        axesB.half.Spread<1>() * t1 + axesB.half.Spread<2>() * t2);
    if (gapsA.AnyAbove(clearly))
        return BoxAnswer::kApart;
    const Float4 edges = Max(Max(EdgeGaps<0>(r, abs, axesA.half, axesB.half, apartA),
                                 EdgeGaps<1>(r, abs, axesA.half, axesB.half, apartA)),
                             EdgeGaps<2>(r, abs, axesA.half, axesB.half, apartA));
    if (edges.AnyAbove(clearly))
        return BoxAnswer::kApart;
    const Float4 greatest = Max(Max(gapsA, gapsB), edges);
    return Float4(-unsure).AllAbove(greatest) ? BoxAnswer::kTouch : BoxAnswer::kUnknown;
}

}  // namespace solid
