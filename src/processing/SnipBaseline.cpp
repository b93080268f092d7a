#include "processing/SnipBaseline.h"

#include "common/QuarvexError.h"
#include "processing/BaselineChecks.h"
#include "processing/SpectrumChecks.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace quarvex {

namespace {

constexpr int kSnipSteps = 12;

} // namespace

BaselineFit snipBaseline(std::span<const float> x, std::span<const float> y,
                         const SnipParameters& parameters) {
    checkSpectrumValues(x, y, kBaselineMinimumPoints, kBaselineTitle);
    const double spacing = meanSpacing(x);
    if (!(parameters.halfWidth >= 2.0 * spacing) || !std::isfinite(parameters.halfWidth)) {
        throw QuarvexError("The clipping half-width must span at least two points.",
                           std::string(kBaselineTitle));
    }
    const std::size_t n = y.size();
    const auto halfPoints =
        std::min(static_cast<std::size_t>(parameters.halfWidth / spacing), (n - 1) / 2);
    std::vector<double> v(y.begin(), y.end());
    // The windows grow in kSnipSteps equal steps in x units, not point by point: each clip also
    // lowers a curved background a little, so the number of clips must not grow with the point
    // density.
    std::vector<double> previous(n);
    std::size_t lastWindow = 0;
    int clips = 0;
    for (int k = 1; k <= kSnipSteps; ++k) {
        const auto p = std::max<std::size_t>(1, halfPoints * static_cast<std::size_t>(k) /
                                                    static_cast<std::size_t>(kSnipSteps));
        if (p == lastWindow) {
            continue;
        }
        lastWindow = p;
        ++clips;
        previous = v;
        for (std::size_t i = p; i + p < n; ++i) {
            v[i] = std::min(previous[i], 0.5 * (previous[i - p] + previous[i + p]));
        }
    }
    BaselineFit fit;
    fit.iterations = clips;
    fit.converged = true;
    fit.baseline.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
        fit.baseline[i] = static_cast<float>(v[i]);
    }
    return fit;
}

} // namespace quarvex
