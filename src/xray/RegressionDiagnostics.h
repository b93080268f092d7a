// Case diagnostics of a least-squares fit: leverage, studentised deleted residuals, DFFITS and
// the change of the parameters when one observation is left out.
#pragma once

#include <Eigen/Dense>

#include <vector>

namespace quarvex {

/// The diagnostics of one observation.
struct CaseDiagnostics {
    double hat = 0.0;               ///< leverage h_ii, the diagonal of X (X^T X)^-1 X^T
    double rstudent = 0.0;          ///< e_i / (s_(i) sqrt(1 - h_ii)); NaN when undefined
    double dffits = 0.0;            ///< rstudent sqrt(h_ii / (1 - h_ii)); NaN when undefined
    Eigen::VectorXd deletionChange; ///< beta_(i) - beta: parameters without it minus with it
    bool leverageOne = false;       ///< h_ii = 1: the observation alone fixes a direction
};

/// Diagnostics of every row of the design X (n x p, the derivatives of the model with respect
/// to the parameters) with residuals e = observed - model, by the single-case deletion formulas
/// of the linear model (exact for it, first order for a non-linear one at its optimum). Rows
/// with leverage 1 (within 1e-9), or all rows when n - p - 1 < 1, get NaN rstudent and dffits.
std::vector<CaseDiagnostics> regressionDiagnostics(const Eigen::MatrixXd& X,
                                                   const Eigen::VectorXd& e);

} // namespace quarvex
