#pragma once

#include <string>
#include <utility>
#include <vector>

#include "kestrane.h"

/// Where a scene can be seen.
enum class Showing {
    kNowhere,   ///< no display
    kInMemory,  ///< windows in memory, for pictures; the user's settings have no say and stay
    kOnScreen,
};

/// The library with one scene file loaded; one at a time.
///
/// All questions throw Failure with a text for the user where there is no answer.
class Scene {
  public:
    explicit Scene(const std::string& file, Showing showing = Showing::kNowhere);
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    const std::string& File() const { return m_file; }

    /// At least 0.
    void SetTime(double time);

    /// The id of the group that a user means by `name`, a label or else an id, and about which a
    /// collision query can be made.
    int FindGroup(const std::string& name) const;

    /// Pairs of objects in contact, id1 and point1 of the first group; in the order of the ids.
    /// Of these the one that the library meets first if not `all`.
    std::vector<KstCollisionResult> Contacts(int group1, int group2, bool all);
    /// All pairs, the nearest first.
    std::vector<KstCollisionResult> Distances(int group1, int group2);
    /// All pairs in contact, the deepest first.
    std::vector<KstCollisionResult> Depths(int group1, int group2);

    using Point = float[3];
    /// Ids of the objects that the point or the segment meets, ascending.
    std::vector<int> ObjectsAtPoint(int group, const Point& point, bool all);
    std::vector<int> ObjectsOnLine(int group, const Point& from, const Point& to, bool all);

  private:
    std::string m_file;
};

/// How many objects of a group and all below it take part in collisions now, and how many do not.
struct CheckedObjects {
    int checked = 0;
    int incapable = 0;  ///< their own groups lack the capability
    int unplaced = 0;   ///< their place in the scene is not finite
    int polylines = 0;  ///< which never take part

    /// Those that could take part.
    int Unchecked() const { return incapable + unplaced; }
};
CheckedObjects CountCheckedObjects(int group);
