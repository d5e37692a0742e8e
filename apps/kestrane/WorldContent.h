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
    /// Transforms that place what is in them elsewhere than a browser would: a center and a
    /// scaleOrientation are not read, and with a scale below 0 nothing of the Transform is.
    std::size_t misplaced = 0;
    /// Face and line sets whose last face or line no -1 closes, and which lose it.
    std::size_t unclosed = 0;
    /// Shapes and Transforms with a number that is not finite.
    std::size_t notFinite = 0;
    /// Switches that hold USE beside other children: these are counted behind the others.
    std::size_t reordered = 0;
};

/// Throws Failure if the world cannot be read.
WorldContent ReadWorldContent(const std::string& file);
