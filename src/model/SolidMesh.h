#pragma once

#include <array>

#include "platform/maverik/Maverik.h"
#include "platform/solid/Solid.h"

/// Collision shapes made of vertices; they belong to the caller. Throw std::bad_alloc.

/// The surface made of polygons whose vertices stand one after the other. `vertexCounts` null: each
/// has three.
DT_ShapeHandle BuildSolidMesh(int polygonCount, const int* vertexCounts,
                              const MAV_vector* vertices);
/// The solid between four corners.
DT_ShapeHandle BuildSolidTetrahedron(const std::array<MAV_vector, 4>& corners);
