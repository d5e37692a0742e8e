#pragma once

#include <CLI/CLI.hpp>
#include <functional>

/// What a command does once its command line has been read; returns the exit status, throws
/// Failure.
using Action = std::function<int()>;

/// Each adds one command with its arguments and help to the program. When that command is the one
/// that the user gave, `action` becomes what it does.
void AddInfoCommand(CLI::App& program, Action& action);
void AddCheckCommand(CLI::App& program, Action& action);
void AddDistanceCommand(CLI::App& program, Action& action);
void AddDepthCommand(CLI::App& program, Action& action);
void AddPointCommand(CLI::App& program, Action& action);
void AddLineCommand(CLI::App& program, Action& action);
void AddSweepCommand(CLI::App& program, Action& action);
void AddConvertCommand(CLI::App& program, Action& action);
void AddViewCommand(CLI::App& program, Action& action);
void AddCaptureCommand(CLI::App& program, Action& action);

/// The end of every command's help.
inline constexpr const char* kStatusHelp =
    "\nExit status: 0 free, 1 collision, 2 error (with one line on the standard error stream).";
