// The frame every subcommand of quarvex-cli runs in: start-up, the command, shut-down, errors.
#pragma once

#include "shell/ProgramState.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quarvex::cli {

/// A subcommand: its CLI11 parser and what it does once parsed. `run` returns the exit status.
struct CliCommand {
    CLI::App* parser = nullptr;
    std::function<int(ProgramState&)> run;
};

/// Runs the command between start-up and shut-down of a fresh program state. A QuarvexError is
/// printed to stderr as "title: text" and gives exit status 1.
int runCommand(const CliCommand& command, const std::optional<std::string>& home);

/// Prints a QuarvexError the way every command reports failure.
void printError(const std::exception& error);

/// True when stderr is a terminal (progress lines are shown only then).
bool stderrIsTerminal();

// Registration of the subcommands, one file each.
CliCommand addInfoCommand(CLI::App& app);
CliCommand addPeaksCommand(CLI::App& app);
CliCommand addFitCommand(CLI::App& app);
CliCommand addRefineCommand(CLI::App& app);
CliCommand addXrayRefCommand(CLI::App& app);
CliCommand addXrayRefineCommand(CLI::App& app);
CliCommand addXrayPatternCommand(CLI::App& app);
std::vector<CliCommand> addXrayProjectCommands(CLI::App& app);
std::vector<CliCommand> addBenchCommands(CLI::App& app);
std::vector<CliCommand> addLibraryCommands(CLI::App& app);
CliCommand addResampleCommand(CLI::App& app);
CliCommand addHomeCommand(CLI::App& app);
CliCommand addProcessCommand(CLI::App& app);
/// Adds `bench process` to the bench group (addBenchCommands first).
CliCommand addProcessBenchCommand(CLI::App& app);
/// Adds `bench csv` to the bench group (addBenchCommands first).
CliCommand addCsvBenchCommand(CLI::App& app);
/// Adds `bench library` and `bench search` to the bench group (addBenchCommands first).
std::vector<CliCommand> addLibraryBenchCommands(CLI::App& app);
/// Adds `bench consistency` and `bench baseline` to the bench group (addBenchCommands first).
std::vector<CliCommand> addConsistencyBenchCommands(CLI::App& app);

} // namespace quarvex::cli
