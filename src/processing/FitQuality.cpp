// Reduced chi-square and the coefficient of determination of a fit.
#include "processing/FitQuality.h"

namespace quarvex {

FitQuality fitQuality(std::span<const float> measured, std::span<const float> fitted,
                      std::size_t parameters) {
    const std::size_t n = measured.size();
    double mean = 0.0;
    for (const float y : measured) {
        mean += y;
    }
    mean /= static_cast<double>(n);
    double residualSum = 0.0;
    double totalSum = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
        const double residual = static_cast<double>(measured[i]) - fitted[i];
        const double deviation = static_cast<double>(measured[i]) - mean;
        residualSum += residual * residual;
        totalSum += deviation * deviation;
    }
    FitQuality quality;
    quality.reducedChisq =
        n > parameters ? residualSum / static_cast<double>(n - parameters) : FitQuality::kUndefined;
    quality.rSquared = totalSum > 0.0 ? 1.0 - residualSum / totalSum : FitQuality::kUndefined;
    return quality;
}

} // namespace quarvex
