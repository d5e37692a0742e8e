#include <memory>

#include "Commands.h"
#include "ProbeQuery.h"

void AddPointCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "point", "Tell which objects of a group, with all that lies below it, hold a point.");
    command.footer(
        "\nA mesh holds the points of its surface alone, a tetrahedron those inside too.\n"
        "\nExamples:\n"
        "  kestrane point robot_cell.xml cell -2 0.74 1.1\n"
        "  kestrane point robot_cell.xml robot 1.2 1.3 0.6 --time 8.3 --json\n" +
        std::string(kStatusHelp));
    auto query = std::make_shared<ProbeQuery>(std::vector<const char*>{"X", "Y", "Z"});
    query->AddTo(command);
    command.callback([query, &action] { action = [query] { return query->Run("point"); }; });
}
