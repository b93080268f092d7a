// The two-pass dot-product search of an unknown Raman spectrum against the compiled library.
#pragma once

#include "common/LineReader.h"
#include "common/Progress.h"
#include "library/CreateLibraryFile.h"
#include "library/LibraryFileReader.h"
#include "library/LibraryGlobals.h"
#include "library/MatchScore.h"
#include "processing/InterpAndNorm.h"

#include <array>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// Status text of a search.
inline constexpr std::string_view kSearchingStatus = "Searching Selected Area...";
/// Message of a search whose library files are missing and cannot be compiled.
inline constexpr std::string_view kNeedsCompilingText = "Library File Needs To Be Compiled";
/// Entries of the coarse ranking that the fine pass scores again.
inline constexpr int kFinePassCandidates = 25;

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

/// The ranking of `scores` (0-based entries) in SORT_PERCENTS's order.
std::vector<int> rankingOf(const std::vector<double>& scores);

/// The unknown (x ascending, not empty) on the grids of the two passes (steps 2.0 and 1.0),
/// normalised. Throws QuarvexError (title "Raman Library") when nothing of it lands on a grid.
std::array<InterpData, 2> unknownOnSearchGrids(std::span<const float> x, std::span<const float> y);

class LibraryGrids;

/// READ_LIBRARY's two passes over grids held in memory: `scores` (one per entry of the name list
/// `names`, all 0 on entry) and `ranking` become READ_LIBRARY's PERC_MATCH and
/// MI_SORTINDEXPERCENTS, bit for bit. Several threads may score over the same grids at once.
void scoreLibraryGrids(const LibraryGrids& grids, const TextColumn& names,
                       const std::array<InterpData, 2>& unknowns, std::vector<double>& scores,
                       std::vector<int>& ranking);

/// Where a search reads the library's grids from.
enum class GridSource {
    CacheWhenValid, ///< the grid cache when it matches the library files, else the text files
    TextOnly        ///< the text files, whatever the cache
};

/// Where a search read the grids from, and why not from the grid cache.
struct LibrarySearchSource {
    bool fromCache = false;
    std::string note; ///< why the text files were read (empty when from the cache or asked)
};

/// What the front ends tell when a search read the text files for want of a usable grid
/// cache: "Searched the library's text files: REASON."; empty when there is no reason.
std::string textFallbackNote(const LibrarySearchSource& used);

/// Searches the unknown (x ascending, the selected area of a spectrum) against the library in
/// `libraryFolder`: loads the entry descriptions, scores every entry on the coarse grid (step
/// 2.0), then scores again on the fine grid (step 1.0) the first min(N, 25) entries of the coarse
/// ranking, and sorts. The other entries keep their coarse score. The grids come from the grid
/// cache when it was made for the library files beside it (the same scores bit for bit), else
/// from the text files, each read once sequentially (the cache is then made anew when it can
/// be). Holds only the unknown and one entry in memory. Progress: "Searching Selected Area...".
/// Throws QuarvexError, leaving `library` as it was: "Library File Needs To Be Compiled" when a
/// library file is missing; a message when the library is empty or the unknown has no points or
/// no intensity in the selected area (title "Raman Library"). `bufferSize` is the read buffer
/// of each library text file (small in tests and fuzzing).
LibrarySearchSource READ_LIBRARY(const std::filesystem::path& libraryFolder,
                                 std::span<const float> x, std::span<const float> y,
                                 LIBRARY_GLOBALS& library, const ProgressCallback& progress = {},
                                 std::size_t bufferSize = LibraryFileReader::kDefaultBufferSize,
                                 GridSource source = GridSource::CacheWhenValid);

/// A search as the user starts it: when "RamanSearchFileSlow.rsf" is missing the library of
/// `home` is compiled first (returned), then READ_LIBRARY, whose grid source goes to `used`
/// when given. A failed compilation ends in "Library File Needs To Be Compiled".
std::optional<LibraryCompilation> searchLibrary(const std::filesystem::path& home,
                                                std::span<const float> x, std::span<const float> y,
                                                LIBRARY_GLOBALS& library,
                                                const ProgressCallback& progress = {},
                                                LibrarySearchSource* used = nullptr);

/// Compiles the library of `home` when "RamanSearchFileSlow.rsf" is missing (returned); a
/// failed compilation ends in "Library File Needs To Be Compiled".
std::optional<LibraryCompilation> compileLibraryWhenMissing(const std::filesystem::path& home,
                                                            const ProgressCallback& progress = {});

} // namespace quarvex
