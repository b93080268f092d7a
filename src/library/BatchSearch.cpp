#include "library/BatchSearch.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "library/DotProdSearch.h"
#include "readers/LoadSpectra.h"

#include <vector>

namespace quarvex {

namespace {

constexpr std::string_view kBatchStatus = "Searching files...";

void rankRobust(const std::vector<RobustSpectrum>& views, std::span<const float> x,
                std::span<const float> y, LIBRARY_GLOBALS& ranking) {
    const RobustSpectrum unknown = robustUnknown(x, y);
    ranking.MATCH_SHIFT.assign(ranking.PERC_MATCH.size(), 0);
    for (std::size_t k = 0; k < views.size() && k < ranking.PERC_MATCH.size(); ++k) {
        const RobustMatch match = robustMatch(unknown, views[k]);
        ranking.PERC_MATCH[k] = match.score;
        ranking.MATCH_SHIFT[k] = match.shift;
    }
    SORT_PERCENTS(ranking);
}

} // namespace

std::optional<LibraryCompilation> batchSearch(const std::filesystem::path& home,
                                              std::span<const std::filesystem::path> files,
                                              SearchMode mode, const BatchRowCallback& row,
                                              const ProgressCallback& progress) {
    std::optional<LibraryCompilation> compilation = compileLibraryWhenMissing(home);
    const std::filesystem::path folder = ramanLibraryFolder(home);
    const LIBRARY_GLOBALS entries = loadLibraryEntries(folder);
    if (entries.count() == 0) {
        throw QuarvexError("The Raman library in " + folder.string() +
                               " is empty: add reference spectrum files to it and compile it.",
                           std::string(kLibraryErrorTitle));
    }
    std::vector<RobustSpectrum> views;
    if (mode == SearchMode::Robust) {
        std::error_code error;
        if (!std::filesystem::is_regular_file(folder / kRobustLibraryFile, error)) {
            compileRobustLibrary(folder);
        }
        forEachLibraryBlock(folder / kRobustLibraryFile, [&](RobustSpectrum& entry, double) {
            views.push_back(std::move(entry));
        });
    }
    for (std::size_t i = 0; i < files.size(); ++i) {
        try {
            SPECDATA_GLOBALS specdata;
            MINERALINFO info;
            const int index = loadSpectrumFile(specdata, info, files[i]).first;
            LIBRARY_GLOBALS ranking = entries;
            if (mode == SearchMode::Robust) {
                rankRobust(views, specdata.xValues(index), specdata.yValues(index), ranking);
            } else {
                READ_LIBRARY(folder, specdata.xValues(index), specdata.yValues(index), ranking);
            }
            row(files[i], &ranking, {});
        } catch (const QuarvexError& error) {
            row(files[i], nullptr, error.text());
        }
        reportProgress(progress, kBatchStatus,
                       static_cast<double>(i + 1) / static_cast<double>(files.size()));
    }
    return compilation;
}

} // namespace quarvex
