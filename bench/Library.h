#pragma once

/// A collision library as the workloads see it: this one at its two levels, and its peers. One
/// class for each, so that all of them get the same shapes and placements and are called alike.

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

/// A scene of objects in groups. Objects are numbered from 0 on in the order in which they are
/// added.
class Library {
  public:
    Library() = default;
    virtual ~Library() = default;
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    /// A group is any small number; one that is new comes into being. The placement is rigid and
    /// there is no margin.
    virtual void Add(const Spec& spec, int group) = 0;

    // Two objects. For the public calls they have to be alone in their groups.
    virtual bool InContact(int object1, int object2) = 0;
    /// 0 when in contact; the points are then of no meaning to the workloads.
    virtual double Distance(int object1, int object2, Points& points) = 0;
    /// Below 0 when not in contact. Moving the first by second - first parts the two.
    virtual double Depth(int object1, int object2, Points& points) = 0;
};

/// What a library may be asked about two objects, as bits.
enum Question : unsigned { kContact = 1, kDistance = 2, kDepth = 4 };

struct LibraryKind {
    /// The library, then, where it has several ways to the same answer, the way: "fcl-indep".
    std::string name;
    std::function<std::unique_ptr<Library>()> make;
    /// Where this way differs from the library's others.
    unsigned questions = kContact | kDistance | kDepth;
    /// It knows these shapes alone.
    bool spheresAndBoxesAlone = false;
};

/// Those that this build has, ours first.
std::vector<LibraryKind> AllLibraries();

// One of these in the file of each library.
std::vector<LibraryKind> SolidLibraries();
std::vector<LibraryKind> PublicLibraries();
std::vector<LibraryKind> FclLibraries();
std::vector<LibraryKind> BulletLibraries();

}  // namespace bench
