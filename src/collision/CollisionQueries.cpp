#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <tuple>
#include <utility>

#include "collision/CollisionManager.h"
#include "collision/RunQuery.h"
#include "collision/SegmentPlacement.h"
#include "model/Group.h"
#include "model/Registries.h"
#include "model/SceneObject.h"

namespace {

using Point = std::array<float, 3>;

/// The value of a finding that is neither a distance nor a depth.
constexpr float kNoValue = -1.0F;

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
