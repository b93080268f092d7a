// Matching observed peaks to reference reflections: nearest within the tolerance, unresolved
// overlaps left out, each reflection line given to one peak only.
#include "xray/PeakMatching.h"

#include "xray/XrayBragg.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <stdexcept>

namespace quarvex {

namespace {

void addCandidate(std::vector<ReflectionCandidate>& out, ReflectionCandidate candidate,
                  float dSpacing, double wavelength) {
    candidate.twoTheta = twoThetaFromDSpacing(dSpacing, wavelength);
    if (std::isfinite(candidate.twoTheta)) {
        out.push_back(candidate);
    }
}

struct Proposal {
    int peak = 0;
    std::size_t candidate = 0;
    double distance = 0.0;
};

class Matcher {
public:
    Matcher(const XrayPeakList& peaks, std::span<const ReflectionCandidate> candidates,
            const MatchSettings& settings)
        : peaks_(peaks), candidates_(candidates), settings_(settings), order_(candidates.size()) {
        std::iota(order_.begin(), order_.end(), std::size_t{0});
        std::sort(order_.begin(), order_.end(), [&](std::size_t a, std::size_t b) {
            return candidates_[a].twoTheta < candidates_[b].twoTheta;
        });
        for (int k = 0; k < peaks.count(); ++k) {
            if (peaks.USEPK[static_cast<std::size_t>(k)] && std::isfinite(peaks.twoTheta(k))) {
                usable_.push_back(k);
            }
        }
    }

    std::vector<PeakMatch> run() const;

private:
    // Candidates (positions in order_) with 2-theta in [low, high].
    std::pair<std::size_t, std::size_t> within(double low, double high) const {
        const auto below = [&](std::size_t c, double v) { return candidates_[c].twoTheta < v; };
        const auto first = std::lower_bound(order_.begin(), order_.end(), low, below);
        auto last = first;
        while (last != order_.end() && candidates_[*last].twoTheta <= high) {
            ++last;
        }
        return {static_cast<std::size_t>(first - order_.begin()),
                static_cast<std::size_t>(last - order_.begin())};
    }
    bool propose(int peak, Proposal& proposal) const;
    bool ambiguous(int peak, std::size_t nearest, double window) const;

    const XrayPeakList& peaks_;
    std::span<const ReflectionCandidate> candidates_;
    MatchSettings settings_;
    std::vector<std::size_t> order_;
    std::vector<int> usable_;
};

bool Matcher::propose(int peak, Proposal& proposal) const {
    const double x = peaks_.twoTheta(peak);
    const auto [first, last] = within(x - settings_.tolerance, x + settings_.tolerance);
    bool found = false;
    for (std::size_t i = first; i < last; ++i) {
        const double distance = std::abs(candidates_[order_[i]].twoTheta - x);
        if (!found || distance < proposal.distance) {
            proposal = {peak, order_[i], distance};
            found = true;
        }
    }
    if (!found) {
        return false;
    }
    const float fwhm = peaks_.fwhm(peak);
    const double window = std::isfinite(fwhm) && fwhm > 0.0F ? fwhm : settings_.tolerance;
    return !ambiguous(peak, proposal.candidate, window);
}

// An overlap the peak does not resolve: another line within its width that no other peak
// stands nearer to, strong enough (when intensities count) to have pulled the peak.
bool Matcher::ambiguous(int peak, std::size_t nearest, double window) const {
    const double x = peaks_.twoTheta(peak);
    const float nearestIntensity = candidates_[nearest].intensity;
    const auto [first, last] = within(x - window, x + window);
    for (std::size_t i = first; i < last; ++i) {
        const ReflectionCandidate& other = candidates_[order_[i]];
        if (order_[i] == nearest || (settings_.useIntensities && nearestIntensity > 0.0F &&
                                     other.intensity < kOverlapIntensityShare * nearestIntensity)) {
            continue;
        }
        const double distance = std::abs(other.twoTheta - x);
        const bool claimedElsewhere = std::any_of(usable_.begin(), usable_.end(), [&](int q) {
            return q != peak && std::abs(other.twoTheta - peaks_.twoTheta(q)) < distance;
        });
        if (!claimedElsewhere) {
            return true;
        }
    }
    return false;
}

std::vector<PeakMatch> Matcher::run() const {
    std::vector<Proposal> proposals;
    for (const int peak : usable_) {
        Proposal proposal;
        if (propose(peak, proposal)) {
            proposals.push_back(proposal);
        }
    }
    std::stable_sort(proposals.begin(), proposals.end(),
                     [](const Proposal& a, const Proposal& b) { return a.distance < b.distance; });
    std::vector<bool> taken(candidates_.size(), false);
    std::vector<PeakMatch> matches;
    for (const Proposal& p : proposals) {
        if (taken[p.candidate]) {
            continue;
        }
        taken[p.candidate] = true;
        const ReflectionCandidate& c = candidates_[p.candidate];
        matches.push_back({{p.peak, c.hkl, c.wave, static_cast<float>(c.twoTheta)},
                           c.pattern,
                           c.reflection,
                           p.distance});
    }
    std::sort(matches.begin(), matches.end(), [](const PeakMatch& a, const PeakMatch& b) {
        return a.assignment.peak < b.assignment.peak;
    });
    return matches;
}

} // namespace

std::vector<ReflectionCandidate> candidatesFromPatterns(const DIFF_GLOBALS& diff,
                                                        std::span<const double> wavelengths) {
    std::vector<ReflectionCandidate> out;
    for (const int p : diff.ACTIVE_ARRAY()) {
        const auto dSpacing = diff.reflections(diff.DSPACE, p);
        const auto intensity = diff.reflections(diff.INTENS, p);
        const auto intensity2 = diff.reflections(diff.INTENS2, p);
        const auto hkl = diff.reflections(diff.HKL, p);
        const bool ownSecond = diff.MODE[static_cast<std::size_t>(p)] == 2;
        for (std::size_t r = 0; r < dSpacing.size(); ++r) {
            for (std::size_t w = 0; w < wavelengths.size(); ++w) {
                const float lineIntensity = w == 0 ? intensity[r]
                                            : (w == 1 && ownSecond)
                                                ? intensity2[r]
                                                : kFurtherWavelengthShare * intensity[r];
                addCandidate(
                    out,
                    {p, static_cast<int>(r), static_cast<int>(w) + 1, 0.0, lineIntensity, hkl[r]},
                    dSpacing[r], wavelengths[w]);
            }
        }
    }
    return out;
}

std::vector<ReflectionCandidate> candidatesFromInput(const XrayPhase& phase,
                                                     std::span<const double> wavelengths) {
    std::vector<ReflectionCandidate> out;
    for (std::size_t r = 0; r < phase.IDSP.size(); ++r) {
        for (std::size_t w = 0; w < wavelengths.size(); ++w) {
            const float intensity =
                w == 0 ? phase.IINTS[r] : kFurtherWavelengthShare * phase.IINTS[r];
            addCandidate(
                out,
                {-1, static_cast<int>(r), static_cast<int>(w) + 1, 0.0, intensity, phase.IHKL[r]},
                phase.IDSP[r], wavelengths[w]);
        }
    }
    return out;
}

std::vector<PeakMatch> matchPeaks(const XrayPeakList& peaks,
                                  std::span<const ReflectionCandidate> candidates,
                                  const MatchSettings& settings) {
    return Matcher(peaks, candidates, settings).run();
}

void assignPeak(XrayPhase& phase, int peak, std::array<int, 3> hkl, int wave,
                std::span<const double> wavelengths) {
    if (peak < 0 || peak >= phase.peaks.count() || wave < 1 ||
        wave > static_cast<int>(wavelengths.size())) {
        throw std::out_of_range("assignPeak: no such peak or wavelength");
    }
    PeakAssignment assignment{peak, hkl, wave, std::numeric_limits<float>::quiet_NaN()};
    const auto input = std::find(phase.IHKL.begin(), phase.IHKL.end(), hkl);
    if (input != phase.IHKL.end()) {
        assignment.referenceTwoTheta = static_cast<float>(
            twoThetaFromDSpacing(phase.IDSP[static_cast<std::size_t>(input - phase.IHKL.begin())],
                                 wavelengths[static_cast<std::size_t>(wave - 1)]));
    }
    unassignPeak(phase, peak);
    const auto at = std::find_if(phase.assignments.begin(), phase.assignments.end(),
                                 [peak](const PeakAssignment& a) { return a.peak > peak; });
    phase.assignments.insert(at, assignment);
}

void unassignPeak(XrayPhase& phase, int peak) {
    std::erase_if(phase.assignments, [peak](const PeakAssignment& a) { return a.peak == peak; });
}

} // namespace quarvex
