#include "processing/BaselineChecks.h"

#include "common/QuarvexError.h"
#include "processing/SpectrumChecks.h"

#include <cmath>
#include <string>

namespace quarvex {

void checkPenalisedBaselineInput(std::span<const float> x, std::span<const float> y, double penalty,
                                 int iterations) {
    checkSpectrumValues(x, y, kBaselineMinimumPoints, kBaselineTitle);
    if (!(penalty > 0.0) || !std::isfinite(penalty)) {
        throw QuarvexError("The baseline penalty must be a positive number.",
                           std::string(kBaselineTitle));
    }
    if (iterations < 1) {
        throw QuarvexError("The baseline needs at least one iteration.",
                           std::string(kBaselineTitle));
    }
}

} // namespace quarvex
