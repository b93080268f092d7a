// What a baseline estimate returns.
#pragma once

#include <vector>

namespace quarvex {

/// A baseline on the spectrum's own x values, and how its iteration ended.
struct BaselineFit {
    std::vector<float> baseline;
    int iterations = 0;     ///< reweighting passes (or clipping passes) made
    bool converged = false; ///< the weights settled before the pass limit
};

} // namespace quarvex
