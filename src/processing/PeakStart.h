// Starting values of the peak fit: the window's points, the background, the peaks' heights and
// widths from the data, automatic peak positions, and the readjustment before a retry.
#pragma once

#include "processing/PeakProfiles.h"
#include "processing/PeakSearch.h"

#include <span>
#include <vector>

namespace quarvex {

/// The points of a spectrum that lie in a fitting window.
struct WindowRange {
    int first = 0; ///< index of the first point in the window (0-based)
    int count = 0; ///< points in the window
};

/// The window's points, copied out of the spectrum for the fitter.
struct FitWindow {
    std::vector<float> x;
    std::vector<float> y;
};

/// The points of `x` (ascending) with xLow <= x <= xHigh (the bounds may come in either order).
WindowRange GET_WINDOW_NDAT(std::span<const float> x, float xLow, float xHigh);

/// Copies the window's points out of the spectrum.
FitWindow FILL_DAT(std::span<const float> x, std::span<const float> y, WindowRange range);

/// Background constant from the window's lower envelope: the 10th percentile of the window's
/// values after light smoothing over `smoothingPoints` points.
float GET_BG(const FitWindow& window, int smoothingPoints);

/// Starting parameters in the layout of `profile` (background last) for peaks at `positions`:
/// height from the smoothed data at the nearest point above the background (at least 1% of the
/// window's range), full width at half maximum from the half-height crossings on both sides
/// (searched up to the midpoint towards a neighbouring peak; one side doubled when only one is
/// found; at least two point spacings), Lorentzian fraction 0.5.
std::vector<float> GET_PARMS(const FitWindow& window, std::span<const float> positions,
                             PeakProfile profile, int smoothingPoints);

/// Peak positions found automatically in [xLow, xHigh] of the spectrum (x, y) by the peak
/// search, leaving out peaks lower than 2% of the strongest one found there.
std::vector<float> AUTOPARMS(std::span<const float> x, std::span<const float> y, float xLow,
                             float xHigh, const PeakSearchSettings& settings);

/// Index of the point whose x is nearest to `location`: the scan starts with a best distance of
/// 1.0e20 and stops at the first point after the best one whose distance is no longer smaller.
int nearestPoint(std::span<const float> x, float location);

/// New starting parameters for a retry: every peak moves to the data point nearest to its
/// current location (nearestPoint) and takes its height, width and mix afresh from the data
/// there, as GET_PARMS; the background is estimated again.
std::vector<float> READJUSTPARMS(const FitWindow& window, std::span<const float> a,
                                 PeakProfile profile, int smoothingPoints);

} // namespace quarvex
