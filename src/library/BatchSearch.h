// Batch search: many unknown spectrum files searched against the library in one run.
#pragma once

#include "common/Progress.h"
#include "library/CreateLibraryFile.h"
#include "library/LibraryGlobals.h"
#include "library/RobustSearch.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

namespace quarvex {

/// Receives each file of a batch in order: its ranking, or null and why it could not be read or
/// searched.
using BatchRowCallback = std::function<void(
    const std::filesystem::path& file, const LIBRARY_GLOBALS* ranking, std::string_view error)>;

/// Searches the whole range of every file in `mode` against the library of `home` (compiled
/// first when missing, returned). The entry descriptions, and in robust mode the robust view of
/// the library, are read once; the dot-product search reads its files per unknown, as it always
/// does. A file that fails gives its error to `row` and the batch goes on. Progress: the share
/// of files done. Throws only for the library (missing and not compilable, or empty).
std::optional<LibraryCompilation> batchSearch(const std::filesystem::path& home,
                                              std::span<const std::filesystem::path> files,
                                              SearchMode mode, const BatchRowCallback& row,
                                              const ProgressCallback& progress = {});

} // namespace quarvex
