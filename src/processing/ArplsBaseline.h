// Asymmetrically reweighted penalised least squares (arPLS) baseline.
#pragma once

#include "processing/BaselineFit.h"

#include <span>

namespace quarvex {

/// Parameters of the arPLS baseline, in x units.
struct ArplsParameters {
    double penalty = 1.0e6;    ///< second-difference penalty lambda on a grid of 1 x unit (> 0)
    double tolerance = 1.0e-3; ///< stop when the weights change by less than this (relative)
    int iterations = 50;       ///< most reweighting passes
};

/// The arPLS baseline of (x, y) (Baek et al. 2015, Analyst 140, 250): the weights are a logistic
/// function of the residual, scaled by the mean and spread of the negative residuals, so that
/// noise about the baseline keeps weight and bands lose it. Throws QuarvexError ("Background")
/// like alsBaseline.
BaselineFit arplsBaseline(std::span<const float> x, std::span<const float> y,
                          const ArplsParameters& parameters);

} // namespace quarvex
