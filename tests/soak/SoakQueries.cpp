#include <algorithm>
#include <cmath>

#include "Soak.h"

// The queries, and the calls that concern neither groups nor objects.

namespace {

using reference::Containment;
using reference::Object;
using reference::Vector;

// Closest pairs of two groups cost the product of their objects.
constexpr std::size_t kMostPairs = 64;

}  // namespace

std::vector<KstCollisionResult> Soak::Results(int count) {
    // Room for one at least, as a null pointer is refused.
    std::vector<KstCollisionResult> results(static_cast<std::size_t>(count) + 1);
    Expect(KST_OK, KST_GetResults(results.data()), "results");
    results.pop_back();
    return results;
}

void Soak::CheckPoint() {
    const int group = SomeGroup();
    const bool all = m_random.Chance(70);
    const Vector point = {m_random.Between(-20, 20), m_random.Between(-20, 20),
                          m_random.Between(-20, 20)};
    int count = -5;
    const int expected = m_reference.TestQuery(group);
    Expect(
        expected,
        KST_CheckPointCollision(group, static_cast<float>(point[0]), static_cast<float>(point[1]),
                                static_cast<float>(point[2]), all, &count),
        "code");
    if (expected != KST_OK) {
        Expect(-5, count, "count of a refused call");
        return;
    }
    int inside = 0;
    int unsure = 0;
    for (const int id : m_reference.ObjectsInWorld(group)) {
        const Containment where = m_reference.Contains(m_reference.Objects().at(id), point);
        inside += where == Containment::kInside;
        unsure += where == Containment::kUnsure;
    }
    if (!all) {
        Require(count >= std::min(inside, 1) && count <= std::min(inside + unsure, 1),
                "first finding");
    } else {
        Require(count >= inside && count <= inside + unsure,
                std::to_string(count) + " objects at a point, not " + std::to_string(inside) +
                    " to " + std::to_string(inside + unsure));
    }
    for (const KstCollisionResult& result : Results(count)) {
        const auto found = m_reference.Objects().find(result.id1);
        Require(found != m_reference.Objects().end() &&
                    m_reference.IsBelow(found->second.group, group) &&
                    m_reference.Contains(found->second, point) != Containment::kOutside,
                "the point is not in object " + std::to_string(result.id1));
    }
}

void Soak::CheckLine() {
    const int group = SomeGroup();
    float p[6];
    for (float& value : p) {
        value = m_random.Between(-20, 20);
    }
    const bool all = m_random.Chance(70);
    int count = -5;
    const int expected = m_reference.TestQuery(group);
    Expect(expected, KST_CheckLineCollision(group, p[0], p[1], p[2], p[3], p[4], p[5], all, &count),
           "code");
    if (expected != KST_OK) {
        return;
    }
    // Whatever holds one end of the line is met by the line.
    const std::vector<int> objects = m_reference.ObjectsInWorld(group);
    int surely = 0;
    for (const int id : objects) {
        const Object& object = m_reference.Objects().at(id);
        surely += m_reference.Contains(object, {p[0], p[1], p[2]}) == Containment::kInside ||
                  m_reference.Contains(object, {p[3], p[4], p[5]}) == Containment::kInside;
    }
    const int most = all ? static_cast<int>(objects.size()) : 1;
    Require(count >= std::min(surely, most) && count <= most, "count");
}

void Soak::CheckGroups() {
    const int group1 = SomeGroup();
    const int group2 = SomeGroup();
    const int expected = m_reference.TestQuery(group1, group2);
    int count = -5;
    Expect(expected, KST_CheckGroupCollision(group1, group2, true, &count), "code");
    int depths = -5;
    const int depthCode = KST_GetPenetrationDepths(group1, group2, &depths);
    if (expected != KST_OK) {
        Expect(expected, depthCode, "code of depths");
        Require(count == -5 && depths == -5, "a refused call has written its count");
        return;
    }
    Expect(count == 0 ? KST_ERROR_NO_COLLISION : KST_OK, depthCode, "code of depths");
    if (count == 0) {
        return;
    }
    Expect(count, depths, "number of depths");
    float last = INFINITY;
    for (const KstCollisionResult& result : Results(depths)) {
        const int owner1 = m_reference.Objects().at(result.id1).group;
        const int owner2 = m_reference.Objects().at(result.id2).group;
        const bool forward =
            m_reference.IsBelow(owner1, group1) && m_reference.IsBelow(owner2, group2);
        const bool backward =
            m_reference.IsBelow(owner1, group2) && m_reference.IsBelow(owner2, group1);
        Require(forward || backward, "a finding of other groups");
        Require(result.value >= 0 && result.value <= last, "depths do not descend");
        last = result.value;
    }
}

void Soak::ClosestPairs() {
    const int group1 = SomeGroup();
    const int group2 = SomeGroup();
    int expected = m_reference.TestQuery(group1, group2);
    std::size_t pairs = 0;
    if (expected == KST_OK) {
        pairs =
            m_reference.ObjectsInWorld(group1).size() * m_reference.ObjectsInWorld(group2).size();
    }
    if (pairs > kMostPairs) {
        return;
    }
    int count = -5;
    Expect(expected, KST_GetClosestPairs(group1, group2, &count), "code");
    if (expected != KST_OK) {
        return;
    }
    Expect(static_cast<int>(pairs), count, "number of pairs");
    float last = 0;
    for (const KstCollisionResult& result : Results(count)) {
        Require(m_reference.IsBelow(m_reference.Objects().at(result.id1).group, group1) &&
                    m_reference.IsBelow(m_reference.Objects().at(result.id2).group, group2),
                "a pair of other groups");
        Require(result.value >= last, "distances do not ascend");
        last = result.value;
    }
}

void Soak::GetId() {
    const std::string label = SomeLabel();
    const auto found = m_reference.Labels().find(label);
    const bool known = !label.empty() && found != m_reference.Labels().end();
    int id = -5;
    Expect(known ? KST_OK : KST_ERROR_UNKNOWN_LABEL, KST_GetID(&id, label.c_str()), "code");
    Expect(known ? found->second : -5, id, "id");
}

void Soak::SetTime() {
    const float time = m_random.Chance(3) ? -0.25f : SomeTime();
    Expect(m_reference.SetTime(time), KST_SetTime(time), "code");
}

void Soak::ViewCalls() {
    const int view = m_random.Below(6) - 1;
    const bool good = view >= 0 && view <= 3;
    const int code = good ? KST_OK : KST_ERROR_ARGUMENT;
    const float eye[3] = {m_random.Between(-9, 9), 1, 2};
    const int second = view >= 1 && view <= 3 ? KST_OK : KST_ERROR_ARGUMENT;
    Expect(second, KST_ShowView(view, m_random.Chance(50) ? "view" : nullptr), "show");
    Expect(second, KST_HideView(view), "hide");
    Expect(code, KST_SetViewOptions(view, m_random.Below(2048)), "options");
    Expect(code, KST_SetViewParams(view, eye[0], 1, 2, 0, 0, 0, 0, 1, 0), "parameters");
    Expect(code, KST_SetBackgroundColor(view, 0, 0.5f, 1), "background");
    Expect(KST_OK, KST_AddViewKeyState(view, SomeTime(), eye, nullptr, nullptr), "key state");
    Expect(KST_OK, KST_SetViewCyclic(view, m_random.Chance(50)), "cyclic");
    Expect(code, KST_ClearViewKeyStates(view), "clear");
    Expect(KST_OK, KST_ScreenCapture(view, "capture.bmp"), "capture");
    Expect(KST_OK, KST_LoadTexture(view, "none.ppm", 1), "texture");
    Expect(KST_OK, KST_SetObjectSelectCallback(nullptr), "callback");
    Expect(KST_ERROR_NOT_RENDERING, KST_SuspendVisualisation(), "suspend");
    Expect(KST_ERROR_NOT_RENDERING, KST_ResumeVisualisation(), "resume");
}

void Soak::LoadMissingScene() {
    char* text = nullptr;
    Expect(KST_ERROR_FILE, KST_LoadScene("no such scene.xml", 0, &text), "code");
    Require(text && *text, "no text");
}

void Soak::Restart() {
    Expect(KST_OK, KST_End(), "end");
    Expect(KST_ERROR_NOT_INITIALISED, KST_EmptyGroup(0), "code after the end");
    Expect(KST_OK, KST_Initialisation(false, false, false), "start");
    m_reference.Start();
}

void Soak::Empty() {
    m_call = "empty";
    Expect(m_reference.EmptyGroup(0), KST_EmptyGroup(0), "code");
    int count = 0;
    int group = 0;
    // One more question lets go of the findings of the last.
    int expected = 0;
    m_reference.CreateGroup(0, true, "", expected);
    Expect(KST_OK, KST_CreateGroup(&group, 0, true, nullptr, false), "group");
    Expect(KST_OK, KST_CheckPointCollision(group, 0, 0, 0, true, &count), "point");
    Expect(m_reference.DestroyGroup(expected), KST_DestroyGroup(group), "destroy");
}
