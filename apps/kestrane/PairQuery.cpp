#include "PairQuery.h"

#include "Names.h"
#include "Numbers.h"

namespace {

std::string PointText(const float (&point)[3]) {
    return "(" + ShortText(point[0]) + " " + ShortText(point[1]) + " " + ShortText(point[2]) + ")";
}

Json PointJson(const float (&point)[3]) {
    return {ExactNumber(point[0]), ExactNumber(point[1]), ExactNumber(point[2])};
}

std::string PairLine(const KstCollisionResult& result, bool hasValue) {
    std::string line = "  ";
    if (hasValue)
        line += ShortText(result.value) + "  ";
    line += PairName(result);
    if (hasValue)
        line += ", at " + PointText(result.point1) + " and " + PointText(result.point2);
    return line + "\n";
}

}  // namespace

void QueryOptions::AddFile(CLI::App& command) {
    command.add_option("FILE", file, "Scene file (.xml)")->required();
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
    json["uncheckedObjects"] = count.unchecked;
    return json;
}

std::string UncheckedNote(int group) {
    const auto unchecked = static_cast<std::size_t>(CountCheckedObjects(group).unchecked);
    if (unchecked == 0)
        return "";
    return "not checked: " + Count(unchecked, "object") + " below " + GroupName(group) +
           " in groups without collision capability\n";
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
