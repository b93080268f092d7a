#include "library/RobustSearch.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "library/DotProdSearch.h"
#include "library/RobustGridCache.h"

#include <algorithm>
#include <cmath>

namespace quarvex {

namespace {

// The cosine of the unknown with the entry moved by `shift`, given the unknown's norm.
double shiftedCosine(const RobustSpectrum& unknown, double unknownNorm, const RobustSpectrum& entry,
                     int shift) {
    const auto [product, entrySquares] = shiftedProducts(unknown, entry, shift);
    if (entrySquares <= 0.0) {
        return 0.0;
    }
    return product / (unknownNorm * std::sqrt(entrySquares));
}

} // namespace

GridOverlap gridOverlap(const RobustSpectrum& a, const RobustSpectrum& b, int shift) {
    // Point i of a lies at a.first + i and meets the point of b at that position - shift.
    const long offset = static_cast<long>(a.first) - shift - b.first;
    return {
        std::max(0L, -offset),
        std::min(static_cast<long>(a.values.size()), static_cast<long>(b.values.size()) - offset),
        offset};
}

ShiftedProducts shiftedProducts(const RobustSpectrum& a, const RobustSpectrum& b, int shift) {
    const auto [from, to, offset] = gridOverlap(a, b, shift);
    ShiftedProducts sums;
    for (long i = from; i < to; ++i) {
        const double u = a.values[static_cast<std::size_t>(i)];
        const double e = b.values[static_cast<std::size_t>(i + offset)];
        sums.product += u * e;
        sums.bSquares += e * e;
    }
    return sums;
}

double sumOfSquares(std::span<const float> values) {
    double sum = 0.0;
    for (const float v : values) {
        sum += static_cast<double>(v) * static_cast<double>(v);
    }
    return sum;
}

std::string_view searchModeName(SearchMode mode) {
    return mode == SearchMode::Robust ? "robust" : "dot";
}

RobustMatch robustMatch(const RobustSpectrum& unknown, const RobustSpectrum& entry) {
    const double unknownNorm = std::sqrt(sumOfSquares(unknown.values));
    RobustMatch best;
    if (unknownNorm <= 0.0 || entry.values.empty()) {
        return best;
    }
    for (int step = 0; step <= 2 * kMaxShift; ++step) {
        const int shift = (step % 2 == 0 ? 1 : -1) * ((step + 1) / 2); // 0, -1, 1, -2, 2, ...
        const double score = 100.0 * shiftedCosine(unknown, unknownNorm, entry, shift);
        if (score > best.score) {
            best = {score, shift};
        }
    }
    return best;
}

void READ_LIBRARY_ROBUST(const std::filesystem::path& libraryFolder, std::span<const float> x,
                         std::span<const float> y, LIBRARY_GLOBALS& library,
                         const ProgressCallback& progress, GridSource source) {
    if (x.empty() || y.empty()) {
        throw QuarvexError("The selected area holds no data points to search with.",
                           std::string(kLibraryErrorTitle));
    }
    const RobustSpectrum unknown = robustUnknown(x, y);
    LIBRARY_GLOBALS result = loadLibraryEntries(libraryFolder);
    if (result.count() == 0) {
        throw QuarvexError("The Raman library in " + libraryFolder.string() +
                               " is empty: add reference spectrum files to it and compile it.",
                           std::string(kLibraryErrorTitle));
    }
    std::error_code error;
    if (!std::filesystem::is_regular_file(libraryFolder / kRobustLibraryFile, error)) {
        compileRobustLibrary(libraryFolder, progress);
    }
    std::optional<RobustCache> cache;
    if (source == GridSource::CacheWhenValid) {
        std::string whyNot;
        cache = RobustCache::open(libraryFolder, whyNot);
        if (!cache && writeRobustCache(libraryFolder)) {
            cache = RobustCache::open(libraryFolder, whyNot);
        }
    }
    std::size_t k = 0;
    const auto score = [&](const RobustSpectrum& entry, double fraction) {
        if (k < result.PERC_MATCH.size()) {
            const RobustMatch match = robustMatch(unknown, entry);
            result.PERC_MATCH[k] = match.score;
            result.MATCH_SHIFT[k] = match.shift;
        }
        ++k;
        reportProgress(progress, kSearchingStatus, fraction);
    };
    result.MATCH_SHIFT.assign(result.PERC_MATCH.size(), 0);
    if (!cache || !cache->forEachBlock(score)) {
        // The text file, as the cache was made from it: the same scores.
        k = 0;
        result.PERC_MATCH.assign(result.PERC_MATCH.size(), 0.0);
        result.MATCH_SHIFT.assign(result.PERC_MATCH.size(), 0);
        forEachLibraryBlock(libraryFolder / kRobustLibraryFile, score);
    }
    SORT_PERCENTS(result);
    library = std::move(result);
}

std::optional<LibraryCompilation> searchLibrary(const std::filesystem::path& home,
                                                std::span<const float> x, std::span<const float> y,
                                                LIBRARY_GLOBALS& library, SearchMode mode,
                                                const ProgressCallback& progress,
                                                LibrarySearchSource* used) {
    if (mode == SearchMode::Dot) {
        return searchLibrary(home, x, y, library, progress, used);
    }
    std::optional<LibraryCompilation> compilation = compileLibraryWhenMissing(home, progress);
    READ_LIBRARY_ROBUST(ramanLibraryFolder(home), x, y, library, progress);
    return compilation;
}

bool noGoodMatch(const LIBRARY_GLOBALS& library) {
    return library.MI_SORTINDEXPERCENTS.empty() ||
           !(library.PERC_MATCH[static_cast<std::size_t>(library.MI_SORTINDEXPERCENTS.front())] >=
             kNoGoodMatchScore);
}

} // namespace quarvex
