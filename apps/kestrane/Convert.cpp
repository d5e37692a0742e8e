#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "Commands.h"
#include "Failure.h"
#include "Output.h"
#include "OutputFile.h"
#include "PairQuery.h"
#include "ReaderEcho.h"
#include "nodes/SceneGraph.h"

namespace {

struct ConvertOptions {
    std::string input;
    std::string output;
    bool json = false;
};

std::string ErrorText(const nodes::ReadError& error) {
    std::string text = OneLine(error.message);
    if (!error.token.empty())
        text += " at " + Quoted(error.token);
    if (!error.lineText.empty())
        text += " in the line " + Quoted(error.lineText);
    return text;
}

void RequireReadable(const std::string& file) {
    std::error_code error;
    const auto kind = std::filesystem::status(file, error).type();
    // To open a pipe would wait for one who writes to it.
    if (kind != std::filesystem::file_type::regular &&
        kind != std::filesystem::file_type::not_found)
        throw Failure(file + " is no VRML97 file: it is no regular file");
    std::FILE* const opened = std::fopen(file.c_str(), "rb");
    if (!opened)
        throw Failure("cannot read " + file + ": " + std::strerror(errno));
    std::fclose(opened);
    const std::int32_t type = nodes::detectFileType(file.c_str());
    if (type != nodes::kVrmlFile && type != nodes::kGzipFile)
        throw Failure(file +
                      " is no VRML97 file: it begins neither with #VRML nor as a file packed by "
                      "gzip");
}

/// Without the files of its Inline nodes, and with each USE where it stands.
void Read(const std::string& file, nodes::SceneGraph& world) {
    RequireReadable(file);
    const ReaderEcho silence;
    if (world.load(file.c_str(), false, nullptr, nullptr))
        return;
    const nodes::ReadError& error = world.error();
    if (error.message.empty())
        throw Failure("cannot read " + file);
    const std::string line = error.line > 0 ? ", line " + std::to_string(error.line) : "";
    throw Failure(file + line + ": " + ErrorText(error));
}

void Save(nodes::SceneGraph& world, const std::string& file) {
    OutputFile output(file);
    const char* const name = output.TemporaryName().c_str();
    errno = 0;
    const nodes::SaveFault fault =
        HasSuffix(file, ".xml") ? world.writeXml(name, nullptr, nullptr) : world.writeVrml(name);
    const int reason = errno;
    if (fault == nodes::SaveFault::kCut)
        throw Failure("cannot write " + file +
                      ": its text would have more than 100,000,000 characters, the most that a "
                      ".wrl file may have");
    if (fault != nodes::SaveFault::kNone)
        throw Failure("cannot write " + file + ": " +
                      (reason != 0 ? std::strerror(reason) : "not all of it was taken"));
    output.Keep();
}

void Convert(const ConvertOptions& options) {
    if (!HasSuffix(options.output, ".wrl") && !HasSuffix(options.output, ".xml"))
        throw Failure("the name of the file to write ends in .wrl or in .xml, but " +
                      Quoted(options.output) + " does not");
    nodes::SceneGraph world;
    Read(options.input, world);
    const auto nodeCount = static_cast<std::size_t>(world.nodeCount());
    if (nodeCount == 0)
        throw Failure("there is no node in " + options.input);
    const std::size_t routeCount = world.routes().size();
    Save(world, options.output);
    if (!options.json) {
        Write("converted: " + options.input + " to " + options.output + ", " +
              Count(nodeCount, "node") + ", " + Count(routeCount, "route") + "\n");
        return;
    }
    const Json answer = {
        {"command", "convert"},     {"file", options.input},
        {"output", options.output}, {"nodes", nodeCount},
        {"routes", routeCount},     {"bytes", std::filesystem::file_size(options.output)}};
    Write(JsonText(answer, 2) + "\n");
}

}  // namespace

void AddConvertCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "convert",
        "Read a VRML97 world and write it again: as VRML97 packed by gzip, or as XML with an "
        "element\n"
        "for each node and an attribute for each field. It is the world of nodes that is written, "
        "not a\n"
        "scene of groups and objects: the XML is no scene file.");
    command.footer(
        "\nExamples:\n"
        "  kestrane convert workpiece.wrl workpiece_packed.wrl\n"
        "  kestrane convert workpiece.wrl workpiece_nodes.xml --json\n"
        "\nExit status: 0, or 2 on an error (with one line on the standard error stream).");
    auto options = std::make_shared<ConvertOptions>();
    command.add_option("IN", options->input, "VRML97 file (.wrl), plain or packed by gzip")
        ->required();
    command
        .add_option("OUT", options->output,
                    "File to write (.wrl or .xml); one of that name is replaced")
        ->required();
    command.add_flag("--json", options->json, "Answer in JSON");
    command.callback([options, &action] {
        action = [options] {
            Convert(*options);
            return kFree;
        };
    });
}
