// The reweighted Whittaker baseline that ALS and arPLS share: smooth with weights, reweight
// from the residuals, until the weights settle.
#pragma once

#include "processing/BaselineFit.h"

#include <functional>
#include <span>
#include <vector>

namespace quarvex {

/// A reweighting rule: new `weights` from the data y and the present smooth z; true when they
/// have settled, which ends the iteration.
using BaselineReweighting = std::function<bool(
    std::span<const float> y, const std::vector<double>& z, std::vector<double>& weights)>;

/// From unit weights: solve the Whittaker system (penalty `penaltyPerUnit` per x unit^4 on the
/// spectrum's mean spacing), reweight, at most `iterations` passes. The input is checked by the
/// caller. Throws QuarvexError ("Background") when a solve fails.
BaselineFit reweightedBaseline(std::span<const float> x, std::span<const float> y,
                               double penaltyPerUnit, int iterations,
                               const BaselineReweighting& reweight);

} // namespace quarvex
