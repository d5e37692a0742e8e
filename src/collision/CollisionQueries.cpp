#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <new>
#include <queue>
#include <tuple>
#include <utility>

#include "collision/CollisionManager.h"
#include "collision/SegmentPlacement.h"
#include "model/Group.h"
#include "model/Registries.h"
#include "model/SceneObject.h"

namespace {

using Point = std::array<float, 3>;

/// The value of a finding that is neither a distance nor a depth.
constexpr float kNoValue = -1.0F;

/// The sphere that walks the ray of a pick.
constexpr float kPickRadius = 0.05F;
/// The walk goes from 0 to 100 per cent of the ray, so in at most 20,000 steps.
constexpr float kPickEnd = 100.0F;
constexpr float kPickStep = 0.005F;

/// Runs a query on an empty store. One that fails half-way leaves it empty, so that the host never
/// gets more records than the last count that it was told.
template <class Body>
auto RunQuery(Body&& body) {
    CCollisionManager::ClearResults();
    try {
        return body();
    } catch (...) {
        CCollisionManager::ClearResults();
        throw;
    }
}

int ResultCount() {
    if (g_collisionResults.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw std::bad_alloc();
    }
    return static_cast<int>(g_collisionResults.size());
}

CCollisionResult MakeResult(int id1, int id2) noexcept {
    CCollisionResult result = {};
    result.id1 = id1;
    result.id2 = id2;
    result.value = kNoValue;
    return result;
}

/// The engine is asked with a mesh as the first object where there is a choice.
bool IsMesh(const CSceneObject& object) noexcept {
    return object.Type() == kTypeTriangles || object.Type() == kTypePolygon ||
           object.Type() == kTypePolygonGroup;
}

float Distance(const CSceneObject& a, const CSceneObject& b, float pointOnA[3], float pointOnB[3]) {
    if (IsMesh(b)) {
        return DT_GetClosestPair(b.SolidObject(), a.SolidObject(), pointOnB, pointOnA);
    }
    return DT_GetClosestPair(a.SolidObject(), b.SolidObject(), pointOnA, pointOnB);
}

void WriteDepth(const CSceneObject& a, const CSceneObject& b, CCollisionResult& result) {
    const bool deep =
        IsMesh(b) ? DT_GetPenDepth(b.SolidObject(), a.SolidObject(), result.point2, result.point1)
                  : DT_GetPenDepth(a.SolidObject(), b.SolidObject(), result.point1, result.point2);
    if (!deep) {
        // The engine found contact; should it ever take that back, they just touch.
        Distance(a, b, result.point1, result.point2);
    }
    double square = 0.0;
    for (int i = 0; i < 3; ++i) {
        const double d =
            static_cast<double>(result.point1[i]) - static_cast<double>(result.point2[i]);
        square += d * d;
    }
    constexpr double kMost = std::numeric_limits<float>::max();
    result.value = static_cast<float>(std::min(std::sqrt(square), kMost));
}

/// By value in the direction of `sign`; equal ones by their ids.
void SortResults(float sign) {
    std::sort(g_collisionResults.begin(), g_collisionResults.end(),
              [sign](const CCollisionResult& a, const CCollisionResult& b) {
                  return std::make_tuple(sign * a.value, a.id1, a.id2) <
                         std::make_tuple(sign * b.value, b.id1, b.id2);
              });
}

}  // namespace

/// What a response callback gets as its client.
struct CCollisionManager::Recorder {
    bool all;
    /// The first group of a group query.
    const CGroup* first = nullptr;
    bool outOfMemory = false;

    DT_Bool Append(const CCollisionResult& result) noexcept {
        try {
            g_collisionResults.push_back(result);
        } catch (const std::exception&) {
            outOfMemory = true;
            return DT_DONE;
        }
        return all ? DT_CONTINUE : DT_DONE;
    }

    static DT_Bool Probe(void* client, void* object1, void* object2, const void*) noexcept {
        const auto* object =
            static_cast<const CSceneObject*>(object1 != nullptr ? object1 : object2);
        return static_cast<Recorder*>(client)->Append(MakeResult(object->Id(), 0));
    }
    static DT_Bool Pair(void* client, void* object1, void* object2, const void*) noexcept {
        auto* recorder = static_cast<Recorder*>(client);
        const auto* first = static_cast<const CSceneObject*>(object1);
        const auto* second = static_cast<const CSceneObject*>(object2);
        if (first->Group() != recorder->first) {
            std::swap(first, second);
        }
        return recorder->Append(MakeResult(first->Id(), second->Id()));
    }
};

/// An object that takes part in the tests of a scene as long as this is.
class CCollisionManager::Membership {
  public:
    Membership(DT_SceneHandle scene, DT_ObjectHandle object) : m_scene(scene), m_object(object) {
        DT_AddObject(m_scene, m_object);
    }
    ~Membership() { DT_RemoveObject(m_scene, m_object); }
    Membership(const Membership&) = delete;
    Membership& operator=(const Membership&) = delete;

  private:
    DT_SceneHandle m_scene;
    DT_ObjectHandle m_object;
};

void CCollisionManager::ForgetOldClassLists() noexcept {
    // So many classes together that a walk over the tree for each query costs little beside a test.
    constexpr std::size_t kMostListed = 1 << 20;
    if (m_classChanges != g_classChanges || m_listedClasses > kMostListed) {
        m_classLists.clear();
        m_listedClasses = 0;
        m_classChanges = g_classChanges;
    }
}

const std::vector<DT_ResponseClass>& CCollisionManager::ClassesOf(const CGroup& group) {
    const auto known = m_classLists.find(group.Id());
    if (known != m_classLists.end()) {
        return known->second;
    }
    std::vector<DT_ResponseClass> classes;
    group.CollectResponseClasses(classes);
    m_listedClasses += classes.size();
    return m_classLists.emplace(group.Id(), std::move(classes)).first->second;
}

void CCollisionManager::Test(DT_RespTableHandle table,
                             const std::vector<DT_ResponseClass>& classes1,
                             const std::vector<DT_ResponseClass>& classes2,
                             DT_ResponseCallback callback, Recorder& recorder) {
    DT_TestPairs(m_scene.get(), table, classes1.data(), classes1.size(), classes2.data(),
                 classes2.size(), callback, DT_SIMPLE_RESPONSE, &recorder);
    if (recorder.outOfMemory) {
        throw std::bad_alloc();
    }
}

int CCollisionManager::CheckProbe(const CGroup& group, const Probe& probe, bool all, int* count) {
    return RunQuery([&] {
        BringClassesUpToDate();
        ForgetOldClassLists();
        Recorder recorder{all};
        Test(m_respTable.get(), ClassesOf(group), probe.classes, &Recorder::Probe, recorder);
        *count = ResultCount();
        return KST_OK;
    });
}

int CCollisionManager::CheckPoint(const CGroup& group, const Point& point, bool all, int* count) {
    DT_SetPosition(m_point.object.get(), point.data());
    return CheckProbe(group, m_point, all, count);
}

int CCollisionManager::CheckLine(const CGroup& group, const Point& start, const Point& end,
                                 bool all, int* count) {
    DT_SetMatrixf(m_line.object.get(), PlaceUnitSegment(start, end).data());
    return CheckProbe(group, m_line, all, count);
}

int CCollisionManager::CheckGroups(const CGroup& group1, const CGroup& group2, bool all,
                                   int* count) {
    return RunQuery([&] {
        BringClassesUpToDate();
        if (group1.IsWithin(group2) || group2.IsWithin(group1)) {
            return KST_ERROR_OVERLAP;
        }
        ForgetOldClassLists();
        Recorder recorder{all, &group1};
        Test(m_respTable.get(), ClassesOf(group1), ClassesOf(group2), &Recorder::Pair, recorder);
        *count = ResultCount();
        return KST_OK;
    });
}

int CCollisionManager::GetClosestPairs(const CGroup& group1, const CGroup& group2, int* count) {
    return RunQuery([&] {
        std::vector<CSceneObject*> objects1;
        std::vector<CSceneObject*> objects2;
        group1.CollectObjects(objects1);
        group2.CollectObjects(objects2);
        for (const CSceneObject* a : objects1) {
            for (const CSceneObject* b : objects2) {
                if (a == b) {
                    return KST_ERROR_OVERLAP;
                }
                if (!a->IsInCollisionWorld() || !b->IsInCollisionWorld()) {
                    continue;
                }
                CCollisionResult result = MakeResult(a->Id(), b->Id());
                result.value = Distance(*a, *b, result.point1, result.point2);
                // Objects whose placement is not finite are at no distance.
                if (std::isfinite(result.value)) {
                    g_collisionResults.push_back(result);
                }
            }
        }
        // Groups can share a group that holds no object.
        if (group1.IsWithin(group2) || group2.IsWithin(group1)) {
            return KST_ERROR_OVERLAP;
        }
        SortResults(1.0F);
        *count = ResultCount();
        return KST_OK;
    });
}

int CCollisionManager::GetPenetrationDepths(const CGroup& group1, const CGroup& group2,
                                            int* count) {
    return RunQuery([&]() -> int {
        int found = 0;
        const int status = CheckGroups(group1, group2, true, &found);
        if (status != KST_OK) {
            return status;
        }
        if (found == 0) {
            return KST_ERROR_NO_COLLISION;
        }
        for (CCollisionResult& result : g_collisionResults) {
            WriteDepth(*g_objects.at(result.id1), *g_objects.at(result.id2), result);
        }
        SortResults(-1.0F);
        *count = found;
        return KST_OK;
    });
}

std::vector<const CSceneObject*> CCollisionManager::ClassifyVisible(
    int view, DT_RespTableHandle table, DT_ResponseClass responseClass) const {
    std::vector<const CSceneObject*> visible;
    for (const CCollisionResult& result : g_collisionResults) {
        const CSceneObject& object = *g_objects.at(result.id1);
        if (object.Group()->IsVisibleInView(view)) {
            DT_SetResponseClass(table, object.SolidObject(), responseClass);
            visible.push_back(&object);
        }
    }
    return visible;
}

/// A small sphere that goes along a ray in steps.
class CCollisionManager::RayWalk {
  public:
    RayWalk(const Point& start, const Point& end)
        : m_start(start),
          m_end(end),
          m_shape(DT_NewSphere(kPickRadius)),
          m_sphere(DT_CreateObject(nullptr, m_shape.get())) {
        // Added up in single precision: the steps are where rounding puts them.
        for (float t = 0.0F; t < kPickEnd; t += kPickStep) {
            m_shares.push_back((kPickEnd - t) * 0.01F);
        }
        double square = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            const double d = static_cast<double>(start[i]) - static_cast<double>(end[i]);
            square += d * d;
            m_farthest = std::max({m_farthest, std::abs(static_cast<double>(start[i])),
                                   std::abs(static_cast<double>(end[i]))});
        }
        m_stepLength = std::sqrt(square) * static_cast<double>(kPickStep) * 0.01;
        MoveTo(0);
    }

    DT_ObjectHandle Sphere() const { return m_sphere.get(); }
    const Point& Position() const { return m_position; }
    int StepCount() const { return static_cast<int>(m_shares.size()); }

    void MoveTo(int step) {
        const float share = m_shares[static_cast<std::size_t>(step)];
        for (std::size_t i = 0; i < 3; ++i) {
            m_position[i] = m_end[i] + (m_start[i] - m_end[i]) * share;
        }
        DT_SetPosition(m_sphere.get(), m_position.data());
    }

    /// The next step after this one at which the sphere may touch the object: it comes nearer by no
    /// more than a step's length with each step. This step itself if it may touch it here.
    int NextNear(DT_ObjectHandle object, int step) {
        MoveTo(step);
        float onSphere[3];
        float onObject[3];
        const double distance = DT_GetClosestPair(m_sphere.get(), object, onSphere, onObject);
        // For the rounding of positions and distances, far above what either can be off.
        const double certain = distance - kRounding * (distance + m_farthest) - kPickRadius * 0.01;
        if (!(certain > m_stepLength)) {
            return step;
        }
        const double steps = std::floor(certain / (m_stepLength * (1 + kRounding)));
        const double left = StepCount() - step;
        return steps < left ? step + static_cast<int>(steps) : StepCount();
    }

  private:
    static constexpr double kRounding = 1e-5;

    const Point m_start;
    const Point m_end;
    const Shape m_shape;
    const Object m_sphere;
    std::vector<float> m_shares;  ///< of the way that is still to go, by step
    double m_stepLength = 0;
    double m_farthest = 0;  ///< the largest coordinate of the ray
    Point m_position = {};
};

Point CCollisionManager::WalkRay(const Point& start, const Point& end, DT_RespTableHandle table,
                                 const std::vector<const CSceneObject*>& visible,
                                 DT_ResponseClass visibleClass) {
    RayWalk walk(start, end);
    const Membership membership(m_scene.get(), walk.Sphere());
    const DT_ResponseClass sphereClass = DT_GenResponseClass(table);
    DT_SetResponseClass(table, walk.Sphere(), sphereClass);
    Recorder recorder{false};
    const std::vector<DT_ResponseClass> sphereClasses{sphereClass};
    const std::vector<DT_ResponseClass> visibleClasses{visibleClass};
    const std::size_t before = g_collisionResults.size();

    // By the step at which each can be touched at the earliest; who is farther away than the object
    // that is met is looked at once.
    using Candidate = std::pair<int, std::size_t>;
    std::priority_queue<Candidate, std::vector<Candidate>, std::greater<>> candidates;
    for (std::size_t i = 0; i < visible.size(); ++i) {
        candidates.emplace(0, i);
    }
    while (!candidates.empty()) {
        const auto [step, i] = candidates.top();
        candidates.pop();
        if (step >= walk.StepCount()) {
            break;
        }
        const DT_ObjectHandle object = visible[i]->SolidObject();
        const int near = walk.NextNear(object, step);
        if (near > step) {
            candidates.emplace(near, i);
            continue;
        }
        if (DT_InContact(walk.Sphere(), object)) {
            // Others may be touched at this step too; which one counts is the test's to say.
            Test(table, sphereClasses, visibleClasses, &Recorder::Probe, recorder);
            if (g_collisionResults.size() != before) {
                return walk.Position();
            }
        }
        candidates.emplace(step + 1, i);
    }
    walk.MoveTo(walk.StepCount() - 1);
    return walk.Position();
}

CSceneObject* CCollisionManager::PickAlongRay(int view, const Point& start, const Point& end,
                                              Point* point) {
    return RunQuery([&]() -> CSceneObject* {
        int found = 0;
        CheckLine(*g_groups.at(0), start, end, true, &found);
        if (found == 0) {
            return nullptr;
        }
        const std::size_t onLine = g_collisionResults.size();
        const RespTable table(DT_CreateRespTable());
        const DT_ResponseClass visibleClass = DT_GenResponseClass(table.get());
        const auto visible = ClassifyVisible(view, table.get(), visibleClass);
        if (visible.empty()) {
            return nullptr;
        }
        *point = WalkRay(start, end, table.get(), visible, visibleClass);
        // A sphere that slips past leaves the line's first finding.
        const bool met = g_collisionResults.size() > onLine;
        const CCollisionResult& result =
            met ? g_collisionResults.back() : g_collisionResults.front();
        return g_objects.at(result.id1);
    });
}
