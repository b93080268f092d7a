// The Levenberg-Marquardt peak fitter: curvature matrix, damped step, and the peak-fitting run
// with one silent retry from readjusted starting values.
#include "processing/PeakFitting.h"

#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "processing/MatrixFncts.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>

namespace quarvex {

namespace {

constexpr float kNotAvailable = std::numeric_limits<float>::quiet_NaN();

std::size_t countVarying(std::span<const bool> varying) {
    return static_cast<std::size_t>(std::count(varying.begin(), varying.end(), true));
}

[[noreturn]] void fitError(const std::string& text) {
    throw QuarvexError(text, std::string(kPeakFitErrorTitle));
}

void requireEnoughPoints(std::size_t points, std::size_t parameters) {
    if (points <= parameters) {
        fitError("The window holds " + std::to_string(points) + " points, too few to fit " +
                 std::to_string(parameters) + " parameters. Widen the window.");
    }
}

// Model value of the peaks `a` at every x of the window.
std::vector<float> curve(PeakModel model, std::span<const float> x, std::span<const float> a) {
    std::vector<float> dyda(a.size());
    std::vector<float> values(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        model(x[i], a, values[i], dyda);
    }
    return values;
}

// Standard error of a quantity with gradient `gradient` over the parameters from `first` on,
// from the scaled covariance (all parameters vary, so covariance indices are parameter indices).
float propagatedError(std::span<const double> covariance, std::size_t m, std::size_t first,
                      std::span<const float> gradient) {
    double variance = 0.0;
    for (std::size_t j = 0; j < gradient.size(); ++j) {
        for (std::size_t k = 0; k < gradient.size(); ++k) {
            variance += static_cast<double>(gradient[j]) * static_cast<double>(gradient[k]) *
                        covariance[(first + k) * m + first + j];
        }
    }
    return variance >= 0.0 && std::isfinite(variance) ? static_cast<float>(std::sqrt(variance))
                                                      : kNotAvailable;
}

// Parameters, standard errors, displayed peaks and curves of the fitted (or last) parameters.
PeakFitResult describeFit(const FitWindow& window, PeakProfile profile, std::vector<float> a,
                          const LevmrqWork& work, float chisq, bool converged) {
    PeakFitResult result;
    result.profile = profile;
    result.points = static_cast<int>(window.x.size());
    result.converged = converged;
    result.chisq = chisq;
    const std::size_t m = a.size();
    std::vector<double> covariance(m * m, std::numeric_limits<double>::quiet_NaN());
    if (converged) {
        std::vector<double> alpha(work.alpha.begin(), work.alpha.end());
        const double scale = static_cast<double>(chisq) / static_cast<double>(window.x.size() - m);
        if (INVERT_GAUSSJ(alpha, covariance, static_cast<int>(m))) {
            for (double& value : covariance) {
                value *= scale;
            }
        } else {
            std::fill(covariance.begin(), covariance.end(),
                      std::numeric_limits<double>::quiet_NaN());
        }
    }
    result.errors.resize(m);
    for (std::size_t j = 0; j < m; ++j) {
        const double variance = covariance[j * m + j];
        result.errors[j] =
            variance >= 0.0 ? static_cast<float>(std::sqrt(variance)) : kNotAvailable;
    }
    const PeakModel model = peakModel(profile);
    const auto perPeak = static_cast<std::size_t>(parametersPerPeak(profile));
    for (std::size_t k = 0; k + perPeak < m; k += perPeak) {
        const std::span<const float> peak(a.data() + k, perPeak);
        const auto describe = [&](const PeakQuantity& q, float& value, float& error) {
            value = q.value;
            error = propagatedError(covariance, m, k, std::span(q.gradient).first(perPeak));
        };
        FittedPeak fitted;
        fitted.centre = peak[1];
        fitted.centreError = result.errors[k + 1];
        describe(PEAKWID(profile, peak), fitted.fwhm, fitted.fwhmError);
        describe(PEAKAMP(profile, peak), fitted.height, fitted.heightError);
        describe(peakArea(profile, peak), fitted.area, fitted.areaError);
        if (profile == PeakProfile::pseudoVoigt) {
            fitted.mix = peak[3];
            fitted.mixError = result.errors[k + 3];
        }
        result.peaks.push_back(fitted);
        std::vector<float> alone(peak.begin(), peak.end());
        alone.push_back(0.0F);
        result.components.push_back(curve(model, window.x, alone));
    }
    result.background = a.back();
    result.backgroundError = result.errors.back();
    result.x = window.x;
    result.fitted = curve(model, window.x, a);
    result.parameters = std::move(a);
    return result;
}

} // namespace

void CHIAB(const FitProblem& problem, std::span<const float> a, std::span<float> alpha,
           std::span<float> beta, float& chisq) {
    const std::size_t mfit = countVarying(problem.varying);
    std::fill(alpha.begin(), alpha.end(), 0.0F);
    std::fill(beta.begin(), beta.end(), 0.0F);
    chisq = 0.0F;
    std::vector<float> dyda(a.size());
    for (std::size_t i = 0; i < problem.x.size(); ++i) {
        float ymod = 0.0F;
        problem.model(problem.x[i], a, ymod, dyda);
        const float dy = problem.y[i] - ymod;
        std::size_t jj = 0;
        for (std::size_t j = 0; j < a.size(); ++j) {
            if (!problem.varying[j]) {
                continue;
            }
            const float wt = dyda[j];
            std::size_t kk = 0;
            for (std::size_t k = 0; k <= j; ++k) {
                if (problem.varying[k]) {
                    alpha[kk * mfit + jj] += wt * dyda[k];
                    ++kk;
                }
            }
            beta[jj] += dy * wt;
            ++jj;
        }
        chisq += dy * dy;
    }
    for (std::size_t j = 1; j < mfit; ++j) {
        for (std::size_t k = 0; k < j; ++k) {
            alpha[j * mfit + k] = alpha[k * mfit + j];
        }
    }
}

void LEVMRQ(const FitProblem& problem, std::span<float> a, float& chisq, float& alamda,
            LevmrqWork& work) {
    const std::size_t mfit = countVarying(problem.varying);
    if (alamda < 0.0F) {
        work.alpha.assign(mfit * mfit, 0.0F);
        work.beta.assign(mfit, 0.0F);
        alamda = 0.001F;
        CHIAB(problem, a, work.alpha, work.beta, chisq);
        work.ochisq = chisq;
    }
    std::vector<double> trial(work.alpha.begin(), work.alpha.end());
    for (std::size_t j = 0; j < mfit; ++j) {
        trial[j * mfit + j] = work.alpha[j * mfit + j] * (1.0F + alamda);
    }
    std::vector<double> inverse(mfit * mfit);
    const bool regular = INVERT_GAUSSJ(trial, inverse, static_cast<int>(mfit));

    std::vector<float> atry(a.begin(), a.end());
    std::size_t jj = 0;
    for (std::size_t j = 0; j < a.size(); ++j) {
        if (!problem.varying[j]) {
            continue;
        }
        double step = 0.0;
        for (std::size_t kk = 0; kk < mfit; ++kk) {
            step += inverse[kk * mfit + jj] * static_cast<double>(work.beta[kk]);
        }
        atry[j] = a[j] + static_cast<float>(step);
        // Limits keep widths positive: the step is cut back onto them, not thrown away.
        if (!problem.lower.empty()) {
            atry[j] = std::clamp(atry[j], problem.lower[j], problem.upper[j]);
        }
        ++jj;
    }
    std::vector<float> trialAlpha(mfit * mfit);
    std::vector<float> trialBeta(mfit);
    float trialChisq = std::numeric_limits<float>::quiet_NaN();
    if (regular) {
        CHIAB(problem, atry, trialAlpha, trialBeta, trialChisq);
    }
    if (!(trialChisq <= work.ochisq)) {
        alamda *= 10.0F;
        chisq = work.ochisq;
        return;
    }
    // Absolute test, and an equal χ² counts as converged: keep it, the fit is tuned to it.
    alamda = work.ochisq - trialChisq < kChisqConvergence ? -1.0F : 0.1F * alamda;
    work.ochisq = trialChisq;
    chisq = trialChisq;
    work.alpha = std::move(trialAlpha);
    work.beta = std::move(trialBeta);
    std::copy(atry.begin(), atry.end(), a.begin());
}

PeakFitResult fitPeakParameters(const FitWindow& window, std::vector<float> start,
                                const PeakFitSettings& settings) {
    const PeakProfile profile = settings.profile;
    const auto perPeak = static_cast<std::size_t>(parametersPerPeak(profile));
    const std::size_t m = start.size();
    if (m < perPeak + 1 || (m - 1) % perPeak != 0) {
        fitError("The starting parameters do not describe whole peaks.");
    }
    requireEnoughPoints(window.x.size(), m);
    requireFiniteValues(window.x);
    requireFiniteValues(window.y);
    requireFiniteValues(start);
    const float spacing =
        (window.x.back() - window.x.front()) / static_cast<float>(window.x.size() - 1);
    std::vector<float> lower(m, -std::numeric_limits<float>::infinity());
    std::vector<float> upper(m, std::numeric_limits<float>::infinity());
    for (std::size_t k = 0; k + perPeak < m; k += perPeak) {
        if (!(start[k + 2] > 0.0F)) {
            fitError("The starting width of peak " + std::to_string(k / perPeak + 1) +
                     " is not positive.");
        }
        lower[k + 2] = 0.001F * spacing;
        if (profile == PeakProfile::pseudoVoigt) {
            lower[k + 3] = 0.0F;
            upper[k + 3] = 1.0F;
        }
    }
    const auto varying = std::make_unique<bool[]>(m);
    std::fill_n(varying.get(), m, true);
    const FitProblem problem{
        window.x, window.y, peakModel(profile), std::span<const bool>(varying.get(), m),
        lower,    upper};

    std::vector<float> a = std::move(start);
    int iterations = 0;
    for (int attempt = 0; attempt < 2; ++attempt) {
        LevmrqWork work;
        float alamda = -1.0F;
        float chisq = 0.0F;
        LEVMRQ(problem, a, chisq, alamda, work);
        ++iterations;
        for (int counter = 1; alamda > 0.0F && counter <= settings.maxIterations; ++counter) {
            LEVMRQ(problem, a, chisq, alamda, work);
            ++iterations;
        }
        const bool converged = !(alamda > 0.0F);
        if (converged || attempt == 1) {
            PeakFitResult result = describeFit(window, profile, a, work, chisq, converged);
            result.iterations = iterations;
            result.retried = attempt == 1;
            return result;
        }
        a = READJUSTPARMS(window, a, profile, settings.search.smoothingPoints);
    }
    return {};
}

PeakFitResult fitPeaks(std::span<const float> x, std::span<const float> y, float xLow, float xHigh,
                       std::span<const float> positions, const PeakFitSettings& settings) {
    requireFiniteValues(x);
    requireFiniteValues(y);
    const float low = std::min(xLow, xHigh);
    const float high = std::max(xLow, xHigh);
    const std::string windowText = shortestText(low) + " to " + shortestText(high);
    const FitWindow window = FILL_DAT(x, y, GET_WINDOW_NDAT(x, low, high));
    const auto perPeak = static_cast<std::size_t>(parametersPerPeak(settings.profile));
    requireEnoughPoints(window.x.size(), perPeak * std::max<std::size_t>(positions.size(), 1) + 1);
    const auto [lowest, highest] = std::minmax_element(window.y.begin(), window.y.end());
    if (*lowest == *highest) {
        fitError("The window " + windowText + " holds no peak: all its values are equal.");
    }
    std::vector<float> centres(positions.begin(), positions.end());
    for (const float centre : centres) {
        if (!(centre >= low && centre <= high)) {
            fitError("Peak position " + shortestText(centre) + " lies outside the window " +
                     windowText + ".");
        }
    }
    if (centres.empty()) {
        centres = AUTOPARMS(x, y, low, high, settings.search);
        if (centres.empty()) {
            fitError("No peak was found in the window " + windowText + ".");
        }
    }
    return fitPeakParameters(
        window, GET_PARMS(window, centres, settings.profile, settings.search.smoothingPoints),
        settings);
}

PeakFitResult ORGANIZE_PEAKFITTING(std::span<const float> x, std::span<const float> y, float xLow,
                                   float xHigh, std::span<const float> positions,
                                   const PeakFitSettings& settings) {
    PeakFitResult result = fitPeaks(x, y, xLow, xHigh, positions, settings);
    if (!result.converged) {
        fitError(std::string(kDidNotConvergeText));
    }
    return result;
}

} // namespace quarvex
