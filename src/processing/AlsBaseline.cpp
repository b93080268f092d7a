#include "processing/AlsBaseline.h"

#include "common/QuarvexError.h"
#include "processing/BaselineChecks.h"
#include "processing/ReweightedBaseline.h"

namespace quarvex {

namespace {

// Points above the smooth weigh `asymmetry`, points below 1 - `asymmetry`; settled when no weight
// changed.
bool reweight(double asymmetry, std::span<const float> y, const std::vector<double>& z,
              std::vector<double>& weights) {
    bool changed = false;
    for (std::size_t i = 0; i < y.size(); ++i) {
        const double weight = static_cast<double>(y[i]) > z[i] ? asymmetry : 1.0 - asymmetry;
        changed = changed || weight != weights[i];
        weights[i] = weight;
    }
    return !changed;
}

} // namespace

BaselineFit alsBaseline(std::span<const float> x, std::span<const float> y,
                        const AlsParameters& parameters) {
    checkPenalisedBaselineInput(x, y, parameters.penalty, parameters.iterations);
    if (!(parameters.asymmetry > 0.0 && parameters.asymmetry < 0.5)) {
        throw QuarvexError("The asymmetry must lie between 0 and 0.5.",
                           std::string(kBaselineTitle));
    }
    const double asymmetry = parameters.asymmetry;
    return reweightedBaseline(x, y, parameters.penalty, parameters.iterations,
                              [asymmetry](std::span<const float> data, const std::vector<double>& z,
                                          std::vector<double>& weights) {
                                  return reweight(asymmetry, data, z, weights);
                              });
}

} // namespace quarvex
