// A theoretical powder pattern drawn from the reflections of a reference file: pseudo-Voigt
// peaks at the Bragg angles of the reflections' d-spacings, optionally with counting noise.
#pragma once

#include "xray/XrayGlobals.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quarvex {

/// Lorentzian fraction of every peak of a theoretical pattern (the profile of a typical
/// laboratory diffractometer).
inline constexpr double kTheoreticalLorentzFraction = 0.5;
/// With counting noise, the flat background is this share of the strongest line's counts.
inline constexpr double kTheoreticalBackgroundShare = 0.02;
/// The default range reaches this far (degrees) beyond the first and last reflection, rounded
/// outward to whole degrees.
inline constexpr double kTheoreticalRangeMargin = 2.0;
/// A pattern holds at most this many points.
inline constexpr std::int64_t kMaxTheoreticalPoints = 2'000'000;

/// How a theoretical pattern is drawn. Angles in degrees 2-theta, wavelength in angstroms.
struct TheoreticalPatternSettings {
    double wavelength = 1.540562;
    double fwhm = 0.10;          ///< full width at half maximum of every peak
    double step = 0.01;          ///< between two points
    std::optional<double> from;  ///< first point; default: from the reflections
    std::optional<double> to;    ///< last point at most; default: from the reflections
    double zeroShift = 0.0;      ///< added to every peak position (an instrument's zero error)
    std::optional<double> noise; ///< counts of the strongest line: a counting experiment
    std::uint32_t seed = 1;      ///< of the counting noise
};

/// A drawn pattern.
struct TheoreticalPattern {
    std::vector<double> x; ///< 2-theta, ascending, `step` apart
    std::vector<double> y; ///< intensity (without noise), or counts (with noise)
    double wavelength = 0.0;
    int reflections = 0; ///< reflections within reach of the wavelength, drawn as peaks
};

/// Draws the pattern of reflections with the given d-spacings (angstroms) and intensities: a
/// pseudo-Voigt peak (kTheoreticalLorentzFraction, FWHM `fwhm`) for each reflection within reach
/// of the wavelength, at its Bragg angle plus the zero shift, its height the reflection's
/// intensity. With `noise` the heights are scaled so that the strongest reflection reaches that
/// many counts over a flat background of kTheoreticalBackgroundShare of it, and each point is a
/// count drawn around its value with standard deviation sqrt(value) (Box-Muller deviates of the
/// 32-bit Mersenne twister seeded with `seed`, the same on every machine), rounded to a whole
/// count and never below 0. Throws QuarvexError (title "X-ray Diffraction") for settings that
/// are not positive, a range outside 0 to 180 degrees or of more than kMaxTheoreticalPoints
/// points, and when no reflection is within reach and no range is given.
TheoreticalPattern theoreticalPattern(std::span<const float> dSpacing,
                                      std::span<const float> intensity,
                                      const TheoreticalPatternSettings& settings);

/// The pattern of reference pattern `reference` (0-based) of the list.
TheoreticalPattern theoreticalPattern(const DIFF_GLOBALS& diff, int reference,
                                      const TheoreticalPatternSettings& settings);

/// The lines of the comment block that tell how the pattern of reference `reference` was made:
/// "synthetic: ...", the profile, the range and step, the zero shift and the noise when set.
std::vector<std::string> theoreticalPatternNotes(const DIFF_GLOBALS& diff, int reference,
                                                 const TheoreticalPatternSettings& settings,
                                                 const TheoreticalPattern& pattern);

/// Writes the pattern as a spectrum file through a temporary file: "##NAMES=" `title`, a
/// "<COM>" block with "dtype: XRD", "wave: " the wavelength and the `notes`, then one "x, y"
/// line per point. Throws QuarvexError (title "X-ray Diffraction") when it cannot be written.
void writeTheoreticalPattern(const std::filesystem::path& path, const TheoreticalPattern& pattern,
                             const std::string& title, const std::vector<std::string>& notes);

} // namespace quarvex
