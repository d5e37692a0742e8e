#include "PairQuery.h"

#include <algorithm>
#include <cmath>

#include "Failure.h"
#include "Names.h"
#include "Numbers.h"

namespace {

/// The largest of the coordinates.
float Size(const float (&point)[3]) {
    return std::max({std::abs(point[0]), std::abs(point[1]), std::abs(point[2])});
}

/// With 0 for what is no more than `noise`, the rounding of the other coordinates.
std::string PointText(const float (&point)[3], float noise) {
    const auto text = [noise](float value) {
        return std::abs(value) <= noise ? std::string("0") : ShortText(value);
    };
    return "(" + text(point[0]) + " " + text(point[1]) + " " + text(point[2]) + ")";
}

Json PointJson(const float (&point)[3]) {
    return {ExactNumber(point[0]), ExactNumber(point[1]), ExactNumber(point[2])};
}

std::string PairLine(const KstCollisionResult& result, bool hasValue) {
    std::string line = "  ";
    if (hasValue)
        line += ShortText(result.value) + "  ";
    line += PairName(result);
    if (hasValue) {
        const float noise = 1e-7F * std::max(Size(result.point1), Size(result.point2));
        line +=
            ", at " + PointText(result.point1, noise) + " and " + PointText(result.point2, noise);
    }
    return line + "\n";
}

std::string UncheckedLine(int group, int count, const char* reason) {
    if (count == 0)
        return "";
    return "not checked: " + Count(static_cast<std::size_t>(count), "object") + " below " +
           GroupName(group) + " " + reason + "\n";
}

}  // namespace

void QueryOptions::AddFile(CLI::App& command) {
    command.add_option("FILE", file, "Scene file (.xml, .wrl)")->required();
}

void QueryOptions::AddRest(CLI::App& command, const char* firstHelp) {
    command.add_option("--time", time, "Time to which the key states are set; default 0")
        ->option_text("T");
    command.add_flag("--first", first, firstHelp);
    command.add_flag("--json", json, "Answer in JSON");
}

void PairQuery::AddTo(CLI::App& command, const char* firstHelp) {
    options.AddFile(command);
    command.add_option("GROUP1", name1, "Label or id of a group")->required();
    command.add_option("GROUP2", name2, "Label or id of another group")->required();
    options.AddRest(command, firstHelp);
}

Scene& PairQuery::Open() {
    const double time = ParseTime(options.time, "--time");
    Scene& scene = m_scene.emplace(options.file);
    m_group1 = scene.FindGroup(name1);
    m_group2 = scene.FindGroup(name2);
    scene.SetTime(time);
    RequireChecked(m_group1);
    RequireChecked(m_group2);
    return scene;
}

void PairQuery::Report(const std::string& command, const std::string& headline,
                       const std::string& value, bool collision,
                       const std::vector<KstCollisionResult>& results) const {
    if (!options.json) {
        Write(headline + ": " + CheckedGroupName(m_group1) + " and " + CheckedGroupName(m_group2) +
              "\n");
        for (const KstCollisionResult& result : results)
            Write(PairLine(result, !value.empty()));
        Write(UncheckedNote(m_group1) + UncheckedNote(m_group2));
        return;
    }
    Json answer = {{"command", command},
                   {"file", options.file},
                   {"time", TimeNumber(ParseTime(options.time, "--time"))},
                   {"group1", CheckedGroupJson(m_group1)},
                   {"group2", CheckedGroupJson(m_group2)},
                   {"collision", collision},
                   {"pairs", Json::array()}};
    for (const KstCollisionResult& result : results)
        answer["pairs"].push_back(PairJson(result, value));
    Write(JsonText(answer, 2) + "\n");
}

std::string CheckedGroupName(int group) {
    const auto checked = static_cast<std::size_t>(CountCheckedObjects(group).checked);
    return GroupName(group) + " (" + Count(checked, "object") + ")";
}

Json CheckedGroupJson(int group) {
    const CheckedObjects count = CountCheckedObjects(group);
    Json json = GroupJson(group);
    json["checkedObjects"] = count.checked;
    json["uncheckedObjects"] = count.Unchecked();
    return json;
}

std::string UncheckedNote(int group) {
    const CheckedObjects count = CountCheckedObjects(group);
    return UncheckedLine(group, count.incapable, "in groups without collision capability") +
           UncheckedLine(group, count.unplaced, "whose place is not finite");
}

void RequireChecked(int group) {
    const CheckedObjects count = CountCheckedObjects(group);
    if (count.checked > 0)
        return;
    const char* const reason = count.unplaced > 0    ? "the place of its objects is not finite"
                               : count.incapable > 0 ? "its objects are in groups without "
                                                       "collision capability"
                               : count.polylines > 0 ? "it holds polylines alone"
                                                     : "it holds no object";
    throw Failure("nothing to check: " + GroupName(group) + ": " + reason);
}

Json PairJson(const KstCollisionResult& result, const std::string& value) {
    Json pair;
    if (!value.empty())
        pair[value] = ExactNumber(result.value);
    pair["object1"] = ObjectJson(result.id1);
    pair["object2"] = ObjectJson(result.id2);
    if (!value.empty()) {
        pair["point1"] = PointJson(result.point1);
        pair["point2"] = PointJson(result.point2);
    }
    return pair;
}

std::string PairName(const KstCollisionResult& result) {
    return ObjectName(result.id1) + " and " + ObjectName(result.id2);
}

std::string Count(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}
