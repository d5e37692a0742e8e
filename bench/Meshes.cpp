#include "Meshes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "Pairs.h"

namespace bench {

using oracle::Matrix;
using oracle::Point;
using oracle::Random;
using oracle::Spec;

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kLinkLength = 0.5;

/// Two triangles for each cell of a grid that is closed in its first direction.
template <typename At>
Spec Grid(int around, int along, const At& at) {
    std::vector<Point> points;
    const auto add = [&](int i, int j) {
        const std::array<double, 3> p = at(2 * kPi * (i % around) / around, 1.0 * j / along);
        points.push_back(
            {static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])});
    };
    for (int i = 0; i < around; ++i) {
        for (int j = 0; j < along; ++j) {
            add(i, j), add(i + 1, j), add(i + 1, j + 1);
            add(i, j), add(i + 1, j + 1), add(i, j + 1);
        }
    }
    std::vector<int> counts(points.size() / 3, 3);
    return oracle::Mesh(std::move(points), std::move(counts));
}

/// The product of two placements.
Matrix Times(const Matrix& a, const Matrix& b) {
    Matrix product{};
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            for (std::size_t k = 0; k < 4; ++k) {
                product[4 * column + row] += a[4 * k + row] * b[4 * column + k];
            }
        }
    }
    return product;
}

/// A turn about x or y, after a move along y.
Matrix Joint(bool aboutY, double angle, double move) {
    const float c = static_cast<float>(std::cos(angle)), s = static_cast<float>(std::sin(angle));
    const float y = static_cast<float>(move);
    if (aboutY) {
        return {c, 0, -s, 0, 0, 1, 0, 0, s, 0, c, 0, 0, y, 0, 1};
    }
    return {1, 0, 0, 0, 0, c, s, 0, 0, -s, c, 0, 0, y, 0, 1};
}

}  // namespace

double RadiusOfBall(const std::array<double, 3>& direction) {
    return 5 * (1 + 0.1 * std::sin(6 * direction[0]) * std::sin(5 * direction[1] + 1) *
                        std::sin(7 * direction[2] + 2));
}

Spec BumpyBall() {
    return Grid(250, 200, [](double angle, double along) -> std::array<double, 3> {
        const double height = std::cos(kPi * along), radius = std::sin(kPi * along);
        const std::array<double, 3> d = {radius * std::cos(angle), height,
                                         radius * std::sin(angle)};
        const double r = RadiusOfBall(d);
        return {r * d[0], r * d[1], r * d[2]};
    });
}

std::array<double, 3> RandomDirection(Random& random) {
    const Matrix turn = RandomTurn(random);
    return {static_cast<double>(turn[0]), static_cast<double>(turn[1]),
            static_cast<double>(turn[2])};
}

Spec Link() {
    return Grid(20, 25, [](double angle, double along) -> std::array<double, 3> {
        // The ends close to points.
        const double radius = 0.08 * std::min(1.0, 8 * std::min(along, 1 - along));
        return {radius * std::cos(angle), kLinkLength * along, radius * std::sin(angle)};
    });
}

std::array<Matrix, kLinks> PoseOfRobot(int pose, int count) {
    std::array<Matrix, kLinks> links;
    Matrix place = oracle::kIdentity;
    for (std::size_t link = 0; link < links.size(); ++link) {
        const double phase = 2 * kPi * (static_cast<double>(link) + 1) * pose / count;
        const double angle = link == 0 ? 2 * kPi * pose / count : 0.9 * std::sin(phase);
        place = Times(place, Joint(link % 2 == 0, angle, link == 0 ? 0 : kLinkLength));
        links[link] = place;
    }
    return links;
}

std::vector<Spec> Cell(int count) {
    Random random(10);
    std::vector<Spec> cell;
    while (static_cast<int>(cell.size()) < count) {
        // In a shell within the robot's reach, most of it free.
        const std::array<double, 3> d = RandomDirection(random);
        const double radius = random.Uniform(1, 3.5);
        const Spec object = RandomObject(random);
        if (object.kind == oracle::Kind::kSphere) {
            continue;  // a peer goes wrong on the distance of a sphere and a mesh
        }
        cell.push_back(MovedBy(Resized(object, 0.3f, 0.3f, 0.3f), static_cast<float>(radius * d[0]),
                               static_cast<float>(radius * d[1]),
                               static_cast<float>(radius * d[2])));
    }
    return cell;
}

}  // namespace bench
