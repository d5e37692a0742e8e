#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <unordered_map>
#include <vector>

#include "kestrane.h"
#include "model/neighbours.h"
#include "platform/solid/Solid.h"

class CGroup;
class CSceneObject;

/// One finding of a query. Words that a query gives no meaning are 0.
using CCollisionResult = KstCollisionResult;

/// The findings of the last query. Empty after a query that ran out of memory.
extern std::vector<CCollisionResult>& g_collisionResults;

/// The collision world, kept in step with the tree of groups, and the questions to it.
///
/// Each object of a capable group, polylines apart, is one object of the world, and each capable
/// group is one response class. No pair of classes has a response in the table: a query names the
/// pairs that it asks about for one test.
///
/// Queries throw std::bad_alloc when memory runs out; the world is then as before. Calls must not
/// overlap in time.
class CCollisionManager final : public CCollisionNeighbour {
  public:
    CCollisionManager();
    ~CCollisionManager() override;

    // ---- The world ----
    int GenResponseClass() override;
    void ReleaseResponseClass(int responseClass) noexcept override;
    void AddObject(CSceneObject* object) override;
    void RemoveObject(CSceneObject* object) noexcept override;
    void UpdateObject(CSceneObject* object, const MAV_matrix& world) noexcept override;
    /// Where memory runs out, the next query sees to it.
    void UpdateResponseClass(CSceneObject* object) noexcept override;
    void SetObjectMargin(CSceneObject* object, float margin) noexcept override;

    // ---- Queries. All leave their findings in g_collisionResults ----

    /// Objects of the group's subtree that touch the point; of `all` false, the first found alone.
    int CheckPoint(const CGroup& group, const std::array<float, 3>& point, bool all, int* count);
    /// The same for the segment between two points; a segment of length 0 acts as the point.
    int CheckLine(const CGroup& group, const std::array<float, 3>& start,
                  const std::array<float, 3>& end, bool all, int* count);
    /// Pairs of touching objects, one of each subtree. Subtrees that share a group give
    /// KST_ERROR_OVERLAP; `*count` is not written then.
    int CheckGroups(const CGroup& group1, const CGroup& group2, bool all, int* count);
    /// All pairs of objects, the first of group1's subtree and the second of group2's, by ascending
    /// distance. Pairs without a distance are left out. KST_ERROR_OVERLAP as above.
    int GetClosestPairs(const CGroup& group1, const CGroup& group2, int* count);
    /// The pairs of CheckGroups by descending depth. KST_ERROR_NO_COLLISION if there are none;
    /// `*count` is not written then.
    int GetPenetrationDepths(const CGroup& group1, const CGroup& group2, int* count);
    /// The first object visible in `view` along the ray from `start` to `end`, or null: of those
    /// that the line meets, the one that a small sphere on its way along the ray touches first, and
    /// of several at one step, the one that entered the world first. `*point` is where the sphere
    /// then stands. Its steps can be longer than the sphere is wide: one that passes all gives the
    /// line's first finding and the last step. Leaves the line's findings and the picked one.
    CSceneObject* PickAlongRay(int view, const std::array<float, 3>& start,
                               const std::array<float, 3>& end, std::array<float, 3>* point);

    /// Copies all findings.
    static void CopyResults(CCollisionResult* out) noexcept;
    /// Empties the store and gives its memory back, but for what a few findings need.
    static void ClearResults() noexcept;

  private:
    template <auto Delete>
    struct Deleter {
        template <class Handle>
        void operator()(Handle* handle) const noexcept {
            Delete(handle);
        }
    };
    using Scene = std::unique_ptr<solid::Scene, Deleter<&DT_DestroyScene>>;
    using RespTable = std::unique_ptr<solid::RespTable, Deleter<&DT_DestroyRespTable>>;
    using Shape = std::unique_ptr<solid::Shape, Deleter<&DT_DeleteShape>>;
    using Object = std::unique_ptr<solid::Object, Deleter<&DT_DestroyObject>>;

    /// An object of the world that stands for no object of the scene.
    struct Probe {
        Shape shape;
        Object object;
        /// The one class of the object, as a list.
        std::vector<DT_ResponseClass> classes;
    };

    class RayWalk;
    struct Recorder;

    Probe MakeProbe(Shape shape);
    void SetResponseClass(const CSceneObject& object);
    void BringClassesUpToDate();
    void ForgetOldClassLists() noexcept;
    /// Of the group's subtree. Lists stand until ForgetOldClassLists.
    const std::vector<DT_ResponseClass>& ClassesOf(const CGroup& group);
    /// Tests all pairs of the two lists.
    void Test(DT_RespTableHandle table, const std::vector<DT_ResponseClass>& classes1,
              const std::vector<DT_ResponseClass>& classes2, DT_ResponseCallback callback,
              Recorder& recorder);
    int CheckProbe(const CGroup& group, const Probe& probe, bool all, int* count);
    Scene m_scene;
    RespTable m_respTable;
    Probe m_point;
    Probe m_line;
    /// The lists that were asked for since the tree last changed, by the group's id.
    std::unordered_map<int, std::vector<DT_ResponseClass>> m_classLists;
    std::size_t m_listedClasses = 0;
    unsigned long long m_classChanges = 0;  ///< g_classChanges at that time
    /// An object may be in the class of a former group.
    bool m_classesStale = false;
};
