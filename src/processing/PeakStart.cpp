// Starting values of the peak fit, taken from the data of the window.
#include "processing/PeakStart.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace quarvex {

namespace {

constexpr float kStartMix = 0.5F;
constexpr float kAutoPeakFraction = 0.02F; // least height of an automatic peak, of the strongest

// Distance from point `top` to where the smoothed values `s` first fall to `level`, walking in
// `direction` (+1 or -1) no further than x = limit; -1 when they do not fall that far.
float crossingDistance(std::span<const float> x, std::span<const float> s, std::size_t top,
                       float level, int direction, float limit) {
    std::size_t previous = top;
    while (true) {
        if ((direction < 0 && previous == 0) || (direction > 0 && previous + 1 >= x.size())) {
            return -1.0F;
        }
        const std::size_t j = direction > 0 ? previous + 1 : previous - 1;
        if ((direction > 0 && x[j] > limit) || (direction < 0 && x[j] < limit)) {
            return -1.0F;
        }
        if (s[j] <= level) {
            const float fraction =
                s[previous] > s[j] ? (s[previous] - level) / (s[previous] - s[j]) : 0.0F;
            const float crossing = x[previous] + fraction * (x[j] - x[previous]);
            return std::fabs(crossing - x[top]);
        }
        previous = j;
    }
}

} // namespace

WindowRange GET_WINDOW_NDAT(std::span<const float> x, float xLow, float xHigh) {
    const float low = std::min(xLow, xHigh);
    const float high = std::max(xLow, xHigh);
    const auto first = std::lower_bound(x.begin(), x.end(), low);
    const auto last = std::upper_bound(first, x.end(), high);
    return {static_cast<int>(first - x.begin()), static_cast<int>(last - first)};
}

FitWindow FILL_DAT(std::span<const float> x, std::span<const float> y, WindowRange range) {
    const auto first = static_cast<std::size_t>(range.first);
    const auto count = static_cast<std::size_t>(range.count);
    const auto xs = x.subspan(first, count);
    const auto ys = y.subspan(first, count);
    return {{xs.begin(), xs.end()}, {ys.begin(), ys.end()}};
}

float GET_BG(const FitWindow& window, int smoothingPoints) {
    std::vector<float> s = smoothSpectrum(window.y, smoothingPoints);
    if (s.empty()) {
        return 0.0F;
    }
    const auto rank = static_cast<std::ptrdiff_t>((s.size() - 1) / 10);
    std::nth_element(s.begin(), s.begin() + rank, s.end());
    return s[static_cast<std::size_t>(rank)];
}

int nearestPoint(std::span<const float> x, float location) {
    float best = 1.0e20F;
    int bestIndex = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const float distance = std::fabs(x[i] - location);
        if (distance < best) {
            best = distance;
            bestIndex = static_cast<int>(i);
        } else {
            break;
        }
    }
    return bestIndex;
}

std::vector<float> GET_PARMS(const FitWindow& window, std::span<const float> positions,
                             PeakProfile profile, int smoothingPoints) {
    const std::vector<float> s = smoothSpectrum(window.y, smoothingPoints);
    const float background = GET_BG(window, smoothingPoints);
    const auto [lowest, highest] = std::minmax_element(window.y.begin(), window.y.end());
    const float span = window.x.back() - window.x.front();
    const float spacing =
        window.x.size() > 1 ? span / static_cast<float>(window.x.size() - 1) : 1.0F;
    std::vector<float> sorted(positions.begin(), positions.end());
    std::sort(sorted.begin(), sorted.end());

    const int perPeak = parametersPerPeak(profile);
    std::vector<float> a;
    a.reserve(positions.size() * static_cast<std::size_t>(perPeak) + 1);
    for (const float position : positions) {
        const auto top = static_cast<std::size_t>(nearestPoint(window.x, position));
        const float height = std::max(s[top] - background, 0.01F * (*highest - *lowest));
        // Search each half-height crossing no further than halfway to the neighbouring peak.
        const auto next = std::upper_bound(sorted.begin(), sorted.end(), position);
        const auto here = std::lower_bound(sorted.begin(), sorted.end(), position);
        const float leftLimit =
            here == sorted.begin() ? window.x.front() : 0.5F * (*(here - 1) + position);
        const float rightLimit = next == sorted.end() ? window.x.back() : 0.5F * (*next + position);
        const float level = background + 0.5F * height;
        const float left = crossingDistance(window.x, s, top, level, -1, leftLimit);
        const float right = crossingDistance(window.x, s, top, level, +1, rightLimit);
        float fwhm = span / static_cast<float>(2 * positions.size());
        if (left > 0.0F && right > 0.0F) {
            fwhm = left + right;
        } else if (left > 0.0F || right > 0.0F) {
            fwhm = 2.0F * std::max(left, right);
        }
        fwhm = std::clamp(fwhm, 2.0F * spacing, std::max(span, 2.0F * spacing));
        appendPeak(profile, {height, position, fwhm, kStartMix}, a);
    }
    a.push_back(background);
    return a;
}

std::vector<float> AUTOPARMS(std::span<const float> x, std::span<const float> y, float xLow,
                             float xHigh, const PeakSearchSettings& settings) {
    const std::vector<FoundPeak> peaks = findPeaks(x, y, settings, xLow, xHigh).peaks;
    float strongest = 0.0F;
    for (const FoundPeak& peak : peaks) {
        strongest = std::max(strongest, peak.height);
    }
    // With equal weights the shape misfit of a strong band swamps a much weaker one, which the
    // fit would then bend into a negative peak: such peaks must be asked for explicitly.
    std::vector<float> positions;
    for (const FoundPeak& peak : peaks) {
        if (peak.height >= kAutoPeakFraction * strongest) {
            positions.push_back(peak.x);
        }
    }
    return positions;
}

std::vector<float> READJUSTPARMS(const FitWindow& window, std::span<const float> a,
                                 PeakProfile profile, int smoothingPoints) {
    const auto perPeak = static_cast<std::size_t>(parametersPerPeak(profile));
    std::vector<float> positions;
    for (std::size_t k = 0; k + perPeak < a.size(); k += perPeak) {
        positions.push_back(window.x[static_cast<std::size_t>(nearestPoint(window.x, a[k + 1]))]);
    }
    return GET_PARMS(window, positions, profile, smoothingPoints);
}

} // namespace quarvex
