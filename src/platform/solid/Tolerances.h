#pragma once

/// All tolerances and bounds of the narrow phase. Lengths are relative to the scale of a pair: the
/// largest coordinate among the points that the computation has seen, measured from the middle of
/// the first shape.

namespace solid {

/// Unit: scale of the pair. Two cores that come this near are in contact. It covers the rounding of
/// the last step of an iteration in double precision (a few thousand units in the last place, where
/// bodies are thin); a smaller value lets exactly touching turned shapes, and thin ones within each
/// other, count as apart, a larger one is seen by users.
inline constexpr double kTouch = 1e-12;

/// Relative, to the coordinates of a box or to its size. Boxes are grown by this, so that they hide
/// no contact that kTouch lets count; must be several times kTouch.
inline constexpr double kBoxSlack = 1e-11;

/// Unit: the distance found. The iteration for the distance ends when the certified lower bound and
/// the distance of the points found differ by less. The distance is returned as a float (6e-8), so
/// a smaller value costs iterations on curved shapes for nothing, a larger one is seen in the
/// result.
inline constexpr double kDistanceGap = 1e-8;

/// Unit: scale of the pair. The same, absolute: below it the gap is rounding.
inline constexpr double kDistanceFloor = 1e-14;

/// Unit: longest side, squared; of the height on it. A triangle of the distance iteration that is
/// thinner is rounding, and counts as its sides.
inline constexpr double kNeedleTriangle = 1e-28;

/// Square of a sine: of the volume of three edges of a tetrahedron. A flatter one counts as its
/// faces.
inline constexpr double kFlatTetrahedron = 1e-28;

/// Unit: the distance found, or what counts as touching if that is more. Where the support planes
/// along its axis show cores to be apart by less than the distance by this, the axis is rounding. A
/// smaller value sends cores that are apart through the expansion, which cannot measure them; a
/// larger one lets wrong axes pass.
inline constexpr double kPartedSlack = 1e3;

/// Unit: the depth found. The expansion ends when the certified lower bound and the depth found
/// differ by less. Polytopes end exactly; for curved shapes the number of faces grows with its
/// inverse.
inline constexpr double kDepthGap = 1e-6;

/// Where the height is the same in all directions of a ring or more, as of coaxial bodies of
/// revolution, the number of faces would grow without end: after so many steps the gap grows by
/// this factor at each, up to the widest.
inline constexpr int kPatientSteps = 64;
inline constexpr double kGapGrowth = 1.1;
inline constexpr double kWidestGap = 5e-5;

/// Unit: scale of the pair. The points that have a depth may lie off their bodies by as much.
inline constexpr double kPointGap = 1e-6;

/// Unit: scale of the pair. kDepthGap, absolute: below it the gap is rounding. Also the height
/// above which a point sees a face.
inline constexpr double kDepthFloor = 1e-13;

/// Unit: area of the face. The foot of the origin that lies outside a face by more belongs to
/// another.
inline constexpr double kFootOutside = 1e-9;

/// Sine of an angle. A direction nearer to the axis of a round end has no certain support point.
inline constexpr double kPole = 1e-6;

/// Unit: depth. A curvature of the height less than this tells no minimum from a plateau.
inline constexpr double kLeastCurvature = 1e-6;

/// Radians. Newton's method on directions ends after a step that was shorter, its error being
/// about the square of that; a longer step than the second leaves where the method means anything.
inline constexpr double kRefined = 1e-6;
inline constexpr double kLongestStep = 0.7;
inline constexpr int kMaxRefinements = 8;

/// Tangents of angles. Cones about a local depth in which no direction is better are sought between
/// these: a narrower one spares an expansion nothing.
inline constexpr double kWidestTangent = 1;
inline constexpr double kNarrowestTangent = 0.03;

/// Unit: height. An expansion refines a direction when its face is no further below the support
/// plane, and no further above the best depth, than these; and not more often than that.
inline constexpr double kRefineBelow = 0.2;
inline constexpr double kRefineAbove = 0.02;
inline constexpr int kMaxLocalDepths = 8;

/// Cosine. Faces nearer to a local depth than this are taken to lead to the same one.
inline constexpr double kSameLocal = 0.95;

/// Unit: cube of the longest edge. A simplex of the contact test with less volume is no start for
/// an expansion: its faces would be rounding.
inline constexpr double kStartVolume = 1e-6;

/// Unit: square of the longest edge. A face of an expansion with less area has no normal.
inline constexpr double kFaceArea = 1e-15;

/// Unit: extent of the body. A difference body thinner than this is flat, and the depth is measured
/// across it.
inline constexpr double kFlat = 1e-12;

/// Square of the sine of an angle. Edges nearer to parallel have a cross product made of rounding,
/// and no face between them that others do not stand for.
inline constexpr double kParallel = 1e-20;

/// Unit: fourth power of the longest edge; of the square of twice the area. In triangles thinner
/// than that the normal is too inexact for closed forms.
inline constexpr double kNeedle = 1e-12;

/// Unit: product of the three lengths in a triple product. Bounds the rounding of one and of the
/// sum of five; a smaller value could hide a gap, a larger one costs a second look now and then.
inline constexpr double kTripleRounding = 1e-14;

/// Square of the sine of an angle. The same for the faces of two boxes' difference, where a face
/// left out costs as much (1e-8 of the size) as the rounding of one that is not.
inline constexpr double kBoxParallel = 1e-16;

/// Unit: size of both bodies and of their distance. A search in closed form for the depth tells
/// contact where the boxes are further from just touching; nearer, the test for contact is asked.
/// Must be well above what a left out face costs; a larger value sends more pairs through both.
inline constexpr double kBoxUnsure = 1e-6;

/// Unit: cube (triangles: square) of the longest edge. Tetrahedra with less volume, and triangles
/// with less area, have normals too rough for a closed form.
inline constexpr double kHullVolume = 1e-6;

/// Sine of an angle. Edges of boxes nearer to a plane are taken to lie in it when the points that
/// have a depth are chosen: a turned box in floats is not more parallel to another than that, and
/// the points are off by no more than this part of an edge.
inline constexpr double kCoplanar = 1e-6;

/// Relative. Columns of a placement that differ in length, or from right angles, by less than this
/// are those of a rotation with a scale: a product of a few matrices of floats holds no rotation
/// any better. A smaller value sends turned spheres and boxes to slower methods, a larger one is
/// seen in distances.
inline constexpr double kRigid = 1e-6;

/// Relative, to the sum of the sizes and the distance of two boxes: bounds the error of a filter in
/// single precision, that of taking the columns of a rigid placement (kRigid) for exact included.
/// What is nearer to just touching is decided in double precision.
inline constexpr float kFilterRounding = 1e-5F;

/// A filter in single precision decides nothing about smaller boxes, nor where the square of a
/// column is below this or above its inverse: its products must stay normal.
inline constexpr float kFilterLeastSize = 1e-25F;
inline constexpr float kFilterLeastSquare = 1e-25F;

/// Unit: the sum of two boxes' sizes and their distance, along one axis. Boxes of meshes are grown
/// by this where they are compared in single precision; a smaller value could hide a contact.
inline constexpr float kNodeRounding = 2e-6F;

/// Relative: the balls within and around bodies are made this much smaller and larger, so that what
/// they decide is certain, with radii in single precision and columns that are rigid within kRigid.
inline constexpr double kBallSlack = 5e-6;

/// Relative, to the radius of the balls around two bodies: smaller balls within them decide
/// nothing, as the iterations, which tell the depth, see so small a part of a body through
/// rounding.
inline constexpr double kBallLeast = 1e-6;

/// Unit: size of the mesh, and relative to a distance. What the planes around a part of a mesh may
/// be off by where the placement is only as good a rotation as kRigid asks for.
inline constexpr double kSlabSlack = 16 * kRigid;

/// Square of a ratio: of the size of a hull to that of the whole pair. The edges of smaller ones
/// are lost to the rounding of their corners, and closed forms decide nothing about them.
inline constexpr double kLeastHull = 1e-16;

/// Sizes outside this range (and its inverse) are brought near 1 before an iteration or a closed
/// form begins, by a power of two, so that products of four lengths stay finite and normal.
inline constexpr double kComfortableSize = 1e20;

/// Bounds on the number of steps. When one is hit the best certified answer is returned: the
/// distance of points that do lie on the shapes, a depth that does part them.
inline constexpr int kMaxDistanceSteps = 256;
inline constexpr int kMaxStalls = 16;
inline constexpr int kMaxDepthSteps = 1024;

}  // namespace solid
