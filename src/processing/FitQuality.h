// How well a fitted curve describes the measured points: reduced chi-square and R².
#pragma once

#include <cstddef>
#include <limits>
#include <span>

namespace quarvex {

/// Figures of a fit's agreement with its points (NaN where a figure is undefined or unknown).
struct FitQuality {
    static constexpr double kUndefined = std::numeric_limits<double>::quiet_NaN();
    /// Σ(y - f)² / (N - M). The points carry equal unit weights, so this is the residuals'
    /// variance in y units squared, not a dimensionless 1-for-a-good-fit figure; NaN for N <= M.
    double reducedChisq = kUndefined;
    /// 1 - Σ(y - f)² / Σ(y - ȳ)²; NaN when all measured values are equal.
    double rSquared = kUndefined;
};

/// The quality of `fitted` against `measured` (the same points, same length) for a model of
/// `parameters` fitted parameters. Sums in double precision.
FitQuality fitQuality(std::span<const float> measured, std::span<const float> fitted,
                      std::size_t parameters);

} // namespace quarvex
