// Automatic peak search: the peaks of a spectrum that stand out of its noise.
#pragma once

#include <span>
#include <vector>

namespace quarvex {

/// Settings of the peak search (the preferences supply them).
struct PeakSearchSettings {
    int noiseSegments = 32;  ///< segments of the noise estimate (FIND_NOISE_STDDEV)
    float threshold = 5.0F;  ///< least prominence of a peak, in multiples of the noise level
    int smoothingPoints = 5; ///< window of the smoothing before the search, points
    int minSeparation = 3;   ///< least distance of two peaks, points
};

/// One peak found.
struct FoundPeak {
    float x = 0.0F;      ///< position, x units, between points by a parabola through the top
    float height = 0.0F; ///< height of the smoothed top above the line joining its two bases
};

/// The peaks found and the level they were measured against.
struct PeakSearchResult {
    std::vector<FoundPeak> peaks; ///< in ascending x
    float noise = 0.0F;           ///< noise level of the spectrum (FIND_NOISE_STDDEV)
    float threshold = 0.0F;       ///< least prominence a peak needed, y units
};

/// Finds the peaks of the spectrum (x ascending, as loaded) whose position lies in
/// [xLow, xHigh]; see docs/peak-fitting.md for the algorithm. Throws QuarvexError when a value
/// is not finite. The spectrum is not changed.
PeakSearchResult findPeaks(std::span<const float> x, std::span<const float> y,
                           const PeakSearchSettings& settings, float xLow, float xHigh);

/// A lightly smoothed copy of `y`: quadratic Savitzky-Golay smoothing over `points` points (an
/// even count is taken as the next odd one; 3 or fewer leave the values as they are), the window
/// narrowed symmetrically near both ends.
std::vector<float> smoothSpectrum(std::span<const float> y, int points);

/// Throws QuarvexError ("... not a finite number", title "Error") when a value of `values` is
/// NaN or infinite.
void requireFiniteValues(std::span<const float> values);

} // namespace quarvex
