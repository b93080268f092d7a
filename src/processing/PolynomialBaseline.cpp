#include "processing/PolynomialBaseline.h"

#include "common/QuarvexError.h"
#include "processing/BaselineChecks.h"
#include "processing/SpectrumChecks.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>

namespace quarvex {

namespace {

constexpr int kMaximumDegree = 5;

// Mean y of the `count` points nearest to `position` (x ascending).
double valueNear(std::span<const float> x, std::span<const float> y, double position, int count) {
    const auto n = static_cast<std::ptrdiff_t>(x.size());
    const std::ptrdiff_t nearest =
        std::lower_bound(x.begin(), x.end(), static_cast<float>(position)) - x.begin();
    const std::ptrdiff_t first =
        std::clamp<std::ptrdiff_t>(nearest - count / 2, 0, std::max<std::ptrdiff_t>(n - count, 0));
    const std::ptrdiff_t last = std::min(first + count, n);
    double sum = 0.0;
    for (std::ptrdiff_t i = first; i < last; ++i) {
        sum += static_cast<double>(y[static_cast<std::size_t>(i)]);
    }
    return sum / static_cast<double>(last - first);
}

} // namespace

BaselineFit polynomialBaseline(std::span<const float> x, std::span<const float> y,
                               std::span<const double> anchorX, int degree, int averagedPoints) {
    checkSpectrumValues(x, y, 1, kBaselineTitle);
    const std::string title(kBaselineTitle);
    if (anchorX.empty()) {
        throw QuarvexError("Pick at least one point of the baseline.", title);
    }
    if (degree < 0 || degree > kMaximumDegree) {
        throw QuarvexError("The polynomial degree must lie between 0 and 5.", title);
    }
    for (const double position : anchorX) {
        if (!(position >= static_cast<double>(x.front()) &&
              position <= static_cast<double>(x.back()))) {
            throw QuarvexError("A baseline point lies outside the spectrum.", title);
        }
    }
    const auto anchors = static_cast<Eigen::Index>(anchorX.size());
    const Eigen::Index terms = std::min<Eigen::Index>(degree, anchors - 1) + 1;
    // Powers of x scaled to [-1, 1] keep the normal equations well conditioned.
    const double centre = 0.5 * (static_cast<double>(x.front()) + static_cast<double>(x.back()));
    const double halfSpan =
        std::max(0.5 * (static_cast<double>(x.back()) - static_cast<double>(x.front())), 1e-30);
    Eigen::MatrixXd design(anchors, terms);
    Eigen::VectorXd values(anchors);
    for (Eigen::Index k = 0; k < anchors; ++k) {
        const double t = (anchorX[static_cast<std::size_t>(k)] - centre) / halfSpan;
        double power = 1.0;
        for (Eigen::Index j = 0; j < terms; ++j) {
            design(k, j) = power;
            power *= t;
        }
        values(k) = valueNear(x, y, anchorX[static_cast<std::size_t>(k)], averagedPoints);
    }
    const Eigen::VectorXd coefficients = design.colPivHouseholderQr().solve(values);
    BaselineFit fit;
    fit.converged = true;
    fit.baseline.resize(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double t = (static_cast<double>(x[i]) - centre) / halfSpan;
        double value = 0.0;
        for (Eigen::Index j = terms - 1; j >= 0; --j) {
            value = value * t + coefficients(j);
        }
        fit.baseline[i] = static_cast<float>(value);
    }
    return fit;
}

} // namespace quarvex
