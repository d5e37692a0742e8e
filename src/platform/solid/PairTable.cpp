/// The table of pairs: how each two kinds of core are answered.

#include <utility>

#include "platform/solid/BoxCases.h"
#include "platform/solid/BoxDepth.h"
#include "platform/solid/ConvexPair.h"
#include "platform/solid/Epa.h"
#include "platform/solid/Gjk.h"
#include "platform/solid/HullDepth.h"
#include "platform/solid/PointCases.h"
#include "platform/solid/RoundCases.h"
#include "platform/solid/Tolerances.h"

namespace solid {

namespace {

// ---- What every method ends with ---------------------------------------------------------------

/// Cores `distance` apart along `axis` (unit, from b to a), at `a` and `b`; the bodies do not
/// touch.
PointPair Apart(const Core& coreA, const Core& coreB, const Vec3& a, const Vec3& b,
                const Vec3& axis, double distance) {
    const double gap = distance - (coreA.radius + coreB.radius);
    // Never 0: that is the answer for contact.
    return {a - axis * coreA.radius, b + axis * coreB.radius,
            std::max(gap, std::numeric_limits<double>::min())};
}

/// A point of both bodies, whose cores are `distance` apart, not more than the radii.
PointPair Common(const Core& coreA, const Core& coreB, const Vec3& a, const Vec3& b,
                 double distance) {
    const double radius = coreA.radius + coreB.radius;
    if (!(distance > 0) || !(radius > 0))
        return {(a + b) * 0.5, (a + b) * 0.5, 0};
    const Vec3 common = a + (b - a) * (coreA.radius / radius);
    return {common, common, 0};
}

/// The cores reach `depth` into each other (below 0: they are that far apart), with a - b = depth *
/// axis.
PointPair Deep(const Core& coreA, const Core& coreB, const Vec3& a, const Vec3& b, const Vec3& axis,
               double depth) {
    return {a + axis * coreA.radius, b - axis * coreB.radius,
            std::max(0.0, depth + coreA.radius + coreB.radius)};
}

// ---- Iteration, for any two kinds --------------------------------------------------------------

bool GjkContact(const Core& a, const Core& b) {
    return RunGjk(a, b, GjkQuestion::kContact).contact;
}

PointPair GjkClosest(const Core& a, const Core& b) {
    const GjkResult gjk = RunGjk(a, b, GjkQuestion::kDistance);
    if (gjk.contact)
        return Common(a, b, gjk.a, gjk.b, gjk.distance);
    return Apart(a, b, gjk.a, gjk.b, gjk.axis, gjk.distance);
}

/// Whether the cores are as far apart along the axis found as the iteration says. Thin cores that
/// coincide may seem apart by rounding, in a direction that has no meaning.
bool ArePartedAlong(const Core& a, const Core& b, const GjkResult& gjk) {
    const SupportPoint nearest = SupportDifference(a, b, -gjk.axis);
    const double scale = std::max(MaxNorm(nearest.w), MaxNorm(nearest.a - a.centre));
    return Dot(nearest.w, gjk.axis) >=
           gjk.distance - kPartedSlack * std::max(gjk.distance, kTouch * scale);
}

bool GjkPenetration(const Core& a, const Core& b, PointPair& result) {
    Simplex last;
    const GjkResult touch = RunGjk(a, b, GjkQuestion::kContact, &last);
    if (!touch.contact)
        return false;
    if (a.radius + b.radius > 0 && !touch.coresTouch) {
        const GjkResult gjk = RunGjk(a, b, GjkQuestion::kCores, &last);
        if (!gjk.coresTouch && ArePartedAlong(a, b, gjk)) {
            result = Deep(a, b, gjk.a, gjk.b, -gjk.axis, -gjk.distance);
            return true;
        }
    }
    const DepthResult epa = ExpandPolytope(a, b, &last);
    result = Deep(a, b, epa.a, epa.b, epa.axis, epa.depth);
    return true;
}

// ---- A point (with a radius: a sphere) in closed form -------------------------------------------

using PlaceFunction = PointPlace (*)(const Core&, const Vec3&);

/// How near counts as touching: the rounding of coordinates of this size.
double TouchSlack(const Core& a, const Core& b) {
    return kTouch * std::max({MaxNorm(a.centre - b.centre), a.radius, b.radius});
}

template <PlaceFunction Place>
bool PointTouches(const Core& a, const Core& b, const PointPlace& place) {
    return place.distance <= a.radius + b.radius + TouchSlack(a, b);
}

template <PlaceFunction Place>
bool PointContact(const Core& a, const Core& b) {
    return PointTouches<Place>(a, b, Place(b, a.centre));
}

template <PlaceFunction Place>
PointPair PointClosest(const Core& a, const Core& b) {
    const PointPlace place = Place(b, a.centre);
    if (!PointTouches<Place>(a, b, place))
        return Apart(a, b, a.centre, place.border, place.normal, place.distance);
    if (place.distance <= 0)
        return Common(a, b, a.centre, a.centre, 0);
    return Common(a, b, a.centre, place.border, place.distance);
}

template <PlaceFunction Place>
bool PointPenetration(const Core& a, const Core& b, PointPair& result) {
    const PointPlace place = Place(b, a.centre);
    if (!PointTouches<Place>(a, b, place))
        return false;
    result = Deep(a, b, a.centre, place.border, -place.normal, -place.distance);
    return true;
}

// ---- Cylinders and cones, in closed form where their axes are parallel --------------------------

bool RoundTouch(const Core& a, const Core& b, const RoundPlace& place) {
    const double size = std::max(MaxNorm(place.a - a.centre), MaxNorm(place.b - b.centre));
    return place.distance <= a.radius + b.radius + TouchSlack(a, b) + kTouch * size;
}

bool RoundContact(const Core& a, const Core& b) {
    RoundPlace place;
    return PlaceRound(a, b, place) ? RoundTouch(a, b, place) : GjkContact(a, b);
}

PointPair RoundClosest(const Core& a, const Core& b) {
    RoundPlace place;
    if (!PlaceRound(a, b, place))
        return GjkClosest(a, b);
    if (!RoundTouch(a, b, place))
        return Apart(a, b, place.a, place.b, place.normal, place.distance);
    if (place.distance > 0)
        return Common(a, b, place.a, place.b, place.distance);
    const GjkResult gjk = RunGjk(a, b, GjkQuestion::kCores);
    return Common(a, b, gjk.a, gjk.b, gjk.distance);
}

bool RoundPenetration(const Core& a, const Core& b, PointPair& result) {
    RoundPlace place;
    if (!PlaceRound(a, b, place))
        return GjkPenetration(a, b, result);
    if (!RoundTouch(a, b, place))
        return false;
    result = Deep(a, b, place.a, place.b, -place.normal, -place.distance);
    return true;
}

// ---- Box against box by separating axes --------------------------------------------------------

bool BoxContact(const Core& a, const Core& b) {
    if (a.radius + b.radius > 0)
        return GjkContact(a, b);
    const BoxAnswer answer = AskBoxAxes(a, b);
    return answer == BoxAnswer::kTouch || (answer == BoxAnswer::kUnknown && GjkContact(a, b));
}

PointPair BoxClosest(const Core& a, const Core& b) {
    const GjkResult gjk = RunGjk(a, b, GjkQuestion::kCores);
    if (BoxContact(a, b))
        return Common(a, b, gjk.a, gjk.b, gjk.distance);
    return Apart(a, b, gjk.a, gjk.b, gjk.axis, gjk.distance);
}

bool BoxPenetration(const Core& a, const Core& b, PointPair& result) {
    BoxFace face;
    BoxAnswer cores = FindBoxFace(a, b, face);
    if (cores == BoxAnswer::kUnknown)
        cores = AskBoxAxes(a, b);
    const bool round = a.radius + b.radius > 0;
    if (cores == BoxAnswer::kApart && !round)
        return false;
    if ((cores != BoxAnswer::kTouch && (round || !GjkContact(a, b))) || face.i < 0)
        return GjkPenetration(a, b, result);
    const DepthResult deep = BoxFaceDepth(a, b, face);
    result = Deep(a, b, deep.a, deep.b, deep.axis, deep.depth);
    return true;
}

// ---- Triangles and tetrahedra: the depth in closed form ----------------------------------------

template <BoxAnswer (*Find)(const Core&, const Core&, DepthResult&)>
bool HullPenetration(const Core& a, const Core& b, PointPair& result) {
    DepthResult deep;
    const BoxAnswer cores = Find(a, b, deep);
    if (cores == BoxAnswer::kApart && a.radius + b.radius == 0)
        return false;
    if (cores != BoxAnswer::kTouch)
        return GjkPenetration(a, b, result);
    result = Deep(a, b, deep.a, deep.b, deep.axis, deep.depth);
    return true;
}

// ---- The table ---------------------------------------------------------------------------------

struct Method {
    bool (*contact)(const Core&, const Core&);
    PointPair (*closest)(const Core&, const Core&);
    bool (*penetration)(const Core&, const Core&, PointPair&);
};

constexpr Method kIteration{GjkContact, GjkClosest, GjkPenetration};
constexpr Method kBoxes{BoxContact, BoxClosest, BoxPenetration};
constexpr Method kHulls{GjkContact, GjkClosest, HullPenetration<FindHullDepth>};
constexpr Method kBoxHull{GjkContact, GjkClosest, HullPenetration<FindBoxHullDepth>};
constexpr Method kRounds{RoundContact, RoundClosest, RoundPenetration};
template <PlaceFunction Place>
constexpr Method kPoint{PointContact<Place>, PointClosest<Place>, PointPenetration<Place>};

/// A method in closed form where the placement of `b` must be rigid for it.
struct Entry {
    Method method;
    bool needsRigid = false;
};

constexpr Entry kAny{kIteration};

// clang-format off
/// Rows: the smaller kind; columns: the larger. Empty below the diagonal.
constexpr Entry kTable[kCoreKindCount][kCoreKindCount] = {
    // point                  segment                  box                        cylinder                        cone                        ellipsoid  hull
    {{kPoint<PlaceAtPoint>}, {kPoint<PlaceAtSegment>}, {kPoint<PlaceAtBox>, true}, {kPoint<PlaceAtCylinder>, true}, {kPoint<PlaceAtCone>, true}, kAny,     kAny},   // point
    {{},                     kAny,                     kAny,                      kAny,                           kAny,                       kAny,      kAny},   // segment
    {{},                     {},                       {kBoxes},                  kAny,                           kAny,                       kAny,      {kBoxHull}}, // box
    {{},                     {},                       {},                        {kRounds},                      {kRounds},                  kAny,      kAny},   // cylinder
    {{},                     {},                       {},                        {},                             {kRounds},                  kAny,      kAny},   // cone
    {{},                     {},                       {},                        {},                             {},                         kAny,      kAny},   // ellipsoid
    {{},                     {},                       {},                        {},                             {},                         {},        {kHulls}}, // hull
};
// clang-format on

const Method& Lookup(const Core& a, const Core& b) {
    const Entry& entry = kTable[static_cast<int>(a.kind)][static_cast<int>(b.kind)];
    return entry.needsRigid && !b.traits.rigid ? kIteration : entry.method;
}

// ---- Pairs of any size -------------------------------------------------------------------------

/// The factor, a power of two, that brings a pair of very large or very small bodies near 1;
/// else 1.
double ComfortFactor(const Core& a, const Core& b) {
    if (!a.traits.large && !b.traits.large && !(a.traits.small && b.traits.small))
        return 1;
    const double size = std::max({MaxNorm(a.centre - b.centre), a.radius, b.radius,
                                  MaxNorm(CoreExtent(a)), MaxNorm(CoreExtent(b))});
    if (!(size > 0) || (size < kComfortableSize && size * kComfortableSize > 1))
        return 1;
    return std::ldexp(1.0, -std::ilogb(size));
}

void ScaleBack(PointPair& pair, double factor) {
    pair.point1 *= 1 / factor;
    pair.point2 *= 1 / factor;
    pair.value *= 1 / factor;
}

PointPair Swapped(const PointPair& p) {
    return {p.point2, p.point1, p.value};
}

}  // namespace

bool ConvexContact(const Core& a, const Core& b) {
    if (b.kind < a.kind)
        return ConvexContact(b, a);
    const double factor = ComfortFactor(a, b);
    if (factor == 1)
        return Lookup(a, b).contact(a, b);
    Core smallA = a, smallB = b;
    Scale(smallA, factor);
    Scale(smallB, factor);
    return Lookup(smallA, smallB).contact(smallA, smallB);
}

PointPair ConvexClosest(const Core& a, const Core& b) {
    if (b.kind < a.kind)
        return Swapped(ConvexClosest(b, a));
    const double factor = ComfortFactor(a, b);
    if (factor == 1)
        return Lookup(a, b).closest(a, b);
    Core smallA = a, smallB = b;
    Scale(smallA, factor);
    Scale(smallB, factor);
    PointPair result = Lookup(smallA, smallB).closest(smallA, smallB);
    ScaleBack(result, factor);
    return result;
}

bool ConvexPenetration(const Core& a, const Core& b, PointPair& result) {
    if (b.kind < a.kind) {
        const bool contact = ConvexPenetration(b, a, result);
        if (contact)
            result = Swapped(result);
        return contact;
    }
    const double factor = ComfortFactor(a, b);
    if (factor == 1)
        return Lookup(a, b).penetration(a, b, result);
    Core smallA = a, smallB = b;
    Scale(smallA, factor);
    Scale(smallB, factor);
    const bool contact = Lookup(smallA, smallB).penetration(smallA, smallB, result);
    if (contact)
        ScaleBack(result, factor);
    return contact;
}

}  // namespace solid
