// The weighted Whittaker smoother with a second-difference penalty: the sparse solve shared by
// the ALS and arPLS baselines.
#pragma once

#include <memory>
#include <span>
#include <vector>

namespace quarvex {

/// Solves (W + lambda·D'D) z = W y for a spectrum of fixed length, D the second-difference
/// matrix and W = diag(weights). The pentadiagonal system is factorised by a sparse LDL' in
/// natural order, O(n) per solve; the sparsity pattern is analysed once.
class WhittakerSmoother {
public:
    /// `penaltyPerPoint` is lambda on the spectrum's own point grid; it must be > 0 and n >= 3.
    WhittakerSmoother(std::size_t points, double penaltyPerPoint);
    ~WhittakerSmoother();
    WhittakerSmoother(const WhittakerSmoother&) = delete;
    WhittakerSmoother& operator=(const WhittakerSmoother&) = delete;

    /// The smooth z for these weights (each >= 0, not all 0). False when the factorisation
    /// failed (z is then unchanged).
    bool solve(std::span<const double> weights, std::span<const float> y, std::vector<double>& z);

private:
    struct Solver;
    std::unique_ptr<Solver> solver_;
};

/// The penalty on a grid of spacing `spacing` x units that smooths as much as `penaltyPerUnit`
/// does on a grid of 1 x unit: the penalty sum of squared second differences scales with the
/// fourth power of the spacing against the data term, so lambda = penaltyPerUnit / spacing^4.
double penaltyOnGrid(double penaltyPerUnit, double spacing);

} // namespace quarvex
