#include "cli/CliCommand.h"

#include "common/QuarvexError.h"
#include "shell/HomeFolder.h"
#include "shell/StartUp.h"

#include <iostream>
#include <unistd.h>

namespace quarvex::cli {

void printError(const std::exception& error) {
    if (const auto* quarvexError = dynamic_cast<const QuarvexError*>(&error)) {
        std::cerr << quarvexError->title() << ": " << quarvexError->text() << '\n';
    } else {
        std::cerr << "Error: " << error.what() << '\n';
    }
}

bool stderrIsTerminal() {
    return ::isatty(STDERR_FILENO) != 0;
}

int runCommand(const CliCommand& command, const std::optional<std::string>& home) {
    ProgramState state;
    std::optional<std::filesystem::path> homeOption;
    if (home) {
        homeOption = *home;
    }
    const HomeChoice homeFolder = openHomeFolder(homeOption);
    startUp(state, homeFolder.folder);
    state.quarvex.homeSource = homeFolder.source;
    int status = 1;
    try {
        status = command.run(state);
    } catch (const std::exception& error) {
        printError(error);
        status = 1;
    }
    shutDown(state);
    return status;
}

} // namespace quarvex::cli
