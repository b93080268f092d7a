#include "processing/ArplsBaseline.h"

#include "common/QuarvexError.h"
#include "processing/BaselineChecks.h"
#include "processing/ReweightedBaseline.h"

#include <cmath>

namespace quarvex {

namespace {

// New weights from the residuals d = y - z; returns |w_new - w| / |w|.
double reweight(std::span<const float> y, const std::vector<double>& z,
                std::vector<double>& weights) {
    double sum = 0.0;
    double sumSquares = 0.0;
    std::size_t negatives = 0;
    for (std::size_t i = 0; i < y.size(); ++i) {
        const double d = static_cast<double>(y[i]) - z[i];
        if (d < 0.0) {
            sum += d;
            sumSquares += d * d;
            ++negatives;
        }
    }
    if (negatives < 2) {
        return 0.0; // the baseline lies under every point: nothing left to reweight
    }
    const double mean = sum / static_cast<double>(negatives);
    const double spread =
        std::sqrt(std::max(0.0, sumSquares / static_cast<double>(negatives) - mean * mean));
    if (!(spread > 0.0)) {
        return 0.0;
    }
    double change = 0.0;
    double norm = 0.0;
    for (std::size_t i = 0; i < y.size(); ++i) {
        const double d = static_cast<double>(y[i]) - z[i];
        const double exponent = std::min(2.0 * (d - (2.0 * spread - mean)) / spread, 700.0);
        const double weight = 1.0 / (1.0 + std::exp(exponent));
        change += (weight - weights[i]) * (weight - weights[i]);
        norm += weights[i] * weights[i];
        weights[i] = weight;
    }
    return norm > 0.0 ? std::sqrt(change / norm) : 0.0;
}

} // namespace

BaselineFit arplsBaseline(std::span<const float> x, std::span<const float> y,
                          const ArplsParameters& parameters) {
    checkPenalisedBaselineInput(x, y, parameters.penalty, parameters.iterations);
    const double tolerance = parameters.tolerance;
    return reweightedBaseline(x, y, parameters.penalty, parameters.iterations,
                              [tolerance](std::span<const float> data, const std::vector<double>& z,
                                          std::vector<double>& weights) {
                                  return reweight(data, z, weights) < tolerance;
                              });
}

} // namespace quarvex
