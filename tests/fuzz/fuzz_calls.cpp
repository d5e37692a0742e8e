// Random sequences of the 71 public calls with random arguments, absurd ones among them. Whatever
// is called, the library must neither crash, hang, leak nor read beyond what it was given; every
// code must be one of the table, and a refused call must leave the tree as it was.

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "CallArguments.h"
#include "Playground.h"
#include "kestrane.h"

namespace {

// An input is to take milliseconds: the scene stays small whatever is cloned into what.
constexpr int kMostCalls = 200;
constexpr int kMostNodes = 60;
constexpr int kMostLoads = 2;

void Require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "broken promise: %s\n", what);
        std::abort();
    }
}

struct Census {
    int groups = 0;
    int objects = 0;

    bool operator==(const Census&) const = default;
    bool IsFull() const { return groups + objects >= kMostNodes; }
};

/// Counts the subtree of a group through the public calls, and tests that these agree.
void Count(int group, Census& census) {
    KstGroupInfo info = {};
    if (KST_GetGroup(group, &info) != KST_OK) {
        return;
    }
    ++census.groups;
    for (int i = 0; i < info.objectCount; ++i) {
        int object = -1;
        int type = 0;
        Require(KST_GetGroupObjectID(group, i, &object) == KST_OK, "a counted object has an id");
        Require(KST_GetObjectType(object, &type) == KST_OK && type >= KST_BOX &&
                    type <= KST_TETRAHEDRON,
                "an object of a group has a type");
        ++census.objects;
    }
    for (int i = 0; i < info.childCount; ++i) {
        int child = -1;
        Require(KST_GetGroupChildID(group, i, &child) == KST_OK, "a counted child has an id");
        Count(child, census);
    }
}

Census CountAll() {
    Census census;
    Count(0, census);
    return census;
}

bool IsCode(int code) {
    return code <= 0 && code >= KST_ERROR_ANIMATED && code != -15;
}

/// Runs one input.
class CCallSequence {
  public:
    CCallSequence(const std::uint8_t* data, std::size_t size) : m_in(data, size) {}

    void Run();

  private:
    using Method = int (CCallSequence::*)();

    /// A call that may be left out: `grows` names those that need room in the scene, `once` those
    /// that would clear it too often.
    struct Entry {
        Method call;
        bool grows = false;
        bool isRare = false;
    };
    static const std::array<Entry, 71> kCalls;

    /// A function of which the types of the arguments say enough.
    template <auto kFunction>
    int Plain() {
        return m_in.Call(kFunction);
    }

    template <auto kFunction>
    int Query();
    template <auto kFunction>
    int CreateFlat();
    template <auto kFunction>
    int CreateParts();
    int CreateTetrahedron();
    int CloneGroupRecursive();
    int GetObject();
    int GetResults();
    int LoadScene();
    int ScreenCapture();
    int SetCallback();

    CCallArguments m_in;
    int m_id = 0;
    int m_count = -1;  ///< records in the result store, -1 when that is not known
    int m_loads = 0;
    std::size_t m_mostObjects = 0;
};

template <auto kFunction>
int CCallSequence::Query() {
    int count = -1;
    const auto withCount = [this, &count](auto function, auto... scalars) {
        m_count = -1;
        const int code = function(scalars..., m_in.Rarely(32) ? nullptr : &count);
        m_count = code == KST_OK ? count : -1;
        return code;
    };
    using One = int (*)(int, float, float, float, bool, int*);
    using Line = int (*)(int, float, float, float, float, float, float, bool, int*);
    using Two = int (*)(int, int, bool, int*);
    using Pairs = int (*)(int, int, int*);
    const int group = m_in.Int();
    const bool all = m_in.Bool();
    constexpr auto function = kFunction;
    using Function = std::remove_const_t<decltype(function)>;
    if constexpr (std::is_same_v<Function, One>) {
        const auto p = m_in.Floats(3);
        return withCount(function, group, p[0], p[1], p[2], all);
    } else if constexpr (std::is_same_v<Function, Line>) {
        const auto p = m_in.Floats(6);
        return withCount(function, group, p[0], p[1], p[2], p[3], p[4], p[5], all);
    } else if constexpr (std::is_same_v<Function, Two>) {
        return withCount(function, group, m_in.Int(), all);
    } else {
        static_assert(std::is_same_v<Function, Pairs>);
        return withCount(function, group, m_in.Int());
    }
}

template <auto kFunction>
int CCallSequence::CreateFlat() {
    const int group = m_in.Int();
    // A count that no array can go with is met by a null array.
    const int count = m_in.Rarely(8) ? m_in.Int() : m_in.Byte() % 7;
    const bool hasArray = count <= 20 && !m_in.Rarely();
    const auto read = static_cast<std::size_t>(hasArray && count > 0 ? count : 0);
    const bool isTriangles = kFunction == &KST_CreateTriangles;
    const std::vector<float> vertices = m_in.Floats(read * (isTriangles ? 9 : 3));
    int* const place = m_in.Rarely() ? nullptr : &m_id;
    return kFunction(group, count, hasArray ? vertices.data() : nullptr, place, m_in.Label());
}

template <auto kFunction>
int CCallSequence::CreateParts() {
    const int group = m_in.Int();
    const int count = m_in.Rarely(8) ? m_in.Int() : m_in.Byte() % 5;
    const bool hasCounts = count <= 20 && !m_in.Rarely();
    std::vector<int> counts(static_cast<std::size_t>(hasCounts && count > 0 ? count : 0));
    std::size_t total = 0;
    for (int& vertices : counts) {
        vertices = m_in.Rarely(8) ? m_in.Byte() % 4 - 1 : 3 + m_in.Byte() % 4;
        total += vertices > 0 ? static_cast<std::size_t>(vertices) : 0;
    }
    const std::vector<float> vertices = m_in.Floats(3 * total);
    const bool hasVertices = !m_in.Rarely();
    int* const place = m_in.Rarely() ? nullptr : &m_id;
    return kFunction(group, count, hasCounts ? counts.data() : nullptr,
                     hasVertices ? vertices.data() : nullptr, place, m_in.Label());
}

int CCallSequence::CreateTetrahedron() {
    const int group = m_in.Int();
    const std::vector<float> corners = m_in.Floats(12);
    int* const place = m_in.Rarely() ? nullptr : &m_id;
    const float* const given = m_in.Rarely() ? nullptr : corners.data();
    return KST_CreateTetrahedron(group, given, place, m_in.Label());
}

int CCallSequence::CloneGroupRecursive() {
    static const char* const kLabels[] = {nullptr, "", "a", "b", "a"};
    const int source = m_in.Int();
    const int target = m_in.Int();
    const int count = m_in.Rarely() ? -1 - m_in.Byte() : m_in.Byte() % 5;
    std::vector<int> ids;
    std::vector<const char*> labels;
    for (int i = 0; i < count; ++i) {
        ids.push_back(m_in.Int());
        labels.push_back(kLabels[m_in.Byte() % 5]);
    }
    std::vector<int> newIds(ids.size());
    const bool hasPlaces = !m_in.Rarely();
    const bool hasIds = !m_in.Rarely();
    const bool hasLabels = !m_in.Rarely(4);
    return KST_CloneGroupRecursive(hasPlaces ? newIds.data() : nullptr, source, target, count,
                                   hasIds ? ids.data() : nullptr,
                                   hasLabels ? labels.data() : nullptr);
}

int CCallSequence::GetObject() {
    const int id = m_in.Int();
    if (m_in.Rarely()) {
        return KST_GetObject(id, nullptr);
    }
    KstObjectInfo info = {};
    int type = 0;
    const int code = KST_GetObject(id, &info);
    if (code != KST_OK) {
        return code;
    }
    Require(KST_GetObjectType(id, &type) == KST_OK, "a known object has a type");
    switch (type) {
        case KST_TRIANGLES:
        case KST_POLYGON:
            std::free(info.p2.floats);
            break;
        case KST_POLYGON_GROUP:
        case KST_POLYLINE:
            std::free(info.p2.ints);
            std::free(info.p3.floats);
            break;
        case KST_TETRAHEDRON:
            std::free(info.p1.floats);
            break;
        default:
            break;
    }
    return code;
}

int CCallSequence::GetResults() {
    if (m_in.Rarely()) {
        return KST_GetResults(nullptr);
    }
    // The store may still hold what was found before objects went.
    const std::size_t room =
        m_count > 0 ? static_cast<std::size_t>(m_count) : m_mostObjects * m_mostObjects + 1;
    std::vector<KstCollisionResult> results(room);
    return KST_GetResults(results.data());
}

int CCallSequence::LoadScene() {
    const int group = m_in.Int();
    const std::vector<std::string>& names = CPlayground::Get().SceneNames();
    const std::string& name = names[static_cast<std::size_t>(m_in.Byte()) % names.size()];
    const bool hasName = !m_in.Rarely();
    char* text = nullptr;
    char** const place = m_in.Rarely() ? nullptr : &text;
    if (++m_loads > kMostLoads) {
        return KST_OK;
    }
    const int code = KST_LoadScene(hasName ? name.c_str() : nullptr, group, place);
    Require(code != KST_ERROR_FILE || !place || text, "a file that is refused has a text");
    return code;
}

int CCallSequence::ScreenCapture() {
    static const std::string kFile = CPlayground::Get().PathOf("capture.bmp");
    return KST_ScreenCapture(m_in.Int(), m_in.Bool() ? nullptr : kFile.c_str());
}

int CCallSequence::SetCallback() {
    const KstSelectCallback callback = [](int, float*) {};
    return KST_SetObjectSelectCallback(m_in.Bool() ? nullptr : callback);
}

using S = CCallSequence;

// One entry for each public function, in the order of the header.
// clang-format off
const std::array<S::Entry, 71> S::kCalls = {{
    {&S::Plain<&KST_Initialisation>},
    {&S::Plain<&KST_End>, false, true},
    {&S::Plain<&KST_SuspendVisualisation>},
    {&S::Plain<&KST_ResumeVisualisation>},

    {&S::Plain<&KST_ShowView>},
    {&S::Plain<&KST_HideView>},
    {&S::Plain<&KST_SetViewOptions>},
    {&S::Plain<&KST_SetViewParams>},
    {&S::Plain<&KST_GetViewParams>},
    {&S::Plain<&KST_AddViewKeyState>},
    {&S::Plain<&KST_SetViewCyclic>},
    {&S::Plain<&KST_ClearViewKeyStates>},
    {&S::Plain<&KST_SetBackgroundColor>},
    {&S::ScreenCapture},

    {&S::Plain<&KST_CreateGroup>, true},
    {&S::Plain<&KST_DestroyGroup>},
    {&S::Plain<&KST_EmptyGroup>, false, true},
    {&S::Plain<&KST_MoveGroup>},
    {&S::Plain<&KST_SetGroupPosition>},
    {&S::Plain<&KST_SetGroupOrientation>},
    {&S::Plain<&KST_SetGroupScaling>},
    {&S::Plain<&KST_SetGroupQuaternion>},
    {&S::Plain<&KST_SetGroupColor>},
    {&S::Plain<&KST_SetGroupTexture>},
    {&S::Plain<&KST_SetGroupActiveSurface>},
    {&S::Plain<&KST_SetGroupCollisionCheckCapability>},
    {&S::Plain<&KST_SetGroupClearance>},
    {&S::Plain<&KST_SetGroupVisibility>},
    {&S::Plain<&KST_AddGroupKeyState>},
    {&S::Plain<&KST_SetGroupCyclic>},
    {&S::Plain<&KST_ClearGroupKeyStates>},
    {&S::Plain<&KST_CloneGroup>, true},
    {&S::CloneGroupRecursive, true},
    {&S::Plain<&KST_GetGroup>},
    {&S::Plain<&KST_GetGroupChildID>},
    {&S::Plain<&KST_GetGroupObjectID>},

    {&S::Plain<&KST_DestroyObject>},
    {&S::Plain<&KST_MoveObject>},
    {&S::Plain<&KST_SetObjectPosition>},
    {&S::Plain<&KST_SetObjectOrientation>},
    {&S::Plain<&KST_SetObjectScaling>},
    {&S::Plain<&KST_SetObjectQuaternion>},
    {&S::Plain<&KST_SetObjectColor>},
    {&S::Plain<&KST_SetObjectTexture>},
    {&S::Plain<&KST_SetObjectActiveSurface>},
    {&S::Plain<&KST_SetObjectClearance>},
    {&S::Plain<&KST_AddObjectKeyState>},
    {&S::Plain<&KST_SetObjectCyclic>},
    {&S::Plain<&KST_ClearObjectKeyStates>},
    {&S::Plain<&KST_GetObjectType>},
    {&S::GetObject},

    {&S::Plain<&KST_CreateBox>, true},
    {&S::Plain<&KST_CreateSphere>, true},
    {&S::Plain<&KST_CreateCylinder>, true},
    {&S::Plain<&KST_CreateCone>, true},
    {&S::CreateFlat<&KST_CreatePolygon>, true},
    {&S::CreateFlat<&KST_CreateTriangles>, true},
    {&S::CreateParts<&KST_CreatePolygonGroup>, true},
    {&S::CreateParts<&KST_CreatePolyline>, true},
    {&S::CreateTetrahedron, true},

    {&S::Query<&KST_CheckPointCollision>},
    {&S::Query<&KST_CheckLineCollision>},
    {&S::Query<&KST_CheckGroupCollision>},
    {&S::Query<&KST_GetClosestPairs>},
    {&S::Query<&KST_GetPenetrationDepths>},
    {&S::GetResults},
    {&S::Plain<&KST_GetID>},
    {&S::LoadScene, true, true},
    {&S::Plain<&KST_LoadTexture>},
    {&S::SetCallback},
    {&S::Plain<&KST_SetTime>},
}};
// clang-format on

void CCallSequence::Run() {
    // Most inputs start with a scene to work on; the time set last outlives KST_End.
    if (!m_in.Rarely()) {
        KST_Initialisation(false, false, false);
        KST_SetTime(0);
        for (const int parent : {0, 0, 1}) {
            KST_CreateGroup(&m_id, parent, true, nullptr, false);
        }
    }
    for (int call = 0; call < kMostCalls && m_in.HasMore(); ++call) {
        const Census before = CountAll();
        m_mostObjects = std::max(m_mostObjects, static_cast<std::size_t>(before.objects));
        const Entry& entry = kCalls[static_cast<std::size_t>(m_in.Byte()) % kCalls.size()];
        if ((entry.grows && before.IsFull()) || (entry.isRare && !m_in.Rarely(4))) {
            continue;
        }
        const int code = (this->*entry.call)();
        Require(IsCode(code), "a code of the table");
        // A scene file is read as far as it goes; all else is done whole or not at all.
        if (code != KST_OK && entry.call != &S::LoadScene) {
            Require(CountAll() == before, "a refused call changes nothing");
        }
    }
    KST_End();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CPlayground::Get();
    CCallSequence(data, size).Run();
    return 0;
}
