#include <memory>

#include "Commands.h"
#include "Failure.h"
#include "Numbers.h"
#include "PairQuery.h"

void AddDepthCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "depth",
        "Tell how deep the objects of two groups penetrate each other, the deepest first: the\n"
        "length of the shortest move that parts a pair, with the two ends of that move.");
    command.footer(
        "\nExamples:\n"
        "  kestrane depth robot_cell.xml robot cell --time 7.7\n"
        "  kestrane depth robot_cell.xml robot cell --time 7.7 --first --json\n" +
        std::string(kStatusHelp));
    auto query = std::make_shared<PairQuery>();
    query->AddTo(command, "Report the deepest pair of objects alone");
    command.callback([query, &action] {
        action = [query] {
            auto pairs = query->Open().Depths(query->Group1(), query->Group2());
            const bool collision = !pairs.empty();
            const std::string headline =
                collision ? "collision, depth " + ShortText(pairs.front().value) : "free";
            if (query->options.first && collision)
                pairs.erase(pairs.begin() + 1, pairs.end());
            query->Report("depth", headline, "depth", collision, pairs);
            return collision ? kCollision : kFree;
        };
    });
}
