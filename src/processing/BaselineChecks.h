// Input checks shared by the baseline estimates.
#pragma once

#include <span>
#include <string_view>

namespace quarvex {

inline constexpr std::string_view kBaselineTitle = "Background";
/// Fewest points a baseline is estimated on.
inline constexpr int kBaselineMinimumPoints = 10;

/// Throws QuarvexError ("Background") for fewer than 10 points, NaN or infinite values, a
/// penalty that is not > 0 or a pass limit below 1.
void checkPenalisedBaselineInput(std::span<const float> x, std::span<const float> y, double penalty,
                                 int iterations);

} // namespace quarvex
