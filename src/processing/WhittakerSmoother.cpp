#include "processing/WhittakerSmoother.h"

#include <Eigen/SparseCholesky>
#include <Eigen/SparseCore>

namespace quarvex {

struct WhittakerSmoother::Solver {
    Eigen::SparseMatrix<double> penalty; // lambda·D'D, lower and upper parts
    Eigen::SparseMatrix<double> system;
    Eigen::SimplicialLDLT<Eigen::SparseMatrix<double>, Eigen::Lower, Eigen::NaturalOrdering<int>>
        factor;
    Eigen::VectorXd rightSide;
    bool analysed = false;
};

namespace {

// lambda·D'D for the second-difference operator D ((n-2) x n, rows 1 -2 1).
Eigen::SparseMatrix<double> secondDifferencePenalty(std::size_t points, double lambda) {
    const auto n = static_cast<Eigen::Index>(points);
    std::vector<Eigen::Triplet<double>> entries;
    entries.reserve(static_cast<std::size_t>(9 * n));
    const double row[3] = {1.0, -2.0, 1.0};
    for (Eigen::Index r = 0; r + 2 < n; ++r) {
        for (int a = 0; a < 3; ++a) {
            for (int b = 0; b < 3; ++b) {
                entries.emplace_back(r + a, r + b, lambda * row[a] * row[b]);
            }
        }
    }
    Eigen::SparseMatrix<double> matrix(n, n);
    matrix.setFromTriplets(entries.begin(), entries.end());
    return matrix;
}

} // namespace

WhittakerSmoother::WhittakerSmoother(std::size_t points, double penaltyPerPoint)
    : solver_(std::make_unique<Solver>()) {
    solver_->penalty = secondDifferencePenalty(points, penaltyPerPoint);
    solver_->rightSide.resize(static_cast<Eigen::Index>(points));
}

WhittakerSmoother::~WhittakerSmoother() = default;

bool WhittakerSmoother::solve(std::span<const double> weights, std::span<const float> y,
                              std::vector<double>& z) {
    Solver& s = *solver_;
    s.system = s.penalty;
    for (Eigen::Index i = 0; i < s.system.rows(); ++i) {
        const auto k = static_cast<std::size_t>(i);
        s.system.coeffRef(i, i) += weights[k];
        s.rightSide[i] = weights[k] * static_cast<double>(y[k]);
    }
    if (!s.analysed) {
        s.factor.analyzePattern(s.system);
        s.analysed = true;
    }
    s.factor.factorize(s.system);
    if (s.factor.info() != Eigen::Success) {
        return false;
    }
    const Eigen::VectorXd solution = s.factor.solve(s.rightSide);
    if (s.factor.info() != Eigen::Success || !solution.allFinite()) {
        return false;
    }
    z.assign(solution.data(), solution.data() + solution.size());
    return true;
}

double penaltyOnGrid(double penaltyPerUnit, double spacing) {
    const double squared = spacing * spacing;
    return penaltyPerUnit / (squared * squared);
}

} // namespace quarvex
