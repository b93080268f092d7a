#include "processing/Trim.h"

#include "common/QuarvexError.h"
#include "common/TextUtils.h"

#include <algorithm>
#include <string>

namespace quarvex {

TrimRange trimRange(std::span<const float> x, double low, double high) {
    if (!(low <= high)) {
        throw QuarvexError("The trim range " + shortestText(low) + " to " + shortestText(high) +
                               " is empty: the lower bound must not exceed the upper.",
                           "Trim");
    }
    const auto first = std::find_if(
        x.begin(), x.end(), [low](float value) { return static_cast<double>(value) >= low; });
    const auto last = std::find_if(
        first, x.end(), [high](float value) { return static_cast<double>(value) > high; });
    const auto count = static_cast<std::size_t>(last - first);
    if (count < kTrimMinimumPoints) {
        throw QuarvexError("Trimming to " + shortestText(low) + " to " + shortestText(high) +
                               " would leave " + std::to_string(count) +
                               " points; a spectrum keeps at least 3.",
                           "Trim");
    }
    return {static_cast<std::size_t>(first - x.begin()), count};
}

} // namespace quarvex
