#include "Spec.h"

#include <cstdio>
#include <utility>

namespace oracle {

const char* Name(Kind kind) {
    static const char* const kNames[kKindCount] = {"Box",     "Sphere",   "Cylinder", "Cone",
                                                   "Segment", "Polytope", "Mesh"};
    return kNames[static_cast<int>(kind)];
}

namespace {

Spec Sized(Kind kind, const Point& size) {
    Spec spec;
    spec.kind = kind;
    spec.size = size;
    return spec;
}

void Append(std::string& text, const float* values, std::size_t count) {
    text += " {";
    for (std::size_t i = 0; i < count; ++i) {
        char number[40];
        std::snprintf(number, sizeof number, "%s%af", i == 0 ? "" : ", ",
                      static_cast<double>(values[i]));
        text += number;
    }
    text += "}";
}

}  // namespace

Spec Box(float width, float height, float depth) {
    return Sized(Kind::kBox, {width, height, depth});
}
Spec Sphere(float radius) {
    return Sized(Kind::kSphere, {radius, 0, 0});
}
Spec Cylinder(float radius, float height) {
    return Sized(Kind::kCylinder, {radius, height, 0});
}
Spec Cone(float radius, float height) {
    return Sized(Kind::kCone, {radius, height, 0});
}

Spec Segment(const Point& source, const Point& target) {
    Spec spec = Sized(Kind::kSegment, {});
    spec.points = {source, target};
    return spec;
}

Spec Polytope(std::vector<Point> points) {
    Spec spec = Sized(Kind::kPolytope, {});
    spec.points = std::move(points);
    return spec;
}

Spec Mesh(std::vector<Point> points, std::vector<int> counts) {
    Spec spec = Sized(Kind::kMesh, {});
    spec.points = std::move(points);
    spec.counts = std::move(counts);
    return spec;
}

Spec MeshBox(float width, float height, float depth) {
    static const int kFaces[12][3] = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6},
                                      {0, 1, 4}, {1, 5, 4}, {2, 6, 3}, {3, 6, 7},
                                      {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};
    std::vector<Point> points;
    for (const auto& face : kFaces) {
        for (const int corner : face) {
            points.push_back({(corner & 1) != 0 ? width / 2 : -width / 2,
                              (corner & 2) != 0 ? height / 2 : -height / 2,
                              (corner & 4) != 0 ? depth / 2 : -depth / 2});
        }
    }
    return Mesh(std::move(points), std::vector<int>(12, 3));
}

Spec At(Spec spec, float x, float y, float z) {
    spec.matrix[12] = x;
    spec.matrix[13] = y;
    spec.matrix[14] = z;
    return spec;
}

Spec Scaled(Spec spec, float x, float y, float z) {
    for (std::size_t row = 0; row < 3; ++row) {
        spec.matrix[row] *= x;
        spec.matrix[4 + row] *= y;
        spec.matrix[8 + row] *= z;
    }
    return spec;
}

Spec WithMargin(Spec spec, float margin) {
    spec.margin = margin;
    return spec;
}

std::string Describe(const Spec& spec) {
    std::string text = Name(spec.kind);
    Append(text, spec.size.data(), 3);
    for (const Point& point : spec.points) {
        text += "\n    point";
        Append(text, point.data(), 3);
    }
    if (!spec.counts.empty()) {
        text += "\n    counts";
        for (const int count : spec.counts) {
            text += ' ';
            text += std::to_string(count);
        }
    }
    text += "\n    matrix";
    Append(text, spec.matrix.data(), 16);
    text += "\n    margin";
    Append(text, &spec.margin, 1);
    text += '\n';
    return text;
}

}  // namespace oracle
