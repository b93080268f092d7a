// Whole-pattern peak fitting: search, starting widths, windows of overlapping peaks, one fit
// per window, and the peak list with d-spacings.
#include "xray/XrayPeakFit.h"

#include "common/QuarvexError.h"
#include "processing/PeakStart.h"
#include "xray/XrayBragg.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quarvex {

namespace {

constexpr float kNotAvailable = std::numeric_limits<float>::quiet_NaN();

struct PeakWindow {
    std::vector<float> positions;
    std::vector<float> widths; ///< starting FWHM of each peak
    float low = 0.0F;
    float high = 0.0F;
};

// Splits a run of peaks at its widest gap until no part holds more than the limit.
void splitIntoWindows(std::span<const float> positions, std::span<const float> widths,
                      std::vector<PeakWindow>& out) {
    if (positions.size() > static_cast<std::size_t>(kMaxPeaksPerWindow)) {
        std::size_t cut = 1;
        for (std::size_t k = 1; k < positions.size(); ++k) {
            if (positions[k] - positions[k - 1] > positions[cut] - positions[cut - 1]) {
                cut = k;
            }
        }
        splitIntoWindows(positions.first(cut), widths.first(cut), out);
        splitIntoWindows(positions.subspan(cut), widths.subspan(cut), out);
        return;
    }
    PeakWindow window{{positions.begin(), positions.end()}, {widths.begin(), widths.end()}, 0, 0};
    window.low = positions.front() - kWindowHalfWidths * widths.front();
    window.high = positions.back() + kWindowHalfWidths * widths.back();
    for (std::size_t k = 0; k < positions.size(); ++k) {
        window.low = std::min(window.low, positions[k] - kWindowHalfWidths * widths[k]);
        window.high = std::max(window.high, positions[k] + kWindowHalfWidths * widths[k]);
    }
    out.push_back(std::move(window));
}

std::vector<PeakWindow> peakWindows(const std::vector<float>& positions,
                                    const std::vector<float>& widths) {
    std::vector<PeakWindow> windows;
    std::size_t first = 0;
    for (std::size_t k = 1; k <= positions.size(); ++k) {
        const bool apart =
            k == positions.size() || positions[k] - kWindowHalfWidths * widths[k] >
                                         positions[k - 1] + kWindowHalfWidths * widths[k - 1];
        if (apart) {
            splitIntoWindows(std::span(positions).subspan(first, k - first),
                             std::span(widths).subspan(first, k - first), windows);
            first = k;
        }
    }
    return windows;
}

// Starting FWHM of every peak from the data (half-height crossings of the whole pattern).
std::vector<float> startingWidths(std::span<const float> x, std::span<const float> y,
                                  const std::vector<float>& positions,
                                  const PeakFitSettings& settings) {
    const FitWindow all = FILL_DAT(x, y, {0, static_cast<int>(x.size())});
    const std::vector<float> start =
        GET_PARMS(all, positions, settings.profile, settings.search.smoothingPoints);
    const auto per = static_cast<std::size_t>(parametersPerPeak(settings.profile));
    std::vector<float> widths;
    for (std::size_t k = 0; k < positions.size(); ++k) {
        widths.push_back(PEAKWID(settings.profile, std::span(start).subspan(k * per, per)).value);
    }
    return widths;
}

XrayPeak unfittedPeak(float position, const PeakWindow& window, const PeakFitSettings& settings) {
    XrayPeak peak;
    peak.type = static_cast<int>(settings.profile);
    peak.parameters = {kNotAvailable, position, kNotAvailable, kNotAvailable};
    peak.errors.fill(kNotAvailable);
    peak.use = false;
    peak.bounds = {window.low, window.high};
    peak.background = {kNotAvailable, kNotAvailable};
    return peak;
}

void addFittedPeaks(const PeakFitResult& fit, const PeakWindow& window,
                    const PeakFitSettings& settings, std::vector<XrayPeak>& out) {
    const auto per = static_cast<std::size_t>(parametersPerPeak(settings.profile));
    for (std::size_t k = 0; k < fit.peaks.size(); ++k) {
        XrayPeak peak;
        peak.type = static_cast<int>(settings.profile);
        std::copy_n(fit.parameters.begin() + static_cast<std::ptrdiff_t>(k * per), per,
                    peak.parameters.begin());
        std::copy_n(fit.errors.begin() + static_cast<std::ptrdiff_t>(k * per), per,
                    peak.errors.begin());
        peak.bounds = {window.low, window.high};
        peak.background = {fit.background, fit.backgroundError};
        const FittedPeak& shape = fit.peaks[k];
        peak.use = fit.converged && shape.centre >= window.low && shape.centre <= window.high &&
                   shape.fwhm > 0.0F && shape.fwhm < window.high - window.low &&
                   shape.height > 0.0F;
        out.push_back(peak);
    }
}

} // namespace

XrayPeakList fitPatternPeaks(std::span<const float> x, std::span<const float> y,
                             const PeakFitSettings& settings, double wavelength) {
    XrayPeakList list;
    if (x.size() < 3) {
        return list;
    }
    const PeakSearchResult search = findPeaks(x, y, settings.search, x.front(), x.back());
    std::vector<float> positions;
    for (const FoundPeak& found : search.peaks) {
        positions.push_back(found.x);
    }
    if (positions.empty()) {
        return list;
    }
    const std::vector<float> widths = startingWidths(x, y, positions, settings);

    std::vector<XrayPeak> peaks;
    for (PeakWindow& window : peakWindows(positions, widths)) {
        window.low = std::max(window.low, x.front());
        window.high = std::min(window.high, x.back());
        try {
            addFittedPeaks(fitPeaks(x, y, window.low, window.high, window.positions, settings),
                           window, settings, peaks);
        } catch (const QuarvexError&) {
            for (const float position : window.positions) {
                peaks.push_back(unfittedPeak(position, window, settings));
            }
        }
    }
    for (XrayPeak& peak : peaks) {
        const float centre = peak.parameters[1];
        const float fwhm = PEAKWID(settings.profile, peak.parameters).value;
        if (!(centre - kEndMarginWidths * fwhm >= x.front() &&
              centre + kEndMarginWidths * fwhm <= x.back())) {
            peak.use = false;
        }
        list.append(peak);
    }
    setPeakDSpacings(list, wavelength);
    return list;
}

void setPeakDSpacings(XrayPeakList& peaks, double wavelength) {
    for (int k = 0; k < peaks.count(); ++k) {
        const auto i = static_cast<std::size_t>(k);
        const float centre = peaks.PKPRMS[i][1];
        peaks.PKDSP[i] = static_cast<float>(dSpacingFromTwoTheta(centre, wavelength));
        peaks.PKDERR[i] = static_cast<float>(dSpacingError(centre, peaks.PKERR[i][1], wavelength));
    }
}

} // namespace quarvex
