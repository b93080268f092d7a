#include "processing/SavitzkyGolay.h"

#include "common/QuarvexError.h"
#include "processing/SpectrumChecks.h"

#include <Eigen/Dense>

#include <cmath>
#include <string>

namespace quarvex {

namespace {

constexpr std::string_view kSmoothingTitle = "Smoothing";
constexpr int kMaximumOrder = 6;
constexpr int kMaximumDerivative = 2;

// Weights that give the `derivative`-th derivative, at offset `at` (in points, from the window's
// first point), of the least-squares polynomial through a window of `points` values.
Eigen::VectorXd windowWeights(int points, int order, int derivative, int at) {
    const int half = points / 2;
    Eigen::MatrixXd design(points, order + 1);
    for (int j = 0; j < points; ++j) {
        const double t = j - half;
        double power = 1.0;
        for (int k = 0; k <= order; ++k) {
            design(j, k) = power;
            power *= t;
        }
    }
    // Row `derivative` of the pseudo-inverse gives the polynomial's coefficient of t^derivative;
    // the derivative at t is the sum over k of k!/(k-d)! c_k t^(k-d).
    const Eigen::MatrixXd pseudoInverse =
        design.colPivHouseholderQr().solve(Eigen::MatrixXd::Identity(points, points));
    const double t = at - half;
    Eigen::VectorXd weights = Eigen::VectorXd::Zero(points);
    for (int k = derivative; k <= order; ++k) {
        double factor = 1.0;
        for (int m = 0; m < derivative; ++m) {
            factor *= k - m;
        }
        weights += factor * std::pow(t, k - derivative) * pseudoInverse.row(k).transpose();
    }
    return weights;
}

void checkParameters(std::span<const float> x, std::span<const float> y,
                     const SavitzkyGolayParameters& parameters) {
    checkSpectrumValues(x, y, 1, kSmoothingTitle);
    const std::string title(kSmoothingTitle);
    if (parameters.windowPoints > static_cast<int>(y.size())) {
        throw QuarvexError("The smoothing window (" + std::to_string(parameters.windowPoints) +
                               " points) is wider than the spectrum (" + std::to_string(y.size()) +
                               " points).",
                           title);
    }
    if (parameters.windowPoints < 1 || parameters.windowPoints % 2 == 0) {
        throw QuarvexError("The smoothing window must be an odd number of points.", title);
    }
    if (parameters.order < 0 || parameters.order > kMaximumOrder ||
        parameters.order >= parameters.windowPoints) {
        throw QuarvexError("The polynomial order must lie between 0 and 6 and below the window's "
                           "points.",
                           title);
    }
    if (parameters.derivative < 0 || parameters.derivative > kMaximumDerivative ||
        parameters.derivative > parameters.order) {
        throw QuarvexError("The derivative must lie between 0 and 2 and not above the order.",
                           title);
    }
}

} // namespace

int windowPointsForWidth(std::span<const float> x, double width) {
    const double points = width / meanSpacing(x);
    if (!(points < 1.0e7)) {
        return 10'000'001; // wider than any spectrum: the filter reports it
    }
    const int whole = static_cast<int>(std::lround(points));
    return std::max(3, whole % 2 == 1 ? whole : whole + 1);
}

std::vector<float> savitzkyGolay(std::span<const float> x, std::span<const float> y,
                                 const SavitzkyGolayParameters& parameters) {
    checkParameters(x, y, parameters);
    const int points = parameters.windowPoints;
    const int half = points / 2;
    const auto n = static_cast<int>(y.size());
    const double scale = std::pow(meanSpacing(x), -parameters.derivative);
    const auto apply = [&](const Eigen::VectorXd& weights, int windowStart) {
        double sum = 0.0;
        for (int j = 0; j < points; ++j) {
            sum += weights(j) * static_cast<double>(y[static_cast<std::size_t>(windowStart + j)]);
        }
        return static_cast<float>(sum * scale);
    };
    std::vector<float> filtered(y.size());
    const Eigen::VectorXd centre =
        windowWeights(points, parameters.order, parameters.derivative, half);
    for (int i = half; i < n - half; ++i) {
        filtered[static_cast<std::size_t>(i)] = apply(centre, i - half);
    }
    for (int i = 0; i < half; ++i) {
        filtered[static_cast<std::size_t>(i)] =
            apply(windowWeights(points, parameters.order, parameters.derivative, i), 0);
        const int fromEnd = n - 1 - i;
        filtered[static_cast<std::size_t>(fromEnd)] =
            apply(windowWeights(points, parameters.order, parameters.derivative, points - 1 - i),
                  n - points);
    }
    return filtered;
}

} // namespace quarvex
