// The test that a value read in double precision can be stored as a spectrum's float.
#pragma once

#include <cmath>
#include <limits>

namespace quarvex {

/// True when `value` is finite and within the range of float (so the cast is defined).
inline bool fitsSinglePrecision(double value) {
    return std::isfinite(value) &&
           std::fabs(value) <= static_cast<double>(std::numeric_limits<float>::max());
}

} // namespace quarvex
