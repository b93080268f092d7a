#include "library/SearchExplain.h"

#include "common/QuarvexError.h"
#include "processing/PeakSearch.h"
#include "specdata/SpecDataManager.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace quarvex {

std::vector<float> significantBands(std::span<const float> x, std::span<const float> y,
                                    double* snr) {
    std::vector<float> bands;
    if (x.size() < 3 || x.size() != y.size()) {
        return bands;
    }
    const PeakSearchResult found = findPeaks(x, y, PeakSearchSettings{}, x.front(), x.back());
    float strongest = 0.0F;
    for (const FoundPeak& peak : found.peaks) {
        strongest = std::max(strongest, peak.height);
    }
    for (const FoundPeak& peak : found.peaks) {
        if (peak.height >= kBandShare * strongest) {
            bands.push_back(peak.x);
        }
    }
    if (snr != nullptr) {
        *snr = found.noise > 0.0F ? static_cast<double>(strongest) / found.noise
                                  : std::numeric_limits<double>::infinity();
    }
    return bands;
}

BandTable matchBands(std::span<const float> unknownBands, std::span<const float> entryBands,
                     int shift) {
    // Every pair within the tolerance, closest first; each band joins at most one pair.
    std::vector<std::tuple<float, std::size_t, std::size_t>> candidates;
    for (std::size_t i = 0; i < unknownBands.size(); ++i) {
        for (std::size_t j = 0; j < entryBands.size(); ++j) {
            const float distance =
                std::fabs(unknownBands[i] - (entryBands[j] + static_cast<float>(shift)));
            if (distance <= kBandTolerance) {
                candidates.emplace_back(distance, i, j);
            }
        }
    }
    std::sort(candidates.begin(), candidates.end());
    std::vector<bool> unknownTaken(unknownBands.size(), false);
    std::vector<bool> entryTaken(entryBands.size(), false);
    BandTable table;
    for (const auto& [distance, i, j] : candidates) {
        if (!unknownTaken[i] && !entryTaken[j]) {
            unknownTaken[i] = true;
            entryTaken[j] = true;
            table.matched.push_back({unknownBands[i], entryBands[j]});
        }
    }
    std::sort(table.matched.begin(), table.matched.end(),
              [](const BandPair& a, const BandPair& b) { return a.unknown < b.unknown; });
    for (std::size_t i = 0; i < unknownBands.size(); ++i) {
        if (!unknownTaken[i]) {
            table.unknownOnly.push_back(unknownBands[i]);
        }
    }
    for (std::size_t j = 0; j < entryBands.size(); ++j) {
        if (!entryTaken[j]) {
            table.entryOnly.push_back(entryBands[j]);
        }
    }
    return table;
}

bool ambiguousResult(const LIBRARY_GLOBALS& library) {
    const std::vector<int>& ranking = library.MI_SORTINDEXPERCENTS;
    if (ranking.size() < 2) {
        return false;
    }
    const double first = library.PERC_MATCH[static_cast<std::size_t>(ranking[0])];
    const double second = library.PERC_MATCH[static_cast<std::size_t>(ranking[1])];
    return first - second < kAmbiguousMargin;
}

SearchExplanation explainSearch(const std::filesystem::path& libraryFolder,
                                std::span<const float> x, std::span<const float> y,
                                const LIBRARY_GLOBALS& library) {
    SearchExplanation explanation;
    const std::vector<float> unknownBands = significantBands(x, y, &explanation.snr);
    explanation.ambiguous = ambiguousResult(library);
    const std::size_t hits =
        std::min(library.MI_SORTINDEXPERCENTS.size(), static_cast<std::size_t>(kExplainedHits));
    for (std::size_t rank = 0; rank < hits; ++rank) {
        const auto k = static_cast<std::size_t>(library.MI_SORTINDEXPERCENTS[rank]);
        const int shift = k < library.MATCH_SHIFT.size() ? library.MATCH_SHIFT[k] : 0;
        std::vector<float> entryBands;
        try {
            const SpectrumRecord reference =
                FILL_IN_SPECDATA_ARRAYS(libraryFolder / library.MI_FILENAMES[k], 0);
            entryBands = significantBands(reference.x, reference.y);
        } catch (const QuarvexError&) {
            // Changed or removed since the compilation: the unknown's bands stand alone.
        }
        explanation.hits.push_back(matchBands(unknownBands, entryBands, shift));
        explanation.hits.back().entry = k;
    }
    return explanation;
}

} // namespace quarvex
