#include "library/MixtureSearch.h"

#include "common/QuarvexError.h"
#include "common/WorkingFolders.h"
#include "library/DotProdSearch.h"

#include <algorithm>
#include <cmath>

namespace quarvex {

namespace {

// The least-squares fit of the entry moved by `shift` to the residual: its scale (0 when the
// two do not correlate) and the drop of the residual's sum of squares it brings.
struct ScaleFit {
    double scale = 0.0;
    double drop = 0.0;
    int shift = 0;
};

ScaleFit fitScale(const RobustSpectrum& residual, const RobustSpectrum& entry, int shift) {
    const auto [product, entrySquares] = shiftedProducts(residual, entry, shift);
    if (product <= 0.0 || entrySquares <= 0.0) {
        return {0.0, 0.0, shift};
    }
    return {product / entrySquares, product * product / entrySquares, shift};
}

ScaleFit bestScaleFit(const RobustSpectrum& residual, const RobustSpectrum& entry) {
    ScaleFit best;
    for (int shift = -kMaxShift; shift <= kMaxShift; ++shift) {
        const ScaleFit fit = fitScale(residual, entry, shift);
        if (fit.drop > best.drop) {
            best = fit;
        }
    }
    return best;
}

// Subtracts scale * (entry moved by shift) from the residual, clipping at 0, and adds what was
// taken away to `fitted`.
void subtract(RobustSpectrum& residual, std::vector<float>& fitted, const RobustSpectrum& entry,
              const ScaleFit& fit) {
    const auto [from, to, offset] = gridOverlap(residual, entry, fit.shift);
    for (long i = from; i < to; ++i) {
        const auto k = static_cast<std::size_t>(i);
        const auto part =
            static_cast<float>(fit.scale * entry.values[static_cast<std::size_t>(i + offset)]);
        fitted[k] += part;
        residual.values[k] = std::max(0.0F, residual.values[k] - part);
    }
}

} // namespace

MixtureResult mixtureSearch(const RobustSpectrum& clean, const MixtureLibrary& library,
                            int maxComponents) {
    MixtureResult result;
    result.unknown = clean;
    for (float& v : result.unknown.values) {
        v = std::max(v, 0.0F);
    }
    result.fitted.assign(clean.values.size(), 0.0F);
    RobustSpectrum residual = result.unknown;
    const double signal = sumOfSquares(residual.values);
    const std::size_t entries = std::min(library.views.size(), library.intensities.size());
    std::vector<bool> taken(entries, false);
    for (int component = 0; component < maxComponents && signal > 0.0; ++component) {
        const RobustSpectrum view = robustView(residual);
        if (view.values.empty()) {
            break;
        }
        std::size_t best = entries;
        RobustMatch bestMatch;
        for (std::size_t k = 0; k < entries; ++k) {
            const RobustMatch match = robustMatch(view, library.views[k]);
            if (component == 0) {
                result.firstPass.push_back(match);
            }
            if (!taken[k] && match.score > bestMatch.score) {
                best = k;
                bestMatch = match;
            }
        }
        if (best == entries) {
            break;
        }
        const ScaleFit fit = bestScaleFit(residual, library.intensities[best]);
        if (fit.scale <= 0.0) {
            break;
        }
        const double before = sumOfSquares(residual.values);
        subtract(residual, result.fitted, library.intensities[best], fit);
        const double after = sumOfSquares(residual.values);
        taken[best] = true;
        result.components.push_back(
            {best, bestMatch.score, (before - after) / signal, fit.shift, fit.scale});
        result.residualFraction = after / signal;
        if (result.residualFraction < kMixtureResidualShare) {
            break;
        }
    }
    if (result.firstPass.empty()) {
        result.firstPass.resize(entries);
    }
    result.residual = std::move(residual.values);
    return result;
}

MixtureLibrary loadMixtureLibrary(const std::filesystem::path& folder,
                                  const ProgressCallback& progress) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(folder / kRobustLibraryFile, error)) {
        compileRobustLibrary(folder, progress);
    }
    MixtureLibrary library;
    forEachLibraryBlock(folder / kRobustLibraryFile, [&](RobustSpectrum& entry, double fraction) {
        library.views.push_back(std::move(entry));
        reportProgress(progress, kSearchingStatus, 0.5 * fraction);
    });
    forEachLibraryBlock(folder / kSlowLibraryFile, [&](RobustSpectrum& entry, double fraction) {
        library.intensities.push_back(std::move(entry));
        reportProgress(progress, kSearchingStatus, 0.5 + 0.5 * fraction);
    });
    return library;
}

MixtureResult searchMixture(const std::filesystem::path& home, std::span<const float> x,
                            std::span<const float> y, int maxComponents, LIBRARY_GLOBALS& library,
                            std::optional<LibraryCompilation>& compilation,
                            const ProgressCallback& progress) {
    if (maxComponents < 1) {
        throw QuarvexError("A mixture search needs at least 1 component (got " +
                               std::to_string(maxComponents) + ").",
                           std::string(kLibraryErrorTitle));
    }
    if (x.empty() || y.empty()) {
        throw QuarvexError("The selected area holds no data points to search with.",
                           std::string(kLibraryErrorTitle));
    }
    const RobustSpectrum clean = backgroundFreeUnknown(x, y);
    compilation = compileLibraryWhenMissing(home, progress);
    const std::filesystem::path folder = ramanLibraryFolder(home);
    LIBRARY_GLOBALS entries = loadLibraryEntries(folder);
    if (entries.count() == 0) {
        throw QuarvexError("The Raman library in " + folder.string() +
                               " is empty: add reference spectrum files to it and compile it.",
                           std::string(kLibraryErrorTitle));
    }
    MixtureLibrary views = loadMixtureLibrary(folder, progress);
    // Blocks beyond the name list have no description to show: leave them out.
    const auto described = static_cast<std::size_t>(entries.count());
    views.views.resize(std::min(views.views.size(), described));
    views.intensities.resize(std::min(views.intensities.size(), described));
    MixtureResult result = mixtureSearch(clean, views, maxComponents);
    entries.MATCH_SHIFT.assign(entries.PERC_MATCH.size(), 0);
    for (std::size_t k = 0; k < result.firstPass.size() && k < entries.PERC_MATCH.size(); ++k) {
        entries.PERC_MATCH[k] = result.firstPass[k].score;
        entries.MATCH_SHIFT[k] = result.firstPass[k].shift;
    }
    SORT_PERCENTS(entries);
    library = std::move(entries);
    return result;
}

} // namespace quarvex
