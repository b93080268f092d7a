// Loading the spectrum a command works on, in any format the readers know, with --columns.
#pragma once

#include "readers/LoadSpectra.h"
#include "shell/ProgramState.h"

#include <CLI/CLI.hpp>

#include <string>

namespace quarvex::cli {

/// Adds "--columns X,Y" (1-based x and y columns of a delimited text file) to `command`.
void addColumnsOption(CLI::App& command, std::string& columns);

/// The read options of a --columns text ("" = the first two columns). Throws QuarvexError for
/// anything other than two positive integers separated by a comma.
ReadOptions readOptionsFor(const std::string& columns);

/// Loads `file` into `state` and returns the index (0-based) of its first spectrum; the readers'
/// notes go to stderr.
int loadCommandSpectrum(ProgramState& state, const std::string& file, const std::string& columns);

} // namespace quarvex::cli
