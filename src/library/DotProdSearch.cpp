#include "library/DotProdSearch.h"

#include "common/LineReader.h"
#include "common/ListReader.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "common/WorkingFolders.h"
#include "library/GridCache.h"
#include "library/LibraryFileReader.h"
#include "library/LibraryGrids.h"
#include "library/MatchScore.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace quarvex {

namespace {

constexpr std::size_t kNameListWidth = 256;
constexpr std::size_t kNameInfoWidth = 150;
constexpr std::size_t kWaveCodeWidth = 3;
constexpr int kNameInfoLines = 5;
// How often (in entries) a pass reports its progress.
constexpr std::size_t kProgressInterval = 256;
// Share of a search's progress that the coarse pass takes.
constexpr double kCoarseShare = 0.8;

[[noreturn]] void throwNeedsCompiling() {
    throw QuarvexError(std::string(kNeedsCompilingText), std::string(kLibraryErrorTitle));
}

[[noreturn]] void throwSearchError(const std::string& text) {
    throw QuarvexError(text, std::string(kLibraryErrorTitle));
}

// A free-format text value: the first word of the line, or quoted text; blank lines give "".
std::string firstValue(std::string_view line) {
    std::string value;
    ListReader reader(line);
    if (reader.read(value) != FieldStatus::Assigned) {
        value.clear();
    }
    return value;
}

// The unknown on one pass's grid, normalised; refused when nothing of it lands on the grid.
InterpData unknownOnGrid(std::span<const float> x, std::span<const float> y, float step) {
    InterpData grid = resampleSpectrum(x, y, step, true);
    if (!hasFiniteValues(grid)) {
        throwSearchError("The selected area holds no intensity to search with: its resampled "
                         "values are all zero.");
    }
    return grid;
}

bool isCandidate(const std::vector<std::string_view>& candidates, std::string_view name) {
    return std::find(candidates.begin(), candidates.end(), name) != candidates.end();
}

// One pass over a library file: entry k in file order is scored into PERC_MATCH(k); with
// `candidates`, only the entries of those names, the others are read past.
void scorePass(const std::filesystem::path& path, const InterpData& unknown,
               std::vector<double>& scores, const std::vector<std::string_view>* candidates,
               const ProgressCallback& progress, double progressFrom, double progressTo,
               std::size_t bufferSize) {
    LibraryFileReader file(path, bufferSize);
    if (!file.isOpen()) {
        throwNeedsCompiling();
    }
    const int NINT = unknown.capacity();
    bool more = file.skipPastSeparator();
    for (std::size_t k = 0; more && k < scores.size(); ++k) {
        std::string_view nameLine;
        if (!file.next(nameLine, kNameInfoWidth)) {
            break;
        }
        if (candidates == nullptr || isCandidate(*candidates, trimmed(nameLine))) {
            scores[k] = FIND_MATCH(file, unknown, NINT);
            // An entry's sum can end before its last line: find the next "==" again.
            more = file.atSeparator() || file.skipPastSeparator();
        } else {
            more = file.skipPastSeparator();
        }
        if ((k + 1) % kProgressInterval == 0) {
            reportProgress(progress, kSearchingStatus,
                           progressFrom + (progressTo - progressFrom) * file.fractionRead());
        }
    }
}

// The names of the first min(N, 25) entries of the coarse ranking: the fine pass's candidates.
std::vector<std::string_view> fineCandidates(const TextColumn& names,
                                             const std::vector<int>& ranking) {
    const std::size_t count = std::min<std::size_t>(names.size(), kFinePassCandidates);
    std::vector<std::string_view> candidates;
    for (std::size_t r = 0; r < count; ++r) {
        candidates.push_back(names.view(static_cast<std::size_t>(ranking[r])));
    }
    return candidates;
}

// Both passes over the text files, each read once sequentially.
void searchText(const std::filesystem::path& folder, const std::array<InterpData, 2>& unknowns,
                LIBRARY_GLOBALS& result, const ProgressCallback& progress, std::size_t bufferSize) {
    scorePass(folder / kFastLibraryFile, unknowns[0], result.PERC_MATCH, nullptr, progress, 0.0,
              kCoarseShare, bufferSize);
    SORT_PERCENTS(result);
    const std::vector<std::string_view> candidates =
        fineCandidates(result.MI_FILENAMES, result.MI_SORTINDEXPERCENTS);
    scorePass(folder / kSlowLibraryFile, unknowns[1], result.PERC_MATCH, &candidates, progress,
              kCoarseShare, 1.0, bufferSize);
    SORT_PERCENTS(result);
}

// One pass over a grid of the cache (`grids`, whose entry k `entryOf(k)` gives), with the
// entries and scores of the text pass; false when an entry could not be read.
template <typename Grids, typename EntryOf>
bool scoreCachedPass(const Grids& grids, CacheGrid grid, EntryOf&& entryOf,
                     const InterpData& unknown, std::vector<double>& scores,
                     const std::vector<std::string_view>* candidates,
                     const ProgressCallback& progress, double progressFrom, double progressTo) {
    const std::size_t entries = std::min(grids.count(grid), scores.size());
    for (std::size_t k = 0; k < entries; ++k) {
        if (candidates == nullptr || isCandidate(*candidates, grids.fineName(k))) {
            const std::optional<CachedGridEntry> entry = entryOf(grid, k);
            if (!entry) {
                return false;
            }
            scores[k] = FIND_MATCH(*entry, unknown, unknown.capacity());
        }
        if ((k + 1) % kProgressInterval == 0) {
            reportProgress(progress, kSearchingStatus,
                           progressFrom + (progressTo - progressFrom) * static_cast<double>(k + 1) /
                                              static_cast<double>(entries));
        }
    }
    return true;
}

// Both passes over the grids of the cache: `scores` and their `ranking`; false when an entry
// could not be read.
template <typename Grids, typename EntryOf>
bool searchGrids(const Grids& grids, EntryOf&& entryOf, const std::array<InterpData, 2>& unknowns,
                 const TextColumn& names, std::vector<double>& scores, std::vector<int>& ranking,
                 const ProgressCallback& progress) {
    if (!scoreCachedPass(grids, CacheGrid::Coarse, entryOf, unknowns[0], scores, nullptr, progress,
                         0.0, kCoarseShare)) {
        return false;
    }
    ranking = rankingOf(scores);
    const std::vector<std::string_view> candidates = fineCandidates(names, ranking);
    if (!scoreCachedPass(grids, CacheGrid::Fine, entryOf, unknowns[1], scores, &candidates,
                         progress, kCoarseShare, 1.0)) {
        return false;
    }
    ranking = rankingOf(scores);
    return true;
}

// Both passes over the grid cache; false when it could not be read to its end.
bool searchCache(GridCache& cache, const std::array<InterpData, 2>& unknowns,
                 LIBRARY_GLOBALS& result, const ProgressCallback& progress) {
    std::vector<float> values;
    std::vector<int> ranking;
    const auto read = [&](CacheGrid grid, std::size_t k) { return cache.read(grid, k, values); };
    if (!searchGrids(cache, read, unknowns, result.MI_FILENAMES, result.PERC_MATCH, ranking,
                     progress)) {
        return false;
    }
    result.MI_SORTINDEXPERCENTS = ranking;
    result.MI_SORTINDEX = std::move(ranking);
    return true;
}

} // namespace

// The names of the name list, then five lines of name information per entry (identifier and
// names read free-format, the other three as whole lines).
LIBRARY_GLOBALS loadLibraryEntries(const std::filesystem::path& folder, std::size_t bufferSize) {
    finishInterruptedCompilation(folder);
    LineReader nameList(folder / kNameListFile, kNameListWidth, bufferSize);
    LineReader nameInfo(folder / kNameInfoFile, kNameInfoWidth, bufferSize);
    if (!nameList.isOpen() || !nameInfo.isOpen()) {
        throwNeedsCompiling();
    }
    LIBRARY_GLOBALS library;
    std::string_view line;
    while (nameList.next(line)) {
        library.MI_FILENAMES.push_back(trimmed(line));
    }
    const std::size_t entries = library.MI_FILENAMES.size();
    for (std::size_t k = 0; k < entries; ++k) {
        // Copies: a line read is valid only until the next one is read.
        std::array<std::string, kNameInfoLines> lines{};
        for (std::string& value : lines) {
            if (nameInfo.next(line)) {
                value = line;
            } // else a short file leaves the remaining descriptions blank
        }
        library.MIGRELT_ID.push_back(firstValue(lines[0]));
        library.MINAMES.push_back(firstValue(lines[1]));
        library.LOCALITIES.push_back(trimmed(lines[2]));
        library.CHEMISTRIES.push_back(trimmed(lines[3]));
        library.MI_WAVE.push_back(trimmed(std::string_view(lines[4]).substr(0, kWaveCodeWidth)));
    }
    for (TextColumn* field : {&library.MI_FILENAMES, &library.MIGRELT_ID, &library.MINAMES,
                              &library.LOCALITIES, &library.CHEMISTRIES, &library.MI_WAVE}) {
        field->shrink_to_fit();
    }
    library.PERC_MATCH.assign(entries, 0.0);
    return library;
}

double FIND_MATCH(LibraryFileReader& file, const InterpData& INTERP_DATA, int NINT) {
    const auto readPair = [&file](float& lx, float& ly) {
        return file.nextPair(lx, ly) == LibraryFileReader::Line::Pair;
    };
    return matchScore(readPair, INTERP_DATA, NINT);
}

std::array<InterpData, 2> unknownOnSearchGrids(std::span<const float> x, std::span<const float> y) {
    return {unknownOnGrid(x, y, kCoarseStep), unknownOnGrid(x, y, kFineStep)};
}

void scoreLibraryGrids(const LibraryGrids& grids, const TextColumn& names,
                       const std::array<InterpData, 2>& unknowns, std::vector<double>& scores,
                       std::vector<int>& ranking) {
    const auto view = [&grids](CacheGrid grid, std::size_t k) {
        return std::optional<CachedGridEntry>(grids.entry(grid, k));
    };
    searchGrids(grids, view, unknowns, names, scores, ranking, {});
}

void SORT_PERCENTS(LIBRARY_GLOBALS& library) {
    std::vector<int> order = rankingOf(library.PERC_MATCH);
    library.MI_SORTINDEXPERCENTS = order;
    library.MI_SORTINDEX = std::move(order);
}

std::vector<int> rankingOf(const std::vector<double>& scores) {
    std::vector<int> order(scores.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&scores](int a, int b) {
        const double sa = scores[static_cast<std::size_t>(a)];
        const double sb = scores[static_cast<std::size_t>(b)];
        return sa > sb || (std::isnan(sb) && !std::isnan(sa));
    });
    return order;
}

LibrarySearchSource READ_LIBRARY(const std::filesystem::path& libraryFolder,
                                 std::span<const float> x, std::span<const float> y,
                                 LIBRARY_GLOBALS& library, const ProgressCallback& progress,
                                 std::size_t bufferSize, GridSource source) {
    if (x.empty() || y.empty()) {
        throwSearchError("The selected area holds no data points to search with.");
    }
    const std::array<InterpData, 2> unknowns = unknownOnSearchGrids(x, y);
    finishInterruptedCompilation(libraryFolder);
    for (std::string_view file : {kSlowLibraryFile, kFastLibraryFile}) {
        std::error_code error;
        if (!std::filesystem::is_regular_file(libraryFolder / file, error)) {
            throwNeedsCompiling();
        }
    }
    LIBRARY_GLOBALS result = loadLibraryEntries(libraryFolder, bufferSize);
    if (result.count() == 0) {
        throwSearchError("The Raman library in " + libraryFolder.string() +
                         " is empty: add reference spectrum files to it and compile it.");
    }
    reportProgress(progress, kSearchingStatus, 0.0);

    LibrarySearchSource used;
    std::optional<GridCache> cache;
    if (source == GridSource::CacheWhenValid) {
        cache = GridCache::open(libraryFolder, used.note);
    }
    if (cache && searchCache(*cache, unknowns, result, progress)) {
        used.fromCache = true;
    } else {
        if (cache) {
            used.note = "the grid cache could not be read to its end";
        }
        result.PERC_MATCH.assign(result.PERC_MATCH.size(), 0.0);
        searchText(libraryFolder, unknowns, result, progress, bufferSize);
        if (source == GridSource::CacheWhenValid && writeGridCache(libraryFolder)) {
            used.note += "; it was made anew";
        }
    }
    library = std::move(result);
    reportProgress(progress, kSearchingStatus, 1.0);
    return used;
}

std::string textFallbackNote(const LibrarySearchSource& used) {
    return used.note.empty() ? std::string()
                             : "Searched the library's text files: " + used.note + ".";
}

std::optional<LibraryCompilation> searchLibrary(const std::filesystem::path& home,
                                                std::span<const float> x, std::span<const float> y,
                                                LIBRARY_GLOBALS& library,
                                                const ProgressCallback& progress,
                                                LibrarySearchSource* used) {
    std::optional<LibraryCompilation> compilation = compileLibraryWhenMissing(home, progress);
    LibrarySearchSource source = READ_LIBRARY(ramanLibraryFolder(home), x, y, library, progress);
    if (used != nullptr) {
        *used = std::move(source);
    }
    return compilation;
}

std::optional<LibraryCompilation> compileLibraryWhenMissing(const std::filesystem::path& home,
                                                            const ProgressCallback& progress) {
    std::error_code error;
    finishInterruptedCompilation(ramanLibraryFolder(home));
    if (std::filesystem::exists(ramanLibraryFolder(home) / kSlowLibraryFile, error)) {
        return std::nullopt;
    }
    // A home folder where nothing can be created is the cause to name, not the missing library.
    requireFolder(ramanLibraryFolder(home), kLibraryErrorTitle);
    try {
        return CREATE_SEARCH_LIB(home, progress);
    } catch (const QuarvexError&) {
        throwNeedsCompiling();
    }
}

} // namespace quarvex
