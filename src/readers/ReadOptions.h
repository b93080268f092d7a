// What a caller may tell the spectrum readers beyond the file's name.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quarvex {

/// The x and y columns of a delimited text file, numbered from 1.
struct ColumnChoice {
    int x = 1;
    int y = 2;
};

/// Asked when a delimited file has more than two columns and no columns were given: receives the
/// column titles (the header row's names, or "Column 3" where there is none) and returns the
/// choice, or nothing to cancel the read (the reader then throws ReadCancelled).
using ColumnChooser = std::function<std::optional<ColumnChoice>(const std::vector<std::string>&)>;

struct ReadOptions {
    std::optional<ColumnChoice> columns; ///< fixed columns (CLI --columns); default: first two
    ColumnChooser chooseColumns;         ///< the GUI's column dialog; empty: the first two
};

/// Thrown when the user cancelled a read (the column dialog): not an error to report.
struct ReadCancelled {};

} // namespace quarvex
