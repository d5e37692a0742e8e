#pragma once

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "model/Motion.h"
#include "model/Surface.h"
#include "platform/maverik/Maverik.h"

class CSceneObject;
struct KstGroupInfo;

inline constexpr int kViewCount = 4;
inline constexpr int kSurfaceCount = 2;
/// The response class of a group without collision capability.
inline constexpr int kNoResponseClass = -1;

/// A node of the scene tree: owns child groups and objects, places them, and gives them their
/// looks.
///
/// Operations that may fail for lack of memory throw std::bad_alloc and have then changed nothing.
/// None uses the call stack in proportion to the depth of the tree.
class CGroup {
  public:
    /// A new group under `parent`, in all registries and, with a display panel, in a row of it that
    /// starts closed if `collapsed`. The label, unless empty, is made unique.
    static CGroup* Create(CGroup* parent, bool colCheck, const std::string& label, bool collapsed);
    /// The group at the top of the tree, the only one that the caller owns.
    static std::unique_ptr<CGroup> CreateRoot(bool colCheck, const std::string& label);
    /// Destroys a group other than the root, with its subtree.
    static void Destroy(CGroup* group) noexcept;
    ~CGroup();
    CGroup(const CGroup&) = delete;
    CGroup& operator=(const CGroup&) = delete;

    int Id() const noexcept { return m_id; }
    /// Null for the root.
    CGroup* Parent() const noexcept { return m_parent; }
    const std::string& Label() const noexcept { return m_label; }
    const std::map<int, std::unique_ptr<CGroup>>& Children() const noexcept { return m_children; }
    const std::map<int, std::unique_ptr<CSceneObject>>& Objects() const noexcept {
        return m_objects;
    }
    bool IsAnimated() const noexcept { return m_animated; }
    bool IsVisibleInView(int view) const noexcept {
        return m_visibleInView[static_cast<std::size_t>(view)];
    }
    /// kNoResponseClass without collision capability.
    int ResponseClass() const noexcept { return m_responseClass; }
    bool IsCollisionCapable() const noexcept { return m_responseClass != kNoResponseClass; }
    /// Whether this is `ancestor` or lies below it.
    bool IsWithin(const CGroup& ancestor) const noexcept;
    /// Polygons and simple shapes of the direct objects, and of the whole subtree.
    int OwnPrimitiveCount() const noexcept { return m_ownPrimitiveCount; }
    int SubtreePrimitiveCount() const noexcept { return m_subtreePrimitiveCount; }
    const CSurface& Surface(int index) const noexcept {
        return *m_surface[static_cast<std::size_t>(index)];
    }
    int ActiveSurface() const noexcept { return m_activeSurface; }
    /// Null until a key state or the cyclic flag was set.
    const CMotion* Motion() const noexcept { return m_motion.get(); }
    const MAV_matrix& LocalMatrix() const noexcept { return m_localMatrix; }
    const MAV_matrix& PoseMatrix() const noexcept { return m_poseMatrix; }
    const MAV_matrix& ScaleMatrix() const noexcept { return m_scaleMatrix; }
    const MAV_matrix& WorldMatrix() const noexcept { return m_worldMatrix; }

    void GetInfo(KstGroupInfo* info) const noexcept;
    /// The label, or "group" and the id; every character up to "." in ASCII, and every one beyond
    /// ASCII, is then "_".
    void GetExportName(std::string& out) const;

    /// Destroys children and objects.
    void Empty() noexcept;

    /// The collectors append to `out`.
    void CollectOwnObjects(std::vector<CSceneObject*>& out) const;
    /// Children first, in id order, then the own objects.
    void CollectObjects(std::vector<CSceneObject*>& out) const;
    /// This group, then its subtree in pre-order.
    void CollectGroups(std::vector<CGroup*>& out);
    /// Of the whole subtree, children first; groups without capability are left out.
    void CollectResponseClasses(std::vector<int>& out) const;

    /// Of this group and its direct objects alone. Turning off and on again loses margins.
    void SetCollisionCapability(bool on);
    /// Of all objects of the subtree that stand in the collision world.
    void SetClearance(float margin) noexcept;
    /// Writes the flags of the whole subtree; the views themselves are the display's business.
    void SetViewVisibility(int view, bool visible) noexcept;

    void SetPosition(float x, float y, float z) noexcept;
    /// Angles in radians about x, y and z.
    void SetOrientation(float x, float y, float z) noexcept;
    void SetScaling(float x, float y, float z) noexcept;
    void SetQuaternion(float x, float y, float z, float w) noexcept;
    /// Recomputes local and world matrices of the whole subtree.
    void UpdateWorldMatrix() noexcept;
    /// Brings display and collision world in line with the matrices of the whole subtree.
    void UpdateObjects() noexcept;

    /// Gives this group the surface, and copies of it to its direct objects; if `recursive`, to all
    /// groups and objects below as well.
    void SetSurface(std::unique_ptr<CSurface> surface, int index, bool recursive);
    void SetColor(float r, float g, float b, float a, bool recursive, int index);
    void SetTexture(int texture, float xTile, float yTile, bool recursive, int index);
    /// The objects of the whole subtree follow in any case, the groups below only if `recursive`.
    void SetActiveSurface(int index, bool recursive) noexcept;
    void SetSurfaceAlpha(float alpha, int index, bool recursive);

    void SetCyclic(bool cyclic);
    /// Arguments as for CMotion::AddKeyState. The group takes the pose of its track at once.
    void AddKeyState(float time, const float* pos, const float* orient, const float* scale,
                     bool isQuaternion);
    /// Nothing if the group is not animated, else the track goes and the matrices stay.
    void ClearKeyStates() noexcept;
    /// Needs an animated group.
    void ApplyTime(float time) noexcept;
    /// Matrices of the track at `time` alone, without what follows from them.
    void EvaluateMotion(float time) noexcept;

    /// `newParent` must not lie in this subtree. The place relative to the parent stays.
    void MoveTo(CGroup* newParent) noexcept;
    /// A copy of this group and its direct objects under `target`.
    CGroup* Clone(bool colCheck, CGroup* target, const std::string& label) const;
    /// A copy, without collision capability, of `source` and all below it under `target`, which
    /// must lie outside. The group of id ids[i] gets the label labels[i] (no label if either is
    /// null), and the id of its copy goes to newIds[i]; of ids that occur twice, the first counts.
    static CGroup* CloneRecursive(const CGroup* source, int* newIds, CGroup* target, int count,
                                  const int* ids, const char* const* labels);

  private:
    friend class CDeferredCounts;
    friend class CGroupCloner;
    friend class CSceneObject;

    CGroup(CGroup* parent, const std::string& label);

    static std::unique_ptr<CGroup> New(CGroup* parent, bool colCheck, const std::string& label);
    static CGroup* Adopt(std::unique_ptr<CGroup> group);

    /// Takes the object in and counts it here and in all ancestors. The object is moved from only
    /// if nothing failed.
    void AddObject(std::unique_ptr<CSceneObject>&& object);
    std::unique_ptr<CSceneObject> RemoveObject(CSceneObject* object) noexcept;
    /// The same without the ancestors.
    void AddOwnObject(std::unique_ptr<CSceneObject>&& object);
    std::unique_ptr<CSceneObject> RemoveOwnObject(CSceneObject* object) noexcept;
    void PassObject(CSceneObject* object, CGroup& to) noexcept;
    /// Of this group and all its ancestors.
    void AddToSubtreeCounts(int count) noexcept;
    /// Of all its ancestors, at once or later.
    void AddToAncestors(int count) noexcept;
    void DestroyOwnObjects() noexcept;
    void UpdateRow() noexcept;
    /// The group is not collision capable any more; its objects have left the world.
    void ReleaseResponseClass() noexcept;

    int m_id;
    /// Of the objects counted here and not yet in the ancestors; 0 but for CDeferredCounts.
    int m_uncounted = 0;
    CGroup* m_parent;
    std::string m_label;
    int m_responseClass = kNoResponseClass;
    MAV_matrix m_localMatrix = MAV_ID_MATRIX;
    MAV_matrix m_poseMatrix = MAV_ID_MATRIX;
    MAV_matrix m_scaleMatrix = MAV_ID_MATRIX;
    MAV_matrix m_worldMatrix = MAV_ID_MATRIX;
    std::array<bool, kViewCount> m_visibleInView{true, false, false, false};
    std::array<std::unique_ptr<CSurface>, kSurfaceCount> m_surface;
    int m_activeSurface = 0;
    bool m_animated = false;
    std::unique_ptr<CMotion> m_motion;
    int m_ownPrimitiveCount = 0;
    int m_subtreePrimitiveCount = 0;
    std::map<int, std::unique_ptr<CSceneObject>> m_objects;
    std::map<int, std::unique_ptr<CGroup>> m_children;
};

/// Puts all animated groups and objects where their tracks say for `time`. The same as ApplyTime on
/// each of g_animatedObjects and then of g_animatedGroups, but each group is recomputed once
/// however many of its ancestors are animated.
void ApplyTimeToScene(float time) noexcept;
