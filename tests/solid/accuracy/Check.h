#pragma once

/// The engine's three answers about one pair, held against the oracle.

#include <string>
#include <vector>

#include "Engine.h"
#include "Random.h"

namespace oracle {

/// What is asked of the answers. "Size" is the sum of the two shapes' radii; to every bound on
/// points comes what it costs to write one in floats.
namespace bar {
/// Yes or no is free where the shapes are nearer than this part of their size to just touching.
inline constexpr double kTouching = 1e-6;
/// Distances: this part of the distance, and ...
inline constexpr double kDistance = 1e-6;
/// ... this part of the size: floats hold a rotation no better, and whether such a matrix is taken
/// for the rotation or for what it says to the last digit is free.
inline constexpr double kDistanceOfSize = 1e-7;
/// Closest points off their shapes, as a part of the size.
inline constexpr double kPoint = 1e-6;
/// Ends of depths off their shapes, as a part of the size.
inline constexpr double kEnds = 1e-5;
/// Depths: this part of the depth ...
inline constexpr double kDepth = 1e-4;
/// ... when cylinders or cones take part ...
inline constexpr double kDepthRound = 1e-3;
/// ... and this part of the size. Also the overlap that may remain after moving by the depth.
inline constexpr double kDepthOfSize = 1e-6;
}  // namespace bar

enum class Fault {
    kConsistency,  ///< the answers contradict each other
    kContact,
    kDistance,
    kPoints,
    kDepth,
    kParting,
    kEnds,   ///< of the depth: off their shapes
    kSwap,   ///< not the same answers of the two in the other order
    kMoved,  ///< not the same answers after a motion, a mirror or a scale of both
};
inline constexpr int kFaultCount = 9;
const char* Name(Fault fault);

/// Of many pairs: how many there were, what went wrong how often, and the first such pair.
struct Tally {
    int pairs = 0;
    int touching = 0;
    int unsure = 0;  ///< nearer to just touching than `bar::kTouching`
    int depths = 0;
    int faults[kFaultCount] = {};
    /// Greatest error, as a part of what is allowed.
    double worst[kFaultCount] = {};
    std::string first[kFaultCount];

    bool HasFaults() const;
    std::string Text() const;
};

/// Asks the engine, each of the two first, and compares. Depths take the longest.
Answers Check(const Pair& pair, bool checkDepth, Tally& tally);

/// Asks again after quarter turns, mirrors, scales and shifts at random that are exact in floats,
/// so that only the engine's own sense of directions, places and sizes can show. The two may also
/// be created in the other order.
void CheckMoved(Random& random, const Pair& pair, const Answers& answers, Tally& tally);

}  // namespace oracle
