// Levenberg-Marquardt least squares in double precision with Marquardt's diagonal scaling.
#include "processing/DataModeling.h"

#include "processing/MatrixFncts.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace quarvex {

namespace {

constexpr double kStartLambda = 0.001;

// The damped step: solve (alpha with its diagonal times 1 + lambda) · da = beta.
bool dampedStep(const std::vector<double>& alpha, const std::vector<double>& beta, double lambda,
                std::vector<double>& da) {
    const std::size_t mfit = beta.size();
    std::vector<double> trial = alpha;
    for (std::size_t j = 0; j < mfit; ++j) {
        trial[j * mfit + j] *= 1.0 + lambda;
    }
    std::vector<double> inverse(mfit * mfit);
    const bool regular = INVERT_GAUSSJ(trial, inverse, static_cast<int>(mfit));
    da.assign(mfit, 0.0);
    for (std::size_t j = 0; j < mfit; ++j) {
        for (std::size_t k = 0; k < mfit; ++k) {
            da[j] += inverse[k * mfit + j] * beta[k];
        }
    }
    return regular;
}

} // namespace

std::string noConvergenceQuestion(int iterations) {
    return "No convergence after " + std::to_string(iterations) + " iterations. Keep Going?";
}

void CALC_CHI(std::span<const double> x, std::span<const double> y, std::span<const double> sigma,
              std::span<const double> a, const std::vector<bool>& varying,
              const ModelFunction& model, std::span<double> alpha, std::span<double> beta,
              double& chisq) {
    const std::size_t mfit = beta.size();
    std::fill(alpha.begin(), alpha.end(), 0.0);
    std::fill(beta.begin(), beta.end(), 0.0);
    chisq = 0.0;
    std::vector<double> dyda(a.size());
    std::vector<double> wanted(mfit);
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double weight = sigma.empty() ? 1.0 : 1.0 / (sigma[i] * sigma[i]);
        const double dy = y[i] - model(x[i], a, dyda);
        std::size_t jj = 0;
        for (std::size_t j = 0; j < a.size(); ++j) {
            if (varying[j]) {
                wanted[jj++] = dyda[j];
            }
        }
        for (std::size_t j = 0; j < mfit; ++j) {
            const double wt = wanted[j] * weight;
            for (std::size_t k = 0; k <= j; ++k) {
                alpha[k * mfit + j] += wt * wanted[k];
            }
            beta[j] += dy * wt;
        }
        chisq += dy * dy * weight;
    }
    for (std::size_t j = 1; j < mfit; ++j) {
        for (std::size_t k = 0; k < j; ++k) {
            alpha[j * mfit + k] = alpha[k * mfit + j];
        }
    }
}

LevmarqResult LEVMARQ_FIT(std::span<const double> x, std::span<const double> y,
                          std::vector<double> start, const ModelFunction& model,
                          const LevmarqOptions& options) {
    const std::size_t m = start.size();
    const std::vector<bool> varying =
        options.varying.empty() ? std::vector<bool>(m, true) : options.varying;
    const auto mfit = static_cast<std::size_t>(std::count(varying.begin(), varying.end(), true));
    LevmarqResult result;
    std::vector<double>& a = result.parameters;
    a = std::move(start);
    std::vector<double> alpha(mfit * mfit);
    std::vector<double> beta(mfit);
    CALC_CHI(x, y, options.sigma, a, varying, model, alpha, beta, result.chisq);

    std::vector<double> trialAlpha(mfit * mfit);
    std::vector<double> trialBeta(mfit);
    std::vector<double> atry(m);
    std::vector<double> da;
    double lambda = kStartLambda;
    while (std::isfinite(result.chisq) && !result.converged) {
        if (result.iterations > 0 && result.iterations % options.iterationsPerQuestion == 0 &&
            !(options.keepGoing && options.keepGoing(noConvergenceQuestion(result.iterations)))) {
            break;
        }
        ++result.iterations;
        const bool regular = dampedStep(alpha, beta, lambda, da);
        atry = a;
        bool negligible = true;
        for (std::size_t j = 0, jj = 0; j < m; ++j) {
            if (varying[j]) {
                atry[j] += da[jj];
                negligible = negligible &&
                             std::fabs(da[jj]) <=
                                 kLevmarqTolerance *
                                     std::max(std::fabs(a[j]), std::numeric_limits<double>::min());
                ++jj;
            }
        }
        double trialChisq = std::numeric_limits<double>::quiet_NaN();
        if (regular) {
            CALC_CHI(x, y, options.sigma, atry, varying, model, trialAlpha, trialBeta, trialChisq);
        }
        if (trialChisq <= result.chisq) {
            result.converged = result.chisq - trialChisq <= kLevmarqTolerance * result.chisq;
            result.chisq = trialChisq;
            std::swap(a, atry);
            std::swap(alpha, trialAlpha);
            std::swap(beta, trialBeta);
            lambda *= 0.1;
        } else {
            // No lower χ² within rounding once the steps have become negligible: a minimum.
            result.converged = negligible;
            lambda *= 10.0;
        }
    }

    result.covariance.assign(m * m, 0.0);
    result.errors.assign(m, 0.0);
    std::vector<double> inverse(mfit * mfit);
    const bool regular = INVERT_GAUSSJ(alpha, inverse, static_cast<int>(mfit));
    const double scale = x.size() > mfit ? result.chisq / static_cast<double>(x.size() - mfit)
                                         : std::numeric_limits<double>::quiet_NaN();
    std::vector<std::size_t> index;
    for (std::size_t j = 0; j < m; ++j) {
        if (varying[j]) {
            index.push_back(j);
        }
    }
    for (std::size_t j = 0; j < mfit; ++j) {
        for (std::size_t k = 0; k < mfit; ++k) {
            result.covariance[index[k] * m + index[j]] =
                regular ? inverse[k * mfit + j] : std::numeric_limits<double>::quiet_NaN();
        }
        result.errors[index[j]] = std::sqrt(result.covariance[index[j] * m + index[j]] * scale);
    }
    return result;
}

} // namespace quarvex
