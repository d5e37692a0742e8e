#pragma once

/// A collision library as the workloads see it: this one at its two levels, and its peers. One
/// class for each, so that all of them get the same shapes and placements and are called alike.

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/solid/accuracy/Spec.h"

namespace bench {

using oracle::Matrix;
using oracle::Point;
using oracle::Spec;

/// One point on each of two objects.
struct Points {
    Point first{}, second{};
};

inline constexpr int kNoGroup = -1;

/// A scene of objects in groups. Both are numbered from 0 on in the order in which they are added.
/// Placements are rigid, and there are no margins.
class Library {
  public:
    Library() = default;
    virtual ~Library() = default;
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    /// `parent` is a group made before, or kNoGroup.
    virtual int AddGroup(int parent) = 0;
    virtual int AddObject(const Spec& spec, int group) = 0;
    virtual void Place(int object, const Matrix& matrix) = 0;
    /// Leaves the object turned as it is.
    virtual void Move(int object, const Point& position) = 0;

    // Two objects. For the public calls each has to be alone in its group.
    virtual bool InContact(int object1, int object2) = 0;
    /// 0 when in contact; the points are then of no meaning to the workloads.
    virtual double Distance(int object1, int object2, Points& points) = 0;
    /// Below 0 when not in contact. Moving the first by second - first parts the two.
    virtual double Depth(int object1, int object2, Points& points) = 0;

    // Of groups, with all below them. How many pairs touch, or 1 if any does.
    virtual int CountContacts(int group1, int group2, bool all) = 0;
    virtual int CountAtPoint(int group, const Point& point) = 0;
    virtual int CountAtSegment(int group, const Point& from, const Point& to) = 0;
    /// The least distance of two objects, one of each group.
    virtual double LeastDistance(int group1, int group2) = 0;

    /// What the objects cost here that is this class's own and no part of the library.
    virtual std::size_t OwnBytes() const = 0;
};

/// What a library may be asked, as bits.
enum Question : unsigned {
    kContact = 1,
    kDistance = 2,
    kDepth = 4,
    kScenes = 8,
    kMeshContact = 16,
    kMeshDistance = 32,
    kEverything = 63
};

struct LibraryKind {
    /// The library, then, where it has several ways to the same answer, the way: "fcl-indep".
    std::string name;
    std::function<std::unique_ptr<Library>()> make;
    /// Those alone in which this way differs from the library's others.
    unsigned questions = kEverything;
    /// It knows these shapes alone.
    bool spheresAndBoxesAlone = false;
};

/// Those that this build has, ours first.
const std::vector<LibraryKind>& AllLibraries();

// One of these in the file of each library.
std::vector<LibraryKind> SolidLibraries();
std::vector<LibraryKind> PublicLibraries();
std::vector<LibraryKind> FclLibraries();
std::vector<LibraryKind> BulletLibraries();

}  // namespace bench
