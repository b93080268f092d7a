// The comment lines by which a reader passes on what it learned about a file: the axis titles
// and the notes on what it read differently from what the file said.
#pragma once

#include <string_view>

namespace quarvex {

/// The x and y axis titles (a delimited file's header row, a JCAMP-DX file's units).
inline constexpr std::string_view kXAxisKey = "x axis: ";
inline constexpr std::string_view kYAxisKey = "y axis: ";
/// Something the reader did that the user should know ("x kept in nanometres: ...").
inline constexpr std::string_view kReadNoteKey = "note: ";

} // namespace quarvex
