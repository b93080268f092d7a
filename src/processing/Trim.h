// Trimming a spectrum to an x range.
#pragma once

#include <cstddef>
#include <span>

namespace quarvex {

/// Fewest points a trimmed spectrum keeps.
inline constexpr std::size_t kTrimMinimumPoints = 3;

/// The points of ascending x kept by a trim to [low, high]: `count` points from `first`.
struct TrimRange {
    std::size_t first = 0;
    std::size_t count = 0;
};

/// The run of points with low <= x <= high. Throws QuarvexError ("Trim") when low > high, a
/// bound is NaN, or fewer than 3 points would remain.
TrimRange trimRange(std::span<const float> x, double low, double high);

} // namespace quarvex
