// Peak search: local maxima of a lightly smoothed copy whose topographic prominence exceeds a
// multiple of the noise level, thinned to a least separation, the strongest first.
#include "processing/PeakSearch.h"

#include "common/QuarvexError.h"
#include "processing/StatFncts.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <set>
#include <utility>

namespace quarvex {

namespace {

// A local maximum of the smoothed values: a point, or a plateau of equal values, higher than
// the points on both sides of it.
constexpr int kNoisePasses = 8;

struct Candidate {
    std::size_t top = 0;       // index of the top (the middle of a plateau)
    std::size_t leftBase = 0;  // lowest point between the top and the next higher point left
    std::size_t rightBase = 0; // the same to the right
    float prominence = 0.0F;
};

// For every point, its base on one side: the lowest point between it and the nearest higher
// point on that side (or the end), the point itself when none is lower, ties to the nearest.
// One pass with a stack of ever higher points, each carrying the lowest point of the stretch it
// closes, keeps this linear; walking out from every top is quadratic on many equal tops.
std::vector<std::size_t> basesTowards(std::span<const float> s, bool leftwards) {
    struct Closed {
        std::size_t point;
        std::size_t lowest; // lowest point between the previous stack entry and `point`
    };
    const std::size_t n = s.size();
    std::vector<std::size_t> bases(n);
    std::vector<Closed> stack;
    for (std::size_t t = 0; t < n; ++t) {
        const std::size_t p = leftwards ? t : n - 1 - t;
        std::size_t lowest = p;
        while (!stack.empty() && s[stack.back().point] <= s[p]) {
            if (s[stack.back().lowest] < s[lowest]) {
                lowest = stack.back().lowest;
            }
            stack.pop_back();
        }
        bases[p] = lowest;
        stack.push_back({p, lowest});
    }
    return bases;
}

std::vector<Candidate> localMaxima(std::span<const float> s) {
    std::vector<Candidate> maxima;
    const std::size_t n = s.size();
    const std::vector<std::size_t> leftBases = basesTowards(s, true);
    const std::vector<std::size_t> rightBases = basesTowards(s, false);
    std::size_t i = 1;
    while (i + 1 < n) {
        if (!(s[i] > s[i - 1])) {
            ++i;
            continue;
        }
        std::size_t end = i;
        while (end + 1 < n && s[end + 1] == s[i]) {
            ++end;
        }
        if (end + 1 < n && s[end + 1] < s[i]) {
            Candidate c;
            c.top = (i + end) / 2;
            c.leftBase = leftBases[i];
            c.rightBase = rightBases[end];
            c.prominence = s[i] - std::max(s[c.leftBase], s[c.rightBase]);
            maxima.push_back(c);
        }
        i = end + 1;
    }
    return maxima;
}

// Position and value of the top of a parabola through the three points around `top`.
FoundPeak vertex(std::span<const float> x, std::span<const float> s, std::size_t top) {
    const float left = s[top - 1];
    const float centre = s[top];
    const float right = s[top + 1];
    const float curvature = left - 2.0F * centre + right;
    float offset = curvature < 0.0F ? 0.5F * (left - right) / curvature : 0.0F;
    offset = std::clamp(offset, -0.5F, 0.5F);
    const float step = offset > 0.0F ? x[top + 1] - x[top] : x[top] - x[top - 1];
    return {x[top] + offset * step, centre - 0.25F * (left - right) * offset};
}

// The points outside the peaks: each peak spans from its top down to the nearest local minimum
// of the smoothed values on either side, where its tails sink into the noise.
std::pair<std::vector<float>, std::vector<float>>
pointsOutsidePeaks(std::span<const float> x, std::span<const float> y, std::span<const float> s,
                   const std::vector<Candidate>& peaks) {
    std::vector<bool> inPeak(y.size(), false);
    for (const Candidate& c : peaks) {
        std::size_t left = c.top;
        while (left > 0 && s[left - 1] < s[left]) {
            --left;
        }
        std::size_t right = c.top;
        while (right + 1 < s.size() && s[right + 1] < s[right]) {
            ++right;
        }
        std::fill(inPeak.begin() + static_cast<std::ptrdiff_t>(left),
                  inPeak.begin() + static_cast<std::ptrdiff_t>(right) + 1, true);
    }
    std::pair<std::vector<float>, std::vector<float>> quiet;
    for (std::size_t i = 0; i < y.size(); ++i) {
        if (!inPeak[i]) {
            quiet.first.push_back(x[i]);
            quiet.second.push_back(y[i]);
        }
    }
    return quiet;
}

} // namespace

void requireFiniteValues(std::span<const float> values) {
    if (!std::all_of(values.begin(), values.end(), [](float v) { return std::isfinite(v); })) {
        throw QuarvexError("The data hold a value that is not a finite number.", "Error");
    }
}

std::vector<float> smoothSpectrum(std::span<const float> y, int points) {
    std::vector<float> smoothed(y.begin(), y.end());
    const long half = points / 2;
    if (half < 2) {
        return smoothed;
    }
    const long n = static_cast<long>(y.size());
    for (long i = 0; i < n; ++i) {
        const long h = std::min({half, i, n - 1 - i});
        if (h < 2) {
            continue;
        }
        // Quadratic Savitzky-Golay weights: (3(3h² + 3h - 1) - 15 j²) / ((2h-1)(2h+1)(2h+3)).
        const double norm = static_cast<double>((2 * h - 1) * (2 * h + 1) * (2 * h + 3));
        double sum = 0.0;
        for (long j = -h; j <= h; ++j) {
            const double weight = static_cast<double>(3 * (3 * h * h + 3 * h - 1) - 15 * j * j);
            sum += weight * static_cast<double>(y[static_cast<std::size_t>(i + j)]);
        }
        smoothed[static_cast<std::size_t>(i)] = static_cast<float>(sum / norm);
    }
    return smoothed;
}

PeakSearchResult findPeaks(std::span<const float> x, std::span<const float> y,
                           const PeakSearchSettings& settings, float xLow, float xHigh) {
    requireFiniteValues(x);
    requireFiniteValues(y);
    PeakSearchResult result;
    result.noise = FIND_NOISE_STDDEV(x, y, settings.noiseSegments).noise;
    if (y.size() < 3) {
        result.threshold = settings.threshold * result.noise;
        return result;
    }
    const std::vector<float> s = smoothSpectrum(y, settings.smoothingPoints);
    std::vector<Candidate> maxima = localMaxima(s);
    // The ends, where the smoothing window does not fit, keep their raw noise: no tops there.
    const auto margin = static_cast<std::size_t>(std::max(settings.smoothingPoints / 2, 1));
    std::erase_if(maxima,
                  [&](const Candidate& c) { return c.top < margin || c.top + margin >= s.size(); });
    std::vector<Candidate> candidates;
    // The segments that hold strong peaks dominate the mean spread: measure the noise again on
    // the points outside the peaks found so far, until no further peak is found.
    for (int pass = 0; pass < kNoisePasses; ++pass) {
        result.threshold = settings.threshold * result.noise;
        const std::size_t before = candidates.size();
        candidates.clear();
        std::copy_if(maxima.begin(), maxima.end(), std::back_inserter(candidates),
                     [&](const Candidate& c) {
                         return c.prominence > result.threshold && c.prominence > 0.0F;
                     });
        if (pass > 0 && candidates.size() == before) {
            break;
        }
        const auto [quietX, quietY] = pointsOutsidePeaks(x, y, s, candidates);
        result.noise = FIND_NOISE_STDDEV(quietX, quietY, settings.noiseSegments).noise;
    }
    std::stable_sort(
        candidates.begin(), candidates.end(),
        [](const Candidate& a, const Candidate& b) { return a.prominence > b.prominence; });
    // A candidate is far enough from every kept top when it is from the nearest on each side.
    std::vector<Candidate> kept;
    std::set<std::size_t> keptTops;
    const auto farEnough = [&](std::size_t a, std::size_t b) {
        return std::labs(static_cast<long>(a) - static_cast<long>(b)) >= settings.minSeparation;
    };
    for (const Candidate& c : candidates) {
        const auto above = keptTops.lower_bound(c.top);
        if ((above == keptTops.end() || farEnough(*above, c.top)) &&
            (above == keptTops.begin() || farEnough(*std::prev(above), c.top))) {
            kept.push_back(c);
            keptTops.insert(c.top);
        }
    }
    const float low = std::min(xLow, xHigh);
    const float high = std::max(xLow, xHigh);
    for (const Candidate& c : kept) {
        FoundPeak peak = vertex(x, s, c.top);
        if (peak.x < low || peak.x > high) {
            continue;
        }
        // Height above the straight line joining the two bases, at the peak's position.
        const float xl = x[c.leftBase];
        const float xr = x[c.rightBase];
        const float sl = s[c.leftBase];
        const float sr = s[c.rightBase];
        const float base = xr > xl ? sl + (sr - sl) * (peak.x - xl) / (xr - xl) : std::max(sl, sr);
        peak.height -= base;
        result.peaks.push_back(peak);
    }
    std::sort(result.peaks.begin(), result.peaks.end(),
              [](const FoundPeak& a, const FoundPeak& b) { return a.x < b.x; });
    return result;
}

} // namespace quarvex
