#include "Scene.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <system_error>
#include <tuple>
#include <utility>

#include "Failure.h"
#include "FileContent.h"
#include "Names.h"
#include "Output.h"
#include "PairQuery.h"
#include "ReaderEcho.h"
#include "WorldContent.h"
#include "frame/CheckerApp.h"
#include "model/Group.h"
#include "model/Registries.h"
#include "model/SceneObject.h"
#include "platform/settings/ProfileStore.h"
#include "visualiser/Display.h"
#include "visualiser/VisView.h"

namespace {

constexpr int kRootGroup = 0;

/// Why nothing was found in a file that is there.
std::string TextOfNoNode(const std::string& file) {
    std::FILE* const opened = std::fopen(file.c_str(), "rb");
    if (!opened)
        return std::string("it cannot be read: ") + std::strerror(errno);
    std::fclose(opened);
    return "there is no node in it; a line ends in a line feed, and what follows # in a line is a "
           "comment";
}

[[noreturn]] void FailToLoad(const std::string& file, int code, const char* errorText) {
    // Only a file problem writes a text; with other codes there is none, or that of another load.
    std::string text = code == KST_ERROR_FILE && errorText ? OneLine(errorText) : "";
    if (text.find(file) != std::string::npos)
        throw Failure(text);
    std::error_code error;
    const bool exists = std::filesystem::exists(file, error);
    // The library does not tell which element or included file it is about; this mostly does.
    if (HasSuffix(file, ".xml") && exists)
        ReadFileContent(file);
    if (HasSuffix(file, ".wrl") && code == KST_ERROR_FILE && text.empty())
        text = exists ? TextOfNoNode(file) : "there is no such file";
    else if (code == KST_ERROR_UNKNOWN_GROUP)
        text = HasSuffix(file, ".wrl")
                   ? "a Shape stands outside of all Transforms; put a Transform around it"
                   : "an object stands outside of all groups; put it into a <group>";
    else if (code == KST_ERROR_ARGUMENT)
        text = "the size, scale, angle, colour or time of an element is out of range";
    else if (text.empty())
        text = CodeText(code);
    throw Failure(file + ": " + text);
}

std::string RefusedText(std::size_t refused, std::size_t all, const char* noun) {
    return std::to_string(refused) + " of " + std::to_string(all) + " " + noun +
           (refused == 1 ? " was" : " were") + " refused";
}

/// As below, of a VRML97 world. What no scene can hold is not in the answers either, and that is
/// said.
void RequireAllShapes(const std::string& file) {
    const WorldContent wanted = ReadWorldContent(file);
    if (g_objects.size() < wanted.objects)
        throw Failure(file + ": " +
                      RefusedText(wanted.objects - g_objects.size(), wanted.objects, "shapes") +
                      ": a size below 0, an index without a point, too few points, polygons that "
                      "are not convex, or an Extrusion");
    if (wanted.notFinite > 0)
        throw Failure(file + ": a size, a place or a point is a number out of range");
    if (wanted.unclosed > 0)
        throw Failure(file + ": " + Count(wanted.unclosed, "coordIndex") +
                      " without a closing -1, so that the last face or line is not read; put -1 "
                      "at the end");
    if (wanted.reordered > 0)
        std::fprintf(stderr,
                     "kestrane: note: %s: of a Switch, children that are a USE are counted behind "
                     "the others, so that whichChoice may name another one\n",
                     file.c_str());
    if (wanted.misplaced > 0)
        std::fprintf(
            stderr,
            "kestrane: note: %s: %s placed without center and scaleOrientation, which are "
            "not read; one with a scale below 0 not at all\n",
            file.c_str(),
            (Count(wanted.misplaced, "Transform") + (wanted.misplaced == 1 ? " is" : " are"))
                .c_str());
    if (wanted.passedOver > 0)
        std::fprintf(stderr, "kestrane: note: %s: %s passed over\n", file.c_str(),
                     (Count(wanted.passedOver, "shape") + (wanted.passedOver == 1 ? " is" : " are"))
                         .c_str());
}

/// The library goes on past an object or key state that it refuses, and a load may succeed all the
/// same. An answer about a scene with holes in it would be wrong.
void RequireAllLoaded(const std::string& file) {
    if (HasSuffix(file, ".wrl")) {
        RequireAllShapes(file);
        return;
    }
    const FileContent wanted = ReadFileContent(file);
    std::size_t keyStates = 0;
    for (const CGroup* group : g_animatedGroups)
        keyStates += group->Motion()->Keys().size();
    for (const CSceneObject* object : g_animatedObjects)
        keyStates += object->Motion()->Keys().size();
    if (g_objects.size() < wanted.objects)
        throw Failure(file + ": " +
                      RefusedText(wanted.objects - g_objects.size(), wanted.objects, "objects") +
                      ": outside of all groups, with a label that is in use, a size below 0, or "
                      "too few points");
    if (keyStates < wanted.keyStates)
        throw Failure(file + ": " +
                      RefusedText(wanted.keyStates - keyStates, wanted.keyStates, "key states") +
                      ": times that go down, or an angle out of range");
}

int Load(const std::string& file, char** errorText) {
    const ReaderEcho silence;
    return KST_LoadScene(file.c_str(), kRootGroup, errorText);
}

const CGroup* FindById(const std::string& name) {
    int id = 0;
    const char* const end = name.data() + name.size();
    const auto [stop, error] = std::from_chars(name.data(), end, id);
    if (error != std::errc() || stop != end)
        return nullptr;
    const auto found = g_groups.find(id);
    return found == g_groups.end() ? nullptr : found->second;
}

std::vector<KstCollisionResult> Results(int count) {
    std::vector<KstCollisionResult> results(static_cast<std::size_t>(count));
    if (count > 0)
        Require(KST_GetResults(results.data()), "results");
    return results;
}

/// The library may name the objects of a pair in either order where subgroups are concerned.
void PutFirstGroupFirst(std::vector<KstCollisionResult>& results, int group1) {
    const CGroup& first = *g_groups.at(group1);
    for (KstCollisionResult& r : results) {
        if (g_objects.at(r.id1)->Group()->IsWithin(first))
            continue;
        std::swap(r.id1, r.id2);
        std::swap(r.point1, r.point2);
    }
}

/// By `sign` times the value, ascending, then by the ids. What is not a number comes last.
void SortByValue(std::vector<KstCollisionResult>& results, float sign) {
    const auto rank = [sign](const KstCollisionResult& r) {
        return std::isnan(r.value) ? std::numeric_limits<float>::infinity() : sign * r.value;
    };
    std::sort(results.begin(), results.end(), [rank](const auto& a, const auto& b) {
        return std::tuple(rank(a), a.id1, a.id2) < std::tuple(rank(b), b.id1, b.id2);
    });
}

/// Finite scales and positions of groups inside each other may multiply to what is not.
bool IsPlaced(const CSceneObject& object) {
    MAV_matrix matrix;
    object.GetWorldMatrix(matrix);
    return std::all_of(matrix.mat.begin(), matrix.mat.end(),
                       [](float value) { return std::isfinite(value); });
}

/// Before the library starts: no window on a screen, no setting read or written.
void ShowInMemory() {
    settings::ProfileStore::UseNoUserFile();
#if defined(__linux__)
    setenv("SDL_VIDEODRIVER", "offscreen", 1);
#endif
}

void RequireDisplay(Showing showing) {
    const CDisplay* const display = Application().Display();
    if (display == nullptr)
        throw Failure(showing == Showing::kOnScreen
                          ? "no window can be opened: there is no screen, or no OpenGL 3.3"
                          : "no picture can be drawn: there is no OpenGL 3.3, or the program was "
                            "built without windows");
    if (showing == Showing::kOnScreen && !display->IsOnScreen())
        throw Failure("there is no screen to open a window on; \"kestrane capture\" needs none");
}

/// An empty scene, with all views open.
void Restart() {
    KST_End();
    Require(KST_Initialisation(true, false, false), "start");
    for (int view = 1; view < kViewCount; ++view)
        Require(KST_ShowView(view, nullptr), "view " + std::to_string(view));
}

/// Their cameras stay.
void CloseViews() {
    for (int view = 1; view < kViewCount; ++view)
        Require(KST_HideView(view), "view " + std::to_string(view));
}

std::string PairContext(int group1, int group2) {
    return GroupName(group1) + " and " + GroupName(group2);
}

std::vector<int> ObjectIds(int count) {
    std::vector<int> ids;
    for (const KstCollisionResult& r : Results(count))
        ids.push_back(r.id1);
    std::sort(ids.begin(), ids.end());
    return ids;
}

}  // namespace

Scene::Scene(const std::string& file, Showing showing) : m_file(file) {
    RequireSceneSuffix(file, "");
    if (showing == Showing::kInMemory)
        ShowInMemory();
    Require(KST_Initialisation(showing != Showing::kNowhere, false, false), "start");
    try {
        if (showing != Showing::kNowhere)
            RequireDisplay(showing);
        char* errorText = nullptr;
        int code = Load(file, &errorText);
        if (code == KST_ERROR_VIEW_NOT_OPEN) {
            // The file puts the camera of a view somewhere that is closed: once more, with all
            // open.
            Restart();
            code = Load(file, &errorText);
            CloseViews();
        }
        if (code != KST_OK)
            FailToLoad(file, code, errorText);
        RequireAllLoaded(file);
    } catch (...) {
        // The destructor does not run after a throw from here.
        KST_End();
        throw;
    }
}

Scene::~Scene() {
    KST_End();
}

void Scene::SetTime(double time) {
    Require(KST_SetTime(static_cast<float>(time)), "time");
}

int Scene::FindGroup(const std::string& name) const {
    const std::string quoted = Quoted(name);
    const int* const labelled = g_labels.Find(name);
    const CGroup* group = nullptr;
    if (labelled) {
        const auto found = g_groups.find(*labelled);
        if (found != g_groups.end() && found->second->Label() == name)
            group = found->second;
    }
    if (!group)
        group = FindById(name);
    if (!group && labelled)
        throw Failure(quoted + " is an object; name a group");
    if (!group)
        throw Failure("no group " + quoted + " in " + m_file + "; \"kestrane info\" lists them");
    if (!group->Parent())
        throw Failure(
            "the root group holds the whole scene and cannot be checked; name a group in it");
    if (!group->IsCollisionCapable())
        throw Failure(GroupName(group->Id()) +
                      " has no collision capability; give it colCheck=\"true\" in the scene file");
    return group->Id();
}

std::vector<KstCollisionResult> Scene::Contacts(int group1, int group2, bool all) {
    int count = 0;
    Require(KST_CheckGroupCollision(group1, group2, all, &count), PairContext(group1, group2));
    std::vector<KstCollisionResult> results = Results(count);
    PutFirstGroupFirst(results, group1);
    std::sort(results.begin(), results.end(), [](const auto& a, const auto& b) {
        return std::tie(a.id1, a.id2) < std::tie(b.id1, b.id2);
    });
    return results;
}

std::vector<KstCollisionResult> Scene::Distances(int group1, int group2) {
    int count = 0;
    Require(KST_GetClosestPairs(group1, group2, &count), PairContext(group1, group2));
    std::vector<KstCollisionResult> results = Results(count);
    SortByValue(results, 1);
    return results;
}

std::vector<KstCollisionResult> Scene::Depths(int group1, int group2) {
    int count = 0;
    const int code = KST_GetPenetrationDepths(group1, group2, &count);
    if (code == KST_ERROR_NO_COLLISION)
        return {};
    Require(code, PairContext(group1, group2));
    std::vector<KstCollisionResult> results = Results(count);
    PutFirstGroupFirst(results, group1);
    SortByValue(results, -1);
    return results;
}

std::vector<int> Scene::ObjectsAtPoint(int group, const Point& point, bool all) {
    int count = 0;
    Require(KST_CheckPointCollision(group, point[0], point[1], point[2], all, &count),
            GroupName(group));
    return ObjectIds(count);
}

std::vector<int> Scene::ObjectsOnLine(int group, const Point& from, const Point& to, bool all) {
    int count = 0;
    Require(
        KST_CheckLineCollision(group, from[0], from[1], from[2], to[0], to[1], to[2], all, &count),
        GroupName(group));
    return ObjectIds(count);
}

CheckedObjects CountCheckedObjects(int group) {
    std::vector<CSceneObject*> objects;
    g_groups.at(group)->CollectObjects(objects);
    CheckedObjects count;
    for (const CSceneObject* object : objects) {
        if (object->Type() == kTypePolyline)
            ++count.polylines;
        else if (!object->IsInCollisionWorld())
            ++count.incapable;
        else
            ++(IsPlaced(*object) ? count.checked : count.unplaced);
    }
    return count;
}
