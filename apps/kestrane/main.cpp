#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "HelpFormatter.h"
#include "Output.h"

namespace {

/// The parser takes "-1" for a number but "-.5" for an option; "-0.5" is the same number.
std::string WithLeadingZero(const std::string& argument) {
    const bool bare = argument.size() > 2 && argument[0] == '-' && argument[1] == '.' &&
                      argument[2] >= '0' && argument[2] <= '9';
    return bare ? "-0" + argument.substr(1) : argument;
}

void Describe(CLI::App& program) {
    program.set_version_flag("--version", "kestrane " KESTRANE_VERSION);
    program.require_subcommand(1);
    program.formatter(std::make_shared<HelpFormatter>());
    program.footer(
        "A GROUP is the label of a group, or its id; a label that looks like a number is taken "
        "as a\n"
        "label first. \"kestrane COMMAND --help\" explains one command.\n"
        "\nExamples:\n"
        "  kestrane info robot_cell.xml\n"
        "  kestrane check robot_cell.xml robot cell --time 7.7\n"
        "  kestrane sweep robot_cell.xml robot cell --from 0 --to 20 --step 0.01 --refine\n"
        "  kestrane view robot_cell.xml --play\n" +
        std::string(kStatusHelp));
}

/// The name of the command comes first, so that whatever else comes first is taken for one.
void RequireKnownCommand(const CLI::App& program, const std::string& name) {
    const auto isNamed = [&name](const CLI::App* command) { return command->get_name() == name; };
    if (name[0] != '-' && program.get_subcommands(isNamed).empty())
        throw Failure("there is no command " + Quoted(name) + "; see \"kestrane --help\"");
}

bool IsGiven(const CLI::App& program, const std::string& option) {
    for (const CLI::App* command : program.get_subcommands()) {
        const CLI::Option* const found = command->get_option_no_throw(option);
        if (found && found->count() > 0)
            return true;
    }
    return false;
}

/// The parser's message, or a better one where an argument was not understood.
std::string UsageText(const CLI::App& program, const CLI::ParseError& error) {
    if (program.get_subcommands().empty() && dynamic_cast<const CLI::RequiredError*>(&error))
        return "a command is required";
    const std::vector<std::string> unknown = program.remaining(true);
    for (const std::string& argument : unknown) {
        const bool isNumber = argument.size() > 1 && argument[1] >= '0' && argument[1] <= '9';
        if (argument.size() > 1 && argument[0] == '-' && !isNumber)
            return "there is no option " + Quoted(argument) +
                   "; a name that begins with a minus sign goes behind --";
    }
    std::string text = error.what();
    if (!unknown.empty() && IsGiven(program, "--refine"))
        text.append("; a width follows --refine with =, as in --refine=").append(unknown[0]);
    return text;
}

/// A mistake on the command line itself, in one line that says where to read on.
Failure UsageFailure(const CLI::App& program, const std::string& message) {
    std::string command = "kestrane";
    for (const CLI::App* chosen : program.get_subcommands())
        command.append(" ").append(chosen->get_name());
    return Failure(message + "; see \"" + command + " --help\"");
}

int Run(int argc, char** argv) {
    CLI::App program{"Loads a scene and answers what collides in it, how near and how deep.",
                     "kestrane"};
    Describe(program);
    Action action;
    for (const auto add :
         {AddInfoCommand, AddCheckCommand, AddDistanceCommand, AddDepthCommand, AddPointCommand,
          AddLineCommand, AddSweepCommand, AddConvertCommand, AddViewCommand, AddCaptureCommand})
        add(program, action);

    // The parser takes its arguments from the back of the vector.
    std::vector<std::string> arguments;
    for (int i = argc - 1; i > 0; --i)
        arguments.push_back(WithLeadingZero(argv[i]));
    if (argc > 1 && argv[1][0] != '\0')
        RequireKnownCommand(program, argv[1]);
    int status = kFree;
    try {
        program.parse(std::move(arguments));
        status = action();
    } catch (const CLI::CallForHelp&) {
        Write(program.help());
    } catch (const CLI::CallForVersion& version) {
        Write(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError& error) {
        throw UsageFailure(program, UsageText(program, error));
    }
    FlushOutput();
    return status;
}

int Report(const std::string& message) {
    const std::string line = "kestrane: " + OneLine(message) + "\n";
    std::fputs(line.c_str(), stderr);
    return kFailed;
}

}  // namespace

int main(int argc, char** argv) {
#ifdef SIGPIPE
    // Whoever reads the output may stop doing so; the program then ends without a word, also when
    // its parent ignores the signal.
    std::signal(SIGPIPE, SIG_DFL);
#ifdef SIGXFSZ
    // A file that is not to grow further gives an error.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
#endif
    try {
        return Run(argc, argv);
    } catch (const std::bad_alloc&) {
        return Report("out of memory");
    } catch (const std::exception& failure) {
        return Report(failure.what());
    }
}
