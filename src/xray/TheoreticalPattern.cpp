// Drawing a theoretical powder pattern from reference reflections, and writing it as a
// spectrum file.
#include "xray/TheoreticalPattern.h"

#include "common/AtomicFile.h"
#include "common/QuarvexError.h"
#include "common/TextUtils.h"
#include "xray/XrayBragg.h"
#include "xray/XrayMessages.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

namespace quarvex {

namespace {

constexpr double kPi = 3.141592653589793;
// Each peak is evaluated this many FWHM either side: beyond, its Lorentzian tail is below
// 3e-5 of its height.
constexpr double kTailWidths = 100.0;
constexpr double kLowestAngle = 1.0; // degrees: the default range stays within these
constexpr double kHighestAngle = 179.0;

[[noreturn]] void fail(const std::string& text) {
    throw QuarvexError(text, std::string(kXrayDiffractionTitle));
}

double pseudoVoigt(double x, double centre, double fwhm) {
    const double u = (x - centre) / fwhm;
    return kTheoreticalLorentzFraction / (1.0 + 4.0 * u * u) +
           (1.0 - kTheoreticalLorentzFraction) * std::exp(-4.0 * std::log(2.0) * u * u);
}

// Standard normal deviates by Box-Muller from the raw output of the portable 32-bit Mersenne
// twister (the standard distributions differ between libraries; this does not).
class NormalDeviates {
public:
    explicit NormalDeviates(std::uint32_t seed) : engine_(seed) {}
    double next() {
        const double u1 = (static_cast<double>(engine_()) + 1.0) / 4294967297.0;
        const double u2 = static_cast<double>(engine_()) / 4294967296.0;
        return std::sqrt(-2.0 * std::log(u1)) * std::cos(2.0 * kPi * u2);
    }

private:
    std::mt19937 engine_;
};

struct Line {
    double centre;
    double height;
};

void requirePositive(double value, const char* what) {
    if (!(value > 0.0) || !std::isfinite(value)) {
        fail(std::string("The ") + what + " of a theoretical pattern must be a positive number.");
    }
}

std::string degrees(double value) {
    return shortestText(value);
}

} // namespace

TheoreticalPattern theoreticalPattern(std::span<const float> dSpacing,
                                      std::span<const float> intensity,
                                      const TheoreticalPatternSettings& settings) {
    requirePositive(settings.wavelength, "wavelength");
    requirePositive(settings.fwhm, "FWHM");
    requirePositive(settings.step, "step");
    if (settings.noise) {
        requirePositive(*settings.noise, "count of the strongest line");
    }
    if (!std::isfinite(settings.zeroShift)) {
        fail("The zero shift of a theoretical pattern must be a number.");
    }
    std::vector<Line> lines;
    double strongest = 0.0;
    for (std::size_t r = 0; r < dSpacing.size() && r < intensity.size(); ++r) {
        const double twoTheta = twoThetaFromDSpacing(dSpacing[r], settings.wavelength);
        if (std::isfinite(twoTheta) && std::isfinite(intensity[r])) {
            lines.push_back({twoTheta + settings.zeroShift, intensity[r]});
            strongest = std::max(strongest, static_cast<double>(intensity[r]));
        }
    }
    if (lines.empty() && !(settings.from && settings.to)) {
        fail("No reflection is within reach of the wavelength " +
             shortestText(settings.wavelength) + " A: give the range of the pattern.");
    }
    double from = settings.from.value_or(0.0);
    double to = settings.to.value_or(0.0);
    if (!lines.empty()) {
        const auto [first, last] =
            std::minmax_element(lines.begin(), lines.end(),
                                [](const Line& a, const Line& b) { return a.centre < b.centre; });
        from = settings.from.value_or(
            std::max(kLowestAngle, std::floor(first->centre - kTheoreticalRangeMargin)));
        to = settings.to.value_or(
            std::min(kHighestAngle, std::ceil(last->centre + kTheoreticalRangeMargin)));
    }
    if (!(from > 0.0 && from < to && to < 180.0)) {
        fail("The range of a theoretical pattern must lie within 0 to 180 degrees 2-theta, "
             "from below to.");
    }
    const double steps = std::floor((to - from) / settings.step + 1.0e-9);
    if (steps + 1.0 > static_cast<double>(kMaxTheoreticalPoints)) {
        fail("A theoretical pattern of " + degrees(from) + " to " + degrees(to) +
             " degrees in steps of " + degrees(settings.step) + " would hold more than " +
             std::to_string(kMaxTheoreticalPoints) + " points.");
    }

    TheoreticalPattern pattern;
    pattern.wavelength = settings.wavelength;
    pattern.reflections = static_cast<int>(lines.size());
    const auto points = static_cast<std::size_t>(steps) + 1;
    pattern.x.resize(points);
    for (std::size_t i = 0; i < points; ++i) {
        pattern.x[i] = from + static_cast<double>(i) * settings.step;
    }
    const double scale = settings.noise && strongest > 0.0 ? *settings.noise / strongest : 1.0;
    pattern.y.assign(points, settings.noise ? kTheoreticalBackgroundShare * *settings.noise : 0.0);
    const double reach = kTailWidths * settings.fwhm;
    for (const Line& line : lines) {
        const auto begin =
            std::lower_bound(pattern.x.begin(), pattern.x.end(), line.centre - reach);
        for (auto i = static_cast<std::size_t>(begin - pattern.x.begin());
             i < points && pattern.x[i] <= line.centre + reach; ++i) {
            pattern.y[i] +=
                scale * line.height * pseudoVoigt(pattern.x[i], line.centre, settings.fwhm);
        }
    }
    if (settings.noise) {
        NormalDeviates deviates(settings.seed);
        for (double& y : pattern.y) {
            y = std::max(0.0, std::round(y + std::sqrt(y) * deviates.next()));
        }
    }
    return pattern;
}

TheoreticalPattern theoreticalPattern(const DIFF_GLOBALS& diff, int reference,
                                      const TheoreticalPatternSettings& settings) {
    return theoreticalPattern(diff.reflections(diff.DSPACE, reference),
                              diff.reflections(diff.INTENS, reference), settings);
}

std::vector<std::string> theoreticalPatternNotes(const DIFF_GLOBALS& diff, int reference,
                                                 const TheoreticalPatternSettings& settings,
                                                 const TheoreticalPattern& pattern) {
    const auto r = static_cast<std::size_t>(reference);
    const std::string name =
        diff.TITLE[r].empty() ? diff.NAME[r] : diff.TITLE[r] + " (" + diff.NAME[r] + ")";
    std::vector<std::string> notes{
        "synthetic: theoretical powder pattern of " + name + ", not a measurement",
        "profile: pseudo-Voigt, FWHM " + degrees(settings.fwhm) + " deg, Lorentzian fraction " +
            shortestText(kTheoreticalLorentzFraction) +
            ", at the Bragg angles of the reflections' d-spacings for " +
            shortestText(pattern.wavelength) + " A",
        "range: " + degrees(pattern.x.front()) + " to " + degrees(pattern.x.back()) +
            " deg 2-theta, step " + degrees(settings.step) + " deg, " +
            std::to_string(pattern.x.size()) + " points, " + std::to_string(pattern.reflections) +
            " reflections"};
    if (settings.zeroShift != 0.0) {
        notes.push_back("zero shift: " + std::string(settings.zeroShift > 0.0 ? "+" : "") +
                        degrees(settings.zeroShift) + " deg added to every peak position");
    }
    if (settings.noise) {
        notes.push_back("noise: counting noise, strongest line " + shortestText(*settings.noise) +
                        " counts over a background of " +
                        shortestText(kTheoreticalBackgroundShare * *settings.noise) +
                        " counts, seed " + std::to_string(settings.seed));
    }
    return notes;
}

void writeTheoreticalPattern(const std::filesystem::path& path, const TheoreticalPattern& pattern,
                             const std::string& title, const std::vector<std::string>& notes) {
    AtomicFile file(path);
    std::ofstream& out = file.stream();
    out << "##NAMES=" << title << "\n<COM>\ndtype: XRD\nwave: " << shortestText(pattern.wavelength)
        << '\n';
    for (const std::string& note : notes) {
        out << note << '\n';
    }
    out << "</COM>\n";
    // As many decimals of x as the step needs (at least two), y to six significant digits.
    const double step = pattern.x.size() > 1 ? pattern.x[1] - pattern.x[0] : 1.0;
    const int decimals = std::clamp(static_cast<int>(std::ceil(-std::log10(step) - 1.0e-6)), 2, 6);
    char line[64];
    for (std::size_t i = 0; i < pattern.x.size(); ++i) {
        std::snprintf(line, sizeof line, "%.*f, %.6g\n", decimals, pattern.x[i], pattern.y[i]);
        out << line;
    }
    if (!file.isOpen() || !file.commit()) {
        fail("The pattern could not be written to " + path.string() + ".");
    }
}

} // namespace quarvex
