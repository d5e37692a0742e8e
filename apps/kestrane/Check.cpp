#include <memory>

#include "Commands.h"
#include "Failure.h"
#include "PairQuery.h"

void AddCheckCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "check", "Tell which objects of two groups collide, with all that lies below the groups.");
    command.footer(
        "\nExamples:\n"
        "  kestrane check robot_cell.xml robot cell --time 7.7\n"
        "  kestrane check robot_cell.xml axis_5 door --time 7.7 --first --json\n" +
        std::string(kStatusHelp));
    auto query = std::make_shared<PairQuery>();
    query->AddTo(command, "Stop at the first pair of objects that is found");
    command.callback([query, &action] {
        action = [query] {
            Scene& scene = query->Open();
            const auto contacts =
                scene.Contacts(query->Group1(), query->Group2(), !query->options.first);
            const bool collision = !contacts.empty();
            const std::string headline =
                collision ? "collision, " + Count(contacts.size(), "pair") : "free";
            query->Report("check", headline, "", collision, contacts);
            return collision ? kCollision : kFree;
        };
    });
}
