// How a delimited text file is laid out: its separator, its decimal mark, its header lines and
// the shape of its rows, as learned from the beginning of the file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// Separators a delimited file may use; Blank means runs of blanks and tabs.
enum class Separator { Comma, Semicolon, Tab, Blank };

struct DelimitedLayout {
    Separator separator = Separator::Blank;
    bool decimalComma = false; ///< "1,5" is one and a half (never with comma separators)
    bool quoted = false;       ///< some field is in double quotes
    /// Non-blank lines before the first row of numbers (metadata and the header row).
    std::vector<std::string> leadingLines;
    std::int64_t firstDataLine = 0; ///< 1-based; 0 when the beginning holds no row of numbers
    std::size_t columns = 0;        ///< fields of the first row of numbers
    bool consistent = false;        ///< every later line of the beginning is such a row, as wide
    bool programKeys = false;       ///< a line holds a key of the program's own text format
};

/// Learns the layout from the beginning of a file (a last line cut by the end of `head` is left
/// out when `head` may be only part of the file). At the first line with a key of the program's
/// own text format it stops with `programKeys` set and the rest unlearned.
DelimitedLayout analyseDelimited(std::string_view head, bool wholeFile);

/// Splits `line` into its fields: separators inside double quotes do not count, the quotes
/// around a field and the blanks around it are dropped.
void splitFields(std::string_view line, Separator separator, std::vector<std::string_view>& fields);

/// Reads one field as a number, with "," as the decimal mark when `decimalComma`.
bool parseField(std::string_view field, bool decimalComma, double& value);

/// A field as a title: doubled quotes inside stand for one.
std::string fieldTitle(std::string_view field);

} // namespace quarvex
