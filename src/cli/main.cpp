// quarvex-cli: the command-line front end of the Quarvex core.
#include "cli/CliCommand.h"
#include "shell/Version.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    using namespace quarvex::cli;

    CLI::App app{"Quarvex: identify minerals from their Raman spectra and refine unit cells "
                 "from X-ray powder patterns."};
    app.require_subcommand(1);
    app.set_version_flag("--version", "quarvex-cli " + std::string(quarvex::kQuarvexVersion));
    app.fallthrough(); // --home may also follow the subcommand
    std::optional<std::string> home;
    app.add_option("--home", home,
                   "Home folder of the program (working folders, QV.ini, the Raman library); "
                   "default $QUARVEX_HOME, else the folder of this executable when it holds the "
                   "working folders, else $XDG_DATA_HOME/quarvex (~/.local/share/quarvex)");

    std::vector<CliCommand> commands;
    commands.push_back(addInfoCommand(app));
    commands.push_back(addPeaksCommand(app));
    commands.push_back(addFitCommand(app));
    commands.push_back(addRefineCommand(app));
    commands.push_back(addXrayRefCommand(app));
    commands.push_back(addXrayRefineCommand(app));
    commands.push_back(addXrayPatternCommand(app));
    for (CliCommand& command : addXrayProjectCommands(app)) {
        commands.push_back(std::move(command));
    }
    for (CliCommand& command : addLibraryCommands(app)) {
        commands.push_back(std::move(command));
    }
    commands.push_back(addResampleCommand(app));
    commands.push_back(addHomeCommand(app));
    commands.push_back(addProcessCommand(app));
    for (CliCommand& bench : addBenchCommands(app)) {
        commands.push_back(std::move(bench));
    }
    for (CliCommand& bench : addLibraryBenchCommands(app)) {
        commands.push_back(std::move(bench));
    }
    for (CliCommand& bench : addConsistencyBenchCommands(app)) {
        commands.push_back(std::move(bench));
    }
    commands.push_back(addProcessBenchCommand(app));
    commands.push_back(addCsvBenchCommand(app));

    CLI11_PARSE(app, argc, argv);

    for (const CliCommand& command : commands) {
        if (command.parser->parsed()) {
            return runCommand(command, home);
        }
    }
    return 1;
}
