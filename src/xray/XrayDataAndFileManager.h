// The list of loaded reference diffraction patterns: opening files into it, the import record,
// growing, reordering and deleting patterns with all their arrays together.
#pragma once

#include "xray/DiffFileReader.h"
#include "xray/XrayGlobals.h"

#include <filesystem>
#include <span>
#include <string_view>

namespace quarvex {

struct CifPatternSettings;

/// GET_DIFFRACTION_FILE_NAME: title and "|"-separated filter list of the open-file dialog.
inline constexpr std::string_view kDiffFileDialogTitle = "Diffraction Data File";
inline constexpr std::string_view kDiffFileDialogFilter =
    "Diffraction Data Files (*.out)|*.out|Text Data Files (*.txt)|*.txt|Other Data Files "
    "(*.dat)|*.dat|All Files (*.*)|*.*|";
/// The open dialog's further entry, after the specified ones: a CIF's pattern is computed.
inline constexpr std::string_view kCifFileDialogFilter = "Crystal Structures (*.cif)|*.cif|";
/// Extension of the import records.
inline constexpr std::string_view kImportRecordExtension = ".imp";

/// GET_IMPDIFF_PATH: the folder of the import records, "SearchRecords/XrayLib/" below `home`.
std::filesystem::path GET_IMPDIFF_PATH(const std::filesystem::path& home);

/// Recreates every per-pattern and reflection array, zeroed, for `patterns` patterns of `rows`
/// reflection rows each.
void CREATE_AND_ALLOCATE_DIFF_ARRAYS(DIFF_GLOBALS& diff, int patterns, int rows);

/// Mode 1 copies every field of every pattern to the working copies (..._TEMP); mode 2 copies
/// them back into the (recreated) main arrays, column by column, and empties the copies.
void EXCHANGE_DIFF_INFO(DIFF_GLOBALS& diff, int mode);

/// Adds a pattern read by READ_DIFF_INFO at the end of the list: active, with the next colour
/// of the mark palette. Returns its index (0-based).
int appendDiffPattern(DIFF_GLOBALS& diff, DiffFileRecord record);

/// OPEN_AND_READ_DIFF_FILE: reads the reference file at `path` and adds it to the list. While
/// it is read, its table lines go to the import record <base name>.imp in `importFolder`
/// (skipped when `importFolder` is empty; a record that cannot be written is skipped silently).
/// Returns the new pattern's index (0-based). On failure throws QuarvexError (see
/// READ_DIFF_INFO) and leaves the list as it was. A CIF (isCifFile) goes to openCifReference
/// with the default settings (Cu K-alpha1, 2-theta 5 to 90 degrees).
int OPEN_AND_READ_DIFF_FILE(DIFF_GLOBALS& diff, const std::filesystem::path& path,
                            const std::filesystem::path& importFolder);

/// Suffix of the ".out" file kept for a CIF's computed pattern: "<CIF base name>_cif.out" (the
/// suffix keeps it from replacing a shipped file of the mineral's name).
inline constexpr std::string_view kCifPatternSuffix = "_cif.out";

/// True for a path whose extension is ".cif" in any case.
bool isCifFile(const std::filesystem::path& path);

/// Computes the pattern of the CIF at `path` (readCifReference) and adds it to the list under
/// the CIF's name and folder; its ".out" file is written atomically to `importFolder` (skipped
/// when empty; a file that cannot be written is noted). Returns the new pattern's index
/// (0-based). On failure throws QuarvexError and leaves the list as it was.
int openCifReference(DIFF_GLOBALS& diff, const std::filesystem::path& path,
                     const std::filesystem::path& importFolder, const CifPatternSettings& settings);

/// DELETE_DIFF_FILES: removes the patterns whose indices (0-based) are listed, closing the gap
/// in every array. Indices out of range are ignored.
void DELETE_DIFF_FILES(DIFF_GLOBALS& diff, std::span<const int> selected);

/// DIFF_FILE_SORT: rebuilds the list in the order `order` (a permutation of 0..count-1: pattern
/// order[k] goes to place k), moving every array through the working copies. Throws
/// std::invalid_argument when `order` is not such a permutation.
void DIFF_FILE_SORT(DIFF_GLOBALS& diff, std::span<const int> order);

/// SORT_DIFF_FILE_ORDER: moves pattern `from` to place `to` (both 0-based), the others keeping
/// their order (move up, move down, drag in the list). Out-of-range places change nothing.
void SORT_DIFF_FILE_ORDER(DIFF_GLOBALS& diff, int from, int to);

} // namespace quarvex
