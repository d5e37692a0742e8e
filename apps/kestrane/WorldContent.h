#pragma once

#include <cstddef>
#include <string>

/// What the shapes of a VRML97 world ask for, as KST_LoadScene walks it.
struct WorldContent {
    /// Shapes that are to become objects.
    std::size_t objects = 0;
    /// Shapes that it passes over: of a geometry that no object has, or inside nodes whose children
    /// it does not visit.
    std::size_t passedOver = 0;
};

/// Throws Failure if the world cannot be read.
WorldContent ReadWorldContent(const std::string& file);
