// quarvex-cli home: the home folder in use, how it was chosen, and where the shipped data lie.
#include "cli/CliCommand.h"
#include "shell/HomeFolder.h"

#include <iostream>

namespace quarvex::cli {

CliCommand addHomeCommand(CLI::App& app) {
    CLI::App* home = app.add_subcommand(
        "home", "Prints the home folder in use, where it came from, and the shipped data folder");
    return {home, [](ProgramState& state) {
                std::cout << "Home folder: " << state.quarvex.programFolder.string() << '\n'
                          << "Chosen by: " << describeHomeSource(state.quarvex.homeSource) << '\n'
                          << "Shipped data: " << shippedDataFolder().string() << '\n';
                return 0;
            }};
}

} // namespace quarvex::cli
