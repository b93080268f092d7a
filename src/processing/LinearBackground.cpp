// The straight line through a fitting window's end regions, and a peak fit with it taken off.
#include "processing/LinearBackground.h"

#include "common/QuarvexError.h"
#include "processing/PeakSearch.h"
#include "processing/PeakStart.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace quarvex {

StraightLine endRegionLine(std::span<const float> x, std::span<const float> y, float xLow,
                           float xHigh) {
    const WindowRange range = GET_WINDOW_NDAT(x, xLow, xHigh);
    const auto count = static_cast<std::size_t>(range.count);
    if (count < 2 * kEndRegionPoints) {
        throw QuarvexError("The window holds " + std::to_string(count) +
                               " points: a background line needs at least " +
                               std::to_string(2 * kEndRegionPoints) + ". Widen the window.",
                           std::string(kPeakFitErrorTitle));
    }
    const FitWindow window = FILL_DAT(x, y, range);
    requireFiniteValues(window.y);
    const std::size_t region = std::max(
        kEndRegionPoints,
        static_cast<std::size_t>(std::lround(kEndRegionShare * static_cast<double>(count))));
    // Ordinary least squares over the two regions, about their mean x for a well-conditioned
    // slope: slope = Σ(x - x̄)(y - ȳ) / Σ(x - x̄)².
    std::vector<std::size_t> points;
    for (std::size_t i = 0; i < region; ++i) {
        points.push_back(i);
        points.push_back(count - 1 - i);
    }
    double meanX = 0.0;
    double meanY = 0.0;
    for (const std::size_t i : points) {
        meanX += window.x[i];
        meanY += window.y[i];
    }
    meanX /= static_cast<double>(points.size());
    meanY /= static_cast<double>(points.size());
    double sxy = 0.0;
    double sxx = 0.0;
    for (const std::size_t i : points) {
        const double dx = window.x[i] - meanX;
        sxy += dx * (window.y[i] - meanY);
        sxx += dx * dx;
    }
    StraightLine line;
    line.slope = sxx > 0.0 ? sxy / sxx : 0.0;
    line.intercept = meanY - line.slope * meanX;
    return line;
}

LineBackgroundFit fitPeaksOverLine(std::span<const float> x, std::span<const float> y, float xLow,
                                   float xHigh, std::span<const float> positions,
                                   const PeakFitSettings& settings) {
    requireFiniteValues(x);
    LineBackgroundFit result;
    result.line = endRegionLine(x, y, xLow, xHigh);
    std::vector<float> levelled(y.size());
    for (std::size_t i = 0; i < y.size(); ++i) {
        levelled[i] = static_cast<float>(y[i] - result.line.at(x[i]));
    }
    result.fit = fitPeaks(x, levelled, xLow, xHigh, positions, settings);
    for (std::size_t i = 0; i < result.fit.x.size(); ++i) {
        result.fit.fitted[i] =
            static_cast<float>(result.fit.fitted[i] + result.line.at(result.fit.x[i]));
    }
    return result;
}

} // namespace quarvex
