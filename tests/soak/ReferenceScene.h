#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ReferenceMath.h"

namespace reference {

/// What a group and an object have in common: a place, perhaps animated, and a label.
struct Node {
    struct Key {
        float time = 0;
        Vector position = {};
        Quaternion turn = {};
        Vector scale = {};
    };
    struct Track {
        bool cyclic = false;
        std::vector<Key> keys;
    };

    std::string label;
    Vector position = {0, 0, 0};
    Quaternion turn = {1, 0, 0, 0};
    Vector scale = {1, 1, 1};
    std::optional<Track> track;

    bool IsAnimated() const { return track && !track->keys.empty(); }
    void ApplyTime(float time);
};

struct Group : Node {
    int parent = -1;
    bool capable = false;
    std::set<int> children;
    std::set<int> objects;
};

struct Object : Node {
    int group = 0;
    int type = 0;
    std::vector<float> sizes;     ///< as given at creation: box, sphere, cylinder, cone
    std::vector<int> counts;      ///< polygon group, polyline: vertices of each part
    std::vector<float> vertices;  ///< three floats each
    float margin = 0;
};

/// Where an object stands, with bounds that rounding errors are measured against.
struct Placement {
    Affine map = kIdentity;
    double linearBound = 1;       ///< no element of the linear part can grow beyond this
    double translationBound = 0;  ///< nor of the translation beyond this
    int links = 0;                ///< nodes from the root to the object
};

enum class Containment { kInside, kOutside, kUnsure };

/// The scene as the public header promises it, in the plainest form: maps of ids, recomputed from
/// the root at each question, double precision. One operation for each function that changes or
/// reads the scene without a display; each returns the code that the library has to return.
class Scene {
  public:
    Scene() { Start(); }

    /// KST_Initialisation after KST_End: ids start anew, the time set last stays.
    void Start();

    int CreateGroup(int parent, bool capable, const std::string& label, int& newId);
    int DestroyGroup(int id);
    int EmptyGroup(int id);
    int MoveGroup(int id, int newParent);
    int CloneGroup(int source, int target, bool capable, const std::string& label, int& newId);
    int CloneGroupRecursive(int source, int target, const std::vector<int>& ids,
                            const std::vector<std::string>& labels, std::vector<int>& newIds);
    int SetCapability(int id, bool on);
    int SetGroupClearance(int id, float margin);
    int ClearGroupKeyStates(int id);

    /// `object` is complete but for its registration.
    int CreateObject(Object object, int& newId);
    int DestroyObject(int id);
    int MoveObject(int id, int group);
    int SetObjectClearance(int id, float margin);
    int ClearObjectKeyStates(int id);

    /// The node of a group that may be moved about, or of an object; else null.
    Node* MovableGroup(int id);
    Node* FindNode(int objectId);

    /// A key state whose parts may be null, for a node found by the above.
    static int AddKeyState(Node& node, float time, const float* position, const Quaternion* turn,
                           const float* scale, float currentTime);
    int SetTime(float time);
    float CurrentTime() const { return m_currentTime; }

    /// -2, -14 or 0 for one group; for two groups also -6, when they share an object.
    int TestQuery(int group) const;
    int TestQuery(int group1, int group2) const;
    bool ShareGroup(int group1, int group2) const;

    bool IsBelow(int id, int ancestor) const;
    /// The objects of the subtree that take part in collision queries.
    std::vector<int> ObjectsInWorld(int group) const;
    Placement PlacementOf(const Object& object) const;
    Containment Contains(const Object& object, const Vector& point) const;

    const std::map<int, Group>& Groups() const { return m_groups; }
    const std::map<int, Object>& Objects() const { return m_objects; }
    const std::map<std::string, int>& Labels() const { return m_labels; }

  private:
    Group* Find(int id);
    void Register(int id, Object object);
    void Erase(int groupId);
    void CollectObjects(int group, std::vector<int>& out) const;
    int CloneOne(int source, int target, bool capable, const std::string& label);
    void CloneTree(int node, int target, const std::vector<int>& ids,
                   const std::vector<std::string>& labels, std::vector<int>& newIds);

    std::map<int, Group> m_groups;
    std::map<int, Object> m_objects;
    std::map<std::string, int> m_labels;
    int m_nextGroup = 0;
    int m_nextObject = 0;
    float m_currentTime = 0;
};

}  // namespace reference
