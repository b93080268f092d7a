#include "processing/AlsBaseline.h"

#include "common/QuarvexError.h"
#include "processing/BaselineChecks.h"
#include "processing/SpectrumChecks.h"
#include "processing/WhittakerSmoother.h"

namespace quarvex {

BaselineFit alsBaseline(std::span<const float> x, std::span<const float> y,
                        const AlsParameters& parameters) {
    checkPenalisedBaselineInput(x, y, parameters.penalty, parameters.iterations);
    if (!(parameters.asymmetry > 0.0 && parameters.asymmetry < 0.5)) {
        throw QuarvexError("The asymmetry must lie between 0 and 0.5.",
                           std::string(kBaselineTitle));
    }
    WhittakerSmoother smoother(y.size(), penaltyOnGrid(parameters.penalty, meanSpacing(x)));
    std::vector<double> weights(y.size(), 1.0);
    std::vector<double> z;
    BaselineFit fit;
    for (fit.iterations = 1; fit.iterations <= parameters.iterations; ++fit.iterations) {
        if (!smoother.solve(weights, y, z)) {
            throw QuarvexError("The baseline system could not be solved.",
                               std::string(kBaselineTitle));
        }
        bool changed = false;
        for (std::size_t i = 0; i < y.size(); ++i) {
            const double weight = static_cast<double>(y[i]) > z[i] ? parameters.asymmetry
                                                                   : 1.0 - parameters.asymmetry;
            changed = changed || weight != weights[i];
            weights[i] = weight;
        }
        if (!changed) {
            fit.converged = true;
            break;
        }
    }
    fit.iterations = std::min(fit.iterations, parameters.iterations);
    fit.baseline.assign(z.begin(), z.end());
    return fit;
}

} // namespace quarvex
