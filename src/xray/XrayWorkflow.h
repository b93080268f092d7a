// The X-ray workflow, step by step and as one operation: a measured pattern, a reference file,
// the pattern's peaks found and fitted, matched to the reflections, and the cell refined.
#pragma once

#include "processing/PeakFitting.h"
#include "specdata/SpecDataGlobals.h"
#include "xray/PeakMatching.h"
#include "xray/XrayGlobals.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// A pattern's x values must lie in this range to be read as 2-theta in degrees.
inline constexpr float kMaxTwoThetaDeg = 180.0F;
/// A "wave:" value is taken as an X-ray wavelength in angstroms only within this range (a
/// Raman laser line such as 532 is not one).
inline constexpr double kMinXrayWavelength = 0.05;
inline constexpr double kMaxXrayWavelength = 5.0;
/// The second wavelength of a reference file joins only when its first agrees with the
/// pattern's wavelength to this (angstroms): both then come from the same anode.
inline constexpr double kSameWavelength = 1.0e-4;

/// The wavelengths of a pattern and where they came from.
struct WavelengthChoice {
    std::vector<double> wavelengths; ///< angstroms; the first is the main line
    std::string source;              ///< "option", "pattern", "reference" or "preferences"
};

/// The pattern's wavelengths: `given` (an option) if set; else the pattern's "wave:" text when
/// it begins with a number within [kMinXrayWavelength, kMaxXrayWavelength]; else the reference
/// pattern's (first) wavelength when its file gives one; else `preference`. A reference file
/// with two wavelengths (K-alpha1, K-alpha2) adds its second when its first agrees with the
/// chosen one. `reference` may be -1 (none).
WavelengthChoice chooseWavelengths(std::optional<double> given, std::string_view patternWave,
                                   const DIFF_GLOBALS& diff, int reference, float preference);

/// The pattern's intensities with K-alpha2 stripped (stripKAlpha2, ratio kKAlpha2Ratio), for the
/// peak search; `choice` keeps its first wavelength only, so that the peaks are matched with
/// K-alpha1 alone. K-alpha2 is the choice's second wavelength, else the one of the anode of its
/// first (kAlpha2For). Throws QuarvexError (title "X-ray Diffraction") when no K-alpha2 is known
/// or x does not rise point by point.
std::vector<float> alpha1Intensities(std::span<const float> x, std::span<const float> y,
                                     WavelengthChoice& choice);

/// Throws QuarvexError (title "X-ray Diffraction") unless spectrum `index` has x values within
/// 0 to 180 degrees.
void requireTwoThetaPattern(const SPECDATA_GLOBALS& specdata, int index);

/// A phase made from reference pattern `reference`: named after the file's title (else its
/// name), with its symmetry code, its reflections as input reflections and its cell as input
/// cell; USEIHKL and USEIINTS on, USEICP off.
XrayPhase phaseFromReference(const DIFF_GLOBALS& diff, int reference);

/// Matches the phase's peaks to its input reflections (USEIHKL) or to the active reference
/// patterns, and makes the matches the phase's assignments. Returns the matches.
std::vector<PeakMatch> matchPhase(XrayPhase& phase, const DIFF_GLOBALS& diff,
                                  std::span<const double> wavelengths, float tolerance);

/// Settings of the refinement of a phase.
struct PhaseRefineSettings {
    std::string title;
    bool machineErrorSearch = false;
    bool reportIterations = false;
};

/// Writes the refinement input of the phase's assignments (its SYM, its input cell as starting
/// cell, USEICP as "starting cell given") to `inputFile` and runs REFINEMAIN on it. Returns its
/// result. Throws QuarvexError when nothing is assigned or the input cannot be written.
bool refinePhase(const XrayPhase& phase, std::span<const double> wavelengths,
                 const std::filesystem::path& inputFile, const PhaseRefineSettings& settings,
                 INOUTPARMS& io, DATASTFF& data);

/// The state groups the workflow works on.
struct XrayStateGroups {
    SPECDATA_GLOBALS& specdata;
    MINERALINFO& mineralInfo;
    DIFF_GLOBALS& diff;
    XRAY_PEAK_GLOBALS& xrayPeak;
    INOUTPARMS& io;
    DATASTFF& data;
};

/// What the whole operation is asked to do.
struct XrayRefineRequest {
    std::filesystem::path pattern;      ///< measured pattern (a spectrum file, x in 2-theta)
    std::filesystem::path reference;    ///< reference diffraction-data file
    std::filesystem::path importFolder; ///< folder of the import records (may be empty)
    std::optional<double> wavelength;   ///< angstroms, overrides every other source
    std::string system;                 ///< crystal system; empty: the reference's
    PeakFitSettings fit;
    MatchSettings match;
    float preferenceWavelength = 1.540562F;
    bool machineErrorSearch = false;
    bool reportIterations = false;
    bool stripKAlpha2 = false; ///< strip K-alpha2 before the peak search, match K-alpha1 only
};

/// What the operation did.
struct XrayRefineOutcome {
    int pattern = -1;   ///< the pattern's spectrum index
    int reference = -1; ///< the reference's index in the list
    WavelengthChoice wavelengths;
    std::vector<PeakMatch> matches;
    std::vector<std::string> notes;  ///< for the user: reader notes, peaks left out, ...
    std::filesystem::path inputFile; ///< the "_refine.DAT" written (refinement only)
    bool refined = false;            ///< REFINEMAIN produced results (refinement only)
};

/// Loads the pattern (in any spectrum format, loadSpectrumFile; the first scan of a file of
/// several) and the reference, finds and fits the pattern's peaks, and matches them:
/// on success the phase made from the reference, with its peaks and assignments, is the only
/// phase of `xrayPeak`, whose wavelengths and pattern are set too. Throws QuarvexError when a
/// file cannot be read, the crystal system is unknown, the reference has no reflections, no
/// peak stands out of the noise, or no peak lies within the tolerance of a reflection.
XrayRefineOutcome prepareXrayPhase(XrayStateGroups groups, const XrayRefineRequest& request);

/// prepareXrayPhase, then refinePhase with the input <pattern base name>_refine.DAT beside the
/// pattern: the operation of `quarvex-cli xray-refine`.
XrayRefineOutcome runXrayRefine(XrayStateGroups groups, const XrayRefineRequest& request);

} // namespace quarvex
