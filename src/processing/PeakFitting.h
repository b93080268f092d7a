// Levenberg-Marquardt fit of a sum of peaks plus a background constant to the points of a
// window: one damped step, the curvature matrix, and the peak-fitting run with its retry.
#pragma once

#include "processing/PeakProfiles.h"
#include "processing/PeakSearch.h"
#include "processing/PeakStart.h"

#include <span>
#include <string_view>
#include <vector>

namespace quarvex {

inline constexpr std::string_view kDidNotConvergeText =
    "Did not converge. Resize window and try again.";
inline constexpr std::string_view kPeakFitErrorTitle = "Error";
/// Damped steps of one attempt before the readjusted retry (and before giving up).
inline constexpr int kPeakFitIterations = 1000;
/// An accepted step that lowers χ² by less than this (absolute) ends the fit.
inline constexpr float kChisqConvergence = 0.0001F;

/// The data and the model of a fit, as CHIAB and LEVMRQ see them. Residuals have equal weights.
struct FitProblem {
    std::span<const float> x;
    std::span<const float> y;
    PeakModel model = nullptr;
    std::span<const bool> varying; ///< IA: the parameters that vary (the others keep their value)
    std::span<const float> lower;  ///< trial parameters are held within [lower, upper]; both
    std::span<const float> upper;  ///< may be empty (no limits)
};

/// What LEVMRQ carries from one call to the next.
struct LevmrqWork {
    std::vector<float> alpha; ///< ALPHA: curvature matrix of the varying parameters, by column
    std::vector<float> beta;  ///< BETA: gradient of the varying parameters
    float ochisq = 0.0F;      ///< OCHISQ: χ² of the last accepted parameters
};

/// χ² = Σ (y - model)² over the problem's points at parameters `a`, the curvature matrix
/// `alpha` (Σ of products of derivatives, varying parameters only, mfit x mfit by column) and
/// the gradient `beta` (Σ residual · derivative).
void CHIAB(const FitProblem& problem, std::span<const float> a, std::span<float> alpha,
           std::span<float> beta, float& chisq);

/// One damped Levenberg-Marquardt step on `a`. `alamda` < 0 starts a fit; on return -1.0 means
/// converged (an accepted step lowered χ² by less than kChisqConvergence, or not at all). A
/// step that raises χ² (or gives no finite χ², or meets a singular matrix) leaves `a` as it was
/// and multiplies `alamda` by 10; an accepted one divides it by 10. `chisq` is the χ² of `a`.
void LEVMRQ(const FitProblem& problem, std::span<float> a, float& chisq, float& alamda,
            LevmrqWork& work);

/// One fitted peak as displayed, each value with its standard error.
struct FittedPeak {
    float centre = 0.0F;
    float centreError = 0.0F;
    float fwhm = 0.0F;
    float fwhmError = 0.0F;
    float height = 0.0F; ///< above the background
    float heightError = 0.0F;
    float area = 0.0F;
    float areaError = 0.0F;
    float mix = 0.0F; ///< Lorentzian fraction; 0 for the Gaussian profile
    float mixError = 0.0F;
};

/// The outcome of a peak fit. Standard errors are NaN when the fit did not converge or its
/// curvature matrix is singular.
struct PeakFitResult {
    PeakProfile profile = PeakProfile::pseudoVoigt;
    std::vector<float> parameters; ///< A, in the profile's layout, background last
    std::vector<float> errors;     ///< standard errors of A: sqrt(covariance · χ² / (N - M))
    std::vector<FittedPeak> peaks;
    float background = 0.0F;
    float backgroundError = 0.0F;
    float chisq = 0.0F; ///< Σ of squared residuals at the result
    int points = 0;     ///< N: points of the window
    int iterations = 0; ///< LEVMRQ calls, both attempts together
    bool converged = false;
    bool retried = false;      ///< the first attempt ran out and READJUSTPARMS was used
    std::vector<float> x;      ///< the window's abscissae
    std::vector<float> fitted; ///< the fitted curve at `x`
    std::vector<std::vector<float>> components; ///< each peak alone (no background) at `x`
};

/// Settings of the peak-fitting run (the preferences supply them).
struct PeakFitSettings {
    PeakProfile profile = PeakProfile::pseudoVoigt;
    PeakSearchSettings search; ///< automatic positions; its smoothing also serves the start
    int maxIterations = kPeakFitIterations;
};

/// Fits the peaks of `window` from the starting parameters `start` (profile layout of
/// `settings`, background last): at most 1 + maxIterations LEVMRQ calls, then one retry from
/// READJUSTPARMS, then a result with `converged` false. Widths stay positive and mixes within
/// [0, 1]. Throws QuarvexError (title "Error") when the window has no more points than
/// parameters, holds a value that is not finite, or a starting width is not positive.
PeakFitResult fitPeakParameters(const FitWindow& window, std::vector<float> start,
                                const PeakFitSettings& settings);

/// Fits the points of the spectrum (x ascending) in [xLow, xHigh] with peaks at `positions`, or
/// at the positions the peak search finds there when `positions` is empty. Throws QuarvexError
/// (title "Error") for bad input: too few points, equal values only, values that are not
/// finite, a position outside the window, no peak found. The spectrum is not changed.
PeakFitResult fitPeaks(std::span<const float> x, std::span<const float> y, float xLow, float xHigh,
                       std::span<const float> positions, const PeakFitSettings& settings);

/// The peak-fitting run: fitPeaks, and on non-convergence the QuarvexError
/// "Did not converge. Resize window and try again." (title "Error").
PeakFitResult ORGANIZE_PEAKFITTING(std::span<const float> x, std::span<const float> y, float xLow,
                                   float xHigh, std::span<const float> positions,
                                   const PeakFitSettings& settings);

} // namespace quarvex
