#pragma once

#include <string>
#include <vector>

/// Triangles of a line of text, x and y of each corner, in pixels: the right end of the line is at
/// x = 0, its base line at y = 0, y upwards. What is not printable ASCII shows as a question mark.
std::vector<float> TextTriangles(const std::string& text, float scale);
