#pragma once

/// Meshes of triangles, and the robot of W10.

#include <array>
#include <vector>

#include "tests/solid/accuracy/Random.h"

namespace bench {

/// A ball with bumps, its mean radius 5, of 100,000 triangles.
oracle::Spec BumpyBall();
/// The distance of its surface from its middle along a direction of length 1.
double RadiusOfBall(const std::array<double, 3>& direction);
std::array<double, 3> RandomDirection(oracle::Random& random);

inline constexpr int kLinks = 6;
/// A closed tube along y from the origin, half a unit long, of 1,000 triangles.
oracle::Spec Link();
/// Placements of the links of a chain that swings; the motion comes round after `count` poses.
std::array<oracle::Matrix, kLinks> PoseOfRobot(int pose, int count);
/// Convex objects of all kinds but spheres about the robot.
std::vector<oracle::Spec> Cell(int count);

}  // namespace bench
