#include "processing/SpectrumChecks.h"

#include "common/QuarvexError.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace quarvex {

void checkSpectrumValues(std::span<const float> x, std::span<const float> y, int minimumPoints,
                         std::string_view title) {
    if (x.size() != y.size()) {
        throw QuarvexError("The spectrum's x and y values differ in number.", std::string(title));
    }
    if (y.size() < static_cast<std::size_t>(minimumPoints)) {
        throw QuarvexError("The spectrum has " + std::to_string(y.size()) +
                               " points; this operation needs at least " +
                               std::to_string(minimumPoints) + ".",
                           std::string(title));
    }
    const auto notFinite = [](float value) { return !std::isfinite(value); };
    if (std::any_of(x.begin(), x.end(), notFinite) || std::any_of(y.begin(), y.end(), notFinite)) {
        throw QuarvexError("The spectrum holds NaN or infinite values.", std::string(title));
    }
}

double meanSpacing(std::span<const float> x) {
    if (x.size() < 2) {
        return 1.0;
    }
    const double span = static_cast<double>(x.back()) - static_cast<double>(x.front());
    return span > 0.0 ? span / static_cast<double>(x.size() - 1) : 1.0;
}

} // namespace quarvex
