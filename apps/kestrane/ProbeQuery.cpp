#include "ProbeQuery.h"

#include "Failure.h"
#include "Names.h"
#include "Numbers.h"

ProbeQuery::ProbeQuery(const std::vector<const char*>& coordinateNames) {
    for (const char* coordinate : coordinateNames)
        coordinates.emplace_back(coordinate, "");
}

void ProbeQuery::AddTo(CLI::App& command) {
    options.AddFile(command);
    command.add_option("GROUP", name, "Label or id of a group")->required();
    for (auto& [coordinate, text] : coordinates)
        command.add_option(coordinate, text, "Coordinate in the scene")->required();
    options.AddRest(command, "Stop at the first object that is found");
}

int ProbeQuery::Run(const std::string& command) {
    const double time = ParseTime(options.time, "--time");
    float points[2][3] = {};
    std::size_t n = 0;
    for (const auto& [coordinate, text] : coordinates) {
        points[n / 3][n % 3] = static_cast<float>(ParseNumber(text, coordinate));
        ++n;
    }

    Scene scene(options.file);
    const int group = scene.FindGroup(name);
    scene.SetTime(time);
    RequireChecked(group);
    const std::vector<int> hits =
        n == 3 ? scene.ObjectsAtPoint(group, points[0], !options.first)
               : scene.ObjectsOnLine(group, points[0], points[1], !options.first);

    if (options.json) {
        Json answer = {{"command", command},
                       {"file", options.file},
                       {"time", TimeNumber(time)},
                       {"group", CheckedGroupJson(group)}};
        for (std::size_t p = 0; p < n / 3; ++p) {
            const std::string key = n == 3 ? "point" : p == 0 ? "from" : "to";
            for (const float coordinate : points[p])
                answer[key].push_back(ExactNumber(coordinate));
        }
        answer["collision"] = !hits.empty();
        answer["objects"] = Json::array();
        for (const int id : hits)
            answer["objects"].push_back(ObjectJson(id));
        Write(JsonText(answer, 2) + "\n");
    } else {
        Write((hits.empty() ? "free" : "collision, " + Count(hits.size(), "object")) + ": " +
              CheckedGroupName(group) + "\n");
        for (const int id : hits)
            Write("  " + ObjectName(id) + "\n");
        Write(UncheckedNote(group));
    }
    return hits.empty() ? kFree : kCollision;
}
