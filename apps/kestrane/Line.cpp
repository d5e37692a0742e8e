#include <memory>

#include "Commands.h"
#include "ProbeQuery.h"

void AddLineCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "line",
        "Tell which objects of a group, with all that lies below it, a line segment meets.");
    command.footer(
        "\nExamples:\n"
        "  kestrane line robot_cell.xml cell -3.5 1 0 3 1 0\n"
        "  kestrane line robot_cell.xml robot 0 3 0 0 -1 0 --time 2 --first\n" +
        std::string(kStatusHelp));
    auto query =
        std::make_shared<ProbeQuery>(std::vector<const char*>{"X1", "Y1", "Z1", "X2", "Y2", "Z2"});
    query->AddTo(command);
    command.callback([query, &action] { action = [query] { return query->Run("line"); }; });
}
