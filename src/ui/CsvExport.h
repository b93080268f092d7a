// Tables as CSV files for a spreadsheet, and the one atomic text writer of the windows.
#pragma once

#include "library/LibraryGlobals.h"

#include <QString>

#include <string>

namespace quarvex::ui {

/// One field of a CSV record, quoted when it holds a comma, a quote or a line break.
QString csvField(const QString& text);

/// Tab-separated lines (as the fit table copies them) as CSV records.
QString csvFromTabs(const QString& tabSeparated);

/// The ranking of the last search: a header line, then every entry best first (rank, score
/// with two decimals, mineral, identifier, laser, chemistry, locality, file).
QString rankedResultsCsv(const LIBRARY_GLOBALS& library);

/// Writes `text` (UTF-8) to `path` atomically; throws QuarvexError titled `title` when it
/// cannot.
void saveText(const QString& path, const QString& text, const std::string& title);

} // namespace quarvex::ui
