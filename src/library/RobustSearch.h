// The robust search mode: a search beside the dot-product search that tolerates a background,
// a small calibration shift and one dominant band.
#pragma once

#include "common/Progress.h"
#include "library/CreateLibraryFile.h"
#include "library/DotProdSearch.h"
#include "library/LibraryGlobals.h"
#include "library/RobustLibrary.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace quarvex {

struct LibrarySearchSource;

/// How a search scores the library. Dot is the dot-product search, the default.
enum class SearchMode { Dot, Robust };

/// "dot" or "robust".
std::string_view searchModeName(SearchMode mode);

/// Largest calibration shift tried, in cm-1 (whole steps of 1 cm-1 either way).
inline constexpr int kMaxShift = 3;
/// A best score below this gives the verdict "no good match".
inline constexpr double kNoGoodMatchScore = 30.0;

/// The score of one entry and the shift at which it was reached.
struct RobustMatch {
    double score = 0.0; ///< 0 to 100
    int shift = 0;      ///< cm-1: the unknown's band positions minus the entry's
};

/// Where two spectra on the whole-number grid meet when `b` is moved by `shift` cm-1: point i of
/// `a` (from <= i < to) meets point i + offset of `b`.
struct GridOverlap {
    long from = 0;
    long to = 0;
    long offset = 0;
};
GridOverlap gridOverlap(const RobustSpectrum& a, const RobustSpectrum& b, int shift);

/// Over the overlap of `a` with `b` moved by `shift`: the sum of the products of the two and the
/// sum of the squares of b, in double precision, in grid order.
struct ShiftedProducts {
    double product = 0.0;
    double bSquares = 0.0;
};
ShiftedProducts shiftedProducts(const RobustSpectrum& a, const RobustSpectrum& b, int shift);

/// The sum of the squares, in double precision.
double sumOfSquares(std::span<const float> values);

/// The best of the cosines between the unknown and the entry moved by -3..+3 cm-1, times 100
/// (negative cosines count as 0): the products summed over the grid points where the two
/// overlap, the entry's norm over those points, the unknown's over all of it. On equal scores the
/// smaller shift wins, 0 first. 0 when either has no values or they do not overlap.
RobustMatch robustMatch(const RobustSpectrum& unknown, const RobustSpectrum& entry);

/// Robust search of the unknown (x ascending, the selected area) against the library of
/// `libraryFolder`: PERC_MATCH and MATCH_SHIFT of every entry, sorted. The robust file is
/// compiled from the Slow file first when missing. Its blocks are read from the robust cache
/// when it was made for the files beside it (the same scores bit for bit; made anew when it
/// can be), else from the robust file. Throws as READ_LIBRARY does, and when the selected area
/// is narrower than the derivative window; `library` stays as it was.
void READ_LIBRARY_ROBUST(const std::filesystem::path& libraryFolder, std::span<const float> x,
                         std::span<const float> y, LIBRARY_GLOBALS& library,
                         const ProgressCallback& progress = {},
                         GridSource source = GridSource::CacheWhenValid);

/// A search as the user starts it, in `mode`: the library of `home` compiled first when missing
/// (returned), then READ_LIBRARY (its grid source to `used` when given) or READ_LIBRARY_ROBUST.
std::optional<LibraryCompilation> searchLibrary(const std::filesystem::path& home,
                                                std::span<const float> x, std::span<const float> y,
                                                LIBRARY_GLOBALS& library, SearchMode mode,
                                                const ProgressCallback& progress = {},
                                                LibrarySearchSource* used = nullptr);

/// True when the best score of the last search is below kNoGoodMatchScore (or there is none).
bool noGoodMatch(const LIBRARY_GLOBALS& library);

} // namespace quarvex
