// Why a search ranked its best hits as it did: the unknown's bands matched to each hit's bands,
// the unknown's signal-to-noise, and whether the first place is clear.
#pragma once

#include "library/LibraryGlobals.h"

#include <filesystem>
#include <span>
#include <vector>

namespace quarvex {

/// Two bands match when they lie within this many cm-1 once the hit's shift is applied.
inline constexpr float kBandTolerance = 4.0F;
/// A band of a spectrum counts when it is at least this share of its strongest band.
inline constexpr float kBandShare = 0.05F;
/// The result is ambiguous when the first two scores differ by less than this many points.
inline constexpr double kAmbiguousMargin = 3.0;
/// Hits explained by a search.
inline constexpr int kExplainedHits = 3;

/// A band of the unknown and the hit's band it matched, cm-1 (the hit's band as in its file).
struct BandPair {
    float unknown = 0.0F;
    float entry = 0.0F;
};

/// The bands of one hit, matched against the unknown's.
struct BandTable {
    std::size_t entry = 0;          ///< library entry (0-based)
    std::vector<BandPair> matched;  ///< in ascending unknown band
    std::vector<float> unknownOnly; ///< bands of the unknown the hit lacks
    std::vector<float> entryOnly;   ///< bands of the hit the unknown lacks
};

/// The explanation of a search.
struct SearchExplanation {
    double snr = 0.0;            ///< the unknown's highest band over its noise level
    bool ambiguous = false;      ///< the first two scores lie within kAmbiguousMargin
    std::vector<BandTable> hits; ///< the best hits, best first
};

/// The band positions of a spectrum (x ascending) from the automatic peak search with its
/// default settings, keeping bands of at least kBandShare of the strongest; its snr in `snr`.
std::vector<float> significantBands(std::span<const float> x, std::span<const float> y,
                                    double* snr = nullptr);

/// Pairs each unknown band with the nearest free entry band within kBandTolerance of
/// entry band + shift, closest pairs first; both lists ascending.
BandTable matchBands(std::span<const float> unknownBands, std::span<const float> entryBands,
                     int shift);

/// True when the first two scores of the last search lie within kAmbiguousMargin.
bool ambiguousResult(const LIBRARY_GLOBALS& library);

/// Explains the last search of (x, y) against the library in `libraryFolder`: the first
/// kExplainedHits entries' reference files are read from that folder and their bands matched
/// with the shift of the search (0 when it gave none). A reference file that cannot be read
/// gives a table of the unknown's bands only.
SearchExplanation explainSearch(const std::filesystem::path& libraryFolder,
                                std::span<const float> x, std::span<const float> y,
                                const LIBRARY_GLOBALS& library);

} // namespace quarvex
