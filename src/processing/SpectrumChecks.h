// Checks shared by the spectrum operations (baseline, despike, smoothing) and the mean point
// spacing through which their x-unit parameters become point counts.
#pragma once

#include <span>
#include <string_view>

namespace quarvex {

/// Throws QuarvexError(title) when x and y differ in length, hold fewer than `minimumPoints`
/// points, or hold a NaN or infinite value.
void checkSpectrumValues(std::span<const float> x, std::span<const float> y, int minimumPoints,
                         std::string_view title);

/// Mean spacing of ascending x: (last - first) / (n - 1), in x units; 1 for fewer than 2 points
/// or a zero span.
double meanSpacing(std::span<const float> x);

} // namespace quarvex
