#include "processing/ReweightedBaseline.h"

#include "common/QuarvexError.h"
#include "processing/BaselineChecks.h"
#include "processing/SpectrumChecks.h"
#include "processing/WhittakerSmoother.h"

#include <algorithm>
#include <string>

namespace quarvex {

BaselineFit reweightedBaseline(std::span<const float> x, std::span<const float> y,
                               double penaltyPerUnit, int iterations,
                               const BaselineReweighting& reweight) {
    WhittakerSmoother smoother(y.size(), penaltyOnGrid(penaltyPerUnit, meanSpacing(x)));
    std::vector<double> weights(y.size(), 1.0);
    std::vector<double> z;
    BaselineFit fit;
    for (fit.iterations = 1; fit.iterations <= iterations; ++fit.iterations) {
        if (!smoother.solve(weights, y, z)) {
            throw QuarvexError("The baseline system could not be solved.",
                               std::string(kBaselineTitle));
        }
        if (reweight(y, z, weights)) {
            fit.converged = true;
            break;
        }
    }
    fit.iterations = std::min(fit.iterations, iterations);
    fit.baseline.assign(z.begin(), z.end());
    return fit;
}

} // namespace quarvex
