// Asymmetric least squares (ALS) baseline: a Whittaker smooth whose weights favour the points
// below it, so that it follows the background under the bands.
#pragma once

#include "processing/BaselineFit.h"

#include <span>

namespace quarvex {

/// Parameters of the ALS baseline, in x units so that they do not depend on the point spacing.
struct AlsParameters {
    double penalty = 2.0e6;   ///< second-difference penalty lambda on a grid of 1 x unit (> 0)
    double asymmetry = 0.005; ///< weight p of points above the baseline (0 < p < 0.5)
    int iterations = 10;      ///< most reweighting passes
};

/// The ALS baseline of (x, y) (Eilers and Boelens 2005): weights p above and 1-p below the
/// current smooth, repeated until the weights no longer change or the pass limit. Throws
/// QuarvexError ("Background") for fewer than 10 points, NaN values, or a penalty or asymmetry
/// out of range.
BaselineFit alsBaseline(std::span<const float> x, std::span<const float> y,
                        const AlsParameters& parameters);

} // namespace quarvex
