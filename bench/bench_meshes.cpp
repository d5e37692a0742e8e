/// W6 and W10: meshes of triangles. The moves are in the time.

#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Meshes.h"
#include "Pairs.h"
#include "Workload.h"

namespace {

using bench::Library;
using oracle::Matrix;
using oracle::Random;
using oracle::Spec;

/// Distances are added up in thousandths, so that libraries can be compared.
int Thousandths(double distance) {
    return static_cast<int>(std::lround(1000 * distance));
}

/// W6: an object of so great a radius goes about a mesh, for yes or no so near to the surface that
/// it touches at every second place or so, for distances outside.
class AboutMesh : public bench::Workload {
  public:
    AboutMesh(const bench::LibraryKind& kind, const Spec& mover, double radius, bool distance)
        : m_library(kind.make()), m_distance(distance) {
        m_library->AddObject(bench::BumpyBall(), m_library->AddGroup(bench::kNoGroup));
        m_library->AddObject(mover, m_library->AddGroup(bench::kNoGroup));
        Random random(6);
        for (int i = 0; i < StepCount(); ++i) {
            const std::array<double, 3> d = bench::RandomDirection(random);
            const double off = distance ? random.Uniform(radius + 0.7, radius + 4)
                                        : radius + random.Uniform(-1, 0.7);
            Matrix place = bench::RandomTurn(random);
            for (std::size_t k = 0; k < 3; ++k) {
                place[12 + k] = static_cast<float>(d[k] * (bench::RadiusOfBall(d) + off));
            }
            m_places.push_back(place);
        }
    }

    int StepCount() const override { return 128; }
    int Step(int i) override {
        m_library->Place(1, m_places[static_cast<std::size_t>(i)]);
        if (!m_distance) {
            return m_library->InContact(0, 1) ? 1 : 0;
        }
        bench::Points points;
        return Thousandths(m_library->Distance(0, 1, points));
    }

  private:
    std::unique_ptr<Library> m_library;
    bool m_distance;
    std::vector<Matrix> m_places;
};

/// W10: a robot of six mesh links goes through a motion in a cell of 200 objects: 500 poses for yes
/// or no, every twentieth of them for the distance.
class RobotInCell : public bench::Workload {
  public:
    RobotInCell(const bench::LibraryKind& kind, bool distance)
        : m_library(kind.make()), m_distance(distance) {
        for (int& link : m_links) {
            link = m_library->AddObject(bench::Link(), m_robot);
        }
        for (const Spec& object : bench::Cell(200)) {
            m_library->AddObject(object, m_cell);
        }
        for (int pose = 0; pose < StepCount(); ++pose) {
            m_poses.push_back(bench::PoseOfRobot(pose, StepCount()));
        }
    }

    int StepCount() const override { return m_distance ? 25 : 500; }
    int Step(int i) override {
        const std::array<Matrix, bench::kLinks>& pose = m_poses[static_cast<std::size_t>(i)];
        for (std::size_t link = 0; link < pose.size(); ++link) {
            m_library->Place(m_links[link], pose[link]);
        }
        return m_distance ? Thousandths(m_library->LeastDistance(m_robot, m_cell))
                          : m_library->CountContacts(m_robot, m_cell, false);
    }

  private:
    std::unique_ptr<Library> m_library;
    bool m_distance;
    int m_robot = m_library->AddGroup(bench::kNoGroup);
    int m_cell = m_library->AddGroup(bench::kNoGroup);
    int m_links[bench::kLinks];
    std::vector<std::array<Matrix, bench::kLinks>> m_poses;
};

struct Mover {
    const char* name;
    Spec spec;
    double radius;
};

bool RegisterAll() {
    const std::vector<Mover> movers = {{"box", oracle::Box(1, 0.7f, 1.3f), 0.5},
                                       {"sphere", oracle::Sphere(0.5f), 0.5},
                                       {"mesh", bench::BumpyBall(), 5}};
    for (const bool distance : {false, true}) {
        const bench::Question question = distance ? bench::kMeshDistance : bench::kMeshContact;
        const std::string what = distance ? "distance/" : "contact/";
        for (const Mover& mover : movers) {
            bench::Register(
                "W6/" + what + "mesh-" + mover.name, question, [=](const bench::LibraryKind& kind) {
                    return std::make_unique<AboutMesh>(kind, mover.spec, mover.radius, distance);
                });
        }
        bench::Register("W10/" + what + "robot", question, [=](const bench::LibraryKind& kind) {
            return std::make_unique<RobotInCell>(kind, distance);
        });
    }
    return true;
}

const bool kRegistered = RegisterAll();

}  // namespace
