// Single-case deletion diagnostics (Belsley, Kuh & Welsch 1980; Cook & Weisberg 1982) from the
// thin SVD of the column-scaled design, which keeps the leverages accurate near 1.
#include "xray/RegressionDiagnostics.h"

#include <cmath>
#include <limits>

namespace quarvex {

namespace {

constexpr double kLeverageOneGap = 1e-9;

} // namespace

std::vector<CaseDiagnostics> regressionDiagnostics(const Eigen::MatrixXd& X,
                                                   const Eigen::VectorXd& e) {
    const Eigen::Index n = X.rows();
    const Eigen::Index p = X.cols();
    const Eigen::VectorXd scale = X.colwise().norm().transpose().cwiseMax(1e-300);
    const Eigen::MatrixXd scaled = X * scale.cwiseInverse().asDiagonal();
    const Eigen::JacobiSVD<Eigen::MatrixXd> svd(scaled, Eigen::ComputeThinU | Eigen::ComputeThinV);
    // (X^T X)^-1 X^T = D^-1 V S^-1 U^T with X = U S V^T D.
    const Eigen::MatrixXd pseudoInverse = scale.cwiseInverse().asDiagonal() * svd.matrixV() *
                                          svd.singularValues().cwiseInverse().asDiagonal() *
                                          svd.matrixU().transpose();
    const double ssr = e.squaredNorm();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<CaseDiagnostics> cases(static_cast<size_t>(n));
    for (Eigen::Index i = 0; i < n; ++i) {
        CaseDiagnostics& c = cases[static_cast<size_t>(i)];
        c.hat = svd.matrixU().row(i).squaredNorm();
        const double rest = 1.0 - c.hat;
        c.leverageOne = rest < kLeverageOneGap;
        c.rstudent = nan;
        c.dffits = nan;
        c.deletionChange = Eigen::VectorXd::Constant(p, nan);
        if (c.leverageOne) {
            continue;
        }
        // beta - beta_(i) = (X^T X)^-1 x_i e_i / (1 - h_ii).
        c.deletionChange = -pseudoInverse.col(i) * (e(i) / rest);
        const double dof = static_cast<double>(n - p - 1);
        if (dof < 1.0) {
            continue;
        }
        const double deletedVariance = (ssr - e(i) * e(i) / rest) / dof;
        if (!(deletedVariance > 0.0)) {
            continue;
        }
        c.rstudent = e(i) / std::sqrt(deletedVariance * rest);
        c.dffits = c.rstudent * std::sqrt(c.hat / rest);
    }
    return cases;
}

} // namespace quarvex
