// Peak-to-reflection matching: each observed peak takes the h k l of the nearest reference
// reflection within a tolerance in 2-theta, each reflection at most once.
#pragma once

#include "xray/XrayGlobals.h"

#include <array>
#include <span>
#include <vector>

namespace quarvex {

/// A reference reflection as a place where a peak may appear: one reflection at one wavelength.
struct ReflectionCandidate {
    int pattern = -1;      ///< index in the reference list; -1 for a phase's input reflections
    int reflection = 0;    ///< index within its pattern or input list (0-based)
    int wave = 1;          ///< wavelength number (1 = the first)
    double twoTheta = 0.0; ///< degrees at that wavelength
    float intensity = 0.0F;
    std::array<int, 3> hkl{};
};

/// A reflection of a second or third wavelength whose file gives no intensity of its own is
/// taken at this share of its first-wavelength intensity (K-alpha2 is about half of K-alpha1).
inline constexpr float kFurtherWavelengthShare = 0.5F;
/// A reflection weaker than this share of the nearest one does not make a peak ambiguous.
inline constexpr float kOverlapIntensityShare = 0.05F;

/// The candidates of every active reference pattern at each wavelength of `wavelengths`
/// (angstroms; the first is the pattern's main line): 2-theta from the reflection's d-spacing by
/// Bragg's law. Reflections without a positive d, or out of reach of a wavelength, take no part.
/// The intensity at the second wavelength is the file's own in mode 2.
std::vector<ReflectionCandidate> candidatesFromPatterns(const DIFF_GLOBALS& diff,
                                                        std::span<const double> wavelengths);

/// The candidates of a phase's input reflections (IHKL, IDSP, IINTS) at each wavelength.
std::vector<ReflectionCandidate> candidatesFromInput(const XrayPhase& phase,
                                                     std::span<const double> wavelengths);

/// Settings of the matching.
struct MatchSettings {
    float tolerance = 0.10F;    ///< degrees 2-theta (the preference)
    bool useIntensities = true; ///< weak overlapping reflections do not count (USEIINTS)
};

/// One peak matched to one candidate.
struct PeakMatch {
    PeakAssignment assignment; ///< peak, h k l, wavelength number, reference 2-theta
    int pattern = -1;          ///< the candidate's pattern (-1: input reflections)
    int reflection = 0;        ///< the candidate's reflection index
    double distance = 0.0;     ///< |peak - reflection|, degrees 2-theta
};

/// Matches the usable peaks (USEPK) to the candidates: each peak proposes its nearest candidate
/// within the tolerance; a peak is left out when another candidate (another reflection, or the
/// same one at another wavelength) lies within the peak's FWHM of its centre and no other usable
/// peak is nearer to that one (an unresolved overlap; with `useIntensities` only a competitor of at
/// least kOverlapIntensityShare of the nearest one's intensity counts); each candidate goes to the
/// nearest of the peaks proposing it, and the others stay unmatched. In ascending peak order.
std::vector<PeakMatch> matchPeaks(const XrayPeakList& peaks,
                                  std::span<const ReflectionCandidate> candidates,
                                  const MatchSettings& settings);

/// The user's own assignment: peak `peak` (0-based) gets `hkl` at wavelength number `wave`,
/// replacing what it had; its reference 2-theta is that of the input reflection with this h k l
/// at that wavelength, NaN when the phase has none. Assignments stay in peak order. Throws
/// std::out_of_range for a peak or wavelength number that does not exist.
void assignPeak(XrayPhase& phase, int peak, std::array<int, 3> hkl, int wave,
                std::span<const double> wavelengths);

/// Removes the assignment of peak `peak` (0-based), if it has one.
void unassignPeak(XrayPhase& phase, int peak);

} // namespace quarvex
