// A peak fit over a sloping background: the straight line through the window's end regions is
// taken off before the fit, beside the fit's own background constant.
#pragma once

#include "processing/PeakFitting.h"

#include <cstddef>
#include <span>

namespace quarvex {

/// y = slope·x + intercept, in the spectrum's units.
struct StraightLine {
    double slope = 0.0;
    double intercept = 0.0;
    double at(double x) const { return slope * x + intercept; }
};

/// Each end region of a window holds this share of the window's points, and at least
/// kEndRegionPoints.
inline constexpr double kEndRegionShare = 0.1;
inline constexpr std::size_t kEndRegionPoints = 3;

/// The least-squares line through the points of both end regions of the window [xLow, xHigh]
/// (bounds in either order) of a spectrum with ascending x. Throws QuarvexError (title "Error")
/// when the window holds fewer than 2·kEndRegionPoints points or values that are not finite.
StraightLine endRegionLine(std::span<const float> x, std::span<const float> y, float xLow,
                           float xHigh);

/// A fit over a straight-line background. In `fit` the curve `fitted` includes the line (the
/// residual is measured minus fitted, as for any fit); `components`, the peaks and the
/// background constant are those of the data with the line taken off.
struct LineBackgroundFit {
    PeakFitResult fit;
    StraightLine line;
};

/// fitPeaks on the spectrum with endRegionLine taken off every point (the peak search, when no
/// positions are given, then sees the peaks standing on a level base). Throws as endRegionLine
/// and fitPeaks; a fit that does not converge comes back with `converged` false.
LineBackgroundFit fitPeaksOverLine(std::span<const float> x, std::span<const float> y, float xLow,
                                   float xHigh, std::span<const float> positions,
                                   const PeakFitSettings& settings);

} // namespace quarvex
