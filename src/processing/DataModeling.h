// General Levenberg-Marquardt least squares in double precision for any model given as a
// function of x and the parameters, with the question whether to go on after many iterations.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

inline constexpr std::string_view kUnableToConvergeText =
    "Unable To Converge To Solution. Please Resize Your Window And Retry.";
/// Iterations (damped steps, accepted or not) between two "Keep Going?" questions.
inline constexpr int kLevmarqIterations = 1000;
/// Convergence: an accepted step lowers χ² by less than this fraction of it, or the steps have
/// shrunk below this fraction of every parameter without finding a lower χ².
inline constexpr double kLevmarqTolerance = 1.0e-12;

/// A model: returns its value at `x` for parameters `a` and writes ∂value/∂a(j) into `dyda`.
using ModelFunction =
    std::function<double(double x, std::span<const double> a, std::span<double> dyda)>;

/// Asks the user a question; true to go on. The CLI answers no.
using KeepGoingQuestion = std::function<bool(const std::string& question)>;

/// "No convergence after N iterations. Keep Going?"
std::string noConvergenceQuestion(int iterations);

/// Options of LEVMARQ_FIT.
struct LevmarqOptions {
    std::vector<bool> varying;   ///< parameters that vary; empty: all
    std::vector<double> sigma;   ///< standard deviation of each y; empty: all 1
    KeepGoingQuestion keepGoing; ///< asked every kLevmarqIterations; empty: answered no
    int iterationsPerQuestion = kLevmarqIterations;
};

/// Result of LEVMARQ_FIT. When `converged` is false the parameters are the last accepted ones
/// and the caller tells the user kUnableToConvergeText.
struct LevmarqResult {
    std::vector<double> parameters;
    std::vector<double> errors; ///< sqrt(covariance · χ² / (N - M)); 0 for fixed ones
    std::vector<double>
        covariance;     ///< M x M by column, unscaled inverse curvature; NaN if singular
    double chisq = 0.0; ///< Σ ((y - model) / σ)²
    int iterations = 0;
    bool converged = false;
};

/// χ² of parameters `a`, the curvature matrix `alpha` (varying parameters only, mfit x mfit by
/// column) and the gradient `beta`.
void CALC_CHI(std::span<const double> x, std::span<const double> y, std::span<const double> sigma,
              std::span<const double> a, const std::vector<bool>& varying,
              const ModelFunction& model, std::span<double> alpha, std::span<double> beta,
              double& chisq);

/// Fits `model` to the points (x, y) from the parameters `start` by Levenberg-Marquardt with
/// Marquardt's scaling of the diagonal. Never throws for non-convergence: see `converged`.
LevmarqResult LEVMARQ_FIT(std::span<const double> x, std::span<const double> y,
                          std::vector<double> start, const ModelFunction& model,
                          const LevmarqOptions& options);

} // namespace quarvex
