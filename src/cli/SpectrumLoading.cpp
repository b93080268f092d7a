#include "cli/SpectrumLoading.h"

#include "common/ListReader.h"
#include "common/QuarvexError.h"

#include <iostream>

namespace quarvex::cli {

void addColumnsOption(CLI::App& command, std::string& columns) {
    command.add_option("--columns", columns,
                       "X,Y: the x and y columns of a delimited text file, counted from 1 "
                       "(default 1,2)");
}

ReadOptions readOptionsFor(const std::string& columns) {
    ReadOptions options;
    if (columns.empty()) {
        return options;
    }
    const auto comma = columns.find(',');
    ColumnChoice choice;
    if (comma == std::string::npos ||
        !parseInteger(std::string_view(columns).substr(0, comma), choice.x) ||
        !parseInteger(std::string_view(columns).substr(comma + 1), choice.y) || choice.x < 1 ||
        choice.y < 1) {
        throw QuarvexError("--columns \"" + columns +
                               "\" is not of the form X,Y with two column numbers from 1 "
                               "(e.g. 1,3).",
                           "Error");
    }
    options.columns = choice;
    return options;
}

int loadCommandSpectrum(ProgramState& state, const std::string& file, const std::string& columns) {
    const LoadedFile loaded =
        loadSpectrumFile(state.specdata, state.mineralInfo, file, readOptionsFor(columns));
    for (const std::string& note : loaded.notes) {
        std::cerr << file << ": " << note << '\n';
    }
    return loaded.first;
}

} // namespace quarvex::cli
