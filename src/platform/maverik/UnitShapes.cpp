#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/maverik/MeshBuilder.h"

namespace {

struct Direction {
    double x, y, z;
};

class UnitShapeBuilder {
  public:
    UnitShapeBuilder() { m_mesh.hasNormals = m_mesh.hasTexCoords = true; }

    Mesh Box() {
        struct Face {
            Direction normal, right, up;
        };
        constexpr Face kFaces[] = {
            {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},  {{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}},
            {{1, 0, 0}, {0, 0, -1}, {0, 1, 0}}, {{-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
            {{0, 1, 0}, {1, 0, 0}, {0, 0, -1}}, {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
        };
        for (const Face& face : kFaces) {
            const std::uint32_t first = Count();
            for (const double v : {0.0, 1.0}) {
                for (const double u : {0.0, 1.0}) {
                    const auto at = [&](double Direction::*axis) {
                        return face.normal.*axis / 2 + (u - 0.5) * face.right.*axis +
                               (v - 0.5) * face.up.*axis;
                    };
                    Vertex({at(&Direction::x), at(&Direction::y), at(&Direction::z)}, face.normal,
                           u, v);
                }
            }
            Triangle(first, first + 1, first + 3);
            Triangle(first, first + 3, first + 2);
        }
        return std::move(m_mesh);
    }

    Mesh Sphere(int around, int slices) {
        for (int j = 0; j <= slices; ++j) {
            const double v = static_cast<double>(j) / slices;
            const double y = -std::cos(std::numbers::pi * v);
            const double r = j == 0 || j == slices ? 0 : std::sin(std::numbers::pi * v);
            for (int i = 0; i <= around; ++i) {
                // At the poles each triangle has a tip of its own, in the middle of its side.
                const double u = (i + (r == 0 ? 0.5 : 0.0)) / around;
                const auto [c, s] = Circle(i, around);
                const Direction at = {-r * s, y, -r * c};
                Vertex(at, at, u, v);
            }
        }
        Strips(around, slices, true, true);
        return std::move(m_mesh);
    }

    /// Cylinder and cone.
    Mesh Frustum(int around, double top, double bottom, bool caps) {
        const double slope = bottom - top;
        const double length = std::sqrt(1 + slope * slope);
        for (const double v : {0.0, 1.0}) {
            const double radius = v > 0 ? top : bottom;
            for (int i = 0; i <= around; ++i) {
                const auto [c, s] = Circle(i, around);
                const double turn = radius == 0 ? 0.5 : 0;
                const double angle = 2 * std::numbers::pi * (i + turn) / around;
                const Direction normal = {-std::sin(angle) / length, std::cos(angle) / length,
                                          slope / length};
                Vertex({-radius * s, radius * c, v - 0.5}, normal, (i + turn) / around, v);
            }
        }
        Strips(around, 1, bottom == 0, top == 0);
        if (caps) {
            Cap(around, top, 1);
            Cap(around, bottom, -1);
        }
        return std::move(m_mesh);
    }

  private:
    struct CosSin {
        double c, s;
    };
    /// The last point is the first, bit for bit.
    static CosSin Circle(int i, int around) {
        const double angle = 2 * std::numbers::pi * (i % around) / around;
        return {std::cos(angle), std::sin(angle)};
    }

    std::uint32_t Count() const { return static_cast<std::uint32_t>(m_mesh.vertices.size() / 8); }

    void Vertex(const Direction& p, const Direction& n, double u, double v) {
        for (const double x : {p.x, p.y, p.z, n.x, n.y, n.z, u, v})
            m_mesh.vertices.push_back(static_cast<float>(x));
    }

    void Triangle(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        m_mesh.indices.insert(m_mesh.indices.end(), {a, b, c});
    }

    /// Rows of around + 1 vertices, bottom first; the first and last may be single points.
    void Strips(int around, int rows, bool pointAtBottom, bool pointAtTop) {
        const auto width = static_cast<std::uint32_t>(around) + 1;
        for (int j = 0; j < rows; ++j) {
            for (std::uint32_t i = 0; i + 1 < width; ++i) {
                const std::uint32_t a = static_cast<std::uint32_t>(j) * width + i;
                if (j > 0 || !pointAtBottom)
                    Triangle(a, a + 1, j + 1 == rows && pointAtTop ? a + width : a + width + 1);
                if (j + 1 < rows || !pointAtTop)
                    Triangle(a, a + width + 1, a + width);
            }
        }
    }

    void Cap(int around, double radius, int side) {
        if (radius == 0) {
            return;
        }
        const std::uint32_t first = Count();
        for (int i = 0; i < around; ++i) {
            const auto [c, s] = Circle(side * i + (side < 0 ? around : 0), around);
            Vertex({-radius * s, radius * c, side / 2.0}, {0, 0, static_cast<double>(side)},
                   (1 - s) / 2, (1 + side * c) / 2);
        }
        for (std::uint32_t i = 1; i + 1 < static_cast<std::uint32_t>(around); ++i) {
            Triangle(first, first + i, first + i + 1);
        }
    }

    Mesh m_mesh;
};

}  // namespace

Mesh BuildUnitShape(const UnitShape& shape) {
    switch (shape.shape) {
        case mav_class_box:
            return UnitShapeBuilder().Box();
        case mav_class_sphere:
            return UnitShapeBuilder().Sphere(shape.around, shape.slices);
        default:
            return UnitShapeBuilder().Frustum(shape.around, shape.topRatio, shape.bottomRatio,
                                              shape.caps);
    }
}
