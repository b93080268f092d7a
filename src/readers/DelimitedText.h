// Reading delimited text (CSV, TSV, columns separated by semicolons or blanks) with an optional
// header row, a decimal comma, quoted fields and more than two columns.
#pragma once

#include "readers/ReadOptions.h"
#include "specdata/SpecDataGlobals.h"

#include <filesystem>
#include <string_view>
#include <vector>

namespace quarvex {

/// True for text that is not in the program's own format (no "##" keys, no "<COM>" block, no
/// calibration) and is either named .csv or .tsv, or holds what the program's reader would read
/// wrongly or in part: header lines above the numbers, semicolons, a decimal comma, quoted
/// fields, or more than two columns in every row.
bool isDelimitedText(std::string_view head, std::string_view extensionLower);

/// Reads the chosen columns (options.columns, else options.chooseColumns when there are more
/// than two, else the first two) streaming, one spectrum. The points come out in ascending x.
/// Throws QuarvexError naming the line for a row with too few columns, text in a numeric
/// column, a non-finite value, or a file of one column.
std::vector<SpectrumRecord> readDelimitedText(const std::filesystem::path& path,
                                              const ReadOptions& options);

} // namespace quarvex
