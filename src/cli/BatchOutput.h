// quarvex-cli search with several files or --csv: one CSV row per unknown.
#pragma once

#include "library/RobustSearch.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quarvex::cli {

/// Searches every file in `mode` against the library of `home` and writes one CSV row per file
/// (file; rank, name, score and shift of the first five; no_good_match, ambiguous; error) to
/// `csv` (written atomically) or to stdout. Progress on stderr when it is a terminal.
int runBatchSearch(const std::filesystem::path& home, const std::vector<std::string>& files,
                   SearchMode mode, const std::optional<std::string>& csv);

} // namespace quarvex::cli
