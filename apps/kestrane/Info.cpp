#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "Names.h"
#include "Numbers.h"
#include "PairQuery.h"
#include "Scene.h"
#include "model/Group.h"
#include "model/Registries.h"
#include "model/SceneObject.h"

namespace {

struct InfoOptions {
    std::string file;
    bool json = false;
};

struct TimeRange {
    float first;
    float last;
};

std::optional<TimeRange> KeyStateTimes(const CMotion* motion) {
    if (!motion || motion->Keys().empty())
        return std::nullopt;
    return TimeRange{motion->Keys().front().time, motion->LastTime()};
}

std::optional<TimeRange> KeyStateTimesOfScene() {
    std::optional<TimeRange> all;
    const auto widen = [&all](const CMotion* motion) {
        if (const auto times = KeyStateTimes(motion)) {
            all = all ? TimeRange{std::min(all->first, times->first),
                                  std::max(all->last, times->last)}
                      : *times;
        }
    };
    for (const CGroup* group : g_animatedGroups)
        widen(group->Motion());
    for (const CSceneObject* object : g_animatedObjects)
        widen(object->Motion());
    return all;
}

/// The words of an object's record by name, as far as they are sizes; arrays are counted.
Json Sizes(const CSceneObject& object) {
    KstObjectInfo info = {};
    Require(KST_GetObject(object.Id(), &info), ObjectName(object.Id()));
    const auto total = [&info] {
        int sum = 0;
        for (int i = 0; i < info.p1.i; ++i)
            sum += info.p2.ints[i];
        return sum;
    };
    Json sizes;
    switch (object.Type()) {
        case kTypeBox:
            return {{"width", ExactNumber(info.p1.f)},
                    {"height", ExactNumber(info.p2.f)},
                    {"depth", ExactNumber(info.p3.f)}};
        case kTypeSphere:
            return {{"radius", ExactNumber(info.p1.f)}};
        case kTypeCylinder:
        case kTypeCone:
            return {{"radius", ExactNumber(info.p1.f)}, {"height", ExactNumber(info.p2.f)}};
        case kTypeTriangles:
            sizes["triangles"] = info.p1.i;
            break;
        case kTypePolygon:
            sizes["vertices"] = info.p1.i;
            break;
        case kTypePolygonGroup:
        case kTypePolyline:
            sizes[object.Type() == kTypePolyline ? "lines" : "polygons"] = info.p1.i;
            sizes["vertices"] = total();
            std::free(info.p3.floats);
            break;
        case kTypeTetrahedron:
            std::free(info.p1.floats);
            return Json::object();
    }
    // Of the shapes that come here, the second word is an array.
    std::free(info.p2.floats);
    return sizes;
}

/// `radius 0.2, height 1` or `12 triangles`
std::string SizesText(const Json& sizes) {
    std::string text;
    for (const auto& [name, value] : sizes.items()) {
        text += text.empty() ? "" : ", ";
        text += value.is_number_integer() ? value.dump() + " " + name
                                          : name + " " + TimeText(value.get<double>());
    }
    return text;
}

std::string MotionText(const CMotion* motion) {
    const auto times = KeyStateTimes(motion);
    if (!times)
        return "";
    return ", key states from " + ShortText(times->first) + " to " + ShortText(times->last) +
           (motion->IsCyclic() ? ", cyclic" : "");
}

Json MotionJson(const CMotion* motion) {
    const auto times = KeyStateTimes(motion);
    if (!times)
        return nullptr;
    return {{"first", ExactNumber(times->first)},
            {"last", ExactNumber(times->last)},
            {"keyStates", motion->Keys().size()},
            {"cyclic", motion->IsCyclic()}};
}

std::string Counts(std::size_t objects, int primitives) {
    return Count(objects, "object") + " (" +
           Count(static_cast<std::size_t>(primitives), "primitive") + ")";
}

/// A group with its depth in the tree.
struct Row {
    const CGroup* group;
    std::size_t depth;
};

/// Calls `visit` for each group below the root, parents first, children in the order of their ids.
/// Files may nest deeper than the call stack would bear.
template <class Visit>
void ForEachGroup(Visit visit) {
    std::vector<Row> waiting;
    const auto push = [&waiting](const CGroup& parent, std::size_t depth) {
        for (auto it = parent.Children().rbegin(); it != parent.Children().rend(); ++it)
            waiting.push_back({it->second.get(), depth});
    };
    push(*g_groups.at(0), 0);
    while (!waiting.empty()) {
        const Row row = waiting.back();
        waiting.pop_back();
        visit(row);
        push(*row.group, row.depth + 1);
    }
}

/// By group id, the objects of the group and of all below it.
using ObjectCounts = std::map<int, std::size_t>;

ObjectCounts CountObjectsWithAllBelow() {
    std::vector<const CGroup*> groups;
    ForEachGroup([&groups](const Row& row) { groups.push_back(row.group); });
    ObjectCounts counts;
    for (auto it = groups.rbegin(); it != groups.rend(); ++it)
        counts[(*it)->Parent()->Id()] += counts[(*it)->Id()] += (*it)->Objects().size();
    return counts;
}

void PrintGroup(const Row& row, const ObjectCounts& counts) {
    const CGroup& group = *row.group;
    // Deeper groups stand no further to the right, or the text would grow with the square of the
    // depth.
    constexpr std::size_t kDeepestIndent = 100;
    const std::string indent(2 * std::min<std::size_t>(row.depth, kDeepestIndent), ' ');
    std::string line = indent + GroupName(group.Id()) +
                       (group.IsCollisionCapable() ? ": checked, " : ": not checked, ") +
                       Counts(group.Objects().size(), group.OwnPrimitiveCount());
    if (!group.Children().empty())
        line += ", with all below " + Counts(counts.at(group.Id()), group.SubtreePrimitiveCount());
    Write(line + MotionText(group.Motion()) + "\n");
    for (const auto& [id, object] : group.Objects()) {
        std::string entry = indent;
        entry.append("  object ").append(std::to_string(id));
        if (!object->Label().empty())
            entry.append(" ").append(Quoted(object->Label()));
        entry.append(": ").append(TypeName(object->Type()));
        const std::string sizes = SizesText(Sizes(*object));
        if (!sizes.empty())
            entry.append(", ").append(sizes);
        Write(entry.append(MotionText(object->Motion())).append("\n"));
    }
}

void PrintText(const InfoOptions& options) {
    const auto times = KeyStateTimesOfScene();
    Write(OneLine(options.file) + ": " + Count(g_groups.size() - 1, "group") + ", " +
          Counts(g_objects.size(), g_groups.at(0)->SubtreePrimitiveCount()) +
          (times ? ", key states from " + ShortText(times->first) + " to " + ShortText(times->last)
                 : ", no key states") +
          "\n");
    const ObjectCounts counts = CountObjectsWithAllBelow();
    ForEachGroup([&counts](const Row& row) { PrintGroup(row, counts); });
}

Json GroupRecord(const Row& row, const ObjectCounts& counts) {
    const CGroup& group = *row.group;
    const int parent = group.Parent()->Id();
    Json record = {{"id", group.Id()},
                   {"label", LabelJson(group.Label())},
                   {"parent", parent == 0 ? Json() : Json(parent)},
                   {"depth", row.depth},
                   {"collisionCapable", group.IsCollisionCapable()},
                   {"primitives", group.OwnPrimitiveCount()},
                   {"objectsWithAllBelow", counts.at(group.Id())},
                   {"primitivesWithAllBelow", group.SubtreePrimitiveCount()},
                   {"motion", MotionJson(group.Motion())},
                   {"objects", Json::array()}};
    for (const auto& [id, object] : group.Objects()) {
        record["objects"].push_back({{"id", id},
                                     {"label", LabelJson(object->Label())},
                                     {"type", TypeName(object->Type())},
                                     {"sizes", Sizes(*object)},
                                     {"primitives", object->PrimitiveCount()},
                                     {"motion", MotionJson(object->Motion())}});
    }
    return record;
}

/// One line for each group, so that the memory for it does not grow with the scene.
void PrintJson(const InfoOptions& options) {
    const auto times = KeyStateTimesOfScene();
    Json head = {{"command", "info"},
                 {"file", options.file},
                 {"groupCount", g_groups.size() - 1},
                 {"objectCount", g_objects.size()},
                 {"primitiveCount", g_groups.at(0)->SubtreePrimitiveCount()},
                 {"keyStateTimes", nullptr}};
    if (times)
        head["keyStateTimes"] = {{"first", ExactNumber(times->first)},
                                 {"last", ExactNumber(times->last)}};
    std::string text = JsonText(head);
    text.pop_back();
    Write(text + ", \"groups\": [");
    const ObjectCounts counts = CountObjectsWithAllBelow();
    bool firstGroup = true;
    ForEachGroup([&](const Row& row) {
        Write((firstGroup ? "\n" : ",\n") + JsonText(GroupRecord(row, counts)));
        firstGroup = false;
    });
    Write("\n]}\n");
}

}  // namespace

void AddInfoCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "info",
        "Show what a scene holds: its tree of groups and objects with ids, labels and sizes, "
        "which\n"
        "groups take part in collision checks, how many primitives there are, and key states.");
    command.footer(
        "\nExamples:\n"
        "  kestrane info robot_cell.xml\n"
        "  kestrane info robot_cell.xml --json\n"
        "\nExit status: 0, or 2 on an error (with one line on the standard error stream).");
    auto options = std::make_shared<InfoOptions>();
    command.add_option("FILE", options->file, "Scene file (.xml, .wrl)")->required();
    command.add_flag("--json", options->json, "Answer in JSON");
    command.callback([options, &action] {
        action = [options] {
            const Scene scene(options->file);
            if (options->json)
                PrintJson(*options);
            else
                PrintText(*options);
            return kFree;
        };
    });
}
