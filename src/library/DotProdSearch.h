// The two-pass dot-product search of an unknown Raman spectrum against the compiled library.
#pragma once

#include "common/LineReader.h"
#include "common/Progress.h"
#include "library/CreateLibraryFile.h"
#include "library/LibraryFileReader.h"
#include "library/LibraryGlobals.h"
#include "processing/InterpAndNorm.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace quarvex {

/// Status text of a search.
inline constexpr std::string_view kSearchingStatus = "Searching Selected Area...";
/// Message of a search whose library files are missing and cannot be compiled.
inline constexpr std::string_view kNeedsCompilingText = "Library File Needs To Be Compiled";
/// Entries of the coarse ranking that the fine pass scores again.
inline constexpr int kFinePassCandidates = 25;
/// Two grid positions coincide when they differ by less than this.
inline constexpr float kCoincidence = 1.0e-6F;

/// Scores the library entry whose "==" and name lines `file` has just given: 100 times the
/// cosine between the unknown (INTERP_DATA rows 1..NINT, norm 10) and the entry over the grid
/// points where the two coincide, the entry's norm taken over those points only. Products are
/// single precision, summed in double; the entry's sum of squares and its square root are single
/// precision. 0 when the entry has no data, starts above the unknown, ends below it, or its grid
/// is off the unknown's; a line that cannot be read ends the sum. Leaves `file` just after the
/// last line it read (possibly the next entry's "==" line: see LibraryFileReader::atSeparator).
double FIND_MATCH(LibraryFileReader& file, const InterpData& INTERP_DATA, int NINT);

/// The entry descriptions of the compiled library in `folder` (one entry per name-list line),
/// every score 0. Throws "Library File Needs To Be Compiled" when its files are missing.
/// `bufferSize` is the read buffer of each file (small in tests).
LIBRARY_GLOBALS loadLibraryEntries(const std::filesystem::path& folder,
                                   std::size_t bufferSize = LineReader::kDefaultBufferSize);

/// Orders MI_SORTINDEXPERCENTS (and MI_SORTINDEX) by PERC_MATCH: best first, equal scores in
/// library order, a score that is not a number last.
void SORT_PERCENTS(LIBRARY_GLOBALS& library);

/// Searches the unknown (x ascending, the selected area of a spectrum) against the library in
/// `libraryFolder`: loads the entry descriptions, scores every entry on the coarse file (step
/// 2.0), then scores again on the fine file (step 1.0) the first min(N, 25) entries of the coarse
/// ranking, and sorts. The other entries keep their coarse score. Reads each library file once,
/// sequentially, holding only the unknown in memory. Progress: "Searching Selected Area...".
/// Throws QuarvexError, leaving `library` as it was: "Library File Needs To Be Compiled" when a
/// library file is missing; a message when the library is empty or the unknown has no points or
/// no intensity in the selected area (title "Raman Library"). `bufferSize` is the read buffer
/// of each library file (small in tests and fuzzing).
void READ_LIBRARY(const std::filesystem::path& libraryFolder, std::span<const float> x,
                  std::span<const float> y, LIBRARY_GLOBALS& library,
                  const ProgressCallback& progress = {},
                  std::size_t bufferSize = LibraryFileReader::kDefaultBufferSize);

/// A search as the user starts it: when "RamanSearchFileSlow.rsf" is missing the library of
/// `home` is compiled first (returned), then READ_LIBRARY. A failed compilation ends in
/// "Library File Needs To Be Compiled".
std::optional<LibraryCompilation> searchLibrary(const std::filesystem::path& home,
                                                std::span<const float> x, std::span<const float> y,
                                                LIBRARY_GLOBALS& library,
                                                const ProgressCallback& progress = {});

/// Compiles the library of `home` when "RamanSearchFileSlow.rsf" is missing (returned); a
/// failed compilation ends in "Library File Needs To Be Compiled".
std::optional<LibraryCompilation> compileLibraryWhenMissing(const std::filesystem::path& home,
                                                            const ProgressCallback& progress = {});

} // namespace quarvex
