#include <memory>

#include "Commands.h"
#include "Failure.h"
#include "Numbers.h"
#include "PairQuery.h"

void AddDistanceCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "distance",
        "Tell how far each object of one group is from each of another, the nearest first, with a\n"
        "closest point on both. Touching objects have the distance 0 and count as a collision.");
    command.footer(
        "\nExamples:\n"
        "  kestrane distance robot_cell.xml robot cell --time 7.5 --first\n"
        "  kestrane distance robot_cell.xml gripper machine_table --time 6.3 --json\n" +
        std::string(kStatusHelp));
    auto query = std::make_shared<PairQuery>();
    query->AddTo(command, "Report the nearest pair of objects alone");
    command.callback([query, &action] {
        action = [query] {
            auto pairs = query->Open().Distances(query->Group1(), query->Group2());
            const bool collision = !pairs.empty() && pairs.front().value <= 0;
            const std::string headline =
                pairs.empty() ? "nothing to measure" : "distance " + ShortText(pairs.front().value);
            if (query->options.first && !pairs.empty())
                pairs.erase(pairs.begin() + 1, pairs.end());
            query->Report("distance", headline, "distance", collision, pairs);
            return collision ? kCollision : kFree;
        };
    });
}
