#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <memory>
#include <vector>

#include "Library.h"
#include "collision/SegmentPlacement.h"
#include "platform/solid/Solid.h"
#include "tests/solid/accuracy/Engine.h"

namespace bench {

namespace {

DT_Bool CountOne(void* client, void*, void*, const void*) {
    ++*static_cast<int*>(client);
    return DT_CONTINUE;
}

DT_Bool StopAtOne(void* client, void*, void*, const void*) {
    ++*static_cast<int*>(client);
    return DT_DONE;
}

/// This library at the level of the engine. A group is a response class.
class SolidLibrary : public Library {
  public:
    SolidLibrary() {
        EnterProbe(m_point);
        EnterProbe(m_segment);
    }
    ~SolidLibrary() override {
        for (const oracle::EngineObject& object : m_objects) {
            DT_RemoveObject(m_scene, object.Handle());
        }
        DT_RemoveObject(m_scene, m_point.object.Handle());
        DT_RemoveObject(m_scene, m_segment.object.Handle());
        DT_DestroyRespTable(m_table);
        DT_DestroyScene(m_scene);
    }

    int AddGroup(int parent) override {
        const int group = static_cast<int>(m_groups.size());
        const DT_ResponseClass responseClass = DT_GenResponseClass(m_table);
        m_groups.push_back({parent, responseClass, {}, {}});
        for (int above = group; above != kNoGroup; above = GroupOf(above).parent) {
            GroupOf(above).classes.push_back(responseClass);
        }
        return group;
    }
    int AddObject(const Spec& spec, int group) override {
        m_objects.emplace_back(spec);
        const DT_ObjectHandle handle = m_objects.back().Handle();
        DT_SetResponseClass(m_table, handle, GroupOf(group).responseClass);
        DT_AddObject(m_scene, handle);
        for (int above = group; above != kNoGroup; above = GroupOf(above).parent) {
            GroupOf(above).objects.push_back(handle);
        }
        return static_cast<int>(m_objects.size()) - 1;
    }
    void Place(int object, const Matrix& matrix) override {
        DT_SetMatrixf(Handle(object), matrix.data());
    }
    void Move(int object, const Point& position) override {
        DT_SetPosition(Handle(object), position.data());
    }

    bool InContact(int object1, int object2) override {
        return DT_InContact(Handle(object1), Handle(object2));
    }
    double Distance(int object1, int object2, Points& points) override {
        return static_cast<double>(DT_GetClosestPair(Handle(object1), Handle(object2),
                                                     points.first.data(), points.second.data()));
    }
    double Depth(int object1, int object2, Points& points) override {
        if (!DT_GetPenDepth(Handle(object1), Handle(object2), points.first.data(),
                            points.second.data())) {
            return -1;
        }
        double square = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            const double d =
                static_cast<double>(points.first[i]) - static_cast<double>(points.second[i]);
            square += d * d;
        }
        return std::sqrt(square);
    }

    int CountContacts(int group1, int group2, bool all) override {
        return Test(GroupOf(group1).classes, GroupOf(group2).classes, all ? CountOne : StopAtOne);
    }
    int CountAtPoint(int group, const Point& point) override {
        DT_SetPosition(m_point.object.Handle(), point.data());
        return Test(GroupOf(group).classes, m_point.classes, CountOne);
    }
    int CountAtSegment(int group, const Point& from, const Point& to) override {
        DT_SetMatrixf(m_segment.object.Handle(), PlaceUnitSegment(from, to).data());
        return Test(GroupOf(group).classes, m_segment.classes, CountOne);
    }
    double LeastDistance(int group1, int group2) override {
        float least = std::numeric_limits<float>::infinity();
        Points points;
        for (const DT_ObjectHandle object1 : GroupOf(group1).objects) {
            for (const DT_ObjectHandle object2 : GroupOf(group2).objects) {
                least = std::min(least, DT_GetClosestPair(object1, object2, points.first.data(),
                                                          points.second.data()));
            }
        }
        return static_cast<double>(least);
    }

    std::size_t OwnBytes() const override {
        std::size_t bytes = m_objects.size() * sizeof(oracle::EngineObject);
        for (const Group& group : m_groups) {
            bytes += group.objects.capacity() * sizeof(DT_ObjectHandle);
        }
        return bytes;
    }

  private:
    struct Group {
        int parent;
        DT_ResponseClass responseClass;
        /// With all below.
        std::vector<DT_ResponseClass> classes;
        std::vector<DT_ObjectHandle> objects;
    };
    struct Probe {
        oracle::EngineObject object;
        std::vector<DT_ResponseClass> classes;
    };

    void EnterProbe(Probe& probe) {
        probe.classes.push_back(DT_GenResponseClass(m_table));
        DT_SetResponseClass(m_table, probe.object.Handle(), probe.classes[0]);
        DT_AddObject(m_scene, probe.object.Handle());
    }
    DT_ObjectHandle Handle(int object) const {
        return m_objects[static_cast<std::size_t>(object)].Handle();
    }
    Group& GroupOf(int group) { return m_groups[static_cast<std::size_t>(group)]; }

    int Test(const std::vector<DT_ResponseClass>& classes1,
             const std::vector<DT_ResponseClass>& classes2, DT_ResponseCallback callback) {
        int count = 0;
        DT_AddPairResponses(m_table, classes1.data(), classes1.size(), classes2.data(),
                            classes2.size(), callback, DT_SIMPLE_RESPONSE, &count);
        DT_Test(m_scene, m_table);
        DT_RemovePairResponses(m_table, classes1.data(), classes1.size(), classes2.data(),
                               classes2.size(), callback);
        return count;
    }

    DT_SceneHandle m_scene = DT_CreateScene();
    DT_RespTableHandle m_table = DT_CreateRespTable();
    std::deque<oracle::EngineObject> m_objects;
    std::vector<Group> m_groups;
    Probe m_point{oracle::EngineObject(oracle::Sphere(0)), {}};
    Probe m_segment{oracle::EngineObject(oracle::Segment({0, 0, 0}, {0, 1, 0})), {}};
};

}  // namespace

std::vector<LibraryKind> SolidLibraries() {
    return {{"dt", [] { return std::make_unique<SolidLibrary>(); }}};
}

}  // namespace bench
