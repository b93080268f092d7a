#include "processing/CosmicRays.h"

#include "common/QuarvexError.h"
#include "processing/MatrixFncts.h"
#include "processing/SpectrumChecks.h"
#include "processing/StatFncts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace quarvex {

namespace {

constexpr std::string_view kCosmicRayTitle = "Cosmic Rays";
constexpr int kMinimumPoints = 5;
constexpr std::size_t kNoiseHalfWindow = 32;
constexpr int kNoiseSegments = 8;
constexpr int kMostPasses = 3;

// A run of points [first, first + width).
struct Run {
    std::size_t first = 0;
    std::size_t width = 0;
};

// How far the lowest point of the run stands above the higher of its two neighbours.
float excessOverNeighbours(std::span<const float> y, Run run) {
    const auto begin = y.begin() + static_cast<std::ptrdiff_t>(run.first);
    const float level = *std::min_element(begin, begin + static_cast<std::ptrdiff_t>(run.width));
    return level - std::max(y[run.first - 1], y[run.first + run.width]);
}

// Noise of the points around the run: segment noise of FIND_NOISE_STDDEV. The line fits run on
// point numbers rather than on x: in single precision, x values like 590.013, 590.052, ... leave
// too few digits for the fit's sums, and residuals about a line do not depend on the x scale.
float localNoise(std::span<const float> y, Run run) {
    const std::size_t first = run.first > kNoiseHalfWindow ? run.first - kNoiseHalfWindow : 0;
    const std::size_t last = std::min(y.size(), run.first + run.width + kNoiseHalfWindow);
    std::array<float, 2 * kNoiseHalfWindow + 3> positions{};
    for (std::size_t k = 0; k < positions.size(); ++k) {
        positions[k] = static_cast<float>(k);
    }
    return FIND_NOISE_STDDEV(std::span<const float>(positions).first(last - first),
                             y.subspan(first, last - first), kNoiseSegments)
        .noise;
}

bool isSpike(std::span<const float> y, Run run, const DespikeParameters& parameters,
             float noiseFloor) {
    const float excess = excessOverNeighbours(y, run);
    if (!(excess > 0.0F)) {
        return false;
    }
    // The height above the lowest point within a few points of the run on either side.
    const std::size_t reach = run.width + 4;
    const std::size_t first = run.first > reach ? run.first - reach : 0;
    const std::size_t last = std::min(y.size(), run.first + run.width + reach);
    const auto begin = y.begin() + static_cast<std::ptrdiff_t>(run.first);
    const float level = *std::min_element(begin, begin + static_cast<std::ptrdiff_t>(run.width));
    const float floor = *std::min_element(y.begin() + static_cast<std::ptrdiff_t>(first),
                                          y.begin() + static_cast<std::ptrdiff_t>(last));
    if (excess < parameters.narrowness * (level - floor)) {
        return false;
    }
    return excess > parameters.threshold * std::max(localNoise(y, run), noiseFloor);
}

// Replaces the run's values by the quadratic least-squares fit of its neighbours, solved through
// the single-precision LU inverse of the 3 x 3 normal matrix. Positions are counted in point
// spacings from the run's centre so that the matrix is well scaled in any x unit. Too few
// neighbours or a singular matrix fall back to the straight line between the two nearest.
void replaceRun(std::span<const float> x, std::span<float> y, Run run, int fitPoints) {
    const double spacing = meanSpacing(x);
    const double centre = 0.5 * (static_cast<double>(x[run.first]) +
                                 static_cast<double>(x[run.first + run.width - 1]));
    const auto position = [&](std::size_t i) {
        return static_cast<float>((static_cast<double>(x[i]) - centre) / spacing);
    };
    std::array<float, 9> normal{};
    std::array<float, 3> rightSide{};
    int used = 0;
    const auto add = [&](std::size_t i) {
        const float t = position(i);
        const std::array<float, 3> powers{1.0F, t, t * t};
        for (std::size_t r = 0; r < 3; ++r) {
            for (std::size_t c = 0; c < 3; ++c) {
                normal[c * 3 + r] += powers[r] * powers[c];
            }
            rightSide[r] += powers[r] * y[i];
        }
        ++used;
    };
    for (int k = 0; k < fitPoints; ++k) {
        const auto offset = static_cast<std::size_t>(k) + 1;
        if (run.first >= offset) {
            add(run.first - offset);
        }
        if (run.first + run.width - 1 + offset < y.size()) {
            add(run.first + run.width - 1 + offset);
        }
    }
    std::array<float, 9> inverse{};
    float det = 0.0F;
    bool ok = false;
    if (used >= 3) {
        INVERT_MATRIX(normal, inverse, 3, det, ok);
    }
    const std::size_t left = run.first - 1;
    const std::size_t right = run.first + run.width;
    for (std::size_t i = run.first; i < right; ++i) {
        if (ok) {
            const float t = position(i);
            float value = 0.0F;
            float power = 1.0F;
            for (std::size_t r = 0; r < 3; ++r) {
                float coefficient = 0.0F;
                for (std::size_t c = 0; c < 3; ++c) {
                    coefficient += inverse[c * 3 + r] * rightSide[c];
                }
                value += coefficient * power;
                power *= t;
            }
            y[i] = value;
        } else {
            const float fraction = (x[i] - x[left]) / (x[right] - x[left]);
            y[i] = y[left] + fraction * (y[right] - y[left]);
        }
    }
}

void checkParameters(std::span<const float> x, std::span<const float> y,
                     const DespikeParameters& parameters) {
    checkSpectrumValues(x, y, kMinimumPoints, kCosmicRayTitle);
    if (parameters.maxWidth < 1 || parameters.maxWidth > 3 || parameters.fitPoints < 2 ||
        !(parameters.threshold > 0.0F) || !(parameters.narrowness >= 0.0F)) {
        throw QuarvexError("The spike search parameters are out of range (width 1 to 3, at least "
                           "2 fit points, a positive threshold).",
                           std::string(kCosmicRayTitle));
    }
}

} // namespace

DespikeResult RUN_AUTO_CRE(std::span<const float> x, std::span<const float> y,
                           const DespikeParameters& parameters) {
    checkParameters(x, y, parameters);
    DespikeResult result{std::vector<float>(y.begin(), y.end()), {}};
    float largest = 0.0F;
    for (const float value : y) {
        largest = std::max(largest, std::abs(value));
    }
    // Noise-free data must not turn rounding bumps into spikes.
    const float noiseFloor = 1.0e-6F * largest;
    const auto width = static_cast<std::size_t>(parameters.maxWidth);
    for (int pass = 0; pass < kMostPasses; ++pass) {
        bool found = false;
        for (std::size_t i = 1; i + 1 < y.size(); ++i) {
            for (std::size_t w = 1; w <= width && i + w < y.size(); ++w) {
                const Run run{i, w};
                if (isSpike(result.y, run, parameters, noiseFloor)) {
                    replaceRun(x, result.y, run, parameters.fitPoints);
                    for (std::size_t k = i; k < i + w; ++k) {
                        result.spikes.push_back(k);
                    }
                    found = true;
                    i += w - 1;
                    break;
                }
            }
        }
        if (!found) {
            break;
        }
    }
    std::sort(result.spikes.begin(), result.spikes.end());
    result.spikes.erase(std::unique(result.spikes.begin(), result.spikes.end()),
                        result.spikes.end());
    return result;
}

DespikeResult removeSpikeNear(std::span<const float> x, std::span<const float> y, double clickX,
                              const DespikeParameters& parameters) {
    checkParameters(x, y, parameters);
    if (!(clickX >= static_cast<double>(x.front()) && clickX <= static_cast<double>(x.back()))) {
        throw QuarvexError("The point clicked lies outside the spectrum.",
                           std::string(kCosmicRayTitle));
    }
    DespikeResult result{std::vector<float>(y.begin(), y.end()), {}};
    const auto n = static_cast<std::ptrdiff_t>(y.size());
    const std::ptrdiff_t nearest = std::clamp<std::ptrdiff_t>(
        std::lower_bound(x.begin(), x.end(), static_cast<float>(clickX)) - x.begin(), 0, n - 1);
    const std::ptrdiff_t reach = parameters.maxWidth + 2;
    const std::ptrdiff_t first = std::max<std::ptrdiff_t>(nearest - reach, 1);
    const std::ptrdiff_t last = std::min<std::ptrdiff_t>(nearest + reach + 1, n - 1);
    if (first >= last) {
        return result;
    }
    const auto top =
        static_cast<std::size_t>(std::max_element(y.begin() + first, y.begin() + last) - y.begin());
    Run best;
    float bestExcess = 0.0F;
    const auto width = static_cast<std::size_t>(parameters.maxWidth);
    for (std::size_t w = 1; w <= width; ++w) {
        for (std::size_t start = top + 1 >= w ? top + 1 - w : 0; start <= top; ++start) {
            if (start < 1 || start + w >= y.size()) {
                continue;
            }
            const float excess = excessOverNeighbours(y, {start, w});
            if (excess > bestExcess) {
                bestExcess = excess;
                best = {start, w};
            }
        }
    }
    if (best.width == 0) {
        return result;
    }
    replaceRun(x, result.y, best, parameters.fitPoints);
    for (std::size_t k = best.first; k < best.first + best.width; ++k) {
        result.spikes.push_back(k);
    }
    return result;
}

} // namespace quarvex
